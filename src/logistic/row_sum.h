/** A sum over many rows that keeps what rounding takes away. */
#pragma once

#include <cmath>

namespace korvenrg::logistic {

/** Compensated sum (Neumaier 1974, "Rundungsfehleranalyse einiger Verfahren zur Summation endlicher Summen"): a line
 * search compares log-likelihoods that differ in their last digits. */
class RowSum
{
  public:
    void Add(double term)
    {
        const double next = sum_ + term;
        lost_ += std::fabs(sum_) >= std::fabs(term) ? (sum_ - next) + term : (term - next) + sum_;
        sum_ = next;
    }

    double Total() const
    {
        return sum_ + lost_;
    }

  private:
    double sum_ = 0.0;
    double lost_ = 0.0;
};

}  // namespace korvenrg::logistic
