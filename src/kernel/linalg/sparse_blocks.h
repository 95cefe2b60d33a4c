/** The diagonal blocks of a sparse matrix as dense ones: what the sparse solvers work on. */
#pragma once

#include <vector>

#include "kernel/linalg/dense_block.h"
#include "kernel/linalg/matrix_sparse.h"

namespace korvenrg::linalg {

/** One block: its indices from 0, ascending, and its cells. */
struct LinkedBlock
{
    std::vector<int> indices;
    DenseBlock cells;
};

/** The leading n x n cells as blocks that no non-zero cell links. Cells outside the matrix count as 0. */
std::vector<LinkedBlock> LinkedBlocksOf(const matrixSparse& source, int n);

/** Writes the cells that are not 0 to the rows and columns of the block. */
void StoreLinked(const LinkedBlock& block, matrixSparse& target);

}  // namespace korvenrg::linalg
