/** The gamma function and its kin: log gamma, polygamma, error function, log binomial coefficient.
    They are written here because the platforms' own differ, some by thousands of ulps. */
#pragma once

/** Natural log of |gamma(x)| for any real x. Relative error near 1e-15, beside the zeros 1 and 2 too;
    below 0 the zeros of log gamma leave an absolute error of that size. Poles (0, -1, -2, ...) and both
    infinities give +infinity, NaN gives NaN. */
double GammaLn(double x);

/** The logarithmic derivative of the gamma function, psi(x). Poles (0, -1, ...) give NaN, so does -infinity;
    +infinity gives +infinity. */
double Digamma(double x);

/** The derivative of Digamma. Poles give +infinity; -infinity gives NaN; +infinity gives 0. */
double Trigamma(double x);

/** The error function 2/sqrt(pi) * integral of exp(-t^2) over 0..x. Infinities give -1 and 1, NaN gives
    NaN. */
double derf(double x);

/** 1 - derf(x), computed directly: keeps its relative accuracy for large x. */
double derfc(double x);

/** Natural log of the binomial coefficient C(n, k) for real n >= 0, 0 <= k <= n.
    Relative error near 1e-15; for k or n - k below 1e-3 an absolute error near 1e-17 remains.
    k below 0 or above n gives -infinity (the coefficient is 0); negative or NaN arguments n give NaN. */
double cLogCnk(double n, double k);

namespace korvenrg::distributions {

/** The gamma function. Negative integers give NaN, +-0 gives +-infinity, -infinity gives NaN; overflow gives
    infinity. */
double GammaFunction(double x);

/** log1p(x) - x without cancellation, x > -1. */
double Log1pMinusX(double x);

/** The Stirling error delta(z) = log gamma(z) - [(z - 1/2) log z - z + log(2 pi)/2] for z > 0: about
    1/(12 z). */
double StirlingError(double z);

/** log gamma(1 + d) for d in 0..1, relative accuracy also beside its zeros 0 and 1. */
double LogGammaOf1Plus(double d);

/** log [gamma(z + k) / gamma(z)] for z > 0, 0 < k < 1: of the size of k, and relatively accurate for k down to
    1e-4. */
double LogGammaRatio(double z, double k);

/** Natural log of the complete beta function B(a, b), a, b > 0, without cancellation between
    large parameters. */
double LogBeta(double a, double b);

/** exp(z^2) erfc(z) for z >= 0: what is left of the tail when its exponential is taken out. */
double ScaledErfc(double z);

}  // namespace korvenrg::distributions
