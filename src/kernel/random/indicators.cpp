#include "kernel/random/indicators.h"

#include <algorithm>
#include <cstdint>

#include "kernel/random/uniform.h"

namespace {

// n, but no more than the column has cells, and not below 0.
int RowsOf(const matrix<double>& column, int n)
{
    return static_cast<int>(std::min(static_cast<std::uint32_t>(std::max(n, 0)), column.total));
}

}  // namespace

void GenerateIndicator(matrix<double>* column, int n, int first, int last)
{
    if (column == nullptr) return;
    const int rows = RowsOf(*column, n);
    for (int r = 1; r <= rows; ++r) {
        column->vbset(r, r >= first && r <= last ? 1.0 : 0.0);
    }
}

void GenerateRandomIndicator(matrix<double>* column, int n, int nv, int* seed, short seedFlag, int* lastSeed)
{
    if (column == nullptr) return;
    auto stream = korvenrg::random::StartStream(seed, seedFlag);
    const int rows = RowsOf(*column, n);
    int toMark = std::clamp(nv, 0, rows);
    for (int r = 1; r <= rows; ++r) {
        const int rowsLeft = rows - r + 1;
        const bool marked = stream.Next() * rowsLeft < toMark;
        column->vbset(r, marked ? 1.0 : 0.0);
        if (marked) toMark -= 1;
    }
    if (lastSeed != nullptr) *lastSeed = stream.State();
}

void GenerateRandomCounts(matrix<double>* column, int n, int draws, int* seed, short seedFlag, int* lastSeed)
{
    if (column == nullptr) return;
    auto stream = korvenrg::random::StartStream(seed, seedFlag);
    const int rows = RowsOf(*column, n);
    std::fill_n(column->data, rows, 0.0);
    for (int k = 0; k < draws && rows > 0; ++k) {
        column->data[static_cast<int>(stream.Next() * rows)] += 1.0;
    }
    if (lastSeed != nullptr) *lastSeed = stream.State();
}
