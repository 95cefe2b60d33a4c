#include "kernel/linalg/sweep.h"

#include <cmath>
#include <vector>

#include "kernel/linalg/lanes.h"
#include "kernel/linalg/pivot_rounding.h"

using korvenrg::linalg::Cells;
using korvenrg::linalg::PackedPosition;
using korvenrg::linalg::PackedSize;
using korvenrg::linalg::SweepPacked;

namespace {

double CellOf(const double* packed, int i, int j)
{
    return packed[PackedPosition(i, j) - 1];
}

// Takes column column' / pivot out of the packed triangle. Each cell has one product and one difference, so
// that every instruction set gives the same bits.
[[gnu::always_inline]] inline void TakeOutProductsBody(double* __restrict row,
                                                       const double* __restrict column,
                                                       std::size_t m,
                                                       double pivot,
                                                       Cells kind)
{
    for (std::size_t i = 0; i < m; ++i) {
        const double multiplier = column[i] / pivot;
        if (multiplier != 0.0) {
            const double before = row[i];
            const bool isRounding =
                kind == Cells::kSemidefinite && before >= 0.0 && before - multiplier * column[i] < 0.0;
            for (std::size_t j = 0; j <= i; ++j) {
                row[j] -= multiplier * column[j];
            }
            if (isRounding) row[i] = 0.0;
        }
        row += i + 1;
    }
}

KORVEN_FOR_AVX512 void TakeOutProductsAvx512(double* cells,
                                             const double* column,
                                             std::size_t m,
                                             double pivot,
                                             Cells kind)
{
    TakeOutProductsBody(cells, column, m, pivot, kind);
}

KORVEN_FOR_AVX2 void TakeOutProductsAvx2(double* cells,
                                         const double* column,
                                         std::size_t m,
                                         double pivot,
                                         Cells kind)
{
    TakeOutProductsBody(cells, column, m, pivot, kind);
}

void TakeOutProductsBaseline(double* cells, const double* column, std::size_t m, double pivot, Cells kind)
{
    TakeOutProductsBody(cells, column, m, pivot, kind);
}

auto BestTakeOutProducts()
{
    switch (korvenrg::linalg::BestInstructionSet()) {
        case korvenrg::linalg::InstructionSet::kAvx512:
            return TakeOutProductsAvx512;
        case korvenrg::linalg::InstructionSet::kAvx2:
            return TakeOutProductsAvx2;
        default:
            return TakeOutProductsBaseline;
    }
}

bool Holds(const matrix<double>* packed, int m)
{
    return packed != nullptr && m > 0 && packed->total >= PackedSize(static_cast<std::size_t>(m));
}

}  // namespace

void korvenrg::linalg::SweepPacked(double* cells, std::size_t m, std::size_t k, Cells kind)
{
    const double pivot = cells[PackedSize(k + 1) - 1];
    if (pivot == 0.0 || std::isnan(pivot)) return;

    std::vector<double> column(m);
    for (std::size_t j = 0; j < m; ++j) {
        column[j] = j <= k ? cells[PackedSize(k) + j] : cells[PackedSize(j) + k];
    }
    column[k] = 0.0;
    BestTakeOutProducts()(cells, column.data(), m, pivot, kind);

    const double scale = std::fabs(pivot);
    for (std::size_t j = 0; j < m; ++j) {
        double& cell = j <= k ? cells[PackedSize(k) + j] : cells[PackedSize(j) + k];
        cell = column[j] / scale;
    }
    cells[PackedSize(k + 1) - 1] = -1.0 / pivot;
}

void M_Sweep(matrix<double>* packed, int m, int k)
{
    if (!Holds(packed, m) || k < 1 || k > m) return;
    SweepPacked(packed->data,
                static_cast<std::size_t>(m),
                static_cast<std::size_t>(k - 1),
                Cells::kSemidefinite);
}

double OLSCheckIfIn(matrix<double>* packed, int p, int k, double tol)
{
    if (!Holds(packed, p + 1) || k < 1 || k > p) return 0.0;
    const double* cells = packed->data;
    const double pivot = CellOf(cells, k, k);
    if (!(pivot > 0.0)) return pivot;
    const auto columns = static_cast<std::size_t>(p);
    if (pivot <= korvenrg::linalg::PivotRounding(cells, columns, static_cast<std::size_t>(k - 1))) return 0.0;

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
