#include "kernel/random/indicators.h"

#include <algorithm>

#include "kernel/random/uniform.h"

void GenerateIndicator(matrix<double>* column, int n, int first, int last)
{
    if (column == nullptr) return;
    for (int r = 1; r <= n; ++r) {
        column->vbset(r, r >= first && r <= last ? 1.0 : 0.0);
    }
}

void GenerateRandomIndicator(matrix<double>* column, int n, int nv, int* seed, short seedFlag, int* lastSeed)
{
    if (column == nullptr) return;
    auto stream = korvenrg::random::StartStream(seed, seedFlag);
    int toMark = std::clamp(nv, 0, std::max(n, 0));
    for (int r = 1; r <= n; ++r) {
        const int rowsLeft = n - r + 1;
        const bool marked = stream.Next() * rowsLeft < toMark;
        column->vbset(r, marked ? 1.0 : 0.0);
        if (marked) toMark -= 1;
    }
    if (lastSeed != nullptr) *lastSeed = stream.State();
}
