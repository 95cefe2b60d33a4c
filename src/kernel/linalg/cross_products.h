/** Weighted means of columns as two doubles, and cross-products about given centres: the base of all moments. */
#pragma once

#include <vector>

#include "kernel/linalg/columns.h"

namespace korvenrg::linalg {

/** One centre per column, kept as an unevaluated sum of two doubles: value and correction. */
struct Centres
{
    std::vector<double> value;
    std::vector<double> correction;
};

/** Centres of 0, for moments about zero. */
Centres ZeroCentres(std::size_t count);

/**
 * Weighted mean of each column, to about twice the digits of a double where the data are near constant.
 *
 * A column is summed about its first value of non-zero weight (a shift that is exact when the values are
 * close), and the mean is shift + sum / total weight, kept as two doubles. A constant column has its constant
 * as the exact mean.
 *
 * @param columns  columns of n rows
 * @param weights  n weights, or null for weights of 1. Rows of weight 0 are not looked at, whatever they
 * hold.
 * @return the means; 0 for a column without a row of non-zero weight
 */
Centres WeightedMeans(Columns columns, int n, const double* weights);

/**
 * Cross-products about the centres: cell (i, j) = sum over rows of w (x_i - c_i)(x_j - c_j).
 *
 * Rows are taken in blocks that are centred once and stay in the cache; within a block the sum runs in eight
 * lanes. With corrected = true the mean of the centred columns, which is nothing but the rounding of the
 * centres, is taken out of the sums (Chan, Golub and LeVeque 1983, "Algorithms for computing the sample
 * variance", the corrected two-pass form).
 *
 * @param products  q x q, by columns, symmetric; overwritten
 */
void CrossProducts(Columns columns,
                   int n,
                   const double* weights,
                   const Centres& centres,
                   bool corrected,
                   double* products);

}  // namespace korvenrg::linalg
