/** Matrix products. An operation works on the leading rows and columns that its sizes give. */
#pragma once

#include "core/matrix.h"

/** out = B v, with B rows x cols, v of cols and out of rows cells. Cells of B that are 0 add nothing, even
 * where v has no finite value. Returns 0. */
int M_ProductBV(matrix<double>* B, int rows, int cols, matrix<double>* v, matrix<double>* out);

/** v' B v, with B n x n. */
double M_ProductTrVBV(matrix<double>* v, int n, matrix<double>* B);

/**
 * Covariance after a linear map: outMat = A V A', outDiag its diagonal.
 *
 * Cells of A that are 0 add nothing, so a map that is nearly the identity costs little more than copying V.
 *
 * @param A        rows x cols
 * @param V        cols x cols, symmetric
 * @param outDiag  rows cells, supplied by the caller
 * @param outMat   rows x rows, supplied by the caller
 */
void ComputeNewVar(matrix<double>* A,
                   int rows,
                   int cols,
                   matrix<double>* V,
                   matrix<double>* outDiag,
                   matrix<double>* outMat);

/**
 * Interaction product of two sets of columns: column (a, b) = column a of A times column b of B, cell by
 * cell, at position (a - 1) * colsB + b, so that A's columns change slowest. Written back into A.
 *
 * @param A         rows x capacity; its first *colsA columns on entry
 * @param colsA     number of columns of A; becomes *colsA * colsB
 * @param B         rows x colsB
 * @param capacity  columns that A can hold; when the product needs more nothing is done
 * @param work      rows x 1, scratch
 * @param states    column states: on entry those of A's columns, then those of B's; on exit those of the
 * product. A product of a dropped column is dropped: it takes A's state when that is not 0, otherwise B's. It
 * has at least max(*colsA + colsB, *colsA * colsB) cells.
 */
void M_ProductDesignAB2(matrix<double>* A,
                        int rows,
                        int* colsA,
                        matrix<double>* B,
                        int colsB,
                        int capacity,
                        matrix<double>* work,
                        matrix<int>* states);
