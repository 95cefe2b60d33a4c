/** Products of columns with vectors over the rows, and weighted cross-products: the sums behind a score and an
 * information matrix. Blocks of 256 rows, eight lanes, one order of summation on every processor. */
#pragma once

#include "kernel/linalg/columns.h"

namespace korvenrg::linalg {

/** out(j) = sum over n rows of x_j(r) v(r). */
void ColumnProducts(Columns columns, int n, const double* v, double* out);

/** What WeightedProducts writes, for q columns. */
struct WeightedSums
{
    double* slopes;     ///< q: sum of u x_j; null: not wanted
    double* constants;  ///< q: sum of v x_j
    double* products;   ///< q x q by columns, symmetric: sum of v x_i x_j
};

/** All three in one pass over the columns. @param u  n cells, read when slopes are wanted. @param v  n weights of any
 * sign */
void WeightedProducts(Columns columns, int n, const double* u, const double* v, const WeightedSums& sums);

}  // namespace korvenrg::linalg
