/** The laws of multiple comparisons in extended precision: the oracle of the reference tables and of the accuracy
    programme. Unlike the engine: Gauss-Legendre panels of 30 points in both integrals, the logarithm of the scale taken
    as it is, products as sums of logarithms, the range conditioned on its smallest mean. Number is long double
    (64 bits on x86) or a type of Boost.Multiprecision. */
#pragma once

#include <algorithm>
#include <boost/math/constants/constants.hpp>
#include <boost/math/quadrature/gauss.hpp>
#include <boost/math/special_functions/erf.hpp>
#include <boost/math/special_functions/gamma.hpp>
#include <cmath>
#include <vector>

namespace reference {

enum class Comparison
{
    kRange,
    kOneSided,
    kTwoSided
};

template <class Number>
class ComparisonOracle
{
  public:
    /** lambda: the k - 1 factors of the means beside the first. */
    ComparisonOracle(Comparison kind, const std::vector<Number>& lambda) : kind_(kind), lambda_(lambda)
    {
        if (kind == Comparison::kRange) spreads_.push_back(1);
        for (const Number& factor : lambda) {
            const Number rest = sqrt((1 - factor) * (1 + factor));
            spreads_.push_back(kind == Comparison::kRange ? Number(rest / factor) : rest);
        }
        narrowest_ = *std::min_element(spreads_.begin(), spreads_.end());
        widest_ = *std::max_element(spreads_.begin(), spreads_.end());
        if (kind != Comparison::kRange) widest_ = 1;
        narrowest_ = std::min(narrowest_, Number(1));
    }

    /** P(largest > t), t > 0; infinite df allowed. */
    Number Upper(double df, Number t) const
    {
        if (std::isinf(df)) return UpperOfNormal(t);
        const Number a = Number(df) / 2;
        const Number front = 2 * exp(a * log(a) - boost::math::lgamma(a));
        const Number centre = -log(1 + t * t / Number(df)) / 2;
        const Number low = centre - std::max(Number(60) / Number(df), Number(10) / sqrt(2 * Number(df)));
        const Number high = log(1 + 14 / sqrt(Number(df)) + 8 / Number(df));
        const Number width = std::min(Number(1), 2 / sqrt(2 * Number(df)));
        return Panels(low, high, width, [&](const Number& y) {
            const Number square = exp(2 * y);
            return front * exp(a * (2 * y - square)) * UpperOfNormal(t * sqrt(square));
        });
    }

  private:
    template <class Integrand>
    static Number Panels(Number low, Number high, Number width, const Integrand& integrand)
    {
        const int count = std::max(1, static_cast<int>(ceil((high - low) / width)));
        const Number step = (high - low) / count;
        Number sum = 0;
        for (int i = 0; i < count; i++)
            sum += boost::math::quadrature::gauss<Number, 30>::integrate(integrand,
                                                                         Number(low + i * step),
                                                                         Number(low + (i + 1) * step));
        return sum;
    }

    static Number Tail(const Number& z)
    {
        return boost::math::erfc(Number(z / boost::math::constants::root_two<Number>())) / 2;
    }

    static Number Density(const Number& z)
    {
        return exp(-z * z / 2) / boost::math::constants::root_two_pi<Number>();
    }

    Number UpperOfNormal(const Number& t) const
    {
        return kind_ == Comparison::kRange ? UpperOfRange(t) : UpperOfControl(t);
    }

    /** The shared deviate runs over all that matters to a relative 1e-17. */
    Number UpperOfControl(const Number& t) const
    {
        const Number reach = sqrt(t * t + 90) + 1;
        return Panels(-reach, reach, 2 * narrowest_, [&](const Number& u) {
            Number logInside = 0, logOne = 0;
            for (std::size_t i = 0; i < lambda_.size(); i++) {
                if (i == 0 || lambda_[i] != lambda_[i - 1]) {
                    Number outside = Tail((t - lambda_[i] * u) / spreads_[i]);
                    if (kind_ == Comparison::kTwoSided) outside += Tail((t + lambda_[i] * u) / spreads_[i]);
                    if (outside >= 1) return Density(u);
                    logOne = log1p(-outside);
                }
                logInside += logOne;
            }
            return Number(-expm1(logInside) * Density(u));
        });
    }

    Number UpperOfRange(const Number& t) const
    {
        Number variances = 0;
        for (const Number& spread : spreads_)
            variances += spread * spread;
        const Number w = t * sqrt(2 * variances / Number(spreads_.size()));
        return Panels(-(w + 10 * widest_), 10 * widest_, 2 * narrowest_, [&](const Number& x) {
            return SmallestAt(x, w);
        });
    }

    /** Density of the smallest mean at x together with another beyond x + w. */
    Number SmallestAt(const Number& x, const Number& w) const
    {
        const bool isEqual =
            std::all_of(spreads_.begin(), spreads_.end(), [](const Number& s) { return abs(s - 1) < 1e-15; });
        if (isEqual) {
            const Number above = Tail(x), others = Number(spreads_.size()) - 1;
            const Number logNear = log1p(-Tail(x + w) / above);
            return (others + 1) * Density(x) * exp(others * log(above)) * -expm1(others * logNear);
        }
        Number sum = 0;
        for (std::size_t i = 0; i < spreads_.size(); i++) {
            Number logAbove = 0, logNear = 0;
            for (std::size_t j = 0; j < spreads_.size(); j++) {
                if (j == i) continue;
                const Number above = Tail(x / spreads_[j]);
                logAbove += log(above);
                logNear += log1p(-Tail((x + w) / spreads_[j]) / above);
            }
            sum += Density(x / spreads_[i]) / spreads_[i] * exp(logAbove) * -expm1(logNear);
        }
        return sum;
    }

    Comparison kind_;
    std::vector<Number> lambda_;
    std::vector<Number> spreads_;
    Number narrowest_;
    Number widest_;
};

}  // namespace reference
