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

/**
 * Sum of w log v over many rows. Up to 16 values in a row with one weight are multiplied and share a logarithm; the
 * product of 16 values of at least 2^-52 does not underflow.
 */
class WeightedLogSum
{
  public:
    /** @param value  from 2^-52 to 1 */
    void Add(double weight, double value)
    {
        if (weight != weight_ || count_ == kShared) Flush();
        weight_ = weight;
        product_ *= value;
        count_ += 1;
    }

    double Total()
    {
        Flush();
        return sum_.Total();
    }

  private:
    static constexpr int kShared = 16;

    void Flush()
    {
        if (count_ > 0 && weight_ != 0.0) sum_.Add(weight_ * std::log(product_));
        product_ = 1.0;
        count_ = 0;
    }

    RowSum sum_;
    double weight_ = 0.0;
    double product_ = 1.0;
    int count_ = 0;
};

}  // namespace korvenrg::logistic
