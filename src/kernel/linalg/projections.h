/** Square root of a matrix, and its projection on the positive semidefinite ones. */
#pragma once

#include "core/matrix.h"
#include "kernel/linalg/matrix_sparse.h"

/**
 * Symmetric square root of a symmetric positive semidefinite matrix: S S = A, from the eigenvalues of each block
 * of linked indices (Higham 2008, "Functions of Matrices", chapter 6). The mean of mirrored cells counts.
 *
 * @param root  n x n, supplied by the caller
 * @return 0; -1 when a cell is not finite (the root is 0), or when an eigenvalue of a block is below -8 n eps
 * times the largest one, so that A has no such root: the root is then that of the nearest semidefinite matrix
 */
int M_SquareRoot(matrixSparse* A, int n, matrix<double>* root);

/**
 * The positive semidefinite matrix nearest to a symmetric one in the sum of squared cells: negative eigenvalues
 * become 0 (Higham 1988, "Computing a nearest symmetric positive semidefinite matrix"). The mean of mirrored
 * cells counts; a matrix without negative eigenvalues is copied as it is, mirrored means apart.
 *
 * @param A           n x n; not changed
 * @param projection  n x n; created when null, given the shape when of another one; a copy of A when a cell is
 *                    not finite. May be A.
 */
void M_SProject(matrix<double>* A, int n, matrix<double>*& projection);
