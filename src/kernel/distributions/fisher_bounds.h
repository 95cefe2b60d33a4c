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

/** The weights of the tables with these margins: positive row totals, descending; column totals ascending. */
Completions CompletionsOf(std::span<const int> rows, std::span<const int> columns, const LogTables& logs);

}  // namespace korvenrg::distributions
