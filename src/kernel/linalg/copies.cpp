#include "kernel/linalg/copies.h"

#include <utility>

using korvenrg::linalg::EnsureShape;

void M_PasteBlock(matrix<double>* block, int rows, int cols, matrix<double>* dst, int r0, int c0)
{
    M_Duplicate(block, rows, cols, dst, r0, c0, 1, 1);
}

void CopyMatrixColToVector(matrix<double>* src, int rows, int col, matrix<double>*& dst)
{
    EnsureShape(dst, rows, 1);
    V_Duplicate(src, col, 1, rows, dst, 1, 1);
}

void CopyMatrixColToMatrixCol(matrix<double>* src, int rows, int col, matrix<double>* dst, int col2)
{
    V_Duplicate(src, col, 1, rows, dst, col2, 1);
}

void M_ExtractMatToMat(matrix<double>* src, int r0, int r1, int cols, matrix<double>* dst)
{
    M_Duplicate(src, r1 - r0 + 1, cols, dst, 1, 1, r0, 1);
}

void M_RemoveCol(matrix<double>* table, int rows, int cols, int col, matrix<double>* out)
{
    int target = 0;
    for (int j = 1; j <= cols; ++j) {
        if (j == col) continue;
        CopyMatrixColToMatrixCol(table, rows, j, out, ++target);
    }
}

void M_RemoveRow(matrix<double>* table, int rows, int cols, int row, matrix<double>* out)
{
    for (int j = 1; j <= cols; ++j) {
        int target = 0;
        for (int i = 1; i <= rows; ++i) {
            if (i != row) out->vbset(++target, j, table->vbget(i, j));
        }
    }
}

void M_RemoveCols2(matrix<double>*& table, int rows, int cols, int first, int last)
{
    first = std::max(first, 1);
    last = std::min(last, cols);
    if (first > last) return;
    matrix<double> kept(rows, cols - (last - first + 1));
    M_Duplicate(table, rows, first - 1, &kept, 1, 1, 1, 1);
    M_Duplicate(table, rows, cols - last, &kept, 1, first, 1, last + 1);
    EnsureShape(table, kept.rows, kept.cols);
    M_Duplicate(&kept, kept.rows, kept.cols, table, 1, 1, 1, 1);
}

void M_Transpose(matrix<double>* A, int rows, int cols, matrix<double>*& out)
{
    EnsureShape(out, cols, rows);
    // In squares that stay in the cache, since one of the two sides always runs across the columns.
    constexpr int kSquare = 16;
    for (int j0 = 1; j0 <= cols; j0 += kSquare) {
        for (int i0 = 1; i0 <= rows; i0 += kSquare) {
            for (int j = j0; j <= std::min(j0 + kSquare - 1, cols); ++j) {
                for (int i = i0; i <= std::min(i0 + kSquare - 1, rows); ++i) {
                    out->vbset(j, i, A->vbget(i, j));
                }
            }
        }
    }
}

void M_Transpose2(matrix<double>* A, int rows, int cols)
{
    if (rows == cols) {
        for (int j = 2; j <= cols; ++j) {
            for (int i = 1; i < j; ++i) {
                const double above = A->vbget(i, j);
                A->vbset(i, j, A->vbget(j, i));
                A->vbset(j, i, above);
            }
        }
        return;
    }
    if (rows != A->rows || cols != A->cols) return;
    matrix<double>* transposed = nullptr;
    M_Transpose(A, rows, cols, transposed);
    std::copy_n(transposed->data, A->total, A->data);
    std::swap(A->rows, A->cols);
    delete transposed;
}
