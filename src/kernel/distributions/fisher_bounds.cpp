#include "kernel/distributions/fisher_bounds.h"

#include <algorithm>
#include <cmath>
#include <numeric>
#include <ranges>

#include "kernel/distributions/gamma_functions.h"

namespace korvenrg::distributions {

namespace {

int SumOf(std::span<const int> counts)
{
    return std::accumulate(counts.begin(), counts.end(), 0);
}

// Upper bound of the sum of log(cell!) when each total of `lines` is spread over cells of at most `widths`
// (descending): log x! is convex, so the sum is largest when the widest cells are filled first.
template <typename Widths>
double CrowdedSum(std::span<const int> lines, const Widths& widths, const LogTables& logs)
{
    double sum = 0.0;
    for (int left : lines) {
        for (const int width : widths) {
            if (left <= 0) break;
            sum += logs.Factorial(std::min(left, width));
            left -= width;
        }
    }
    return sum;
}

// Lower bound of the sum of log(cell!) over all tables with these margins, rows all positive. For any numbers
// s(i,j) = u(i) + v(j), the sum of min over x of (log x! - s(i,j) x) plus the sums of u times row totals and
// v times column totals is one (Lagrange). The minimum is at x = floor(exp s); with exp s = (row +
// columns/2)(column + rows/2)/(total + cells/2) these x add up to nearly the margins, so the bound is near
// the best.
double SpreadSum(std::span<const int> rows, std::span<const int> columns, const LogTables& logs)
{
    const std::size_t r = rows.size();
    const std::size_t c = columns.size();
    const auto doubled = [](int count) { return 2 * static_cast<std::size_t>(count); };
    const std::size_t whole = doubled(SumOf(rows)) + r * c;
    double sum = 0.0;
    for (const int column : columns) {
        const std::size_t columnPart = doubled(column) + r;
        const double v = logs.Half(columnPart) - logs.Half(whole);
        const double scale = 0.5 * static_cast<double>(columnPart) / static_cast<double>(whole);
        sum += v * column;
        for (const int row : rows) {
            const std::size_t rowPart = doubled(row) + c;
            const int x = std::min(static_cast<int>(scale * static_cast<double>(rowPart)), row);
            sum += logs.Factorial(x) - (logs.Half(rowPart) + v) * x;
        }
    }
    for (const int row : rows) {
        sum += logs.Half(doubled(row) + c) * row;
    }
    return sum;
}

}  // namespace

LogTables::LogTables(int total, std::size_t cells)
    : factorial_(static_cast<std::size_t>(total) + 1), half_(2 * factorial_.size() + cells + 1)
{
    for (std::size_t k = 0; k < factorial_.size(); ++k) {
        factorial_[k] = GammaLn(static_cast<double>(k) + 1.0);
    }
    for (std::size_t k = 1; k < half_.size(); ++k) {
        half_[k] = std::log(0.5 * static_cast<double>(k));
    }
}

double LogTables::SumOfFactorials(std::span<const int> counts) const
{
    double sum = 0.0;
    for (const int count : counts) {
        sum += Factorial(count);
    }
    return sum;
}

double LogTotalWeight(std::span<const int> rows, std::span<const int> columns, const LogTables& logs)
{
    return logs.Factorial(SumOf(rows)) - logs.SumOfFactorials(rows) - logs.SumOfFactorials(columns);
}

Completions CompletionsOf(std::span<const int> rows, std::span<const int> columns, const LogTables& logs)
{
    const double crowded =
        std::min(CrowdedSum(rows, std::views::reverse(columns), logs), CrowdedSum(columns, rows, logs));
    return {LogTotalWeight(rows, columns, logs), -SpreadSum(rows, columns, logs), -crowded};
}

}  // namespace korvenrg::distributions
