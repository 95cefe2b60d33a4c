#include "kernel/distributions/incomplete_beta.h"

#include <cmath>
#include <limits>

#include "kernel/distributions/continued_fraction.h"
#include "kernel/distributions/gamma_functions.h"
#include "kernel/distributions/uniform_expansion.h"

namespace korvenrg::distributions {

namespace {

constexpr double kTwoPi = 6.28318530717958647693;
constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
constexpr double kSmallShape = 0.1;           // below it one minus a tail beside 1 would cost digits
constexpr double kVanishingDeviance = 800.0;  // exp of its negative is 0
constexpr double kDeepDeviance = 20.0;        // beyond it the exponent is formed in two-doubles (tuned)
constexpr double kRatioStart = -0.5;          // log(1 + u) is taken from 1 + u itself below
constexpr double kSideShift = 0.75;           // see IsLowerSide (tuned)

/** The parts of 1 / B(a, b) = root exp(correction) / (x0^a y0^b) with x0 = a / (a + b), y0 = b / (a + b); the
    correction collects the Stirling errors. */
struct BetaScale
{
    double root;
    double correction;
};

BetaScale ScaleOf(double a, double b)
{
    const double sum = a + b;
    const double small = std::fmin(a, b);
    const double large = std::fmax(a, b);
    return {std::sqrt(small * (large / sum) / kTwoPi),
            (StirlingError(sum) - StirlingError(large)) - StirlingError(small)};
}

/** x^a y^b / B(a, b) from log(x / x0) and log(y / y0); the exponent is a two-double, since its parts may
    be 1e9 times their sum. */
double WeightOfLogs(double a, double b, const BetaScale& scale, TwoDouble logX, TwoDouble logY)
{
    const TwoDouble exponent = Add(Multiply(logX, a), Multiply(logY, b));
    return TimesExp(scale.root, Add(exponent, scale.correction));
}

double DeepWeight(double a, double b, const BetaScale& scale, const BetaPoint& point)
{
    const TwoDouble sum = ExactSum(a, b);
    const TwoDouble odds = Divide(point.oddsOver, point.oddsUnder);
    const TwoDouble yRatio = Divide(Divide(sum, b), Add(odds, 1));
    const TwoDouble xRatio = Divide(Multiply(Multiply(yRatio, odds), b), a);
    return WeightOfLogs(a, b, scale, Log(xRatio), Log(yRatio));
}

/** log(1 + u) - u where 1 + u = ratio is known by itself too. */
double Deviation(double u, double ratio)
{
    return u < kRatioStart ? std::log(ratio) - u : Log1pMinusX(u);
}

/** -[a log(x / x0) + b log(y / y0)]. With lambda = a y - b x is x / x0 = 1 - lambda / a and
    y / y0 = 1 + lambda / b, hence the same as -a g(-lambda / a) - b g(lambda / b) with
    g(u) = log(1 + u) - u <= 0: a sum without cancellation. The deviance form after C. Loader (2000), Fast and
    accurate computation of binomial probabilities. */
double DevianceAt(double a, double b, const BetaPoint& point)
{
    const double sum = a + b;
    return -a * Deviation(-point.belowMean / a, point.x * (sum / a)) -
           b * Deviation(point.belowMean / b, point.y * (sum / b));
}

/** x^a y^b / B(a, b). The rounding of the deviance reaches it multiplied by the deviance's size: the deep
    tail takes two-doubles. */
double WeightAt(double a, double b, const BetaScale& scale, const BetaPoint& point, double deviance)
{
    if (!(deviance < kVanishingDeviance)) return 0;
    if (deviance > kDeepDeviance) return DeepWeight(a, b, scale, point);
    return scale.root * std::exp(scale.correction - deviance);
}

/** The steps of the continued fraction of I_x(a, b) B(a, b) / (x^a y^b), even part, lambda = a y - b x:
        alpha(n+1) = (a+n-1) (a+b+n-1) n (b-n) x^2 / (a+2n-1)^2
        beta(n+1)  = n + n (b-n) x / (a+2n-1) + (a+n) (lambda + 1 + n (1 + y)) / (a+2n+1).
    Source: A. R. DiDonato & A. H. Morris (1992), Significant digit computation of the incomplete beta
    function ratios. */
class BetaSteps
{
  public:
    BetaSteps(double a, double b, double x, double y, double lambda)
        : a_(a), b_(b), sum_(a + b), x_(x), y_(y), lambdaPlus1_(lambda + 1)
    {
    }

    FractionStep Next()
    {
        const double n = n_;
        n_ += 1;
        const double following = 1 / (a_ + 2 * n + 1);
        const double main = (a_ + n) * following * (lambdaPlus1_ + n * (1 + y_));
        if (n == 0) {
            inverse_ = following;
            return {1, main};
        }
        const double scaled = x_ * inverse_;
        const double common = n * (b_ - n) * scaled;
        inverse_ = following;
        return {(a_ + n - 1) * scaled * (sum_ + n - 1) * common, n + common + main};
    }

