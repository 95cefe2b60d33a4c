/** Sparse matrices, and blocks of them. */
#pragma once

#include <vector>

#include "core/matrix.h"
#include "core/matrix3d.h"

/**
 * Sparse matrix: only cells other than 0 are stored, column by column in the order of their rows.
 *
 * Indices outside behave as those of the dense matrix: a read gives -1.0 and a write is dropped; here row and
 * column are tested each. Storage and the cost of all operations follow the non-zero cells.
 */
class KORVENRG_API matrixSparse final
{
  public:
    /** A stored cell; rows count from 0. */
    struct Cell
    {
        int row;
        double value;
    };
    /** The stored cells of a column, rows ascending. */
    using Column = std::vector<Cell>;

    /** 0 x 0. */
    matrixSparse() = default;

    /** rowCount x colCount, each cell `fill`; a fill other than 0 stores every cell. */
    matrixSparse(int rowCount, int colCount, double fill);

    /** The non-zero cells of a dense matrix. */
    explicit matrixSparse(matrix<double>* dense);

    int Rows() const
    {
        return rows_;
    }

    int Cols() const
    {
        return static_cast<int>(columns_.size());
    }

    /** Number of stored cells. */
    std::size_t NonZeros() const;

    /** The stored cells of column j from 0, which must exist. */
    const Column& CellsOf(int j) const
    {
        return columns_[static_cast<std::size_t>(j)];
    }

    /** Replaces column j from 0, which must exist. Rows ascend and are rows of this matrix; cells of 0 are dropped. */
    void PutColumn(int j, Column cells);

    /** Cell (i, j) from 0. */
    double getElement(int i, int j) const;

    /** Writes cell (i, j) from 0. Writing 0 removes the cell. */
    void setElement(int i, int j, double value);

    /** Cell (i, j) from 1. */
    double vbget(int i, int j) const
    {
        return getElement(i - 1, j - 1);
    }

    /** Cell by linear index from 1, column after column. */
    double vbget(int i) const;

    /** Writes cell (i, j) from 1. */
    void vbset(int i, int j, double value)
    {
        setElement(i - 1, j - 1, value);
    }

    /** Writes by linear index from 1, column after column. */
    void vbset(int i, double value);

    /** New shape, each cell `fill`. */
    void Redim(int rowCount, int colCount, double fill);

    /** Sets every cell to 0; the shape stays. */
    void ReInit();

    /**
     * Inverse of a square matrix, by elimination with row pivoting within each block of indices that are
     * linked by non-zero cells: a block-diagonal matrix costs the sum of its blocks.
     *
     * @param result     receives the inverse; the blocks that have none are 0 there. May not be this matrix.
     * @param ok         receives -1 on success, 0 when a pivot is not above `tolerance` in absolute value
     * @return 0 on success, -1 on failure or when the matrix is not square
     */
    int inverse1(matrixSparse* result, short& ok, double tolerance) const;

    /** The indices from 0 of a square matrix in groups, each ascending: two are in one group when a chain of
     * non-zero cells links them. */
    std::vector<std::vector<int>> LinkedBlocks() const;

    /** Writes all cells into a dense matrix; cells that it does not have are dropped. */
    void outputSparse(matrix<double>* dense) const;

  private:
    bool Holds(int i, int j) const
    {
        return i >= 0 && i < rows_ && j >= 0 && j < Cols();
    }

    int rows_ = 0;
    std::vector<Column> columns_;
};

extern template class KORVENRG_API matrix3D<matrixSparse>;
