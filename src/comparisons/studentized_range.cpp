#include "comparisons/studentized_range.h"

#include <cmath>
#include <initializer_list>

#include "kernel/distributions/gamma_functions.h"
#include "kernel/distributions/normal.h"
#include "kernel/scalars/scalars.h"

namespace korvenrg::comparisons {

namespace {

constexpr double kRootHalf = 0.70710678118654752440;
constexpr double kNormalDensityAt0 = 0.3989422804014327;
constexpr double kLog2 = 0.6931471805599453;

/** A node of a Gauss-Legendre rule on -1..1; its mirror image has the same weight. */
struct Node
{
    double abscissa;
    double weight;
};

/** 12 points, from the outermost in. */
constexpr Node kInnerRule[] = {{0.98156063424671925069, 0.04717533638651182719},
                               {0.90411725637047485668, 0.10693932599531843096},
                               {0.76990267419430468704, 0.16007832854334622633},
                               {0.58731795428661744730, 0.20316742672306592175},
                               {0.36783149899818019375, 0.23349253653835480876},
                               {0.12523340851146891547, 0.24914704581340278500}};
constexpr int kInnerPairs = 6;

/** 16 points, from the outermost in. */
constexpr Node kOuterRule[] = {{0.98940093499164993260, 0.02715245941175409485},
                               {0.94457502307323257608, 0.06225352393864789286},
                               {0.86563120238783174388, 0.09515851168249278481},
                               {0.75540440835500303390, 0.12462897125553387205},
                               {0.61787624440264374845, 0.14959598881657673208},
                               {0.45801677765722738634, 0.16915651939500253819},
                               {0.28160355077925891323, 0.18260341504492358887},
                               {0.09501250983763744019, 0.18945061045506849629}};

// The inner integral.
constexpr double kRangeEnd = 8.0;     // half a range from here on has probability 1; the integral ends here
constexpr double kWideRange = 3.0;    // up to here the integral takes three pieces, beyond it two
constexpr double kMostSquare = 60.0;  // nodes whose square is above are left out with all behind them
constexpr double kErfReach = 0.75;    // times sqrt(2): from here on a tail is taken from its exponential
constexpr double kPowerLog = -50.0;   // a first term below exp of this counts as 0
constexpr double kIntegrandLog = -30.0;  // and so do a term of the integrand and the whole

// The outer integral.
constexpr double kManyDf = 25000.0;
constexpr int kMostIntervals = 50;
constexpr double kNodeLog = -30.0;       // nodes whose density is below exp of this are skipped
constexpr double kLastInterval = 1E-14;  // an interval that adds no more ends the sum

// The inverse.
constexpr double kSecantStop = 0.0001;
constexpr int kMostSecants = 49;
constexpr double kNoQuantile = -1.0;

/** The range of cc normals with what depends on cc and rr alone. */
struct RangeLaw
{
    double rr;
    double cc;
    double leastCentral;     ///< below it, the chance that no normal leaves the range about 0 counts as 0
    double leastDifference;  ///< the same for the chance inside the range at a node
    double leastTotal;
    double reach;  ///< as far above the lowest end of the range a largest normal can stand for that
    int power;     ///< cc - 1 when it is a whole number that squaring serves, else 0
};

constexpr double kMostWholePower = 128.0;

RangeLaw RangeLawOf(double rr, double cc)
{
    const double power = cc - 1;
    const bool whole = power >= 1 && power <= kMostWholePower && power == std::floor(power);
    const double leastDifference = std::exp(kIntegrandLog / power);
    return {rr,
            cc,
            std::exp(kPowerLog / cc),
            leastDifference,
            std::exp(kIntegrandLog / rr),
            -InvCDFNormalStd(leastDifference),
            whole ? static_cast<int>(power) : 0};
}

double WholePower(double base, int exponent)
{
    double result = (exponent & 1) != 0 ? base : 1.0;
    while ((exponent >>= 1) != 0) {
        base *= base;
        if ((exponent & 1) != 0) result *= base;
    }
    return result;
}

/** r^(cc - 1), the chance that the other normals fall inside the range. */
double ChanceOfOthers(const RangeLaw& law, double r)
{
    return law.power != 0 ? WholePower(r, law.power) : std::pow(r, law.cc - 1);
}

/** Twice the normal distribution function, derf(u / sqrt(2)) + 1 for u > 0 and derfc(-u / sqrt(2)) otherwise. The
    exponential of the tail, exp(-u^2 / 2), comes from the caller, who may have it already. */
template <typename Exponential>
double TwiceNormal(double u, const Exponential& exponential)
{
    const double z = std::fabs(u) * kRootHalf;
    if (!(z > kErfReach)) return 1 + derf(u * kRootHalf);
    const double tail = distributions::ScaledErfc(z) * exponential();
    return u > 0 ? 2 - tail : tail;
}

/** The integrand's sum over one piece; the largest normal stands at the node, the others within w below it. Their
    chance r falls from node to node, so one that counts as 0 ends the integral. */
double PieceSum(const RangeLaw& law, double w, double centre, double halfWidth, bool& ended)
{
    double sum = 0;
    for (int k = 0; k < 2 * kInnerPairs && !ended; ++k) {
        const bool left = k < kInnerPairs;
        const Node& node = kInnerRule[left ? k : 2 * kInnerPairs - 1 - k];
        const double largest = centre + halfWidth * (left ? -node.abscissa : node.abscissa);
        const double square = largest * largest;
        if (square > kMostSquare) break;
        ended = largest - w > law.reach;  // r is below the normal tail from there
        if (ended) break;
        const double lowest = largest - w;
        const double exponential = std::exp(-0.5 * square);
        const double r = 0.5 * TwiceNormal(largest, [&] { return exponential; }) -
                         0.5 * TwiceNormal(lowest, [&] { return std::exp(-0.5 * lowest * lowest); });
        ended = !(r >= law.leastDifference);
        if (!ended) sum += node.weight * exponential * ChanceOfOthers(law, r);
    }
    return sum;
}

/** The range lies about 0, or its largest normal is beyond half of it. */
double RangeProbability(const RangeLaw& law, double w, bool& saturated)
{
    saturated = false;
    const double half = 0.5 * w;
    if (half >= kRangeEnd) return 1;

    const double central = derf(half * kRootHalf);
    double total = central >= law.leastCentral ? central * ChanceOfOthers(law, central) : 0;
    const int pieces = w <= kWideRange ? 3 : 2;
    const double halfWidth = 0.5 * (kRangeEnd - half) / pieces;
    bool ended = false;
    for (int piece = 0; piece < pieces && !ended; ++piece) {
        const double centre = half + (2 * piece + 1) * halfWidth;
        total += PieceSum(law, w, centre, halfWidth, ended) * 2 * halfWidth * law.cc * kNormalDensityAt0;
    }
    if (law.leastTotal >= total) return 0;
    const double probability = law.rr == 1 ? total : std::pow(total, law.rr);
    saturated = probability >= 1;
    return saturated ? 1 : probability;
}

/** Half the length of an interval over the scale. */
double IntervalStep(double df)
{
    if (df <= 100) return 1;
    if (df <= 800) return 0.5;
    return df <= 5000 ? 0.25 : 0.125;
}

/** The density of u, twice the mean square over its expectation, times the step. */
struct ScaleDensity
{
    double halfDf;
    double quarterDf;
    double base;

