#include "kernel/linalg/dense_block.h"

#include <algorithm>
#include <cmath>

namespace korvenrg::linalg {

DenseBlock Identity(std::size_t n)
{
    DenseBlock identity(n, n);
    for (std::size_t i = 0; i < n; ++i) {
        identity(i, i) = 1.0;
    }
    return identity;
}

DenseBlock LeadingBlock(const matrix<double>& source, int rows, int cols)
{
    DenseBlock block(static_cast<std::size_t>(std::max(rows, 0)),
                     static_cast<std::size_t>(std::max(cols, 0)));
    for (std::size_t j = 0; j < block.cols; ++j) {
        for (std::size_t i = 0; i < block.rows; ++i) {
            block(i, j) = source.getElement(static_cast<int>(i), static_cast<int>(j));
        }
    }
    return block;
}

void StoreBlock(const DenseBlock& block, matrix<double>& target)
{
    for (std::size_t j = 0; j < block.cols; ++j) {
        for (std::size_t i = 0; i < block.rows; ++i) {
            target.vbset(static_cast<int>(i) + 1, static_cast<int>(j) + 1, block(i, j));
        }
    }
}

DenseBlock PrincipalBlock(const DenseBlock& source, const std::vector<std::size_t>& positions)
{
    DenseBlock block(positions.size(), positions.size());
    for (std::size_t j = 0; j < positions.size(); ++j) {
        for (std::size_t i = 0; i < positions.size(); ++i) {
            block(i, j) = source(positions[i], positions[j]);
        }
    }
    return block;
}

bool AllFinite(const DenseBlock& block)
{
    return std::ranges::all_of(block.cells, [](double cell) { return std::isfinite(cell); });
}

double LargestCell(const DenseBlock& block)
{
    double largest = 0.0;
    for (const double cell : block.cells) {
        largest = std::max(largest, std::fabs(cell));
    }
    return largest;
}

void Symmetrize(DenseBlock& block)
{
    for (std::size_t j = 0; j < block.cols; ++j) {
        for (std::size_t i = j + 1; i < block.rows; ++i) {
            const double mean = 0.5 * block(i, j) + 0.5 * block(j, i);
            block(i, j) = mean;
            block(j, i) = mean;
        }
    }
}

}  // namespace korvenrg::linalg
