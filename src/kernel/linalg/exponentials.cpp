#include "kernel/linalg/exponentials.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>

#include "kernel/linalg/lanes.h"

namespace korvenrg::linalg {

namespace {

using LaneBits = std::int64_t __attribute__((vector_size(kLanes * sizeof(std::int64_t))));

constexpr double kLog2E = 1.4426950408889634;
// log 2 in two parts; the first has trailing zeros, so that its multiples up to 2^11 are exact.
constexpr double kLog2High = 6.93147180369123816490E-1;
constexpr double kLog2Low = 1.90821492927058770002E-10;
// Adding this rounds to a whole number, which the low bits of the sum hold.
constexpr double kRounder = 6755399441055744.0;
constexpr std::int64_t kRounderBits = 0x4338000000000000;
constexpr std::int64_t kExponentBias = 1023;
constexpr int kMantissaBits = 52;
// 1/2!, 1/3!, .. 1/13!
constexpr double kInverseFactorials[] = {1.0 / 2.0,
                                         1.0 / 6.0,
                                         1.0 / 24.0,
                                         1.0 / 120.0,
                                         1.0 / 720.0,
                                         1.0 / 5040.0,
                                         1.0 / 40320.0,
                                         1.0 / 362880.0,
                                         1.0 / 3628800.0,
                                         1.0 / 39916800.0,
                                         1.0 / 479001600.0,
                                         1.0 / 6227020800.0};
constexpr int kHighest = 11;

[[gnu::always_inline]] inline Lanes PowerOfTwo(const LaneBits& exponent)
{
    const LaneBits bits = (exponent + kExponentBias) << kMantissaBits;
    Lanes power;
    std::memcpy(&power, &bits, sizeof power);
    return power;
}

// 2^n exp(r), in two factors, since 2^n alone may be beyond the range.
[[gnu::always_inline]] inline Lanes ExpOfLanes(const Lanes& x)
{
    const Lanes rounded = x * kLog2E + kRounder;
    const Lanes n = rounded - kRounder;
    LaneBits exponent;
    std::memcpy(&exponent, &rounded, sizeof exponent);
    exponent -= kRounderBits;
    const Lanes r = (x - n * kLog2High) - n * kLog2Low;
    Lanes tail = kInverseFactorials[kHighest] * r + kInverseFactorials[kHighest - 1];
    for (int k = kHighest - 2; k >= 0; --k) {
        tail = tail * r + kInverseFactorials[k];
    }
    const LaneBits half = exponent >> 1;
    return ((r + r * r * tail) + 1.0) * PowerOfTwo(half) * PowerOfTwo(exponent - half);
}

[[gnu::always_inline]] inline void ExponentialsBody(const double* x, std::size_t n, double* out)
{
    std::size_t i = 0;
    for (; i + kLanes <= n; i += kLanes) {
        StoreLanes(ExpOfLanes(LoadLanes(x + i)), out + i);
    }
    if (i == n) return;
    double rest[kLanes] = {};
    std::copy(x + i, x + n, rest);
    StoreLanes(ExpOfLanes(LoadLanes(rest)), rest);
    std::copy_n(rest, n - i, out + i);
}

KORVEN_FOR_AVX512 void ExponentialsAvx512(const double* x, std::size_t n, double* out)
{
    ExponentialsBody(x, n, out);
}

KORVEN_FOR_AVX2 void ExponentialsAvx2(const double* x, std::size_t n, double* out)
{
    ExponentialsBody(x, n, out);
}

void ExponentialsBaseline(const double* x, std::size_t n, double* out)
{
    ExponentialsBody(x, n, out);
}

}  // namespace

void Exponentials(const double* x, int n, double* out)
{
    const auto count = static_cast<std::size_t>(std::max(n, 0));
    switch (BestInstructionSet()) {
        case InstructionSet::kAvx512:
            return ExponentialsAvx512(x, count, out);
        case InstructionSet::kAvx2:
            return ExponentialsAvx2(x, count, out);
        default:
            return ExponentialsBaseline(x, count, out);
    }
}

}  // namespace korvenrg::linalg