  private:
    double a_, b_, sum_, x_, y_, lambdaPlus1_;
    double n_ = 0;
    double inverse_ = 0;  // 1 / (a + 2n - 1)
};

/** 1 - I_x(a, b) for small a and x below about the mean, where (1 + b) x is at most about 1. With
        1 + a s = sum_n a (1-b)_n x^n / (n! (a + n)),  L = a log x + log [gamma(a + b) / (gamma(1 + a) gamma(b))]
    it is -(exp(L) - 1) - exp(L) a s: two terms of the size of the result, as for the incomplete gamma function
    (Abramowitz & Stegun 1964, 15.1.1 and 26.5.23). */
double ComplementOfSmallShape(double a, double b, double x)
{
    constexpr int kMostTerms = 200;
    constexpr double kSeriesEnd = 1e-18;
    double term = 1;
    double sum = 0;
    for (int n = 1; n <= kMostTerms && std::fabs(term) > kSeriesEnd; n++) {
        term *= (n - b) / n * x;
        sum += term / (a + n);
    }
    const double logPower = a * std::log(x) + LogGammaRatio(b, a) - LogGammaOf1Plus(a);
    return -std::expm1(logPower) - std::exp(logPower) * a * sum;
}

/** Whether the lower tail is the one to compute: x up to (a + d) / (a + b + 2 d), d = kSideShift. That is
    beyond the mean on the side of the smaller parameter, where the other tail's fraction is slow; the other
    tail is still large enough there to be one minus this one. */
bool IsLowerSide(const BetaPoint& point)
{
    return point.belowMean >= kSideShift * (point.x - point.y);
}

}  // namespace

TailPair BetaTails(double a, double b, const BetaPoint& point)
{
    const BetaScale scale = ScaleOf(a, b);
    const double deviance = DevianceAt(a, b, point);
    const double weight = WeightAt(a, b, scale, point, deviance);
    const double share = std::fmax(a, b) / (a + b);
    const double harmonic = std::fmin(a, b) * share;
    if (HasNormalForm(harmonic, deviance)) {
        const double w = harmonic / (a + b);
        return TailsOfNormalForm({harmonic, w, (b - a) / (a + b), deviance, point.belowMean, weight});
    }
    if (IsLowerSide(point)) {
        BetaSteps steps(a, b, point.x, point.y, point.belowMean);
        const double lower = weight == 0 ? 0 : AtMostOne(weight * ContinuedFraction(steps));
        const bool isLost = a < kSmallShape && lower > 0.5;
        const double upper = isLost ? ComplementOfSmallShape(a, b, point.x) : 1 - lower;
        return {isLost ? 1 - upper : lower, upper, weight, point.belowMean, deviance};
    }
    BetaSteps steps(b, a, point.y, point.x, -point.belowMean);
    const double upper = weight == 0 ? 0 : AtMostOne(weight * ContinuedFraction(steps));
    const bool isLost = b < kSmallShape && upper > 0.5;
    const double lower = isLost ? ComplementOfSmallShape(b, a, point.y) : 1 - upper;
    return {lower, isLost ? 1 - lower : upper, weight, point.belowMean, deviance};
}

// I_x(a, b) = x^a / (a B(a, b)) (1 + O(x (1 + b))).
TailPair BetaTailsOfExtreme(double a, double b, TwoDouble logOdds)
{
    if (logOdds.high > 0) {
        const TailPair mirror = BetaTailsOfExtreme(b, a, Negative(logOdds));
        return {mirror.upper, mirror.lower, mirror.weight, -mirror.slope, mirror.deviance};
    }
    const TwoDouble sum = ExactSum(a, b);
    const TwoDouble logX = Add(logOdds, Log(Divide(sum, a)));
    const TwoDouble logY = Log(Divide(sum, b));
    const double weight = WeightOfLogs(a, b, ScaleOf(a, b), logX, logY);
    const double lower = AtMostOne(weight / a);
    return {lower, 1 - lower, weight, a, -(a * logX.high + b * logY.high)};
}

namespace {

constexpr double kSmallestPoint = 1e-280;  // a two-double keeps both halves above

/** Both tails for plain arguments, the ends and the invalid ones included. */
TailPair CheckedBetaTails(double a, double b, double x, double y)
{
    if (std::isnan(x) || std::isnan(y) || !(a > 0) || !(b > 0) || std::isinf(a) || std::isinf(b))
        return {kNaN, kNaN, kNaN, kNaN, kNaN};
    if (x <= 0) return {0, 1, 0, a, 0};
    if (y <= 0) return {1, 0, 0, -b, 0};
    if (x < kSmallestPoint) return BetaTailsOfExtreme(a, b, Log({x, 0}));
    if (y < kSmallestPoint) return BetaTailsOfExtreme(a, b, Negative(Log({y, 0})));
    const TwoDouble exactX = x <= y ? TwoDouble{x, 0} : ExactSum(1, -y);
    const TwoDouble exactY = x <= y ? ExactSum(1, -x) : TwoDouble{y, 0};
    const double belowMean = Add(Multiply(exactY, a), Negative(Multiply(exactX, b))).high;
    return BetaTails(a, b, {exactX.high, exactY.high, belowMean, exactX, exactY});
}

}  // namespace

double IncompleteBeta(double a, double b, double x, double y)
{
    return CheckedBetaTails(a, b, x, y).lower;
}

double IncompleteBetaComplement(double a, double b, double x, double y)
{
    return CheckedBetaTails(a, b, x, y).upper;
}

}  // namespace korvenrg::distributions
