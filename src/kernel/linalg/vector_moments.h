/**
 * Sums and moments of one vector.
 *
 * Sums run in the order of the elements where nothing else is said; means and variances are centred on a mean kept as
 * two doubles (cross_products.h), so near-constant data keep their digits. `mask` is n flags or null: rows whose flag
 * is not 0 are left out. W is n weights or null, which counts each row once; a row of weight 0 is not looked at. The
 * divisor of a sample variance is the sum of weights minus 1, of a population variance the sum of weights. A vector
 * without a row of non-zero weight has mean 0; a constant vector has variance 0 whatever its divisor. Elements outside
 * the matrix read as its outOfRange value.
 */
#pragma once

#include "core/matrix.h"

/** Sum of the first n elements, in order, from 0. */
template <typename T>
double V_Sum2(matrix<T>* vector, int n)
{
    double sum = 0.0;
    for (int i = 1; i <= n; ++i) {
        sum += vector->vbget(i);
    }
    return sum;
}

/** The same without the rows that the mask flags. */
double V_Sum(matrix<double>* x, int n, short* mask);

/** Sum of the squares. */
double V_SumSq(matrix<double>* x, int n);

/** Weighted mean. */
double V_Mean(matrix<double>* x, int n, short* mask, matrix<double>* W);

/** Plain mean. */
double V_Mean2(matrix<double>* x, int n);

/** Weighted variance about the mean. @param sample  -1: sample variance; otherwise population variance */
double V_Var(matrix<double>* x, int n, short* mask, matrix<double>* W, short sample);

/** Sample variance; the second form with weights. */
double V_Var2(matrix<double>* x, int n);
double V_Var2(matrix<double>* x, int n, matrix<double>* W);

/** Weighted mean and variance. @param weighted  -1: W is read; otherwise each row counts once. @param sample  as in
 * V_Var */
void V_MeanVar(matrix<double>* x,
               int n,
               double& mean,
               double& variance,
               short* mask,
               matrix<double>* W,
               short weighted,
               short sample);

/** Weighted mean and standard deviation, flags as in V_MeanVar. */
void V_MeanStdev(matrix<double>* x,
                 int n,
                 double& mean,
                 double& standardDeviation,
                 short* mask,
                 matrix<double>* W,
                 short weighted,
                 short sample);

/** Plain mean and sample standard deviation. */
void V_MeanStdev2(matrix<double>* x, int n, double& mean, double& standardDeviation);

/** Weighted mean and variance without mask, flags as in V_MeanVar. */
void V_MeanVarW2(matrix<double>* x,
                 int n,
                 matrix<double>* W,
                 double* mean,
                 double* variance,
                 short weighted,
                 short sample);

/** Weighted variance of the cells that lie above 0 in `condition` and have a positive weight. @param condition  n
 * cells, or null for x's weights alone. @param sample  as in V_Var */
double V_VarIfSup0W(matrix<double>* x, int n, matrix<double>* W, matrix<double>* condition, short sample);

/** Sum of squares of Y about its weighted mean: the sum of W (Y - mean)^2. @param mean  receives the weighted mean, or
 * null */
double GetSSE(matrix<double>* Y, int n, matrix<double>* W, double* mean);
