/** Correlations of vectors. */
#pragma once

#include "core/matrix.h"

/**
 * Pearson correlation of two vectors under weights.
 *
 * @param x, y    n x 1
 * @param mask    n flags, rows with a true one are left out; null leaves out none
 * @param W       n x 1, weights; null for weights of 1
 * @param pValue  receives the two-sided p-value of Student's t on (sum of weights - 2) degrees of freedom,
 * the missing marker when those are not positive; null when not wanted
 * @return the correlation; 0 when a vector is constant
 */
double V_PearsonRho(matrix<double>* x,
                    int n,
                    matrix<double>* y,
                    const short* mask,
                    matrix<double>* W,
                    double* pValue);
