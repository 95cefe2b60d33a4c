#include "kernel/distributions/fisher_bounds.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <numeric>
#include <ranges>

#include "kernel/distributions/gamma_functions.h"

namespace korvenrg::distributions {

namespace {

int SumOf(std::span<const int> counts)
{
    return std::accumulate(counts.begin(), counts.end(), 0);
}

// Fills cells of the given widths, descending, with `total` and gives the sum of log(cell!): log x! is convex, so no
// other way to spread it gives more. An extra cell stands in its place among the widths.
template <typename Widths>
double CrowdedSum(int total, const Widths& widths, int extra, const LogTables& logs)
{
    double sum = 0.0;
    const auto fill = [&](int width) {
        const int count = std::min(total, width);
        sum += logs.Factorial(count);
        total -= count;
    };
    bool extraIsDue = true;
    for (const int width : widths) {
        if (total <= 0) break;
        if (extraIsDue && extra > width) {
            fill(extra);
            extraIsDue = false;
        }
        fill(width);
    }
    if (extraIsDue) fill(extra);
    return sum;
}

// Upper bound of the sum of log(cell!): the smaller of the sums over crowded rows and over crowded columns.
double CrowdedSum(const PartlyFilled& table, const LogTables& logs)
{
    const auto descending = std::views::reverse(table.columns);
    double byRows = 0.0;
    for (const int row : table.filled) {
        byRows += CrowdedSum(row, descending, 0, logs);
    }
    for (const int row : table.open) {
        byRows += CrowdedSum(row, descending, table.left, logs);
    }
    double byColumns = CrowdedSum(table.left, table.open, 0, logs);
    for (const int column : table.columns) {
        byColumns += CrowdedSum(column, table.widths, 0, logs);
    }
    return std::min(byRows, byColumns);
}

// Lower bound of the sum of log(cell!) over all ways to go on. For any numbers s(i,j) = u(i) + v(j), the sum of min over x
// of (log x! - s(i,j) x) plus the sums of u times row totals and v times column totals is one (Lagrange). The
// minimum is at x = floor(exp s); with exp s = (row + columns/2)(column + rows/2)/(total + cells/2) these x
// add up to nearly the margins, so the bound is near the best. What an open row has behind its open cell is not
// known: the share that it has on the average stands for it.
class SpreadSum
{
  public:
    SpreadSum(const PartlyFilled& table, const LogTables& logs)
        : table_(table),
          logs_(logs),
          c_(table.columns.size()),
          openTotal_(SumOf(table.open)),
          behind_(openTotal_ - table.left)
    {
        const std::size_t r = table.filled.size() + table.open.size();
        const std::size_t whole = Doubled(SumOf(table.columns)) + r * c_;
        for (const int column : table.columns) {
            AddColumn(column, Doubled(column) + r, whole, true);
        }
        const std::size_t o = table.open.size();
        if (o > 0) AddColumn(table.left, Doubled(table.left) + o, Doubled(behind_) + o * c_, false);
        for (const int row : table.filled) {
            sum_ += logs.Half(Doubled(row) + c_) * row;
        }
        for (const int row : table.open) {
            sum_ += logs.Half(PartOfOpen(row)) * row;
        }
    }

    double Value() const
    {
        return sum_;
    }

  private:
    static std::size_t Doubled(int count)
    {
        return 2 * static_cast<std::size_t>(count);
    }

    std::size_t PartOfOpen(int row) const
    {
        return 2 * static_cast<std::size_t>(std::int64_t{row} * behind_ / std::max(openTotal_, 1)) + c_;
    }

    void AddColumn(int column, std::size_t part, std::size_t whole, bool reachesFilled)
    {
        const double v = logs_.Half(part) - logs_.Half(whole);
        const double scale = 0.5 * static_cast<double>(part) / static_cast<double>(whole);
        sum_ += v * column;
        if (reachesFilled) {
            for (const int row : table_.filled) {
                AddCell(row, Doubled(row) + c_, scale, v);
            }
        }
        for (const int row : table_.open) {
            AddCell(row, PartOfOpen(row), scale, v);
        }
    }

    void AddCell(int row, std::size_t part, double scale, double v)
    {
        const int x = std::min(static_cast<int>(scale * static_cast<double>(part)), row);
        sum_ += logs_.Factorial(x) - (logs_.Half(part) + v) * x;
    }

    const PartlyFilled& table_;
    const LogTables& logs_;
    std::size_t c_;
    int openTotal_;
    int behind_;  ///< of it, in the columns behind the one that is filled
    double sum_ = 0.0;
};

// Vandermonde: the ways to share `left` over the open rows add up to one binomial coefficient.
double LogTotalWeight(const PartlyFilled& table, const LogTables& logs)
{
    const int openTotal = SumOf(table.open);
    return logs.Factorial(SumOf(table.columns)) - logs.SumOfFactorials(table.filled) -
           logs.SumOfFactorials(table.open) - logs.SumOfFactorials(table.columns) +
           logs.Factorial(openTotal) - logs.Factorial(table.left) - logs.Factorial(openTotal - table.left);
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

Completions CompletionsOf(const PartlyFilled& table, const LogTables& logs)
{
    return {LogTotalWeight(table, logs), -SpreadSum(table, logs).Value(), -CrowdedSum(table, logs)};
}

}  // namespace korvenrg::distributions
