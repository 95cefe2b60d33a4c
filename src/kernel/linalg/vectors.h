/** Fills of vectors, multiples and sums of matrices. Elements outside a matrix read as its outOfRange value, and cells
 * that an output does not have are dropped. */
#pragma once

#include "core/matrix.h"
#include "kernel/linalg/matrix_sparse.h"
#include "kernel/linalg/outputs.h"

/** Sets the first n elements of a vector. T is double, int, short or wstring. */
template <typename T>
void SetVectorToValue(matrix<T>* vector, int n, const T& value)
{
    for (int i = 1; i <= n; ++i) {
        vector->vbset(i, value);
    }
}

/** Sets the first n flags to false. Returns n. */
int InitVectorToFalse(short* flags, int n);

/** Writes 1, 2, ..., n. */
void V_Set1toN(matrix<double>* vector, int n);

/** out = s A on the leading r x c cells. `out` may be A. */
void M_ScalarsA(matrix<double>* A, int r, int c, double s, matrix<double>* out);

/** A = s A on the leading r x c cells. */
void M_ScalarsA2(matrix<double>* A, int r, int c, double s);

/** C = s1 A + s2 B on r x c cells. @param C  created or resized to r x c; may be A or B */
void M_Sums1As2B(matrix<double>* A,
                 int r,
                 int c,
                 matrix<double>* B,
                 double s1,
                 double s2,
                 matrix<double>*& C);

/** Adds x to the leading r x c cells, in place. */
void M_APlusVal2(matrix<double>* A, int r, int c, double x);
