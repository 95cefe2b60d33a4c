#include <algorithm>
#include <utility>
#include <vector>

#include "kernel/linalg/copies.h"

namespace {

using Cell = matrixSparse::Cell;
using Column = matrixSparse::Column;

// A stretch of rows, from 0, `end` excluded.
struct RowRange
{
    int begin;
    int end;

    bool Holds(int row) const
    {
        return row >= begin && row < end;
    }
};

// The target's column with its rows of `range` replaced by `cells`, which lie in it.
Column WithRowsReplaced(const Column& column, RowRange range, const Column& cells)
{
    Column merged;
    const auto isBefore = [](const Cell& cell, int row) { return cell.row < row; };
    const auto first = std::lower_bound(column.begin(), column.end(), range.begin, isBefore);
    const auto last = std::lower_bound(first, column.end(), range.end, isBefore);
    merged.insert(merged.end(), column.begin(), first);
    merged.insert(merged.end(), cells.begin(), cells.end());
    merged.insert(merged.end(), last, column.end());
    return merged;
}

// Rows of a block of `rows` rows that both sides have: `first` is its first row on the side that has `available`.
int CountWithin(int rows, int first, int available)
{
    return std::max(0, std::min(rows, available - first));
}

// The non-zero cells of a dense column from `first` on, numbered from `target`.
Column NonZerosOf(const matrix<double>& dense, int j, int first, int rows, int target)
{
    Column cells;
    for (int i = 0; i < rows; ++i) {
        const double value = dense.getElement(first + i, j);
        if (value != 0.0) cells.push_back({target + i, value});
    }
    return cells;
}

}  // namespace

void M_Duplicate(matrixSparse* src, int rows, int cols, matrixSparse* dst, int r0, int c0, int r1, int c1)
{
    if (r0 < 1 || c0 < 1 || r1 < 1 || c1 < 1) return;
    const int height =
        std::min(CountWithin(rows, r1 - 1, src->Rows()), CountWithin(rows, r0 - 1, dst->Rows()));
    const int width =
        std::min(CountWithin(cols, c1 - 1, src->Cols()), CountWithin(cols, c0 - 1, dst->Cols()));
    const RowRange source{r1 - 1, r1 - 1 + height};
    const RowRange target{r0 - 1, r0 - 1 + height};
    for (int j = 0; j < width; ++j) {
        Column cells;
        for (const Cell& cell : src->CellsOf(c1 - 1 + j)) {
            if (source.Holds(cell.row)) cells.push_back({cell.row - source.begin + target.begin, cell.value});
        }
        const int column = c0 - 1 + j;
        dst->PutColumn(column, WithRowsReplaced(dst->CellsOf(column), target, cells));
    }
}

void M_CopyBlock(matrix<double>* src, int r0, int r1, int c0, int c1, matrixSparse* dst)
{
    const int height = CountWithin(r1 - r0 + 1, 0, dst->Rows());
    const int width = CountWithin(c1 - c0 + 1, 0, dst->Cols());
    for (int j = 0; j < width; ++j) {
        const Column cells = NonZerosOf(*src, c0 - 1 + j, r0 - 1, height, 0);
        dst->PutColumn(j, WithRowsReplaced(dst->CellsOf(j), {0, height}, cells));
    }
}

void M_CopyBlock(matrixSparse* src, int r0, int r1, int c0, int c1, matrixSparse* dst)
{
    M_Duplicate(src, r1 - r0 + 1, c1 - c0 + 1, dst, 1, 1, r0, c0);
}

void M_PasteBlock(matrixSparse* block, int rows, int cols, matrix<double>* dst, int r0, int c0)
{
    const int height = CountWithin(rows, 0, block->Rows());
    for (int j = 0; j < CountWithin(cols, 0, block->Cols()); ++j) {
        for (int i = 0; i < height; ++i) {
            dst->vbset(r0 + i, c0 + j, 0.0);
        }
        for (const Cell& cell : block->CellsOf(j)) {
            if (cell.row < height) dst->vbset(r0 + cell.row, c0 + j, cell.value);
        }
    }
}

void M_PasteBlock(matrixSparse* block, int rows, int cols, matrixSparse* dst, int r0, int c0)
{
    M_Duplicate(block, rows, cols, dst, r0, c0, 1, 1);
}

void M_Transpose(matrixSparse* A, int rows, int cols, matrixSparse*& out)
{
    if (out == nullptr) out = new matrixSparse();
    const int height = CountWithin(rows, 0, A->Rows());
    const int width = CountWithin(cols, 0, A->Cols());
    std::vector<Column> columns(static_cast<std::size_t>(height));
    for (int j = 0; j < width; ++j) {
        for (const Cell& cell : A->CellsOf(j)) {
            if (cell.row < height) columns[static_cast<std::size_t>(cell.row)].push_back({j, cell.value});
        }
    }
    out->Redim(width, height, 0.0);
    for (int i = 0; i < height; ++i) {
        out->PutColumn(i, std::move(columns[static_cast<std::size_t>(i)]));
    }
}
