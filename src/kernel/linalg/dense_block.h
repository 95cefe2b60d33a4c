/** Square and rectangular blocks as plain cells by columns: what the solvers work on. */
#pragma once

#include <cstddef>
#include <vector>

#include "core/matrix.h"

namespace korvenrg::linalg {

/** A dense rows x cols block by columns, counted from 0. */
struct DenseBlock
{
    std::size_t rows = 0;
    std::size_t cols = 0;
    std::vector<double> cells;

    DenseBlock() = default;

    DenseBlock(std::size_t rowCount, std::size_t colCount)
        : rows(rowCount), cols(colCount), cells(rowCount * colCount)
    {
    }

    double& operator()(std::size_t i, std::size_t j)
    {
        return cells[j * rows + i];
    }

    double operator()(std::size_t i, std::size_t j) const
    {
        return cells[j * rows + i];
    }

    double* Column(std::size_t j)
    {
        return cells.data() + j * rows;
    }

    const double* Column(std::size_t j) const
    {
        return cells.data() + j * rows;
    }
};

/** The n x n identity. */
DenseBlock Identity(std::size_t n);

/** The leading rows x cols block; cells outside the matrix read as its outOfRange value, negative sizes as 0.
 */
DenseBlock LeadingBlock(const matrix<double>& source, int rows, int cols);

/** Writes the block to the leading cells of a matrix; cells that the matrix does not have are dropped. */
void StoreBlock(const DenseBlock& block, matrix<double>& target);

/** The rows and columns of `source` whose positions from 0 are given, in that order. */
DenseBlock PrincipalBlock(const DenseBlock& source, const std::vector<std::size_t>& positions);

/** Whether every cell is finite. */
bool AllFinite(const DenseBlock& block);

/** Largest absolute cell; 0 for an empty block. */
double LargestCell(const DenseBlock& block);

/** Replaces each pair of mirrored cells by their mean. */
void Symmetrize(DenseBlock& block);

/** Positions from 0, among n, whose cell of `marks` is 0; all of them when `marks` is null. */
template <typename T>
std::vector<std::size_t> UnmarkedPositions(const matrix<T>* marks, int n)
{
    std::vector<std::size_t> positions;
    for (int i = 1; i <= n; ++i) {
        if (marks == nullptr || marks->vbget(i) == T{}) positions.push_back(static_cast<std::size_t>(i - 1));
    }
    return positions;
}

}  // namespace korvenrg::linalg
