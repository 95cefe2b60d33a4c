/** Cholesky factors A = L L', L lower triangular. */
#pragma once

#include "core/matrix.h"
#include "kernel/linalg/matrix_sparse.h"

/**
 * Cholesky factor of a symmetric positive definite matrix (Golub and Van Loan 2013, "Matrix Computations",
 * 4.2). The lower triangle of A is read. A pivot at or below n eps times its diagonal cell in A counts as not
 * positive: nothing but rounding is left of it.
 *
 * @param A  n x n; not changed
 * @param L  n x n, lower, 0 above the diagonal; created when null, given the shape when of another one
 * @return 0; -k when pivot k is the first that is not positive (or not a number): L is then 0 from column k on
 */
int M_CholDecomp(matrix<double>* A, int n, matrix<double>*& L);

/** The same on sparse matrices, block by block of linked indices. L is made n x n; on failure the columns of
 * the block that failed are 0 from the failing pivot on, and the result is minus the first failing column. */
int M_CholDecomp(matrixSparse* A, int n, matrixSparse* L);

/**
 * Cholesky factor without the rows and columns that are marked or have no pivot of their own: those are 0 in
 * L. The factor is packed as a lower triangle by rows, the form that cCleanConstraintsAndInvertTriang takes.
 *
 * @param A     n x n, symmetric; the lower triangle is read
 * @param keep  n marks: 0 takes part, anything else is left out; null leaves none out
 * @param L     n(n+1)/2 x 1, the lower triangle by rows; created when null, given the shape when of another one
 * @return 0, also when pivots were skipped: a skipped pivot is at most rounding in size, n eps times its diagonal cell in
 * A or, where more was cancelled, 8 eps (sum of |b_j| sqrt(A_jj))^2 with b the coefficients of the row on those before
 * it and 1 for itself; -k when pivot k is below that (or not a number), which no covariance matrix has: L is then 0
 * from column k on
 */
int M_CholDecompCleaned(matrix<double>* A, int n, matrix<double>* keep, matrix<double>*& L);

/**
 * Cholesky factor of a symmetric positive semidefinite matrix with diagonal pivoting, the largest pivot first
 * (Higham 2002, "Accuracy and Stability of Numerical Algorithms", 10.3).
 *
 * With P A P' = L L', pivots below n eps times the largest diagonal cell end the factorisation; the columns
 * from there on are 0.
 *
 * @param A        n x n, symmetric; the lower triangle is read
 * @param L        made n x n. `restore` true: P' L P, with rows and columns in their first order; it is no
 *                 triangle, but L L' = A. `restore` false: the lower triangle L of the pivoted matrix
 * @param pivots   n cells: the row of A, from 1, that stands at each place of the pivoted order; null: not
 *                 wanted
 * @param restore  -1 true
 * @return 0; -1 when what is left at the end is not rounding, so that A is not semidefinite
 */
int M_CholDecompPrinc(matrixSparse* A, int n, matrixSparse* L, matrix<double>* pivots, short restore);
