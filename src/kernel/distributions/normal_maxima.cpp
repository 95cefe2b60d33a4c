#include "kernel/distributions/normal_maxima.h"

#include <algorithm>
#include <cmath>

#include "kernel/distributions/gamma_functions.h"
#include "kernel/distributions/trapezoidal.h"

namespace korvenrg::distributions {

namespace {

constexpr double kMostLambda = 0.99999;  // beyond, the integrand is too steep for the rule
constexpr double kSameFactor = 1e-12;    // relative difference of factors that rounding alone makes
constexpr double kReach = 8.3;           // exp(-kReach^2/2) < 1.1e-15
constexpr double kBeyondAll = 1e6;       // in standard deviations of a difference: no double holds the tail
constexpr double kRootHalf = 0.707106781186547524401;
constexpr double kReciprocalRootTwoPi = 0.398942280401432677940;

/** The first step of the rule: the narrowest spread of the integrand, and less with many comparisons, whose product
    falls steeply (tuned). */
double FirstStep(double narrowest, int comparisons)
{
    return narrowest / std::sqrt(1 + std::log(comparisons));
}

/** P(Z > x) for x >= 0. One rounding of the exponent, some tens of ulps far out, is enough here. */
double NormalTail(double x)
{
    return 0.5 * ScaledErfc(x * kRootHalf) * std::exp(-0.5 * x * x);
}

double NormalDensity(double x)
{
    return kReciprocalRootTwoPi * std::exp(-0.5 * x * x);
}

/** A probability and its complement, both with their digits. */
struct Chance
{
    double inside;
    double outside;
};

Chance Both(Chance a, Chance b)
{
    return {a.inside * b.inside, a.outside + b.outside * a.inside};
}

/** The chance that as many independent events as members, all alike, happen: by repeated squaring. */
Chance PowerOf(Chance one, int members)
{
    Chance power = {1, 0};
    for (int bit = members; bit > 0; bit /= 2) {
        if (bit % 2 == 1) power = Both(power, one);
        one = Both(one, one);
    }
    return power;
}

/** P(Z <= x) and P(Z > x). */
Chance NormalChance(double x)
{
    const double tail = NormalTail(std::fabs(x));
    return x < 0 ? Chance{tail, 1 - tail} : Chance{1 - tail, tail};
}

/** P(low < Z <= high) and the rest, low <= high; a narrow interval is taken on the side of the smaller
    tails. */
Chance NormalChanceBetween(double low, double high)
{
    const Chance atLow = NormalChance(low);
    const Chance atHigh = NormalChance(high);
    const double inside = low > 0 ? atLow.outside - atHigh.outside : atHigh.inside - atLow.inside;
    return {inside, atLow.inside + atHigh.outside};
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
    const auto integrand = [&](double u) { return NormalDensity(u) * OfSide(AllWithin(law, t, u), side); };
    const Interval reach = side == Side::kUpper ? ReachOfSharedDeviate(law, t) : Interval{-kReach, kReach};
    if (law.kind == ComparisonKind::kOneSided)
        return IntegrateWithin(integrand, reach, FirstStep(narrowest, law.comparisons));
    const double farthest = std::fmax(-reach.low, reach.high);
    return 2 * IntegrateWithin(integrand, {0, farthest}, FirstStep(narrowest, law.comparisons));
}

/** What the means taken in so far leave at one point x, with f the density of a mean at x, below = P(mean <= x)
    and near = P(x - w < mean <= x):
        below    prod below_j                        near    prod near_j
        beyond   their difference
        within   sum_i f_i prod_(j != i) near_j      (the largest is at x, all others within w)
        outside  sum_i f_i (prod_(j != i) below_j - prod_(j != i) near_j)
    Every term is positive, so the small ones keep their digits. */
struct RangeState
{
    double below = 1;
    double near = 1;
    double beyond = 0;
    double within = 0;
    double outside = 0;

