/** Elimination with row pivoting: systems, inverses, and the forward Doolittle reduction. */
#pragma once

#include <vector>

#include "core/matrix.h"
#include "kernel/linalg/dense_block.h"

namespace korvenrg::linalg {

/** P A = L U: L is unit lower, both stand in one block; row i of P A is row rows[i] of A. */
struct LuFactors
{
    DenseBlock cells;
    std::vector<std::size_t> rows;
    bool oddExchanges = false;
    bool regular = false;  ///< every pivot was above its limit; otherwise the factors stop at the first
                           ///< that was not
};

enum class Pivoting
{
    kNone,
    kRows
};

/** What counts as a pivot of 0. */
struct PivotLimit
{
    double absolute = 0.0;  ///< this size or less
    bool rounding =
        false;  ///< n eps or less of what the elimination took out of the cell, in absolute values
};

/**
 * Triangular factors of a square block, column after column (Golub and Van Loan 2013, "Matrix Computations",
 * 3.4).
 */
LuFactors FactorLu(DenseBlock block, Pivoting pivoting, const PivotLimit& limit);

/** Solves A x = b for one right-hand side of n cells, in place. */
void SolveLu(const LuFactors& factors, double* rightHandSide);

/** The inverse from regular factors. */
DenseBlock InverseOf(const LuFactors& factors);

}  // namespace korvenrg::linalg

/**
 * Solves A X = B by Gauss elimination, the solution in place of B.
 *
 * A pivot counts as 0 when it is n eps or less of the sum of |l u| that the elimination took out of its cell:
 * nothing but rounding is left, whatever the scales of rows and columns.
 *
 * @param A       n x n
 * @param n       unknowns
 * @param m       right-hand sides
 * @param B       n x m, in: right-hand sides, out: solution; not changed on failure
 * @param pivot   -1: the largest cell of the column is taken as pivot (Golub and Van Loan 2013, 3.4);
 *                0: the diagonal is taken as it comes
 * @param keepA   -1: A is not changed; 0: it receives the factors, U on and above the diagonal and the
 *                multipliers below
 * @return 0, or -1 when A is singular or holds a cell that is not finite
 */
int M_Gauss(matrix<double>* A, int n, int m, matrix<double>* B, short pivot, short keepA);

/**
 * Inverse of a square matrix by elimination with row pivoting.
 *
 * @param A        n x n; n is its number of rows
 * @param inverse  n x n; created when null, given the shape when of another one; untouched on failure
 * @param failed   receives -1 on failure, otherwise 0
 * @param limit    above 0: a pivot of 1E-8 or less in absolute value is a failure; otherwise one of
 *                 2.220446049250313E-16 or less
 * @return 0, or -1 on failure: a pivot not above the limit, A not square, a cell that is not finite
 */
int InverseWithTolerance(matrix<double>* A, matrix<double>*& inverse, short& failed, double limit);

/**
 * Forward Doolittle reduction of a cross-product matrix: its rows after elimination, each divided by its
 * pivot (Goodnight 1979, "A tutorial on the SWEEP operator").
 *
 * With A = X'X, A = U' D U: row k of U holds the coefficients of the sequential hypothesis of column k, cell
 * (k, j) being the regression coefficient of column j on the part of column k that the columns before k leave.
 *
 * @param A    n x n, symmetric; not changed
 * @param tol  a pivot at or below `tol` times its diagonal cell in A is refused: its row of U is 0
 * @param U    n x n, upper triangle, 1 on the diagonal of accepted rows; created when null, given the shape
 *             when of another one
 * @return number of accepted pivots; -1 when a cell is not finite, U then being 0
 */
int M_ForwardDoolittle(matrix<double>* A, int n, double tol, matrix<double>*& U);
