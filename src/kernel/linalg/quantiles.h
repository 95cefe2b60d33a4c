/**
 * Sample quantiles: the inverse of the empirical distribution function, with the mean of both ends where it
 * is flat.
 *
 * This is definition 2 of Hyndman & Fan 1996, "Sample quantiles in statistical packages": with the cells in
 * order and W the sum of their weights, the quantile at p is the first cell at which the running sum of
 * weights exceeds p W; where the running sum equals p W (to 1e-12 of W) it is the mean of that cell and the
 * next. At 1/2 it is the usual median. It depends on the empirical distribution alone: a weight of w is the
 * same as w rows, and a common factor of the weights has no influence.
 */
#pragma once

#include "core/matrix.h"

/** The quantile of the first n cells of x at p. p below 0 counts as 0 and above 1 as 1: the smallest and the
    largest cell. The missing marker when n is below 1 or p is NaN. A NaN cell counts as the largest value. */
double V_Quantile(matrix<double>* x, int n, double p);

/** The same under the weights W (n x 1; null for weights of 1). Rows whose weight is not above 0 are not
    looked at; when none is left the result is the missing marker. */
double V_QuantileW(matrix<double>* x, int n, matrix<double>* W, double p);
