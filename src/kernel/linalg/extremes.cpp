#include "kernel/linalg/extremes.h"

#include <cmath>

#include "core/limits.h"

using korvenrg::IsMissing;
using korvenrg::kLargest;
using korvenrg::kMissing;
using korvenrg::kTrue;

namespace {

struct Extreme
{
    double value;
    int position;  // from 1; 0 while nothing was met
};

// The first of the elements that beats all others; skip(i) leaves element i out.
template <typename T, typename Beats, typename Skip>
Extreme FirstBest(const matrix<T>& x, int n, double start, Beats beats, Skip skip)
{
    Extreme best{start, 0};
    for (int i = 1; i <= n; ++i) {
        if (skip(i)) continue;
        const double value = static_cast<double>(x.vbget(i));
        if (std::isnan(value)) continue;
        if (best.position == 0 || beats(value, best.value)) best = {value, i};
    }
    return best;
}

template <typename T>
Extreme Largest(const matrix<T>& x, int n, const short* mask)
{
    return FirstBest(
        x,
        n,
        kMissing,
        [](double a, double b) { return a > b; },
        [mask](int i) { return mask != nullptr && mask[i - 1] != 0; });
}

template <typename T>
Extreme Smallest(const matrix<T>& x, int n, const short* mask)
{
    return FirstBest(
        x,
        n,
        kLargest,
        [](double a, double b) { return a < b; },
        [mask](int i) { return mask != nullptr && mask[i - 1] != 0; });
}

int AsInteger(const Extreme& extreme)
{
    return extreme.position == 0 ? 0 : static_cast<int>(extreme.value);
}

}  // namespace

template <typename T>
double V_Max(matrix<T>* x, int n, short* mask)
{
    return Largest(*x, n, mask).value;
}

template <typename T>
double V_Min(matrix<T>* x, int n, short* mask)
{
    return Smallest(*x, n, mask).value;
}

template double V_Max(matrix<double>*, int, short*);
template double V_Max(matrix<int>*, int, short*);
template double V_Min(matrix<double>*, int, short*);
template double V_Min(matrix<int>*, int, short*);

double V_Max2(matrix<double>* x, int n)
{
    return Largest(*x, n, nullptr).value;
}

int V_Max2(matrix<int>* x, int n)
{
    return AsInteger(Largest(*x, n, nullptr));
}

double V_Min2(matrix<double>* x, int n)
{
    return Smallest(*x, n, nullptr).value;
}

int V_Min2(matrix<int>* x, int n)
{
    return AsInteger(Smallest(*x, n, nullptr));
}

double V_MaxAndMaxPos(matrix<double>* x, int n, int* position)
{
    const Extreme extreme = Largest(*x, n, nullptr);
    *position = extreme.position;
    return extreme.value;
}

double V_MinAndMinPos(matrix<double>* x, int n, int* position)
{
    const Extreme extreme = Smallest(*x, n, nullptr);
    *position = extreme.position;
    return extreme.value;
}

void M_MinMax(matrix<double>* X,
              int rows,
              int cols,
              matrix<double>* oMin,
              matrix<double>* oMax,
              short* mask,
              short flag)
{
    for (int j = 1; j <= cols; ++j) {
        double smallest = kLargest;
        double largest = kMissing;
        for (int i = 1; i <= rows; ++i) {
            if (mask != nullptr && mask[i - 1] != 0) continue;
            const double value = X->vbget(i, j);
            if (flag == kTrue && IsMissing(value)) continue;
            if (value < smallest) smallest = value;
            if (value > largest) largest = value;
        }
        oMin->vbset(j, smallest);
        oMax->vbset(j, largest);
    }
}
