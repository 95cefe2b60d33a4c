/**
 * Largest and smallest elements of a vector, and where they stand.
 *
 * Elements outside the matrix read as its outOfRange value. `mask` is n flags or null: elements whose flag is not 0 are
 * left out. NaN is left out. Without an element the largest is kMissing and the smallest kLargest (for int 0), and the
 * position is 0.
 */
#pragma once

#include "core/matrix.h"

/** Largest of the first n elements. T is double or int. */
template <typename T>
double V_Max(matrix<T>* x, int n, short* mask);

/** Smallest of the first n elements. T is double or int. */
template <typename T>
double V_Min(matrix<T>* x, int n, short* mask);

/** The same without a mask. */
double V_Max2(matrix<double>* x, int n);
int V_Max2(matrix<int>* x, int n);
double V_Min2(matrix<double>* x, int n);
int V_Min2(matrix<int>* x, int n);

/** Largest element and its position from 1; the first of equal ones. */
double V_MaxAndMaxPos(matrix<double>* x, int n, int* position);

/** Smallest element and its position from 1; the first of equal ones. */
double V_MinAndMinPos(matrix<double>* x, int n, int* position);

/** Smallest and largest cell of each of the leading `cols` columns. @param oMin, oMax  cols cells each, supplied by the
 * caller. @param flag  -1: cells at or below the missing marker are left out */
void M_MinMax(matrix<double>* X,
              int rows,
              int cols,
              matrix<double>* oMin,
              matrix<double>* oMax,
              short* mask,
              short flag);
