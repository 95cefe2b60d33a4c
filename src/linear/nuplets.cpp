#include "linear/nuplets.h"

#include <algorithm>
#include <cstdint>
#include <limits>

namespace korvenrg::linear {

namespace {

constexpr std::int64_t kMost = std::numeric_limits<int>::max();

bool HasRows(int n, matrix<int>* sizes)
{
    std::int64_t product = 1;
    for (int j = 1; j <= n; ++j) {
        product *= sizes->vbget(j);
        if (product < 1 || product > kMost) return false;
    }
    return true;
}

}  // namespace

int CountNuplets(int n, matrix<int>* sizes)
{
    constexpr std::int64_t kLeast = std::numeric_limits<int>::min();
    std::int64_t product = 1;
    for (int j = 1; j <= n; ++j) {
        product = std::clamp(product * sizes->vbget(j), kLeast, kMost);
    }
    return static_cast<int>(product);
}

void WriteNuplets(int n, matrix<int>* sizes, matrix<int>* nuplets)
{
    if (!HasRows(n, sizes)) return;
    const int rows = CountNuplets(n, sizes);
    int repeat = rows;  // rows that a level stands in a row
    for (int j = 1; j <= n; ++j) {
        const int levels = sizes->vbget(j);
        repeat /= levels;
        for (int row = 0; row < rows; ++row) {
            nuplets->vbset(row + 1, j, row / repeat % levels + 1);
        }
    }
}

}  // namespace korvenrg::linear
