/**
 * Correlations of vectors and of tables, with p-values.
 *
 * Common to all. Rows with a mask flag other than 0 and rows whose weight is not above 0 are left out, whatever they hold. A
 * null mask leaves out none, null weights are weights of 1. The p-value is two-sided, of Student's
 * t = r sqrt(df / (1 - r^2)) on df = (sum of weights - 2) degrees of freedom; the missing marker when those are not
 * positive. A vector without spread gives a correlation of 0; a NaN in a row that counts gives NaN.
 *
 * Rank correlations (C. Spearman 1904, The proof and measurement of association between two things) are Pearson's of
 * the ranks among the rows that count. Weights act as frequencies: a group of tied values has the mid-rank that its
 * replicated rows would have, (weight below the group) + (weight of the group + 1) / 2. For them p is the usual
 * approximation, not the exact permutation law.
 */
#pragma once

#include "core/matrix.h"

/**
 * Pearson correlation of two vectors.
 *
 * @param x, y    n x 1
 * @param mask    n flags
 * @param W       n x 1, weights
 * @param pValue  receives the p-value; null when not wanted
 * @return the correlation
 */
double V_PearsonRho(matrix<double>* x,
                    int n,
                    matrix<double>* y,
                    const short* mask,
                    matrix<double>* W,
                    double* pValue);

/** Spearman rank correlation of two vectors; parameters as V_PearsonRho. */
double V_SpearmanRho(matrix<double>* x,
                     int n,
                     matrix<double>* y,
                     const short* mask,
                     matrix<double>* W,
                     double* pValue);

/**
 * Pearson correlations of every column of one table with every column of another.
 *
 * @param X        n x p
 * @param Y        n x q
 * @param mask     n flags
 * @param W        n x 1, weights
 * @param rho      out, p x q: column i of X with column j of Y. Created with new when null, resized when its size
 *                 differs, else overwritten
 * @param pValues  out, p x q, likewise
 */
void M_PearsonRhoMatMat(matrix<double>* X,
                        int n,
                        int p,
                        matrix<double>* Y,
                        int q,
                        const short* mask,
                        matrix<double>* W,
                        matrix<double>*& rho,
                        matrix<double>*& pValues);

/** Spearman rank correlations of all pairs of columns; parameters as M_PearsonRhoMatMat. Each column is ranked
    once. */
void M_SpearmanRhoMatMat(matrix<double>* X,
                         int n,
                         int p,
                         matrix<double>* Y,
                         int q,
                         const short* mask,
                         matrix<double>* W,
                         matrix<double>*& rho,
                         matrix<double>*& pValues);
