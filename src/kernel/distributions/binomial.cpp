#include "kernel/distributions/binomial.h"

#include <cmath>
#include <limits>

#include "kernel/distributions/incomplete_beta.h"
#include "kernel/distributions/stirling_form.h"

using namespace korvenrg::distributions;

namespace {

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
constexpr double kTwoPi = 6.28318530717958647693;
constexpr double kSmallestChance =
    1e-280;  // two-doubles keep both halves above; below, one success at most counts

bool IsChance(double p)
{
    return p >= 0 && p <= 1;
}

/** log P(X = k) but for Stirling's root and corrections, as a two-double:
    -k log(k / (n p)) - (n - k) log((n - k) / (n (1 - p))). */
TwoDouble DeepExponent(double k, double n, double p)
{
    const auto part = [n](double count, TwoDouble chance) {
        return count == 0 ? TwoDouble{0, 0} : CountExponent(count, Divide({count, 0}, Multiply(chance, n)));
    };
    return Negative(Add(part(k, {p, 0}), part(n - k, ExactSum(1, -p))));
}

/** P(X = k) for 0 <= k <= n, n > 0 and p inside its range. Both counts deviate from their expectations by the same
    amount, k - n p. */
double PointProbability(double k, double n, double p)
{
    const double others = n - k;
    const double excess = Add(Negative(ExactProduct(n, p)), k).high;
    const double deviance = CountDeviance(k, n * p, excess) + CountDeviance(others, n * (1 - p), -excess);
    const double correction = StirlingCorrection(n) - StirlingCorrection(k) - StirlingCorrection(others);
    const double root = k == 0 || others == 0 ? 1 : std::sqrt(n / (kTwoPi * k * others));
    if (deviance <= kDeepCountDeviance) return root * std::exp(correction - deviance);
    return TimesExp(root, Add(DeepExponent(k, n, p), correction));
}

}  // namespace

double CDFBinomial(double k, double n, double p, short lower)
{
    n = std::round(n);
    if (std::isnan(k) || !IsCount(n) || !IsChance(p)) return kNaN;
    k = std::floor(k + kCountTolerance);
    const double most = p == 0 ? 0 : n;
    const double least = p == 1 ? n : 0;
    if (k < least) return lower != 0 ? 0 : 1;
    if (k >= most) return lower != 0 ? 1 : 0;
    return lower != 0 ? IncompleteBetaComplement(k + 1, n - k, p, 1 - p)
                      : IncompleteBeta(k + 1, n - k, p, 1 - p);
}

double PDFBinomial(double k, double n, double p)
{
    n = std::round(n);
    if (std::isnan(k) || !IsCount(n) || !IsChance(p)) return kNaN;
    const double whole = std::round(k);
    if (!(whole >= 0 && whole <= n) || std::fabs(k - whole) > kCountTolerance) return 0;
    if (p == 0 || n == 0) return whole == 0 ? 1 : 0;
    if (p == 1) return whole == n ? 1 : 0;
    if (p < kSmallestChance) return whole == 0 ? 1 : whole == 1 ? n * p : 0;
    return PointProbability(whole, n, p);
}
