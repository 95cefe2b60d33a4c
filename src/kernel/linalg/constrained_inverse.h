/** Inverses of symmetric matrices restricted to free parameters. */
#pragma once

#include "core/matrix.h"

/**
 * Inverse of a Hessian, covariance or cross-product matrix over its free parameters. Rows and columns of the
 * others are dropped before inverting and come back as 0.
 *
 * The free block may be positive definite, negative definite or indefinite. It is scaled to a diagonal of 1 in
 * absolute value; pivots at or below 8 n eps of the scaled block are refused in natural order, so that of an
 * aliased set the later parameters are left out (see korvenrg::linalg::InvertFreeBlock).
 *
 * Marks: a parameter is free where its cell of `keep` is 0, in the form with whole numbers as in that with
 * doubles, and held where it is not. A list that marks every parameter leaves nothing to restrict the inverse
 * to; it then restricts nothing and the whole matrix is inverted. The mixed model relies on it: its Hessian has
 * no held parameter, and it passes a list of ones. A caller whose model may have no free parameter at all asks
 * for that first: its inverse is 0.
 *
 * @param n        parameters
 * @param keep     n marks, or null for none held
 * @param A        n x n, symmetric; the mean of mirrored cells counts
 * @param inverse  n x n, supplied by the caller; may be A
 * @return 0, or -1 when a free pivot is refused (its row and column of `inverse` are 0, the others hold the
 * inverse of what is left, a g2 inverse) or a cell is not finite (`inverse` is 0)
 */
template <typename T>
int cCleanConstraintsAndInvert(int n, matrix<T>* keep, matrix<double>* A, matrix<double>* inverse);

extern template int cCleanConstraintsAndInvert(int, matrix<double>*, matrix<double>*, matrix<double>*);
extern template int cCleanConstraintsAndInvert(int, matrix<int>*, matrix<double>*, matrix<double>*);

/**
 * The same on a packed lower triangle by rows, with a full result.
 *
 * @param n        parameters
 * @param keep     as above
 * @param packed   n(n+1)/2 cells: a symmetric matrix, or with `root` true a lower triangular root C
 * @param root     -1: the result is the transposed inverse of the root, L = C^-T, an upper triangle. Then
 *                 L L' = (C C')^-1, and L' B L is the matrix C^-1 B C^-T of a canonical analysis
 * @param inverse  n x n; created when null, given the shape when of another one
 * @return 0, or -1 when a free pivot is refused, when a cell is not finite or when there are too few cells.
 * For a root a pivot is refused that is not above 0; its row and column are 0.
 */
int cCleanConstraintsAndInvertTriang(int n,
                                     matrix<double>* keep,
                                     matrix<double>* packed,
                                     short root,
                                     matrix<double>*& inverse);
