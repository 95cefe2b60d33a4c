#include "kernel/linalg/inverse_products.h"

#include <limits>

#include "kernel/linalg/generalized_inverse.h"
#include "kernel/linalg/products.h"

int M_ProductTrAinvBA(matrix<double>* A, int rows, int cols, matrix<double>* B, short flag, matrix<double>* C)
{
    if (rows < 0 || cols < 0) return -1;
    matrix<double> inverse(rows, rows);
    int rank = 0;
    if (M_InvGeneralizedSym(B, rows, &inverse, 0.0, rank) != 0) return -1;
    return M_ProductTrABA(A, rows, cols, &inverse, flag, C);
}

double M_ProductTrVinvBV(matrix<double>* v, int n, matrix<double>* B)
{
    matrix<double> inverse(n, n);
    int rank = 0;
    if (M_InvGeneralizedSym(B, n, &inverse, 0.0, rank) != 0) return std::numeric_limits<double>::quiet_NaN();
    return M_ProductTrVBV(v, n, &inverse);
}
