/** Generalised inverses that leave out what depends on the rest. */
#pragma once

#include "core/matrix.h"
#include "kernel/linalg/matrix_sparse.h"

/**
 * Generalised inverse G of a square matrix: A G A = A and G A G = G.
 *
 * A symmetric positive semidefinite matrix is swept in natural order (Goodnight 1979, "A tutorial on the SWEEP
 * operator"): a pivot at or below `tol` times its diagonal cell in A is refused, so that of a dependent set the
 * later rows are left out; their rows and columns of G are 0. G is symmetric. Mirrored cells may differ by the
 * rounding of a product L C L'; their mean counts.
 *
 * Any other matrix (a triangular root, a matrix of eigenvectors, an indefinite one) is reduced with complete
 * pivoting on columns scaled to a largest cell of 1; pivots above `tol` choose as many rows and columns, and
 * their block is inverted by elimination with row pivoting. Where all pivots are accepted G is the inverse.
 *
 * @param A     n x n; not changed
 * @param G     n x n, supplied by the caller; may be A
 * @param tol   share of a diagonal cell, or of the largest cell of a column; 0 or below: n eps
 * @param rank  receives the number of accepted pivots
 * @return 0; -1 when a cell is not finite: G is then 0 and the rank 0
 */
int M_InvGeneralized(matrix<double>* A, int n, matrix<double>* G, double tol, int& rank);

/** The same on sparse matrices, block by block of linked indices. G is made n x n and may not be A. */
int M_InvGeneralized(matrixSparse* A, int n, matrixSparse* G, double tol, int& rank);

/** The same for a symmetric matrix of which the lower triangle is read; G is symmetric even when A is
 * indefinite. */
int M_InvGeneralizedSym(matrix<double>* A, int n, matrix<double>* G, double tol, int& rank);
