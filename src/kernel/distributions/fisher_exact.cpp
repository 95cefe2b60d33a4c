#include "kernel/distributions/fisher_exact.h"

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

constexpr double kLargestTotal = 1 << 30;

/** The cells as whole numbers, r x c by columns; nothing when they are no counts. */
std::optional<std::vector<int>> ReadCounts(int r, int c, const double* table, int leadingDimension)
{
    std::vector<int> counts;
    double total = 0.0;
    for (int j = 0; j < c; ++j) {
        for (int i = 0; i < r; ++i) {
            const double cell = table[static_cast<std::ptrdiff_t>(j) * leadingDimension + i];
            const double whole = std::nearbyint(cell);
            if (!(whole >= 0.0 && std::fabs(cell - whole) <= kWhole)) return std::nullopt;
            total += whole;
            if (total > kLargestTotal) return std::nullopt;
            counts.push_back(static_cast<int>(whole));
        }
    }
    if (total == 0.0) return std::nullopt;
    return counts;
}

// Without empty rows and columns, turned so that it has at most as many rows as columns.
CountTable Condensed(int r, int c, const std::vector<int>& counts)
{
    const auto cell = [&](int i, int j) {
        return counts[static_cast<std::size_t>(j) * static_cast<std::size_t>(r) +
                      static_cast<std::size_t>(i)];
    };
    std::vector<int> usedRows;
    std::vector<int> usedColumns;
    CountTable table;
    std::vector<int> rowTotals;
    std::vector<int> columnTotals;
    for (int i = 0; i < r; ++i) {
        int sum = 0;
        for (int j = 0; j < c; ++j) {
            sum += cell(i, j);
        }
        if (sum == 0) continue;
        usedRows.push_back(i);
        rowTotals.push_back(sum);
        table.total += sum;
    }
    for (int j = 0; j < c; ++j) {
        int sum = 0;
        for (int i = 0; i < r; ++i) {
            sum += cell(i, j);
        }
        if (sum == 0) continue;
        usedColumns.push_back(j);
        columnTotals.push_back(sum);
    }
    for (const int j : usedColumns) {
        for (const int i : usedRows) {
            table.cells.push_back(cell(i, j));
        }
    }
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

    const CountTable condensed = Condensed(r, c, *counts);
    if (condensed.rowTotals.size() < 2) return finish(kFisherDone, 1.0, 1.0);
    const bool largerThan2x2 = condensed.columnTotals.size() > 2;
    const NetworkResult result =
        FisherTail(condensed, CochranRule{expect, percent, emin, expect > 0.0 && largerThan2x2});
    if (!result.complete) return fail(kFisherWorkLimit);
    return finish(kFisherDone, result.pValue, result.tableProbability);
}
