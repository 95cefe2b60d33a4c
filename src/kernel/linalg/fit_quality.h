/** Measures of how well predictions meet a response. */
#pragma once

#include "core/matrix.h"

/**
 * Weighted mean absolute percentage error: the weighted mean of |Y - YPred| / |Y|.
 *
 * Rows whose response is 0 have no percentage error and are left out, with their weight.
 *
 * @param Y      n x 1, response
 * @param YPred  n x 1, predictions
 * @param W      n x 1, weights
 * @param flag   1: in percent; otherwise as a fraction
 * @return the error, or the missing marker when no row has a weight and a response other than 0
 */
double MAPE(matrix<double>* Y, matrix<double>* YPred, int n, matrix<double>* W, int flag);
