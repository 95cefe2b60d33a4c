/**
 * Means, variances, covariances and correlations of the columns of a table.
 *
 * The leading n rows and p columns count; cells that the table does not have read as its outOfRange value. Deviations
 * are taken from means kept as two doubles, in two passes (moments.h, cross_products.h), so that columns whose leading
 * digits are constant keep every digit of their spread. A constant column has variance 0 and correlations of 0, with
 * itself too.
 *
 * Parameters that the operations share:
 *   mask      n flags or null; rows whose flag is not 0 are left out
 *   W         n weights or null, which counts each row once; a row of weight 0 is not looked at
 *   weighted  -1: W is read; otherwise each row counts once
 *   sample    -1: divisor sum of weights - 1; otherwise the sum of weights
 *   outputs   matrix<double>*& are created or resized: p x 1 for means, deviations and variances, p x p for matrices
 */
#pragma once

#include "core/matrix.h"
#include "kernel/linalg/outputs.h"

/** Means, standard deviations and variances. */
void M_MeanStDevVar(matrix<double>* X,
                    int n,
                    int p,
                    matrix<double>*& mean,
                    matrix<double>*& sd,
                    matrix<double>*& variance,
                    short* mask,
                    matrix<double>* W,
                    short weighted,
                    short sample);

/** Means and standard deviations. @param aboutZero  -1: deviations are taken from 0, the mean stays the mean */
void M_MeanStDev(matrix<double>* X,
                 int n,
                 int p,
                 matrix<double>*& mean,
                 matrix<double>*& sd,
                 short* mask,
                 matrix<double>* W,
                 short weighted,
                 short sample,
                 short aboutZero);

/** Weighted means. */
void M_Mean2(matrix<double>* X, int n, int p, matrix<double>* W, matrix<double>*& mean);

/** Plain means. */
void M_Mean3(matrix<double>* X, int n, int p, matrix<double>*& mean);

/** Plain sums, in the order of the rows. */
void M_SumByCols(matrix<double>* X, int n, int p, matrix<double>*& sums);

/**
 * The matrix R with means, standard deviations and variances.
 *
 * @param R            correlations when corr is -1, covariances otherwise
 * @param aboutZero    -1: R holds mean products about 0, for correlations divided by the deviations about the means (0
 *                     where the product of two deviations is at most eps)
 * @param standardise  -1: X is centred and scaled in place, by the same means and deviations; a column without spread
 *                     is only centred, and rows that are left out or of weight 0 too
 * @param withMoments  -1: mean, sd and variance are written; otherwise they stay
 */
void M_CovCorrAndMeanStDevVar(matrix<double>* X,
                              int n,
                              int p,
                              matrix<double>*& R,
                              matrix<double>*& mean,
                              matrix<double>*& sd,
                              matrix<double>*& variance,
                              short corr,
                              short* mask,
                              matrix<double>* W,
                              short weighted,
                              short sample,
                              short aboutZero,
                              short standardise,
                              short withMoments);

/** The matrix R alone, parameters as in M_CovCorrAndMeanStDevVar. Returns 0. */
int M_CovCorr(matrix<double>*& X,
              int n,
              int p,
              matrix<double>*& R,
              short corr,
              short* mask,
              matrix<double>* W,
              short weighted,
              short sample,
              short aboutZero);

/** Correlations from the n x n covariances C. Rows and columns of a variance of 0 or less become 0. @param R  n x n,
 * supplied by the caller, may be C. @param flag  -1: the diagonal is 1 even there */
void M_CorrMatFromCovMat(matrix<double>* C, int n, matrix<double>* R, short flag);

/** Correlations between the p columns of A and the q columns of B. @param R  created or resized to p x q */
void M_CorrMatMat(matrix<double>* A,
                  int n,
                  int p,
                  matrix<double>* B,
                  int q,
                  short* mask,
                  matrix<double>* W,
                  matrix<double>*& R);

/** Centres and scales the columns in place by plain moments; a column of zero variance stays centred. @param flag  -1:
 * divisor n - 1; otherwise n */
void M_Standardize2(matrix<double>* X, int n, int p, short flag);
