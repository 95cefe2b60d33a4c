/** Fills, copies and sums of vectors. */
#pragma once

#include "core/matrix.h"

/** Sets the first n flags to false. Returns n. */
int InitVectorToFalse(short* flags, int n);

/** Sum of the first n elements, in order, from 0. Elements outside the matrix read as its outOfRange value.
 */
template <typename T>
double V_Sum2(matrix<T>* vector, int n)
{
    double sum = 0.0;
    for (int i = 1; i <= n; ++i) {
        sum += vector->vbget(i);
    }
    return sum;
}

/** Copies rows r0..r1 and columns c0..c1 of `source` into `target` from (1, 1) on. */
template <typename T>
void M_CopyBlock(matrix<T>* source, int r0, int r1, int c0, int c1, matrix<T>* target)
{
    for (int j = c0; j <= c1; ++j) {
        for (int i = r0; i <= r1; ++i) {
            target->vbset(i - r0 + 1, j - c0 + 1, source->vbget(i, j));
        }
    }
}
