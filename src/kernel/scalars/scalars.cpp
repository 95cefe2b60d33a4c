#include "kernel/scalars/scalars.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <utility>

namespace {

/** Coefficients below this limit times an int fit in 64 bits. */
constexpr std::uint64_t kExactFactor = std::uint64_t{1} << 32;

/** a * b with the part that rounding cuts off. */
struct RoundedProduct
{
    double value;
    double error;
};

RoundedProduct MultiplyWithError(double a, double b)
{
    const double value = a * b;
    return {value, std::fma(a, b, -value)};
}

/** C(n, k) as a double with a running correction, for those beyond 64-bit integers. Formed scaled down,
    so that a product before its division overflows only with the result. Stops at infinity. */
double CnkInFloatingPoint(int n, int k)
{
    constexpr double kScale = 0x1p-64;
    double value = kScale;
    double correction = 0;
    for (int i = 1; i <= k && !std::isinf(value); i++) {
        const double factor = static_cast<double>(n - k) + i;
        const auto [product, productError] = MultiplyWithError(value, factor);
        const double quotient = product / i;
        const double rest = std::fma(-quotient, i, product) + productError + correction * factor;
        value = quotient;
        correction = rest / i;
    }
    return std::isinf(value) ? value : (value + correction) / kScale;
}

}  // namespace

double sqr(double x)
{
    return std::sqrt(x);
}

double Log10(double x)
{
    return std::log10(x);
}

double Pi()
{
    return 3.14159265358979323846;
}

double Min(double a, double b)
{
    return b < a ? b : a;
}

double Max(double a, double b)
{
    return b > a ? b : a;
}

double FSgn(double x)
{
    return (x > 0) - (x < 0);
}

// C(n, i) = C(n, i-1) (n - k + i) / i from i = 1: each quotient is itself a binomial coefficient, hence
// exact.
double Cnk(int n, int k)
{
    if (k < 0 || k > n) return 0;
    k = std::min(k, n - k);
    std::uint64_t value = 1;
    for (int i = 1; i <= k; i++) {
        if (value >= kExactFactor) return CnkInFloatingPoint(n, k);
        value = value * static_cast<std::uint64_t>(n - k + i) / static_cast<std::uint64_t>(i);
    }
    return static_cast<double>(value);
}

void SwapDbl(double& a, double& b)
{
    std::swap(a, b);
}
