/** Symmetric matrices brought to tridiagonal form, and tridiagonal ones to their eigenvalues. */
#pragma once

#include <vector>

#include "kernel/linalg/dense_block.h"
#include "kernel/linalg/row_panels.h"

namespace korvenrg::linalg {

/** The tridiagonal matrix T = Q' A Q. */
struct Tridiagonal
{
    std::vector<double> diagonal;     ///< n cells
    std::vector<double> offDiagonal;  ///< n - 1 cells
};

/**
 * Reduces a symmetric matrix by Householder reflections (Golub and Van Loan 2013, "Matrix Computations",
 * 8.3.1). The rank-two change of a step and the product that the next step needs run over the matrix together,
 * so that it is read and written once a step.
 *
 * @param A        n x n, symmetric, no larger than about 1 in its cells
 * @param rotated  n columns of n or more rows, out: the matrix Q
 */
Tridiagonal ReduceToTridiagonal(const DenseBlock& A, RowPanels& rotated);

/**
 * Diagonalises T by the implicit QR method with Wilkinson's shift (Wilkinson 1968, "Global convergence of
 * tridiagonal QR algorithm with origin shifts"; Golub and Van Loan 2013, 8.3). Each block is chased from its
 * larger to its smaller end, so that graded matrices keep their small values. Rotations are collected
 * over several chases and applied to the columns of `rotated` together.
 *
 * @param tridiagonal  in: T; out: its diagonal holds the eigenvalues, in no order
 * @param rotated      in: any matrix Q of n columns; out: Q times the eigenvectors of T
 * @return false when it took more than 60 n chases; about 2 n are usual
 */
bool DiagonalizeTridiagonal(Tridiagonal& tridiagonal, RowPanels& rotated);

}  // namespace korvenrg::linalg
