/**
 * Products with a block-diagonal matrix, given as the blocks on its diagonal.
 *
 * Blocks follow each other down the diagonal in the order of the container and need not be square: block b takes as
 * many rows of the right operand as it has columns, and gives as many rows as it has. The cost is that of the blocks'
 * non-zero cells times the columns (rows) of the other operand. Cells that a dense operand does not have read as its
 * outOfRange value; a null block counts as 0 x 0. Outputs are supplied by the caller, and a dense output may not be the
 * operand.
 */
#pragma once

#include "core/matrix.h"
#include "kernel/linalg/matrix_sparse.h"

/** out = B A, with B the block-diagonal matrix and A of `cols` columns. */
void M_BlockProductBckA(matrix3D<matrixSparse>* blocks, matrix<double>* A, int cols, matrix<double>* out);

/** The same on sparse operands; `out` takes the shape of the result. */
void M_BlockProductBckA(matrix3D<matrixSparse>* blocks, matrixSparse* A, int cols, matrixSparse* out);

/** out = B v. */
void M_BlockProductBckVect(matrix3D<matrixSparse>* blocks, matrix<double>* v, matrix<double>* out);

/** out = A B, with A of `rows` rows. */
void M_BlockProductABck(matrix<double>* A, int rows, matrix3D<matrixSparse>* blocks, matrix<double>* out);

/** The same on sparse operands; `out` takes the shape of the result. */
void M_BlockProductABck(matrixSparse* A, int rows, matrix3D<matrixSparse>* blocks, matrixSparse* out);
