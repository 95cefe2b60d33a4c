/** Arithmetic on unevaluated sums of two doubles, about 106 bits: carries the exponents of densities and the
    arguments of the incomplete functions, where a rounding of one double would cost the tail its last digits.
    Sources: T. J. Dekker (1971), A floating-point technique for extending the available precision;
    D. E. Knuth (1981), The Art of Computer Programming 2, section 4.2.2. */
#pragma once

namespace korvenrg::distributions {

/** The number high + low, with high the nearest double to the sum. */
struct TwoDouble
{
    double high;
    double low;
};

/** The exact sum of two doubles with |a| >= |b|. */
inline TwoDouble OrderedSum(double a, double b)
{
    const double sum = a + b;
    return {sum, b - (sum - a)};
}

/** The exact sum of two doubles. */
inline TwoDouble ExactSum(double a, double b)
{
    const double sum = a + b;
    const double shareOfB = sum - a;
    return {sum, (a - (sum - shareOfB)) + (b - shareOfB)};
}

/** The two halves of a double, 26 bits each. */
inline TwoDouble Split(double a)
{
    constexpr double kSplitter = 134217729.0;  // 2^27 + 1
    const double scaled = kSplitter * a;
    const double high = scaled - (scaled - a);
    return {high, a - high};
}

/** The exact product of two doubles, for factors below 2^996 and products above 2^-960. */
inline TwoDouble ExactProduct(double a, double b)
{
    const double product = a * b;
    const TwoDouble u = Split(a);
    const TwoDouble v = Split(b);
    return {product, ((u.high * v.high - product) + u.high * v.low + u.low * v.high) + u.low * v.low};
}

inline TwoDouble Negative(TwoDouble a)
{
    return {-a.high, -a.low};
}

inline TwoDouble Add(TwoDouble a, double b)
{
    const TwoDouble sum = ExactSum(a.high, b);
    return OrderedSum(sum.high, sum.low + a.low);
}

inline TwoDouble Add(TwoDouble a, TwoDouble b)
{
    const TwoDouble highs = ExactSum(a.high, b.high);
    const TwoDouble lows = ExactSum(a.low, b.low);
    const TwoDouble sum = OrderedSum(highs.high, highs.low + lows.high);
    return OrderedSum(sum.high, sum.low + lows.low);
}

inline TwoDouble Multiply(TwoDouble a, double b)
{
    const TwoDouble product = ExactProduct(a.high, b);
    return OrderedSum(product.high, product.low + a.low * b);
}

inline TwoDouble Multiply(TwoDouble a, TwoDouble b)
{
    const TwoDouble product = ExactProduct(a.high, b.high);
    return OrderedSum(product.high, product.low + (a.high * b.low + a.low * b.high));
}

inline TwoDouble Divide(TwoDouble a, TwoDouble b)
{
    const double quotient = a.high / b.high;
    const TwoDouble rest = Add(a, Negative(Multiply(b, quotient)));
    return OrderedSum(quotient, rest.high / b.high);
}

inline TwoDouble Divide(TwoDouble a, double b)
{
    const double quotient = a.high / b;
    const TwoDouble rest = Add(a, Negative(ExactProduct(b, quotient)));
    return OrderedSum(quotient, rest.high / b);
}

/** The natural logarithm of a positive number, relative error about 2^-85, also beside 1. */
TwoDouble Log(TwoDouble value);

/** factor * exp(exponent); keeps its digits where exp alone would already be subnormal. */
double TimesExp(double factor, TwoDouble exponent);

}  // namespace korvenrg::distributions
