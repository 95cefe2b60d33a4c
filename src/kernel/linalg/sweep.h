/** The sweep operator on a packed symmetric matrix, and the tolerance of a column. */
#pragma once

#include <cstddef>

#include "core/matrix.h"

namespace korvenrg::linalg {

/** Number of cells of a packed m x m lower triangle. */
constexpr std::size_t PackedSize(std::size_t m)
{
    return m * (m + 1) / 2;
}

/** Position from 1 of cell (i, j), both from 1 and in either order, of a lower triangle packed by rows. */
constexpr std::size_t PackedPosition(int i, int j)
{
    const auto row = static_cast<std::size_t>(i > j ? i : j);
    const auto col = static_cast<std::size_t>(i > j ? j : i);
    return row * (row - 1) / 2 + col;
}

/** What is known of a matrix that is swept. */
enum class Cells
{
    kAny,
    kSemidefinite  ///< a diagonal cell that is not swept and falls below 0 is 0 but for rounding, and becomes 0
};

/** M_Sweep on bare cells: m x m, lower triangle by rows, pivot k from 0. A pivot of 0 or NaN changes nothing. */
void SweepPacked(double* cells, std::size_t m, std::size_t k, Cells kind = Cells::kAny);

}  // namespace korvenrg::linalg

/**
 * Sweeps pivot k of an m x m positive semidefinite matrix, in place (Goodnight 1979, "A tutorial on the SWEEP operator";
 * the form with the negative inverse is Dempster's 1969).
 *
 * After sweeping a set S: cell (i, j) of S holds -(A_SS^-1)(i, j), cell (i, j) with i outside and j inside S
 * the regression coefficient of i on j, other cells the residual cross-products. Sweeping a pivot again
 * undoes it: a negative pivot is taken as swept. Order does not matter. The matrix is positive semidefinite, so where
 * rounding takes a diagonal cell that is not swept below 0, it becomes 0: a refused column is not mistaken for a swept one,
 * and the residual term of an exact fit is 0.
 *
 * @param packed  lower triangle by rows, m(m+1)/2 cells; a shorter vector is left alone
 * @param k       pivot, 1..m. A pivot of exactly 0 or NaN, or outside 1..m, changes nothing.
 */
void M_Sweep(matrix<double>* packed, int m, int k);

/**
 * Tolerance of column k of p given the swept columns: its pivot, which for correlations is 1 - R squared of
 * the column on those in the model.
 *
 * Two guards turn the answer down:
 *  - a pivot that is nothing but rounding counts as 0: 8 eps (1 + sum of |b|)^2 or less for correlations, b
 *    being the coefficients of k on the swept columns; for cells of other scales see
 *    korvenrg::linalg::PivotRounding;
 *  - when adding k would push a column j that is in the model to a tolerance below `tol`, that tolerance is
 *    given instead: 1 / (-packed(j, j) + packed(j, k)^2 / packed(k, k)).
 *
 * @param packed  lower triangle by rows of p columns and the response, (p+1)(p+2)/2 cells
 * @return the tolerance; callers accept the column when it is above `tol`. A swept column gives a value of 0
 * or less; k outside 1..p, or a vector that is too short, gives 0.
 */
double OLSCheckIfIn(matrix<double>* packed, int p, int k, double tol);
