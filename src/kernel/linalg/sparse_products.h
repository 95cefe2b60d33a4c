/**
 * Products and sums of sparse matrices.
 *
 * The forms mirror those on dense matrices (products.h, vectors.h): an operation works on the leading rows and columns
 * that its sizes give, and cells that an operand does not have are 0. Cost follows the non-zero cells that meet. Sparse
 * outputs of the form matrixSparse*& are created when null and always take the shape of the result; they may be one of
 * the operands. Functions that return an integer give 0, or -1 on a negative size, and then leave the output alone.
 *
 * Source: F. G. Gustavson (1978), Two fast algorithms for sparse matrices: multiplication and permuted transposition.
 */
#pragma once

#include "core/matrix.h"
#include "kernel/linalg/matrix_sparse.h"

/** C = A B. */
int M_ProductAB(matrixSparse* A, int ra, int ca, matrixSparse* B, int cb, matrixSparse*& C);

/** C = A B with a dense B and C. @param C  created or resized to ra x cb */
int M_ProductAB(matrixSparse* A, int ra, int ca, matrix<double>* B, int cb, matrix<double>*& C);

/** C = A B'. */
int M_ProductATrB(matrixSparse* A, int ra, int ca, matrixSparse* B, int rb, matrixSparse*& C);

/** C = A' B. */
int M_ProductTrAB(matrixSparse* A, int ra, int ca, matrixSparse* B, int cb, matrixSparse*& C);

/** C = A A', A' A. */
int M_ProductATrA(matrixSparse* A, int ra, int ca, matrixSparse*& C);
int M_ProductTrAA(matrixSparse* A, int ra, int ca, matrixSparse*& C);

/** D = A B C as (A B) C. */
int M_ProductABC(matrixSparse* A,
                 int ra,
                 int ca,
                 matrixSparse* B,
                 int cb,
                 matrixSparse* C,
                 int cc,
                 matrixSparse* D);

/** C = A B A', C = A' B A. @param flag  -1: B is symmetric, and the lower triangle of C is mirrored */
int M_ProductABTrA(matrixSparse* A, int ra, int ca, matrixSparse* B, short flag, matrixSparse* C);
int M_ProductTrABA(matrixSparse* A, int ra, int ca, matrixSparse* B, short flag, matrixSparse* C);

/** out = B v and out = B' v, with dense vectors. */
int M_ProductBV(matrixSparse* B, int rows, int cols, matrix<double>* v, matrix<double>* out);
int M_ProductTrBV(matrixSparse* B, int rows, int cols, matrix<double>* v, matrix<double>* out);

/** v' B v, B n x n. */
double M_ProductTrVBV(matrix<double>* v, int n, matrixSparse* B);

/** out = s A, in place for the second. */
void M_ScalarsA(matrixSparse* A, int r, int c, double s, matrixSparse* out);
void M_ScalarsA2(matrixSparse* A, int r, int c, double s);

/** C = s1 A + s2 B. */
void M_Sums1As2B(matrixSparse* A, int r, int c, matrixSparse* B, double s1, double s2, matrixSparse*& C);
