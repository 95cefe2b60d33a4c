#include "kernel/linalg/sparse_blocks.h"

#include <algorithm>

namespace korvenrg::linalg {

namespace {

matrixSparse LeadingPart(const matrixSparse& source, int n)
{
    matrixSparse leading(n, n, 0.0);
    for (int j = 0; j < std::min(n, source.Cols()); ++j) {
        for (int i = 0; i < std::min(n, source.Rows()); ++i) {
            const double cell = source.getElement(i, j);
            if (cell != 0.0) leading.setElement(i, j, cell);
        }
    }
    return leading;
}

}  // namespace

std::vector<LinkedBlock> LinkedBlocksOf(const matrixSparse& source, int n)
{
    const bool whole = source.Rows() == n && source.Cols() == n;
    const matrixSparse part = whole ? matrixSparse() : LeadingPart(source, std::max(n, 0));
    const matrixSparse& cells = whole ? source : part;
    std::vector<LinkedBlock> blocks;
    for (const std::vector<int>& indices : cells.LinkedBlocks()) {
        LinkedBlock block{indices, DenseBlock(indices.size(), indices.size())};
        for (std::size_t j = 0; j < indices.size(); ++j) {
            for (std::size_t i = 0; i < indices.size(); ++i) {
                block.cells(i, j) = cells.getElement(indices[i], indices[j]);
            }
        }
        blocks.push_back(std::move(block));
    }
    return blocks;
}

void StoreLinked(const LinkedBlock& block, matrixSparse& target)
{
    for (std::size_t j = 0; j < block.indices.size(); ++j) {
        for (std::size_t i = 0; i < block.indices.size(); ++i) {
            if (block.cells(i, j) != 0.0) {
                target.setElement(block.indices[i], block.indices[j], block.cells(i, j));
            }
        }
    }
}

}  // namespace korvenrg::linalg