    double LogAt(double u) const
    {
        return std::log(u) * (halfDf - 1) + base - u * quarterDf;
    }
};

ScaleDensity ScaleDensityOf(double df, double step)
{
    const double halfDf = 0.5 * df;
    return {halfDf, 0.25 * df, halfDf * std::log(df) - df * kLog2 - GammaLn(halfDf) + std::log(step)};
}

/** One interval of the outer integral. */
double IntervalSum(const RangeLaw& law, const ScaleDensity& density, double q, double centre, double step)
{
    double sum = 0;
    for (const double side : {-1.0, 1.0}) {
        for (const Node& node : kOuterRule) {
            const double u = centre + side * node.abscissa * step;
            const double logDensity = density.LogAt(u);
            if (logDensity < kNodeLog) continue;
            bool saturated = false;
            const double probability = RangeProbability(law, std::sqrt(0.5 * u) * q, saturated);
            sum += std::exp(logDensity) * probability * node.weight;
        }
    }
    return sum;
}

double StudentizedRangeProbability(const RangeLaw& law, double q, double df)
{
    // The textbook takes many degrees of freedom as infinite and a saturated integral as 1. Here the first
    // result only matters when saturated, and is then 0. Pinned by StudentizedRange.HugeStatisticAtHugeDf.
    if (df > kManyDf) {
        bool saturated = false;
        RangeProbability(law, q, saturated);
        if (saturated) return 0;
    }
    const double step = IntervalStep(df);
    const ScaleDensity density = ScaleDensityOf(df, step);
    double total = 0;
    for (int i = 1; i <= kMostIntervals; ++i) {
        const double sum = IntervalSum(law, density, q, (2 * i - 1) * step, step);
        if (i * step >= 1 && sum <= kLastInterval) break;
        total += sum;
    }
    return total >= 1 ? 1 : total;
}

/** Whether a secant step ended the search: |change of q| < 0.0001. */
bool SecantStops(double q, double before)
{
    return std::fabs(q - before) < kSecantStop;
}

// Odeh and Evans' rational approximation of the normal deviate, save that their second coefficient is -0.0204231210245:
// here the deviate is a fifth too small at 95 %, and stays so, since the quantile's last digits hang on the start of its
// search. Pinned by StudentizedRange.StartOfTheInverse.
double NormalDeviate(double tail)
{
    const double y = std::sqrt(std::log(1 / (tail * tail)));
    const double numerator =
        (((-4.53642210148E-5 * y - 0.204231210125) * y - 0.342242088547) * y - 1.0) * y + 0.322232421088;
    const double denominator =
        (((0.0038560700634 * y + 0.10353775285) * y + 0.531103462366) * y + 0.588581570495) * y +
        0.099348462606;
    return y + numerator / denominator;
}

constexpr double kStartManyDf = 120.0;  // from here the start takes the degrees of freedom as infinite

}  // namespace

double WProb(double w, double rr, double cc, bool& saturated)
{
    return RangeProbability(RangeLawOf(rr, cc), w, saturated);
}

double PTukey(double q, double rr, double cc, double df)
{
    return StudentizedRangeProbability(RangeLawOf(rr, cc), q, df);
}

double QTukey(double p, double rr, double cc, double df)
{
    if (p == 0) return 0;
    const RangeLaw law = RangeLawOf(rr, cc);
    const auto excess = [&](double q) { return StudentizedRangeProbability(law, q, df) - p; };
    double before = QTukeyStart(p, cc, df);
    double excessBefore = excess(before);
    double now = excessBefore <= 0 ? before + 1 : Max(before - 1, 0.0);
    double excessNow = excess(now);
    for (int i = 1; i <= kMostSecants; ++i) {
        const double secant = now - (now - before) * excessNow / (excessNow - excessBefore);
        const double next = secant < 0 ? 0 : secant;
        const double excessNext = excess(next);
        if (SecantStops(next, now)) return next;
        before = now;
        excessBefore = excessNow;
        now = next;
        excessNow = excessNext;
    }
    return kNoQuantile;
}

double QTukeyStart(double p, double cc, double df)
{
    double t = NormalDeviate(0.5 - 0.5 * p);
    if (df < kStartManyDf) t += (t * t * t + t) / df / 4;
    double slope = 0.8832 - 0.2368 * t;
    if (df < kStartManyDf) slope += 1.208 * t / df - 1.214 / df;
    return t * (slope * std::log(cc - 1) + 1.4142);
}

}  // namespace korvenrg::comparisons