    void TakeIn(double f, double meanBelow, double meanNear, double meanFar)
    {
        outside = meanBelow * outside + meanFar * within + f * beyond;
        within = meanNear * within + f * near;
        beyond = meanBelow * beyond + meanFar * near;
        below *= meanBelow;
        near *= meanNear;
    }
};

/** Two sets of means joined into one. */
RangeState Joined(const RangeState& a, const RangeState& b)
{
    RangeState both;
    both.below = a.below * b.below;
    both.near = a.near * b.near;
    both.beyond = a.below * b.beyond + a.beyond * b.near;
    both.within = a.within * b.near + b.within * a.near;
    both.outside = a.outside * b.below + a.within * b.beyond + b.outside * a.below + b.within * a.beyond;
    return both;
}

/** Density of the largest mean at x, split by whether all others lie within w below it; for k equal means
        k phi(x) [Phi(x) - Phi(x - w)]^(k-1)   and   k phi(x) (Phi(x)^(k-1) - the same power).
    Source: H. O. Hartley (1942), The range in random samples. */
Chance RangeDensity(const ComparisonLaw& law, double w, double x)
{
    RangeState all;
    for (const auto& [lambda, spread, members] : law.groups) {
        const double z = x / spread;
        const Chance at = NormalChance(z);
        const Chance far = NormalChance(z - w / spread);
        const double near = z > w / spread ? far.outside - at.outside : at.inside - far.inside;
        RangeState one;
        one.TakeIn(NormalDensity(z) / spread, at.inside, near, far.inside);
        for (int bit = members; bit > 0; bit /= 2) {
            if (bit % 2 == 1) all = Joined(all, one);
            if (bit > 1) one = Joined(one, one);
        }
    }
    return {all.within, all.outside};
}

/** Where the largest mean can lie when the range exceeds w: if it has standard deviation a and the least one b,
    about w a^2 / (a^2 + b^2). */
Interval ReachOfLargestMean(double least, double most, double w)
{
    const double square = least * least + most * most;
    return {w * least * least / square - kReach * kRootHalf * most,
            most * std::sqrt(w * w / square + kReach * kReach)};
}

/** What turns t into a range: the root of twice the average variance of the means. */
double RangeScale(const ComparisonLaw& law)
{
    double variances = 0;
    for (const ComparisonGroup& group : law.groups)
        variances += group.members * group.spread * group.spread;
    return std::sqrt(2 * variances / (law.comparisons + 1));
}

double RangeTail(const ComparisonLaw& law, double t, Side side)
{
    double least = law.groups.front().spread;
    double most = least;
    for (const ComparisonGroup& group : law.groups) {
        least = std::fmin(least, group.spread);
        most = std::fmax(most, group.spread);
    }
    const double w = t * RangeScale(law);
    if (law.equalRange && side == Side::kUpper && w <= EqualRange::kWidest)
        return law.equalRange->UpperTail(w);
    const Interval reach =
        side == Side::kUpper ? ReachOfLargestMean(least, most, w) : Interval{-kReach * most, kReach * most};
    const auto integrand = [&](double x) { return OfSide(RangeDensity(law, w, x), side); };
    return IntegrateWithin(integrand, reach, FirstStep(least, law.comparisons));
}

/** Whether P(largest <= t) is below rounding by a bound: no interval holds more of a normal deviate than the one
    about its mean. For a range the largest mean is free, which takes one factor from the product. */
bool IsCertainlyExceeded(const ComparisonLaw& law, double t)
{
    constexpr double kNegligibleLog = -41.0;
    if (law.kind == ComparisonKind::kOneSided) return false;
    const bool isRange = law.kind == ComparisonKind::kRange;
    const double half = isRange ? 0.5 * RangeScale(law) * t : t;
    double logBound = isRange ? std::log(law.comparisons + 1.0) : 0;
    double largestFactor = kNegligibleLog;
    for (const auto& [lambda, spread, members] : law.groups) {
        const double factor = std::log(derf(half / spread * kRootHalf));
        logBound += members * factor;
        largestFactor = std::fmax(largestFactor, factor);
    }
    return logBound - (isRange ? largestFactor : 0) < kNegligibleLog;
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
    ComparisonLaw law = {kind, static_cast<int>(lambda.size()), {}, std::nullopt};
    if (kind == ComparisonKind::kRange) Gather(law.groups, 0, 1);
    for (const double factor : lambda) {
        const double bounded = std::clamp(factor, -kMostLambda, kMostLambda);
        const double spread = std::sqrt((1 - bounded) * (1 + bounded));
        if (kind == ComparisonKind::kRange)
            Gather(law.groups, 0, spread / std::fabs(bounded));
        else
            Gather(law.groups, bounded, spread);
    }
    const int k = law.comparisons + 1;
    const bool isEqual = kind == ComparisonKind::kRange && law.groups.size() == 1;
    if (isEqual && k >= EqualRange::kLeastMeans && k <= EqualRange::kMostMeans) law.equalRange.emplace(k);
    return law;
}

double NormalMaximumTail(const ComparisonLaw& law, double t, Side side)
{
    const double least = law.kind == ComparisonKind::kOneSided ? -kBeyondAll : 0;
    if (t <= least) return side == Side::kLower ? 0 : 1;
    if (t >= kBeyondAll) return side == Side::kLower ? 1 : 0;
    if (side == Side::kUpper && IsCertainlyExceeded(law, t)) return 1;
    return law.kind == ComparisonKind::kRange ? RangeTail(law, t, side) : ControlTail(law, t, side);
}

}  // namespace korvenrg::distributions
