#include "kernel/linalg/block_products.h"

#include <utility>
#include <vector>

#include "kernel/linalg/sparse_products.h"

namespace {

using Cell = matrixSparse::Cell;

// A block with the position, from 0, of its first row and column in the whole matrix.
struct PlacedBlock
{
    const matrixSparse* cells;
    int firstRow;
    int firstColumn;
};

std::vector<PlacedBlock> PlacedBlocks(const matrix3D<matrixSparse>& blocks)
{
    std::vector<PlacedBlock> placed;
    int row = 0;
    int column = 0;
    for (int b = 0; b < blocks.count; ++b) {
        const matrixSparse* cells = blocks.elements[b];
        if (cells == nullptr) continue;
        placed.push_back({cells, row, column});
        row += cells->Rows();
        column += cells->Cols();
    }
    return placed;
}

// The whole block-diagonal matrix.
matrixSparse Assembled(const matrix3D<matrixSparse>& blocks)
{
    const std::vector<PlacedBlock> placed = PlacedBlocks(blocks);
    int rows = 0;
    int cols = 0;
    for (const PlacedBlock& block : placed) {
        rows += block.cells->Rows();
        cols += block.cells->Cols();
    }
    matrixSparse whole(rows, cols, 0.0);
    for (const PlacedBlock& block : placed) {
        for (int j = 0; j < block.cells->Cols(); ++j) {
            matrixSparse::Column column = block.cells->CellsOf(j);
            for (Cell& cell : column) {
                cell.row += block.firstRow;
            }
            whole.PutColumn(block.firstColumn + j, std::move(column));
        }
    }
    return whole;
}

void SetRows(matrix<double>* out, int firstRow, int rows, int column, double value)
{
    for (int i = 1; i <= rows; ++i) {
        out->vbset(firstRow + i, column, value);
    }
}

}  // namespace

void M_BlockProductBckA(matrix3D<matrixSparse>* blocks, matrix<double>* A, int cols, matrix<double>* out)
{
    for (const PlacedBlock& block : PlacedBlocks(*blocks)) {
        for (int c = 1; c <= cols; ++c) {
            SetRows(out, block.firstRow, block.cells->Rows(), c, 0.0);
            for (int j = 0; j < block.cells->Cols(); ++j) {
                const double multiplier = A->vbget(block.firstColumn + j + 1, c);
                for (const Cell& cell : block.cells->CellsOf(j)) {
                    const int row = block.firstRow + cell.row + 1;
                    out->vbset(row, c, out->vbget(row, c) + cell.value * multiplier);
                }
            }
        }
    }
}

void M_BlockProductBckA(matrix3D<matrixSparse>* blocks, matrixSparse* A, int cols, matrixSparse* out)
{
    matrixSparse whole = Assembled(*blocks);
    M_ProductAB(&whole, whole.Rows(), whole.Cols(), A, cols, out);
}

void M_BlockProductBckVect(matrix3D<matrixSparse>* blocks, matrix<double>* v, matrix<double>* out)
{
    M_BlockProductBckA(blocks, v, 1, out);
}

void M_BlockProductABck(matrix<double>* A, int rows, matrix3D<matrixSparse>* blocks, matrix<double>* out)
{
    for (const PlacedBlock& block : PlacedBlocks(*blocks)) {
        for (int j = 0; j < block.cells->Cols(); ++j) {
            for (int r = 1; r <= rows; ++r) {
                double sum = 0.0;
                for (const Cell& cell : block.cells->CellsOf(j)) {
                    sum += A->vbget(r, block.firstRow + cell.row + 1) * cell.value;
                }
                out->vbset(r, block.firstColumn + j + 1, sum);
            }
        }
    }
}

void M_BlockProductABck(matrixSparse* A, int rows, matrix3D<matrixSparse>* blocks, matrixSparse* out)
{
    matrixSparse whole = Assembled(*blocks);
    M_ProductAB(A, rows, whole.Rows(), &whole, whole.Cols(), out);
}
