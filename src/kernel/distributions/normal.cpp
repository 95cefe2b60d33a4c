#include "kernel/distributions/normal.h"

#include <cmath>
#include <limits>

#include "kernel/distributions/coefficients.h"
#include "kernel/distributions/gamma_functions.h"
#include "kernel/distributions/polynomial.h"
#include "kernel/distributions/two_double.h"

using namespace korvenrg::distributions;

namespace {

constexpr double kInfinity = std::numeric_limits<double>::infinity();
constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
constexpr double kRootHalf = 0.707106781186547524401;
constexpr double kReciprocalRootTwoPi = 0.398942280401432677940;
constexpr double kCentralEdge = 0.425;  // |p - 1/2| up to which the central approximation serves
constexpr double kNearStart = 1.6;      // sqrt(-log tail) from which the three outer ones serve
constexpr double kMiddleStart = 5.0;
constexpr double kFarStart = 11.0;
constexpr double kLargestUseful = 1e100;  // beyond, every tail is 0 and the square would overflow

/** -z^2 / 2 without rounding. */
TwoDouble MinusHalfSquare(double z)
{
    const TwoDouble square = ExactProduct(z, z);
    return {-0.5 * square.high, -0.5 * square.low};
}

/** P(Z > z) for z >= 0 as exp(-z^2/2) times the scaled error function. */
double TailBeyond(double z)
{
    if (z > kLargestUseful) return 0;
    return TimesExp(0.5 * ScaledErfc(z * kRootHalf), MinusHalfSquare(z));
}

/** The quantile of 1/2 + q, |q| <= kCentralEdge: an odd function of q. */
double CentralQuantile(double q)
{
    const double r = kCentralEdge * kCentralEdge - q * q;
    return q * (Polynomial(kNormalCentralOver, r) / Polynomial(kNormalCentralUnder, r));
}

/** z > 0 with P(Z > z) = tail < 0.075 from rational approximations, nearly straight lines in r =
    sqrt(-log tail). The form follows M. J. Wichura (1988), Algorithm AS 241: The percentage points of the
    normal distribution. */
double ApproximateQuantile(double r)
{
    if (r < kMiddleStart) {
        const double d = r - kNearStart;
        return Polynomial(kNormalNearOver, d) / Polynomial(kNormalNearUnder, d);
    }
    if (r < kFarStart) {
        const double d = r - kMiddleStart;
        return Polynomial(kNormalMiddleOver, d) / Polynomial(kNormalMiddleUnder, d);
    }
    const double d = r - kFarStart;
    return Polynomial(kNormalFarOver, d) / Polynomial(kNormalFarUnder, d);
}

/** The quantile of a small tail. Far out an ulp of z changes the tail by z^2 ulps, so a Newton step on
    log P(Z > z), whose derivative is minus the hazard, settles the last one. */
double QuantileOfTail(double tail)
{
    const double r = std::sqrt(-std::log(tail));
    const double z = ApproximateQuantile(r);
    if (r < kMiddleStart) return z;
    const double hazard = kReciprocalRootTwoPi / (0.5 * ScaledErfc(z * kRootHalf));
    return z + (TailBeyond(z) - tail) / tail / hazard;
}

}  // namespace

double CDFNormalStd(double z, short lower)
{
    if (std::isnan(z)) return z;
    const bool isFarTail = (z < 0) == (lower != 0);
    const double beyond = TailBeyond(std::fabs(z));
    return isFarTail ? beyond : 1 - beyond;
}

double pValNormalStd(double z)
{
    return CDFNormalStd(z, 0);
}

double InvCDFNormalStd(double p)
{
    if (!(p >= 0 && p <= 1)) return kNaN;
    if (p == 0) return -kInfinity;
    if (p == 1) return kInfinity;
    const double q = p - 0.5;
    if (std::fabs(q) <= kCentralEdge) return CentralQuantile(q);
    return p < 0.5 ? -QuantileOfTail(p) : QuantileOfTail(1 - p);
}

double PDFNormalStd(double z)
{
    if (std::isnan(z)) return z;
    if (std::fabs(z) > kLargestUseful) return 0;
    return TimesExp(kReciprocalRootTwoPi, MinusHalfSquare(z));
}
