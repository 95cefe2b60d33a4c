#include "kernel/linalg/block_tables.h"

#include <cstddef>

namespace {

std::size_t BlockSize(int rows, int cols)
{
    return korvenrg::CountOfCells(rows, cols);
}

// Calls visit(position in the flat array, cell) for each cell of the table, in the order of the flat array.
template <typename T, typename Visit>
void VisitCells(matrix<T>** blocks, int count, int rows, int cols, Visit visit)
{
    std::size_t position = 0;
    for (int b = 0; b < count; ++b) {
        for (int j = 1; j <= cols; ++j) {
            for (int i = 1; i <= rows; ++i) {
                visit(position++, blocks[b]->vbget(i, j));
            }
        }
    }
}

}  // namespace

void iniSuperMat(matrix<double>** blocks, int count, int rows, int cols)
{
    for (int b = 0; b < count; ++b) {
        blocks[b] = new matrix<double>(rows, cols);
    }
}

void loadSuperMat(matrix<double>** blocks, double* flat, int count, int rows, int cols)
{
    for (int b = 0; b < count; ++b) {
        const std::size_t first = static_cast<std::size_t>(b) * BlockSize(rows, cols);
        blocks[b] = new matrix<double>(rows, cols, flat + first, false);
    }
}

void loadSuperMat(matrix<std::wstring>** blocks, BSTR* flat, int count, int rows, int cols)
{
    for (int b = 0; b < count; ++b) {
        const std::size_t first = static_cast<std::size_t>(b) * BlockSize(rows, cols);
        blocks[b] = new matrix<std::wstring>(rows, cols, flat + first);
    }
}

void unloadSuperMat(matrix<double>** blocks, double* flat, int count, int rows, int cols)
{
    VisitCells(blocks, count, rows, cols, [flat](std::size_t position, double cell) {
        flat[position] = cell;
    });
}

void unloadSuperMat(matrix<std::wstring>** blocks, BSTR* flat, int count, int rows, int cols)
{
    VisitCells(blocks, count, rows, cols, [flat](std::size_t position, const std::wstring& cell) {
        flat[position] = korvenrg::NewString(cell);
    });
}
