#include "kernel/linalg/vectors.h"

#include <algorithm>

#include "core/limits.h"

int InitVectorToFalse(short* flags, int n)
{
    std::fill_n(flags, std::max(n, 0), korvenrg::kFalse);
    return n;
}

void V_Set1toN(matrix<double>* vector, int n)
{
    for (int i = 1; i <= n; ++i) {
        vector->vbset(i, static_cast<double>(i));
    }
}

void M_ScalarsA(matrix<double>* A, int r, int c, double s, matrix<double>* out)
{
    for (int j = 1; j <= c; ++j) {
        for (int i = 1; i <= r; ++i) {
            out->vbset(i, j, s * A->vbget(i, j));
        }
    }
}

void M_ScalarsA2(matrix<double>* A, int r, int c, double s)
{
    M_ScalarsA(A, r, c, s, A);
}

void M_Sums1As2B(matrix<double>* A, int r, int c, matrix<double>* B, double s1, double s2, matrix<double>*& C)
{
    matrix<double> sum(r, c);
    for (int j = 1; j <= c; ++j) {
        for (int i = 1; i <= r; ++i) {
            sum.vbset(i, j, s1 * A->vbget(i, j) + s2 * B->vbget(i, j));
        }
    }
    korvenrg::linalg::EnsureShape(C, r, c);
    M_ScalarsA(&sum, r, c, 1.0, C);
}

void M_APlusVal2(matrix<double>* A, int r, int c, double x)
{
    for (int j = 1; j <= c; ++j) {
        for (int i = 1; i <= r; ++i) {
            A->vbset(i, j, A->vbget(i, j) + x);
        }
    }
}
