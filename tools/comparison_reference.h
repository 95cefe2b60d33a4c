/** The laws of multiple comparisons in extended precision: the oracle of the reference tables and of the accuracy
    programme. Unlike the engine: Gauss-Legendre panels of 30 points in both integrals, the logarithm of the scale taken
    as it is, products as sums of logarithms, the range conditioned on its smallest mean. Number is long double
    (64 bits on x86) or a type of Boost.Multiprecision. */
#pragma once

#include <algorithm>
#include <boost/math/constants/constants.hpp>
#include <boost/math/quadrature/gauss.hpp>
#include <boost/math/special_functions/erf.hpp>
#include <boost/math/special_functions/expm1.hpp>
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
        const Number front = 2 * GammaFront(a);
        const Number centre = -log(1 + t * t / Number(df)) / 2;
        const Number low = centre - std::max(Number(60) / Number(df), Number(10) / sqrt(2 * Number(df)));
        const Number high = log(1 + 14 / sqrt(Number(df)) + 8 / Number(df));
        const Number width = std::min(Number(1), 2 / sqrt(2 * Number(df)));
        return Panels(low, high, width, [&](const Number& y) {
            return front * exp(a * (2 * y - boost::math::expm1(Number(2 * y)))) * UpperOfNormal(t * exp(y));
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

    /** a^a e^-a / gamma(a), by Stirling's series where the powers would overflow. */
    static Number GammaFront(const Number& a)
    {
        if (a < 100) return exp(a * log(a) - a - boost::math::lgamma(a));
        const Number square = a * a;
        const Number delta =
            (Number(1) / 12 -
             (Number(1) / 360 - (Number(1) / 1260 - Number(1) / 1680 / square) / square) / square) /
            a;
        return sqrt(a / boost::math::constants::two_pi<Number>()) * exp(-delta);
    }

    static Number Tail(const Number& z)
    {
        return boost::math::erfc(Number(z / boost::math::constants::root_two<Number>())) / 2;
    }

    static Number Density(const Number& z)
    {
        return exp(-z * z / 2) / boost::math::constants::root_two_pi<Number>();
    }

    /** Beyond the cut the tail is below 1e-340: a deviate beyond 40 for one of the means at least. Without it the
        panels would follow t without end where a scale of few degrees of freedom runs over many decades. */
    Number UpperOfNormal(const Number& t) const
    {
        const Number cut = kind_ == Comparison::kRange ? Number(80 * widest_ / RangeScale()) : Number(40);
        if (t > cut) return 0;
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

    /** The width of the range over t. */
    Number RangeScale() const
    {
        Number variances = 0;
        for (const Number& spread : spreads_)
            variances += spread * spread;
        return sqrt(2 * variances / Number(spreads_.size()));
    }

    Number UpperOfRange(const Number& t) const
    {
        const Number w = t * RangeScale();
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
        std::vector<Number> logAbove, logNear;
        for (const Number& spread : spreads_) {
            const Number above = Tail(x / spread);
            logAbove.push_back(log(above));
            logNear.push_back(log1p(-Tail((x + w) / spread) / above));
        }
        Number sum = 0;
        for (std::size_t i = 0; i < spreads_.size(); i++) {
            Number othersAbove = 0, othersNear = 0;
            for (std::size_t j = 0; j < spreads_.size(); j++) {
                if (j == i) continue;
                othersAbove += logAbove[j];
                othersNear += logNear[j];
            }
            sum += Density(x / spreads_[i]) / spreads_[i] * exp(othersAbove) * -expm1(othersNear);
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
