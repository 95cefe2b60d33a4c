#include "kernel/distributions/fisher_exact.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <optional>
#include <vector>

#include "core/limits.h"
#include "kernel/distributions/fisher_network.h"

namespace {

using korvenrg::distributions::CochranRule;
using korvenrg::distributions::CountTable;

/** How far a cell may be from a whole number: weighted counts add up with roundings. */
constexpr double kWhole = 1E-9;

/** The tables of logarithms take 24 bytes for each count of the total. */
constexpr double kLargestTotal = 1E7;

/** The cells of a table, by columns. */
struct Counts
{
    std::vector<int> cells;
    double total = 0.0;
};

/** The cells as whole numbers; nothing when they are no counts. */
std::optional<Counts> ReadCounts(int r, int c, const double* table, int leadingDimension)
{
    Counts counts;
    for (int j = 0; j < c; ++j) {
        for (int i = 0; i < r; ++i) {
            const double cell = table[static_cast<std::ptrdiff_t>(j) * leadingDimension + i];
            const double whole = std::nearbyint(cell);
            if (!(whole >= 0.0 && std::fabs(cell - whole) <= kWhole)) return std::nullopt;
            counts.total += whole;
            counts.cells.push_back(static_cast<int>(std::min(whole, kLargestTotal)));
        }
    }
    if (counts.total == 0.0) return std::nullopt;
    return counts;
}

// Without empty rows and columns, turned so that it has at most as many rows as columns.
CountTable Condensed(int r, int c, const std::vector<int>& counts)
{
    const auto cell = [&](int i, int j) {
        return counts[static_cast<std::size_t>(j) * static_cast<std::size_t>(r) +
                      static_cast<std::size_t>(i)];
    };
    std::vector<int> rowTotals(static_cast<std::size_t>(r));
    std::vector<int> columnTotals(static_cast<std::size_t>(c));
    CountTable table;
    for (int j = 0; j < c; ++j) {
        for (int i = 0; i < r; ++i) {
            rowTotals[static_cast<std::size_t>(i)] += cell(i, j);
            columnTotals[static_cast<std::size_t>(j)] += cell(i, j);
            table.total += cell(i, j);
        }
    }
    table.cells = counts;  // an empty row or column has cells of 0 only, which weigh nothing
    std::erase(rowTotals, 0);
    std::erase(columnTotals, 0);
    if (rowTotals.size() > columnTotals.size()) rowTotals.swap(columnTotals);
    table.rowTotals = rowTotals;
    table.columnTotals = columnTotals;
    return table;
}

}  // namespace

int cfexact(int r,
            int c,
            const double* table,
            int leadingDimension,
            double expect,
            double percent,
            double emin,
            double* pValue,
            double* tableProbability)
{
    using namespace korvenrg::distributions;
    const auto finish = [&](int code, double p, double probability) {
        *pValue = p;
        if (tableProbability != nullptr) *tableProbability = probability;
        return code;
    };
    const auto fail = [&](int code) { return finish(code, korvenrg::kMissing, korvenrg::kMissing); };
    if (r < 1 || c < 1 || leadingDimension < r || table == nullptr) return fail(kFisherBadSize);
    const auto counts = ReadCounts(r, c, table, leadingDimension);
    if (!counts) return fail(kFisherBadTable);
    if (counts->total > kLargestTotal) return fail(kFisherWorkLimit);

    const CountTable condensed = Condensed(r, c, counts->cells);
    if (condensed.rowTotals.size() < 2) return finish(kFisherDone, 1.0, 1.0);
    const bool largerThan2x2 = condensed.columnTotals.size() > 2;
    const NetworkResult result =
        FisherTail(condensed, CochranRule{expect, percent, emin, expect > 0.0 && largerThan2x2});
    if (!result.complete) return fail(kFisherWorkLimit);
    return finish(kFisherDone, result.pValue, result.tableProbability);
}
