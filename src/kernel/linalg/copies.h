/**
 * Copies of blocks, columns and rows between matrices, joins and transposes.
 *
 * Positions count from 1. A cell that a dense source does not have reads as its outOfRange value, one that a sparse
 * source does not have leaves the target alone; a cell that the target does not have is dropped. Source and target are
 * different objects unless an operation works in place. The sparse forms cost the non-zero cells of the columns.
 */
#pragma once

#include "core/matrix.h"
#include "kernel/linalg/matrix_sparse.h"
#include "kernel/linalg/outputs.h"

/** Copies rows x cols cells of `src` from (r1, c1) on to `dst` from (r0, c0) on. T is double or int. */
template <typename T>
void M_Duplicate(matrix<T>* src, int rows, int cols, matrix<T>* dst, int r0, int c0, int r1, int c1)
{
    for (int j = 0; j < cols; ++j) {
        for (int i = 0; i < rows; ++i) {
            dst->vbset(r0 + i, c0 + j, src->vbget(r1 + i, c1 + j));
        }
    }
}

/** The same on sparse matrices: a source cell of 0 removes what the target held. */
void M_Duplicate(matrixSparse* src, int rows, int cols, matrixSparse* dst, int r0, int c0, int r1, int c1);

/** Copies rows r0..r1 and columns c0..c1 of `src` into `dst` from (1, 1) on. T is double or int. */
template <typename T>
void M_CopyBlock(matrix<T>* src, int r0, int r1, int c0, int c1, matrix<T>* dst)
{
    M_Duplicate(src, r1 - r0 + 1, c1 - c0 + 1, dst, 1, 1, r0, c0);
}

/** The same into a sparse matrix, from a dense or a sparse one. */
void M_CopyBlock(matrix<double>* src, int r0, int r1, int c0, int c1, matrixSparse* dst);
void M_CopyBlock(matrixSparse* src, int r0, int r1, int c0, int c1, matrixSparse* dst);

/** Writes the leading rows x cols cells of `block` into `dst` from (r0, c0) on. */
void M_PasteBlock(matrix<double>* block, int rows, int cols, matrix<double>* dst, int r0, int c0);
void M_PasteBlock(matrixSparse* block, int rows, int cols, matrix<double>* dst, int r0, int c0);
void M_PasteBlock(matrixSparse* block, int rows, int cols, matrixSparse* dst, int r0, int c0);

/** Copies rows r0..r1 of column `col` of `src` into column `col2` of `dst` from row r2 on, as doubles. T is double or
 * int. */
template <typename T>
void V_Duplicate(matrix<T>* src, int col, int r0, int r1, matrix<double>* dst, int col2, int r2)
{
    for (int i = r0; i <= r1; ++i) {
        dst->vbset(r2 + i - r0, col2, static_cast<double>(src->vbget(i, col)));
    }
}

/** Copies the first n elements, by linear index. */
template <typename T>
void V_Duplicate2(matrix<T>* src, int n, matrix<T>* dst)
{
    for (int i = 1; i <= n; ++i) {
        dst->vbset(i, src->vbget(i));
    }
}

/** Column `col` of `src` as a vector. @param dst  created or resized to rows x 1 */
void CopyMatrixColToVector(matrix<double>* src, int rows, int col, matrix<double>*& dst);

/** Copies the first `rows` cells of column `col` of `src` into column `col2` of `dst`. */
void CopyMatrixColToMatrixCol(matrix<double>* src, int rows, int col, matrix<double>* dst, int col2);

/** Copies rows r0..r1 and the first `cols` columns of `src` into `dst` from (1, 1) on; rows may be moved up within one
 * matrix (dst = src). */
void M_ExtractMatToMat(matrix<double>* src, int r0, int r1, int cols, matrix<double>* dst);

/** Joins A (ra x ca) and B (rb x cb) side by side. Where one has fewer rows its missing cells are 0. T is double or
 * wstring. @param out  created or resized to max(ra, rb) x (ca + cb); neither A nor B */
template <typename T>
void HMergeTables(matrix<T>* A, int ra, int ca, matrix<T>* B, int rb, int cb, matrix<T>*& out)
{
    korvenrg::linalg::EnsureShape(out, std::max(ra, rb), ca + cb);
    std::fill_n(out->data, out->total, T{});
    for (int j = 1; j <= ca; ++j) {
        for (int i = 1; i <= ra; ++i) {
            out->vbset(i, j, A->vbget(i, j));
        }
    }
    for (int j = 1; j <= cb; ++j) {
        for (int i = 1; i <= rb; ++i) {
            out->vbset(i, ca + j, B->vbget(i, j));
        }
    }
}

/** Puts A (ra x ca) above B (rb x cb). Where one has fewer columns its missing cells are 0. T is double or wstring.
 * @param out  created or resized to (ra + rb) x max(ca, cb); neither A nor B */
template <typename T>
void VMergeTables(matrix<T>* A, int ra, int ca, matrix<T>* B, int rb, int cb, matrix<T>*& out)
{
    korvenrg::linalg::EnsureShape(out, ra + rb, std::max(ca, cb));
    std::fill_n(out->data, out->total, T{});
    for (int j = 1; j <= ca; ++j) {
        for (int i = 1; i <= ra; ++i) {
            out->vbset(i, j, A->vbget(i, j));
        }
    }
    for (int j = 1; j <= cb; ++j) {
        for (int i = 1; i <= rb; ++i) {
            out->vbset(ra + i, j, B->vbget(i, j));
        }
    }
}

/** `table` (rows x cols) without column `col`, into `out` (rows x (cols - 1), or `table` itself); a `col` outside
 * copies all columns. */
void M_RemoveCol(matrix<double>* table, int rows, int cols, int col, matrix<double>* out);

/** `table` (rows x cols) without row `row`, into `out` ((rows - 1) x cols); a `row` outside copies all rows. */
void M_RemoveRow(matrix<double>* table, int rows, int cols, int row, matrix<double>* out);

/** Drops columns first..last of `table` (rows x cols), in place: the columns behind move up and the matrix shrinks to
 * rows x (cols - dropped). One that views the caller's memory keeps its shape and its last columns. */
void M_RemoveCols2(matrix<double>*& table, int rows, int cols, int first, int last);

/** A' of A (rows x cols). @param out  created or resized to cols x rows; not A */
void M_Transpose(matrix<double>* A, int rows, int cols, matrix<double>*& out);
void M_Transpose(matrixSparse* A, int rows, int cols, matrixSparse*& out);

/** Transposes in place. A square matrix keeps its block; another shape is rearranged and the matrix becomes cols x
 * rows. Works when rows and cols are the matrix's own; a leading square block may be smaller. */
void M_Transpose2(matrix<double>* A, int rows, int cols);
