/**
 * Matrix products. An operation works on the leading rows and columns that its sizes give; cells that an operand does
 * not have read as its outOfRange value. Names state the expression: Tr is transposition, Diag a vector as a diagonal.
 *
 * Outputs of the form matrix<double>*& are created or resized (outputs.h); the others are supplied by the caller, and
 * cells that they do not have are dropped. An output may be one of the factors. Functions that return an integer give
 * 0, or -1 on a negative size, and then leave the output alone.
 */
#pragma once

#include "core/matrix.h"
#include "kernel/linalg/outputs.h"

/** C = A B, A ra x ca, B ca x cb. */
int M_ProductAB(matrix<double>* A, int ra, int ca, matrix<double>* B, int cb, matrix<double>*& C);

/** C = A B', A ra x ca, B rb x ca. */
int M_ProductATrB(matrix<double>* A, int ra, int ca, matrix<double>* B, int rb, matrix<double>*& C);

/** C = A' B, A ra x ca, B ra x cb. */
int M_ProductTrAB(matrix<double>* A, int ra, int ca, matrix<double>* B, int cb, matrix<double>*& C);

/** C = A A', ra x ra, exactly symmetric. */
int M_ProductATrA(matrix<double>* A, int ra, int ca, matrix<double>*& C);

/** C = A' A, ca x ca, exactly symmetric. */
int M_ProductTrAA(matrix<double>* A, int ra, int ca, matrix<double>*& C);

/** D = A B C as (A B) C, A ra x ca, B ca x cb, C cb x cc, D ra x cc. */
int M_ProductABC(matrix<double>* A,
                 int ra,
                 int ca,
                 matrix<double>* B,
                 int cb,
                 matrix<double>* C,
                 int cc,
                 matrix<double>* D);

/** C = A B A', A ra x ca, B ca x ca, C ra x ra. @param flag  -1: B is symmetric, and C comes out exactly so */
int M_ProductABTrA(matrix<double>* A, int ra, int ca, matrix<double>* B, short flag, matrix<double>* C);

/** C = A' B A, A ra x ca, B ra x ra, C ca x ca. @param flag  -1: B is symmetric, and C comes out exactly so */
int M_ProductTrABA(matrix<double>* A, int ra, int ca, matrix<double>* B, short flag, matrix<double>* C);

/** C = A' diag(v) A, A rows x cols, v of rows cells, C cols x cols, exactly symmetric. Rows of weight 0 are not looked
 * at, whatever they hold. */
int M_ProductTrADiagVA(matrix<double>* A, int rows, int cols, matrix<double>* v, matrix<double>* C);

/** C = A diag(v) A', A rows x cols, v of cols cells, C rows x rows, exactly symmetric. */
int M_ProductADiagVTrA(matrix<double>* A, int rows, int cols, matrix<double>* v, matrix<double>* C);

/** C = diag(v) A, v of n cells, A n x cols. */
int M_ProductDiagVA(matrix<double>* v, int n, matrix<double>* A, int cols, matrix<double>* C);

/** out = B v, with B rows x cols, v of cols and out of rows cells. Cells of B that are 0 add nothing, even
 * where v has no finite value. Returns 0. */
int M_ProductBV(matrix<double>* B, int rows, int cols, matrix<double>* v, matrix<double>* out);

/** out = v' B, with B rows x cols, v of rows and out of cols cells. */
int M_ProductVB(matrix<double>* v, matrix<double>* B, int rows, int cols, matrix<double>* out);

/** out = B' v, with B rows x cols, v of rows and out of cols cells. */
int M_ProductTrBV(matrix<double>* B, int rows, int cols, matrix<double>* v, matrix<double>* out);

/** out = A' v, the product of a table and one column: M_ProductTrBV under the name of its family. */
int M_ProductTrADiagV(matrix<double>* A, int rows, int cols, matrix<double>* v, matrix<double>* out);

/** out(i) = a(i) b(i), n cells. */
void V_ProductV1V2(matrix<double>* a, int n, matrix<double>* b, matrix<double>* out);

/** a'b over n cells. */
double V_ProductTrV1V2(matrix<double>* a, int n, matrix<double>* b);

/** out = a b', n x n. */
void V_ProductV1TrV2(matrix<double>* a, int n, matrix<double>* b, matrix<double>* out);

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
