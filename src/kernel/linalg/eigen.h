/** Eigenvalues and eigenvectors of symmetric matrices. */
#pragma once

#include <vector>

#include "core/matrix.h"
#include "kernel/linalg/dense_block.h"

namespace korvenrg::linalg {

/** Eigenvalues, and the unit vectors as columns in the same order. */
struct EigenPairs
{
    std::vector<double> values;
    DenseBlock vectors;
};

enum class EigenOrder
{
    kByValue,  ///< descending
    kBySize    ///< descending absolute values
};

/** M_Eigen on a block; on failure `pairs` is empty. */
int DecomposeSymmetric(DenseBlock block, EigenOrder order, EigenPairs& pairs);

}  // namespace korvenrg::linalg

/**
 * Eigen decomposition of a symmetric matrix, A = V diag(values) V'.
 *
 * Householder reduction to tridiagonal form and the implicit QR method with Wilkinson's shift (Golub and Van
 * Loan 2013, "Matrix Computations", 8.3; Parlett 1998, "The Symmetric Eigenvalue Problem"). The matrix is
 * scaled by a power of two beforehand, so that neither large nor small cells leave the range. The mean of
 * mirrored cells counts.
 *
 * Signs: in each vector the first coordinate whose size is the largest of the vector, to within one part in a
 * million, is positive; so vectors of equal coordinates do not flip on rounding. Vectors of equal values span
 * their space in an order and position that follow from the input alone.
 *
 * @param A        n x n; not changed
 * @param values   n x 1; created when null, given the shape when of another one
 * @param vectors  n x n, one unit vector a column; likewise. May not be the object A
 * @param sort     -1: values in descending order; 0: in descending order of their absolute value, which is the
 *                 same order for a covariance matrix
 * @return 0; -1 when n is below 1 or a cell is not finite, -2 when the iteration did not end. On failure the
 * outputs have their shape and are 0.
 */
int M_Eigen(matrix<double>* A, matrix<double>*& values, matrix<double>*& vectors, int n, short sort);

/**
 * Number of eigenvalues that are not near 0.
 *
 * @param values  n values in descending order
 * @param tol     values at or below it are dropped
 * @param level   above 0 and below 1: values at or below this share of the largest one are dropped too;
 *                otherwise not read
 * @return how many lead the list before the first dropped one; a NaN counts as dropped
 */
int FilterEigen(matrix<double>* values, int n, double tol, double level);
