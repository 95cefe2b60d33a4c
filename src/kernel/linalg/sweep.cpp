#include "kernel/linalg/sweep.h"

#include <cmath>
#include <vector>

#include "core/limits.h"

using korvenrg::linalg::PackedPosition;
using korvenrg::linalg::PackedSize;

namespace {

// Rounding units that a pivot may have gathered over the sweeps before it.
constexpr double kPivotRoundings = 8.0;

double CellOf(const double* packed, int i, int j)
{
    return packed[PackedPosition(i, j) - 1];
}

// Size up to which a pivot may be nothing but rounding.
double PivotRounding(const double* packed, int p, int k)
{
    double coefficients = 1.0;
    for (int j = 1; j <= p; ++j) {
        if (CellOf(packed, j, j) < 0.0) coefficients += std::fabs(CellOf(packed, k, j));
    }
    return kPivotRoundings * korvenrg::kEps * coefficients * coefficients;
}

bool Holds(const matrix<double>* packed, int m)
{
    return packed != nullptr && m > 0 && packed->total >= PackedSize(static_cast<std::size_t>(m));
}

}  // namespace

void M_Sweep(matrix<double>* packed, int m, int k)
{
    if (!Holds(packed, m) || k < 1 || k > m) return;
    double* cells = packed->data;
    const double pivot = CellOf(cells, k, k);
    if (pivot == 0.0 || std::isnan(pivot)) return;

    std::vector<double> column(static_cast<std::size_t>(m));
    for (int j = 1; j <= m; ++j) {
        column[static_cast<std::size_t>(j - 1)] = j == k ? 0.0 : CellOf(cells, k, j);
    }
    double* row = cells;
    for (int i = 1; i <= m; ++i) {
        const double multiplier = column[static_cast<std::size_t>(i - 1)] / pivot;
        if (multiplier != 0.0) {
            for (int j = 0; j < i; ++j) {
                row[j] -= multiplier * column[static_cast<std::size_t>(j)];
            }
        }
        row += i;
    }

    const double scale = std::fabs(pivot);
    for (int j = 1; j <= m; ++j) {
        if (j != k) cells[PackedPosition(k, j) - 1] = column[static_cast<std::size_t>(j - 1)] / scale;
    }
    cells[PackedPosition(k, k) - 1] = -1.0 / pivot;
}

double OLSCheckIfIn(matrix<double>* packed, int p, int k, double tol)
{
    if (!Holds(packed, p + 1) || k < 1 || k > p) return 0.0;
    const double* cells = packed->data;
    const double pivot = CellOf(cells, k, k);
    if (!(pivot > 0.0)) return pivot;
    if (pivot <= PivotRounding(cells, p, k)) return 0.0;

    double lowest = pivot;
    for (int j = 1; j <= p; ++j) {
        const double inModel = CellOf(cells, j, j);
        if (inModel >= 0.0) continue;
        const double cross = CellOf(cells, j, k);
        const double tolerance = 1.0 / (-inModel + cross * cross / pivot);
        if (tolerance < tol && tolerance < lowest) lowest = tolerance;
    }
    return lowest;
}
