/** How much of a pivot may be nothing but rounding. */
#pragma once

#include <cstddef>

namespace korvenrg::linalg {

/**
 * Size up to which the pivot of column k may be nothing but rounding of the sweeps before it.
 *
 * With b the coefficients of k on the swept columns the pivot is (b, -1) A (b, -1)'. Rounding moves a cell
 * (i, j) of A by some eps sqrt(A_ii A_jj), and so the pivot by up to 8 eps (sqrt(A_kk) + sum of |b_j|
 * sqrt(A_jj))^2.
 *
 * The diagonal cells of A are 1 for correlations. Otherwise, as for moments about zero of columns with a large
 * mean, they are found again from the swept vector, which holds -A_SS^-1: with its Cholesky root C, A_jj is the
 * squared length of C^-1 e_j, and A_kk is the pivot plus the squared length of C^-1 b. This costs as much as an
 * inverse, so it is done only where it can matter: for pivots not above 8E10 eps (1 + sum of |b|)^2, that is
 * for means up to 100,000 standard deviations. A cell found between 1/2 and 2 counts as 1, so that correlations
 * are judged as before, whatever the rounding of their inverse.
 *
 * @param packed  lower triangle by rows; a negative diagonal cell marks a swept column
 * @param p       leading columns that may be swept
 * @param k       column, from 0, not swept and of positive pivot
 * @return the size; that of correlations when the inverse has lost its definiteness, so that no scale can be told
 */
double PivotRounding(const double* packed, std::size_t p, std::size_t k);

}  // namespace korvenrg::linalg
