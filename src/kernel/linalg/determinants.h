/** Determinant, rank, trace and row-sum norm. */
#pragma once

#include "core/matrix.h"

namespace korvenrg::linalg {

/** A determinant as sign times the exponential of a logarithm, which neither overflows nor underflows. */
struct LogDeterminant
{
    double logAbsolute = 0.0;  ///< minus infinity for a determinant of 0; NaN when a cell is not finite
    int sign = 1;              ///< -1, 0 or 1
};

/** Determinant of the leading n x n block; use it where a likelihood needs log |det|. */
LogDeterminant LogDeterminantOf(const matrix<double>& A, int n);

}  // namespace korvenrg::linalg

/**
 * Determinant of the leading n x n block, by elimination with row pivoting (Golub and Van Loan 2013, "Matrix
 * Computations", 3.4). The product of the pivots is kept with its exponent apart, so that it overflows only
 * when the determinant does. A pivot of exactly 0 gives 0; a cell that is not finite gives NaN; n below 1
 * gives 1, the empty product.
 */
double M_Determinant(matrix<double>* A, int n);

/**
 * Determinant of a symmetric positive semidefinite matrix without the rows and columns that are marked or
 * have no pivot of their own: the product of the other pivots of its Cholesky reduction in natural order.
 *
 * @param A     n x n, symmetric; the lower triangle is read
 * @param keep  n marks: 0 takes part, anything else is left out; null leaves none out. A pivot that is nothing but
 *              rounding is left out too (M_CholDecompCleaned)
 * @param ok    receives -1 when at least one pivot took part and none was negative, otherwise 0; it does not tell
 *              whether pivots were left out; null: not wanted
 * @return the determinant; 0 when `ok` is 0
 */
double M_DeterminantCleaned(matrix<double>* A, int n, matrix<double>* keep, short* ok);

/**
 * Numerical rank of the leading rows x cols block: its columns are scaled to length 1 and reduced by
 * Householder reflections, the longest remaining column first (Businger and Golub 1965, "Linear least squares
 * solutions by Householder transformations"); columns count until none is longer than `tol`.
 *
 * @param tol  0 or below: max(rows, cols) eps
 * @return the rank; 0 when there are no cells or a cell is not finite
 */
int M_Rank(matrix<double>* A, int rows, int cols, double tol);

/** Rank of the leading n x n block. */
int M_Rank(matrix<double>* A, int n, double tol);

/** Sum of the first n diagonal cells. */
double M_Trace(matrix<double>* A, int n);

/** Largest sum of absolute cells over a row of the leading rows x cols block; 0 when there is none. NaN when
 * a row has one. */
double M_RowSumNorm(matrix<double>* A, int rows, int cols);
