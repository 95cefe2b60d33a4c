#include "kernel/distributions/incomplete_beta.h"

#include <cmath>
#include <limits>

#include "kernel/distributions/coefficients.h"
#include "kernel/distributions/continued_fraction.h"
#include "kernel/distributions/gamma_functions.h"

namespace korvenrg::distributions {

namespace {

constexpr double kTwoPi = 6.28318530717958647693;
constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
constexpr double kMeanExpansionStart = 30.0;  // a b / (a + b) from which kMeanExpansion is exact to 1e-19 (derived)
constexpr double kCentralWidth = 2.0;         // standard deviations about the mean for the central series (tuned)
constexpr int kMostCentralTerms = 200;        // bounds the loop; needs about 40
constexpr double kCentralTolerance = 1e-17;   // relative size of the first term left out
constexpr double kNoTail = -800.0;            // exp of less is 0

/** The parameters with their sum to full accuracy. */
struct BetaShape
{
    double a;
    double b;
    TwoDouble sum;
};

/** sqrt(ab / (2 pi (a + b))) and the Stirling errors of the complete beta function: 1 / B(a, b) without its powers. */
struct BetaScale
{
    double root;
    double correction;
};

BetaShape ShapeOf(double a,
                  double b)
{
    return {a, b, ExactSum(a, b)};
}

BetaScale ScaleOf(const BetaShape& shape)
{
    const double sum = shape.sum.high;
    const double small = std::fmin(shape.a, shape.b);
    const double large = std::fmax(shape.a, shape.b);
    return {std::sqrt(small * (large / sum) / kTwoPi),
            (StirlingError(sum) - StirlingError(large)) - StirlingError(small)};
}

/** x^a y^b / B(a, b) = root * exp(a log(x / x0) + b log(y / y0) + correction) with x0 = a / (a + b), y0 = b / (a + b).
    The deviance form after C. Loader (2000), Fast and accurate computation of binomial probabilities; the exponent is a
    two-double, since its two parts may be 1e9 times their sum. */
double Weight(const BetaShape& shape,
              const BetaScale& scale,
              TwoDouble logX,
              TwoDouble logY)
{
    const TwoDouble exponent = Add(Multiply(logX, shape.a), Multiply(logY, shape.b));
    if (exponent.high < kNoTail) return 0;
    return TimesExp(scale.root, Add(exponent, scale.correction));
}

double WeightAt(const BetaShape& shape,
                const BetaScale& scale,
                const UnitPoint& point)
{
    const TwoDouble logX = Log(Divide(Multiply(point.x, shape.sum), shape.a));
    const TwoDouble logY = Log(Divide(Multiply(point.y, shape.sum), shape.b));
    return Weight(shape, scale, logX, logY);
}

/** a y - b x = (a + b)(x0 - x), from the two-double point because it cancels near the mean. */
double DistanceBelowMean(const BetaShape& shape,
                         const UnitPoint& point)
{
    return Add(Multiply(point.y, shape.a), Negative(Multiply(point.x, shape.b))).high;
}

/** The steps of the continued fraction of I_x(a, b) B(a, b) / (x^a y^b), even part, with lambda = a y - b x:
        alpha(n+1) = (a+n-1) (a+b+n-1) n (b-n) x^2 / (a+2n-1)^2
        beta(n+1)  = n + n (b-n) x / (a+2n-1) + (a+n) (lambda + 1 + n (1 + y)) / (a+2n+1).
    Source: A. R. DiDonato & A. H. Morris (1992), Significant digit computation of the incomplete beta function ratios,
    section on the continued fraction. */
class BetaSteps
{
public:
    BetaSteps(const BetaShape& shape,
              const UnitPoint& point,
              double lambda)
        : a_(shape.a),
          b_(shape.b),
          sum_(shape.sum.high),
          x_(point.x.high),
          y_(point.y.high),
          lambdaPlus1_(lambda + 1)
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

/** I_x0(a, b) - 1/2 at the mean x0 = a / (a + b), from the asymptotic series whose derivation stands in
    tools/distribution_coefficients.py (mean_expansion); needs a b / (a + b) >= kMeanExpansionStart.
    Related to N. M. Temme (1982), The uniform asymptotic expansion of a class of integrals, at its transition point. */
double ExcessAtMean(const BetaShape& shape,
                    const BetaScale& scale)
{
    const double share = shape.a / shape.sum.high;
    const double w = share * (shape.b / shape.sum.high);
    const double inverse = 1 / (shape.sum.high * w);
    double sum = 0;
    for (int m = kMeanTerms - 1; m >= 0; m--) {
        double coefficient = 0;
        for (int i = m; i >= 0; i--)
            coefficient = coefficient * w + kMeanExpansion[m][i];
        sum = sum * inverse + coefficient;
    }
    const double skew = (shape.b - shape.a) / shape.sum.high;
    return -scale.root * std::exp(scale.correction) * skew * inverse * sum;
}

/** [I_x(a, b) - I_x0(a, b)] B(a, b) / (x^a y^b) as a power series in s = x - x0. With h the quotient,
        x y h' - (a + b) s h = 1,  x y = w + (y0 - x0) s - s^2,  w = x0 y0,
    gives for the terms t(n) = h(n) s^n
        t(n+1) = [(a + b + n - 1) (s^2 / w) t(n-1) - n ((y0 - x0) s / w) t(n)] / (n + 1),  t(0) = 0, t(1) = s / w.
    Within kCentralWidth standard deviations the terms behave as those of the normal integral, whatever a and b. */
double CentralSeries(const BetaShape& shape,
                     double lambda)
{
    const double sum = shape.sum.high;
    const double scale = sum * sum / shape.a / shape.b;  // 1 / w
    const double s = -lambda / sum;
    const double even = s * s * scale;
    const double odd = (shape.b - shape.a) / sum * s * scale;
    double before = 0;
    double term = s * scale;
    double total = term;
    for (int n = 1; n < kMostCentralTerms; n++) {
        const double next = ((sum + n - 1) * even * before - n * odd * term) / (n + 1);
        before = term;
        term = next;
        total += term;
        if (std::fabs(term) + std::fabs(before) <= kCentralTolerance * std::fabs(total)) break;
    }
    return total;
}

bool IsCentral(const BetaShape& shape,
               double lambda)
{
    const double harmonic = shape.a / shape.sum.high * shape.b;
    return harmonic >= kMeanExpansionStart && lambda * lambda <= kCentralWidth * kCentralWidth * harmonic;
}

/** Whether the lower tail is the one to compute: x up to (a + 1/2) / (a + b + 1), a little above the mean, where the
    fractions of both tails converge at about the same rate. */
bool IsLowerSide(double lambda,
                 const UnitPoint& point)
{
    return lambda >= point.x.high - 0.5;
}

}  // namespace

UnitPoint PointOfOdds(TwoDouble odds)
{
    const TwoDouble whole = Add(odds, 1);
    return {Divide(odds, whole), Divide({1, 0}, whole)};
}

TailPair BetaTails(double a,
                   double b,
                   const UnitPoint& point)
{
    const BetaShape shape = ShapeOf(a, b);
    const BetaScale scale = ScaleOf(shape);
    const double weight = WeightAt(shape, scale, point);
    const double lambda = DistanceBelowMean(shape, point);

    if (IsCentral(shape, lambda)) {
        const double excess = ExcessAtMean(shape, scale) + weight * CentralSeries(shape, lambda);
        return {0.5 + excess, 0.5 - excess, weight, lambda};
    }
    if (IsLowerSide(lambda, point)) {
        BetaSteps steps(shape, point, lambda);
        const double lower = weight == 0 ? 0 : weight * ContinuedFraction(steps);
        return {lower, 1 - lower, weight, lambda};
    }
    BetaSteps steps(ShapeOf(b, a), {point.y, point.x}, -lambda);
    const double upper = weight == 0 ? 0 : weight * ContinuedFraction(steps);
    return {1 - upper, upper, weight, lambda};
}

// I_x(a, b) = x^a / (a B(a, b)) (1 + O(x (1 + b))).
TailPair BetaTailsOfExtreme(double a,
                            double b,
                            TwoDouble logOdds)
{
    if (logOdds.high > 0) {
        const TailPair mirror = BetaTailsOfExtreme(b, a, Negative(logOdds));
        return {mirror.upper, mirror.lower, mirror.weight, -mirror.slope};
    }
    const BetaShape shape = ShapeOf(a, b);
    const TwoDouble logX = Add(logOdds, Log(Divide(shape.sum, a)));
    const TwoDouble logY = Log(Divide(shape.sum, b));
    const double weight = Weight(shape, ScaleOf(shape), logX, logY);
    const double lower = weight / a;
    return {lower, 1 - lower, weight, a};
}

namespace {

constexpr double kSmallestPoint = 1e-280;  // a two-double keeps both halves above

/** Both tails for plain arguments, the ends and the invalid ones included. */
TailPair CheckedBetaTails(double a,
                          double b,
                          double x,
                          double y)
{
    if (std::isnan(x) || std::isnan(y) || !(a > 0) || !(b > 0) || std::isinf(a) || std::isinf(b))
        return {kNaN, kNaN, kNaN, kNaN};
    if (x <= 0) return {0, 1, 0, a};
    if (y <= 0) return {1, 0, 0, -b};
    if (x < kSmallestPoint) return BetaTailsOfExtreme(a, b, Log({x, 0}));
    if (y < kSmallestPoint) return BetaTailsOfExtreme(a, b, Negative(Log({y, 0})));
    if (x <= y) return BetaTails(a, b, {{x, 0}, ExactSum(1, -x)});
    return BetaTails(a, b, {ExactSum(1, -y), {y, 0}});
}

}  // namespace

double IncompleteBeta(double a,
                      double b,
                      double x,
                      double y)
{
    return CheckedBetaTails(a, b, x, y).lower;
}

double IncompleteBetaComplement(double a,
                                double b,
                                double x,
                                double y)
{
    return CheckedBetaTails(a, b, x, y).upper;
}

}  // namespace korvenrg::distributions
