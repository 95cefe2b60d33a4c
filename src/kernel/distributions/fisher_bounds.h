/** Weights of the tables with given margins, and bounds on them. The weight of a table is the product of
    1/cell!. */
#pragma once

#include <cstddef>
#include <span>
#include <vector>

namespace korvenrg::distributions {

/** log(k!) and log(k/2). */
class LogTables
{
  public:
    /** For tables with this total and this number of cells. */
    LogTables(int total, std::size_t cells);

    double Factorial(int k) const
    {
        return factorial_[static_cast<std::size_t>(k)];
    }
    double Half(std::size_t k) const
    {
        return half_[k];
    }
    double SumOfFactorials(std::span<const int> counts) const;

  private:
    std::vector<double> factorial_;
    std::vector<double> half_;
};

/** Log weights of all tables with given margins. */
struct Completions
{
    double logTotal = 0.0;  ///< log of the sum of their weights
    double largest = 0.0;   ///< upper bound of their log weights
    double smallest = 0.0;  ///< lower bound of their log weights
};

/** Log of the sum of the weights: total! / (product of row totals! and column totals!). */
double LogTotalWeight(std::span<const int> rows, std::span<const int> columns, const LogTables& logs);

/** What is left of a table while one of its columns is filled from the first row down. */
struct PartlyFilled
{
    std::span<const int> filled;   ///< rows whose cell is filled: what they have left for the other columns
    std::span<const int> open;     ///< totals of the rows whose cell is not, descending
    std::span<const int> widths;   ///< filled and open together, descending
    int left = 0;                  ///< what the open rows share of the column
    std::span<const int> columns;  ///< totals of the other columns, ascending
};

/** The weights of all ways to go on, the filled cells left out of them. Without open rows: of all tables with these
    margins. */
Completions CompletionsOf(const PartlyFilled& table, const LogTables& logs);

}  // namespace korvenrg::distributions
