/** Evaluation of a polynomial from its table of coefficients. */
#pragma once

#include <cstddef>

namespace korvenrg::distributions {

/** c[0] + c[1] t + ... + c[N-1] t^(N-1), by Horner's rule on the even and the odd powers side by side:
    two short chains of dependent operations instead of a long one. */
template <std::size_t N>
double Polynomial(const double (&c)[N], double t)
{
    static_assert(N >= 4);
    constexpr std::size_t kLastEven = (N - 1) / 2 * 2;
    constexpr std::size_t kLastOdd = (N - 2) / 2 * 2 + 1;
    const double square = t * t;
    double even = c[kLastEven];
    double odd = c[kLastOdd];
    for (std::size_t i = kLastEven; i >= 2; i -= 2)
        even = even * square + c[i - 2];
    for (std::size_t i = kLastOdd; i >= 3; i -= 2)
        odd = odd * square + c[i - 2];
    return even + odd * t;
}

}  // namespace korvenrg::distributions
