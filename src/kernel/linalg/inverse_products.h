/** Products with the inverse of a symmetric matrix in the middle. */
#pragma once

#include "core/matrix.h"

/**
 * C = A' B^-1 A. Where B is singular its generalised inverse stands in (M_InvGeneralizedSym with a tolerance of n eps:
 * of a dependent set the later rows are left out).
 *
 * @param A     rows x cols
 * @param B     rows x rows, symmetric; the lower triangle is read
 * @param flag  -1: C comes out exactly symmetric
 * @param C     cols x cols, supplied by the caller; may be A or B
 * @return 0, or -1 when a cell of B is not finite or a size is negative; C then stays
 */
int M_ProductTrAinvBA(matrix<double>* A,
                      int rows,
                      int cols,
                      matrix<double>* B,
                      short flag,
                      matrix<double>* C);

/** v' B^-1 v, B n x n as above; NaN when a cell of B is not finite. */
double M_ProductTrVinvBV(matrix<double>* v, int n, matrix<double>* B);
