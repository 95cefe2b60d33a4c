#include "kernel/distributions/two_double.h"

#include <bit>
#include <cmath>
#include <cstdint>

#include "kernel/distributions/coefficients.h"

namespace korvenrg::distributions {

namespace {

constexpr int kGridPerUnit = 128;    // spacing of kLogOfGrid
constexpr int kFirstGridPoint = 90;  // its first entry is log(90 / 128)
constexpr double kRootHalf =
    90.5 / 128;  // fractions below it are doubled, so that fraction * 128 rounds to 91..181
constexpr double kSmallestNormal = 0x1p-1022;
constexpr double kLiftOfSubnormals = 0x1p64;
constexpr int kLiftExponent = 64;
constexpr double kDeepTail = -600.0;  // exp is taken in two halves below this exponent

struct Decomposed
{
    TwoDouble fraction;  // in kRootHalf..2 kRootHalf
    int exponent;
};

/** 2^n for n in -1022..1023. */
double PowerOfTwo(int n)
{
    return std::bit_cast<double>(static_cast<std::uint64_t>(n + 1023) << 52);
}

/** value = fraction * 2^exponent for a normal value. */
Decomposed DecomposeNormal(TwoDouble value)
{
    const auto bits = std::bit_cast<std::uint64_t>(value.high);
    int exponent = static_cast<int>(bits >> 52) - 1022;
    double fraction = std::bit_cast<double>((bits & 0x000FFFFFFFFFFFFF) | 0x3FE0000000000000);
    if (fraction < kRootHalf) {
        fraction *= 2;
        exponent -= 1;
    }
    const int half = exponent / 2;
    const double low = value.low * PowerOfTwo(-half) * PowerOfTwo(half - exponent);
    return {{fraction, low}, exponent};
}

Decomposed Decompose(TwoDouble value)
{
    if (value.high >= kSmallestNormal) return DecomposeNormal(value);
    Decomposed lifted = DecomposeNormal({value.high * kLiftOfSubnormals, value.low * kLiftOfSubnormals});
    lifted.exponent -= kLiftExponent;
    return lifted;
}

}  // namespace

// value = 2^e f, f = c (1 + s) / (1 - s) with c the nearest grid point: log f = log c + 2 (s + s^3/3 + s^5/5
// + ...), |s| < 2^-8, so the terms from s^5 on fit one double.
TwoDouble Log(TwoDouble value)
{
    const auto [fraction, exponent] = Decompose(value);
    const int nearest = static_cast<int>(fraction.high * kGridPerUnit + 0.5);
    const double gridPoint = static_cast<double>(nearest) / kGridPerUnit;

    const TwoDouble difference = ExactSum(fraction.high - gridPoint, fraction.low);
    const TwoDouble sum = Add(ExactSum(fraction.high, gridPoint), fraction.low);
    const TwoDouble s = Divide(difference, sum);
    const TwoDouble square = Multiply(s, s);
    const TwoDouble cubic = Multiply(Multiply(square, s), kThird);
    const double q = square.high;
    const double rest = s.high * q * q * (1.0 / 5 + q * (1.0 / 7 + q * (1.0 / 9)));
    const TwoDouble half = Add(s, Add(cubic, rest));

    TwoDouble result = {2 * half.high, 2 * half.low};
    if (nearest != kGridPerUnit) result = Add(kLogOfGrid[nearest - kFirstGridPoint], result);
    if (exponent == 0) return result;
    result = Add(result, Multiply(kLog2Rest, exponent));
    return Add(result, kLog2Head * exponent);
}

double TimesExp(double factor, TwoDouble exponent)
{
    if (exponent.high > kDeepTail) {
        const double main = factor * std::exp(exponent.high);
        return main + main * exponent.low;
    }
    const double half = exponent.high / 2;
    const double main = factor * std::exp(half);
    return (main + main * exponent.low) * std::exp(half);
}

}  // namespace korvenrg::distributions
