/** The trapezoidal rule for smooth integrands that vanish with their derivatives at both ends. */
#pragma once

#include <cmath>

namespace korvenrg::distributions {

struct Interval
{
    double low;
    double high;
};

/** A finished pass of the rule: count steps from low on, sum of the integrand over the ends of the steps,
    the outermost two counted half. */
struct TrapezoidalPass
{
    double low;
    double step;
    int count;
    double sum;
};

/** Halves the step until two results agree.

    The error of the rule falls like exp(-c / step) or faster for an analytic bell-shaped integrand, so it is
    at least squared by each halving: results that agree to kHalvingAgreement leave in the second a
    relative error of about the square of that.
    Source: L. N. Trefethen & J. A. C. Weideman (2014), The exponentially convergent trapezoidal rule. */
template <class Integrand>
double RefineByHalving(const Integrand& integrand, TrapezoidalPass pass)
{
    constexpr double kHalvingAgreement = 1e-7;
    constexpr int kMostHalvings = 6;

    double integral = pass.sum * pass.step;
    for (int halving = 0; halving < kMostHalvings; halving++) {
        for (int i = 0; i < pass.count; i++)
            pass.sum += integrand(pass.low + (i + 0.5) * pass.step);
        pass.step *= 0.5;
        pass.count *= 2;
        const double before = integral;
        integral = pass.sum * pass.step;
        if (std::fabs(integral - before) <= kHalvingAgreement * std::fabs(integral)) break;
    }
    return integral;
}

/** Integral over an interval; at each end the integrand is negligible or continues as its mirror image. */
template <class Integrand>
double IntegrateWithin(const Integrand& integrand, Interval range, double firstStep)
{
    constexpr double kMostNodes = 1 << 14;  // of the first pass; bounds the work

    const double width = range.high - range.low;
    const int count = static_cast<int>(std::fmin(std::ceil(width / firstStep), kMostNodes));
    TrapezoidalPass pass = {range.low, width / count, count, 0};
    pass.sum = 0.5 * (integrand(range.low) + integrand(range.high));
    for (int i = 1; i < count; i++)
        pass.sum += integrand(pass.low + i * pass.step);
    return RefineByHalving(integrand, pass);
}

/** Integral over the whole line of a positive function with one peak: the first pass walks from 0 to both
    sides until the function has fallen to kNegligible of its largest value. */
template <class Integrand>
double IntegrateOutward(const Integrand& integrand, double firstStep)
{
    constexpr double kNegligible = 1e-17;
    constexpr int kMostSteps = 2000;  // to either side

    double largest = integrand(0.0);
    double sum = largest;
    const auto walk = [&](double signedStep) {
        double before = sum;
        for (int i = 1; i < kMostSteps; i++) {
            const double value = integrand(i * signedStep);
            sum += value;
            if (value <= kNegligible * largest && value <= before) return i;
            largest = std::fmax(largest, value);
            before = value;
        }
        return kMostSteps;
    };
    const int right = walk(firstStep);
    const int left = walk(-firstStep);
    return RefineByHalving(integrand, {-left * firstStep, firstStep, left + right, sum});
}

}  // namespace korvenrg::distributions
