/** The product of two dense matrices: the engine of the M_Product family. */
#pragma once

#include <cstddef>
#include <vector>

#include "core/matrix.h"

namespace korvenrg::linalg {

/** An operand of a product, read as it stands or transposed. Points into the matrix when that has the cells asked for,
 * otherwise holds a copy in which cells outside the matrix read as its outOfRange value. */
class DenseOperand
{
  public:
    /** The leading rows x cols cells of a matrix, which must live as long as this. */
    DenseOperand(const matrix<double>& source, int rows, int cols);
    /** rows x cols cells by columns. */
    DenseOperand(std::vector<double> cells, int rows, int cols);

    /** The transpose of the same cells; lives no longer than this operand's matrix. */
    DenseOperand Transposed() const;

    std::size_t Rows() const
    {
        return transposed_ ? cols_ : rows_;
    }
    std::size_t Cols() const
    {
        return transposed_ ? rows_ : cols_;
    }
    /** Where cell (0, 0) stands, and how far apart the cells of one row and of one column are. */
    const double* Data() const
    {
        return view_ != nullptr ? view_ : copy_.data();
    }
    std::size_t RowStep() const
    {
        return transposed_ ? stride_ : 1;
    }
    std::size_t ColumnStep() const
    {
        return transposed_ ? 1 : stride_;
    }

  private:
    std::size_t rows_;
    std::size_t cols_;
    std::size_t stride_;
    bool transposed_ = false;
    const double* view_ = nullptr;
    std::vector<double> copy_;
};

/** Which cells of a product are formed. A symmetric one is formed below the diagonal and mirrored. */
enum class ProductShape
{
    kFull,
    kSymmetric
};

/**
 * out = left right, by columns without gaps. left.Cols() and right.Rows() are equal.
 *
 * The factors are packed in blocks of 256 inner indices and multiplied in register tiles (Goto and van de Geijn 2008,
 * "Anatomy of high-performance matrix multiplication"). A cell is the sum over the inner index in order within each
 * block, the blocks one after the other: no instruction set, tile or shape of the rest of the product changes its bits.
 */
void MultiplyDense(const DenseOperand& left, const DenseOperand& right, ProductShape shape, double* out);

}  // namespace korvenrg::linalg
