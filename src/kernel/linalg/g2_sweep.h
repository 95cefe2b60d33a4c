/** Sweeps on a full square matrix that clear the pivots they cannot use. */
#pragma once

#include "core/matrix.h"

/**
 * One g2 sweep step on a full n x n matrix, pivot k, in place (Goodnight 1979, "A tutorial on the SWEEP
 * operator").
 *
 * After sweeping a set S of a symmetric matrix A: cells of S hold A_SS^-1, cell (i, j) with i inside and j
 * outside S the regression coefficient of j on i, cell (j, i) its negative, other cells the residual
 * cross-products. A pivot that is below `tol`, negative or NaN is refused: its row and column become 0, those
 * of swept pivots included, which makes the swept block a generalised inverse that satisfies A G A = A and G A
 * G = G. Sweeping an accepted pivot twice restores the matrix.
 *
 * @param m    n x n by columns
 * @param k    pivot, 1..n; another k changes nothing, nor does a matrix that has fewer than n x n cells
 * @param tol  smallest pivot that is swept, in the units of the matrix
 */
void G2SweepStep(matrix<double>* m, int n, int k, double tol);

/** The same on n x n cells by columns. */
void G2SweepStep(double* m, int n, int k, double tol);

/**
 * g2 inverse of A over selected pivots: A is copied to G and the pivots whose cell in `sel` is 1 are swept in
 * order. Rows and columns of refused pivots are 0 in G. A pivot that is not selected stays unswept: the cells
 * of its column in the rows of the selected ones hold the solution of the normal equations.
 *
 * @param A     n x n, symmetric; not changed
 * @param sel   n marks
 * @param tol   smallest pivot that is swept: in the units of A, or with `flag` true as a share of the pivot's
 *              own diagonal cell in A
 * @param G     n x n, supplied by the caller
 * @param flag  -1: `tol` is relative
 */
void M_InverseG2Selective(matrix<double>* A,
                          int n,
                          matrix<int>* sel,
                          double tol,
                          matrix<double>* G,
                          short flag);
