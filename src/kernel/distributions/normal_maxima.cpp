#include "kernel/distributions/normal_maxima.h"

#include <algorithm>
#include <cmath>

#include "kernel/distributions/normal.h"
#include "kernel/distributions/trapezoidal.h"

namespace korvenrg::distributions {

namespace {

constexpr double kMostLambda = 0.99999;  // beyond, the integrand is too steep for the rule
constexpr double kSameFactor = 1e-12;    // relative difference of factors that rounding alone makes
constexpr double kReach = 8.7;           // exp(-kReach^2/2) < 1e-16
constexpr double kFirstStep = 0.9;       // in units of the narrowest spread of the integrand (tuned)
constexpr double kSmallestLog = -745.0;  // exp of it is the smallest double

/** A probability and its complement, both with their digits. */
struct Chance
{
    double inside;
    double outside;
};

Chance PowerOf(Chance one, double members)
{
    if (members == 1) return one;
    return {std::pow(one.inside, members), -std::expm1(members * std::log1p(-one.outside))};
}

Chance Both(Chance a, Chance b)
{
    return {a.inside * b.inside, a.outside + b.outside * (1 - a.outside)};
}

/** P(Z <= x) and P(Z > x). */
Chance NormalChance(double x)
{
    if (x < 0) {
        const double inside = CDFNormalStd(x);
        return {inside, 1 - inside};
    }
    const double outside = pValNormalStd(x);
    return {1 - outside, outside};
}

/** P(low < Z <= high), low <= high, taken on the side of the smaller tails. */
double IntervalChance(double low, double high)
{
    return low > 0 ? pValNormalStd(low) - pValNormalStd(high) : CDFNormalStd(high) - CDFNormalStd(low);
}

/** P(low < Z <= high) and the rest. */
Chance NormalChanceBetween(double low, double high)
{
    const double outside = CDFNormalStd(low) + pValNormalStd(high);
    return {outside < 0.5 ? 1 - outside : IntervalChance(low, high), outside};
}

double OfSide(Chance chance, Side side)
{
    return side == Side::kLower ? chance.inside : chance.outside;
}

/** That all comparisons stay within t when the shared deviate is u:
        one-sided   prod_i Phi((t - lambda_i u) / spread_i)
        two-sided   prod_i [Phi((t - lambda_i u) / spread_i) - Phi((-t - lambda_i u) / spread_i)]
    Source: C. W. Dunnett & M. Sobel (1955), Approximations to the probability integral and certain percentage
    points of a multivariate analogue of Student's t-distribution. */
Chance AllWithin(const ComparisonLaw& law, double t, double u)
{
    const bool isTwoSided = law.kind == ComparisonKind::kTwoSided;
    Chance all = {1, 0};
    for (const auto& [lambda, spread, members] : law.groups) {
        const double shift = lambda * u;
        const Chance one = isTwoSided ? NormalChanceBetween((-t - shift) / spread, (t - shift) / spread)
                                      : NormalChance((t - shift) / spread);
        all = Both(all, PowerOf(one, members));
    }
    return all;
}

/** Where the shared deviate can lie when a comparison exceeds t: about lambda t, within kReach spreads, and
    as far as the tail beyond t is not yet negligible against that beyond t itself. */
Interval ReachOfSharedDeviate(const ComparisonLaw& law, double t)
{
    if (t <= 0) return {-kReach, kReach};
    const double farthest = std::sqrt(t * t + kReach * kReach);
    Interval reach = {0, 0};
    for (const auto& [lambda, spread, members] : law.groups) {
        const double near = std::fabs(lambda) * t - kReach * spread;
        const double far = std::fabs(lambda) * farthest + kReach * spread;
        const bool isFirst = &lambda == &law.groups.front().lambda;
        const Interval own = lambda < 0 ? Interval{-far, -near} : Interval{near, far};
        reach.low = isFirst ? own.low : std::fmin(reach.low, own.low);
        reach.high = isFirst ? own.high : std::fmax(reach.high, own.high);
    }
    return reach;
}

double ControlTail(const ComparisonLaw& law, double t, Side side)
{
    double narrowest = 1;
    for (const ComparisonGroup& group : law.groups)
        narrowest = std::fmin(narrowest, group.spread);
    const auto integrand = [&](double u) { return PDFNormalStd(u) * OfSide(AllWithin(law, t, u), side); };
    const Interval reach = side == Side::kUpper ? ReachOfSharedDeviate(law, t) : Interval{-kReach, kReach};
    if (law.kind == ComparisonKind::kOneSided)
        return IntegrateWithin(integrand, reach, kFirstStep * narrowest);
    const double farthest = std::fmax(-reach.low, reach.high);
    return 2 * IntegrateWithin(integrand, {0, farthest}, kFirstStep * narrowest);
}

/** Density of the largest of k equal standard normals at x, split by whether the others lie within w below:
        k phi(x) [Phi(x) - Phi(x - w)]^(k-1)   and   k phi(x) (Phi(x)^(k-1) - the same power). */
double EqualRangeDensity(double others, double w, double x, Side side)
{
    const double front = (others + 1) * PDFNormalStd(x);
    if (side == Side::kLower) return front * std::pow(IntervalChance(x - w, x), others);
    const double below = CDFNormalStd(x);
    const double far = CDFNormalStd(x - w);
    if (far == 0) return 0;
    return front * std::pow(below, others) * -std::expm1(others * std::log1p(-far / below));
}

/** The same with spreads: the sum over the groups to which the largest mean may belong, of its density times
    the product over the other means. The products are formed once, as sums of logarithms, and the term of the
    largest mean is taken out. */
double UnequalRangeDensity(const ComparisonLaw& law, double w, double x, Side side)
{
    const auto logsOf = [&](const ComparisonGroup& group) {
        const double below = CDFNormalStd(x / group.spread);
        const double near = IntervalChance((x - w) / group.spread, x / group.spread) / below;
        const double far = CDFNormalStd((x - w) / group.spread) / below;
        const double logNear = near < 0.5 ? std::log(near) : std::log1p(-far);
        return Chance{std::fmax(std::log(below), kSmallestLog), std::fmax(logNear, kSmallestLog)};
    };
    double logBelow = 0, logNear = 0;
    for (const ComparisonGroup& group : law.groups) {
        const auto [below, near] = logsOf(group);
        logBelow += group.members * below;
        logNear += group.members * near;
    }
    double density = 0;
    for (const ComparisonGroup& group : law.groups) {
        const auto [below, near] = logsOf(group);
        const double others = std::exp(logBelow - below);
        const double within =
            side == Side::kLower ? std::exp(logNear - near) : -std::expm1(logNear - near);
        density += group.members * PDFNormalStd(x / group.spread) / group.spread * others * within;
    }
    return density;
}

double RangeTail(const ComparisonLaw& law, double t, Side side)
{
    if (t <= 0) return side == Side::kLower ? 0 : 1;
    double least = law.groups.front().spread, most = least, variances = 0;
    for (const auto& [lambda, spread, members] : law.groups) {
        least = std::fmin(least, spread);
        most = std::fmax(most, spread);
        variances += members * spread * spread;
    }
    const double w = t * std::sqrt(2 * variances / (law.comparisons + 1));
    const double square = least * least + most * most;
    const Interval reach = {w * least * least / square - kReach * most,
                            most * std::sqrt(w * w / square + kReach * kReach)};
    const bool isEqual = law.groups.size() == 1;
    const double others = law.comparisons;
    if (isEqual)
        return IntegrateWithin([=](double x) { return EqualRangeDensity(others, w, x, side); },
                               reach,
                               kFirstStep * least);
    return IntegrateWithin([&](double x) { return UnequalRangeDensity(law, w, x, side); },
                           reach,
                           kFirstStep * least);
}

/** Adds one comparison to the group with its factors, or a new group. */
void Gather(std::vector<ComparisonGroup>& groups, double lambda, double spread)
{
    for (ComparisonGroup& group : groups) {
        if (std::fabs(group.lambda - lambda) > kSameFactor) continue;
        if (std::fabs(group.spread - spread) > kSameFactor * spread) continue;
        group.members++;
        return;
    }
    groups.push_back({lambda, spread, 1});
}

}  // namespace

ComparisonLaw MakeComparisonLaw(ComparisonKind kind, const std::vector<double>& lambda)
{
    ComparisonLaw law = {kind, static_cast<int>(lambda.size()), {}};
    if (kind == ComparisonKind::kRange) Gather(law.groups, 0, 1);
    for (const double factor : lambda) {
        const double bounded = std::clamp(factor, -kMostLambda, kMostLambda);
        const double spread = std::sqrt((1 - bounded) * (1 + bounded));
        if (kind == ComparisonKind::kRange)
            Gather(law.groups, 0, spread / std::fabs(bounded));
        else
            Gather(law.groups, bounded, spread);
    }
    return law;
}

double NormalMaximumTail(const ComparisonLaw& law, double t, Side side)
{
    if (law.kind == ComparisonKind::kRange) return RangeTail(law, t, side);
    if (law.kind == ComparisonKind::kTwoSided && t <= 0) return side == Side::kLower ? 0 : 1;
    return ControlTail(law, t, side);
}

}  // namespace korvenrg::distributions
