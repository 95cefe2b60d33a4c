#include "kernel/distributions/binomial.h"

#include <cmath>
#include <limits>

#include "kernel/distributions/incomplete_beta.h"
#include "kernel/distributions/stirling_form.h"

using namespace korvenrg::distributions;

namespace {

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
constexpr double kTwoPi = 6.28318530717958647693;
constexpr double kSmallestChance = 1e-280;  // below it a second success has no double

bool IsChance(double p)
{
    return p >= 0 && p <= 1;
}

/** log P(X = k) but for Stirling's root and corrections, as a two-double:
    -k log(k / (n p)) - (n - k) log((n - k) / (n (1 - p))), 0 < k < n. */
TwoDouble DeepExponent(double k, double n, double p)
{
    const auto part = [n](double count, TwoDouble chance) {
        return CountExponent(count, Divide({count, 0}, Multiply(chance, n)));
    };
    return Negative(Add(part(k, {p, 0}), part(n - k, ExactSum(1, -p))));
}

/** log (1 - p)^n for k = 0, log p^n else. */
double UniformExponent(double k, double n, double p)
{
    return n * (k == 0 ? std::log1p(-p) : std::log(p));
}

/** (1 - p)^n = P(X = 0) for k = 0, p^n = P(X = n) for k = n. */
double UniformProbability(double k, double n, double p)
{
    const double exponent = UniformExponent(k, n, p);
    if (exponent >= -kDeepCountDeviance) return std::exp(exponent);
    return TimesExp(1, Multiply(Log(k == 0 ? ExactSum(1, -p) : TwoDouble{p, 0}), n));
}

/** P(X = k) for n > 0 and p inside its range. Both counts deviate from their expectations by the same amount,
    k - n p. */
double PointProbability(double k, double n, double p)
{
    const double others = n - k;
    if (k == 0 || others == 0) return UniformProbability(k, n, p);
    const double excess = Add(Negative(ExactProduct(n, p)), k).high;
    const double deviance = CountDeviance(k, n * p, excess) + CountDeviance(others, n * (1 - p), -excess);
    const double correction = StirlingError(n) - StirlingError(k) - StirlingError(others);
    const double root = std::sqrt(n / (kTwoPi * k * others));
    if (deviance <= kDeepCountDeviance) return root * std::exp(correction - deviance);
    return TimesExp(root, Add(DeepExponent(k, n, p), correction));
}

/** P(X <= k) or P(X > k) for 0 <= k < n and p inside its range; closed forms where one of them is a single
    probability. */
double TailOf(double k, double n, double p, bool isLower)
{
    if (k == 0) return isLower ? UniformProbability(0, n, p) : -std::expm1(UniformExponent(0, n, p));
    if (k == n - 1) return isLower ? -std::expm1(UniformExponent(n, n, p)) : UniformProbability(n, n, p);
    return isLower ? IncompleteBetaComplement(k + 1, n - k, p, 1 - p)
                   : IncompleteBeta(k + 1, n - k, p, 1 - p);
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
    return TailOf(k, n, p, lower != 0);
}

double PDFBinomial(double k, double n, double p)
{
    n = std::round(n);
    if (std::isnan(k) || !IsCount(n) || !IsChance(p)) return kNaN;
    const double whole = std::round(k);
    if (!(whole >= 0 && whole <= n) || std::fabs(k - whole) > kCountTolerance) return 0;
    if (p == 0 || n == 0) return whole == 0 ? 1 : 0;
    if (p == 1) return whole == n ? 1 : 0;
    if (p < kSmallestChance && whole > 0) return whole == 1 ? n * p : 0;
    return PointProbability(whole, n, p);
}
