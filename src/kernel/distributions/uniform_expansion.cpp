#include "kernel/distributions/uniform_expansion.h"

#include <cmath>

#include "kernel/distributions/coefficients.h"
#include "kernel/distributions/gamma_functions.h"

namespace korvenrg::distributions {

namespace {

constexpr double kLeastHarmonic = 40.0;  // a b / (a + b) from which the expansion serves (tuned)
constexpr double kLargestDeviance =
    20.0;                              // beyond, the rounding of the deviance would show in the tail (tuned)
constexpr double kLargestRatio = 0.4;  // |sigma| / sqrt(harmonic): (0.4 / 3.54)^18 < 1e-16 (derived)
constexpr double kRadius =
    3.5;  // the f_j decrease like kRadius^-j: the nearest singularity is 2 sqrt(pi) away
constexpr double kSeriesTolerance = 1e-18;  // bound of the first term left out
constexpr double kMomentReach = 4.0;        // covers the growth of the moments beside sigma^j in that bound

/** f_j of the table, j >= 1. */
double DensityCoefficient(int j, const NormalForm& form)
{
    const double* row = kUniformExpansion[j - 1];
    double value = 0;
    for (int i = j / 2; i >= 0; i--)
        value = value * form.w + row[i];
    return j % 2 == 1 ? form.skew * value : value;
}

/** sum_j f_j e^j H_j(sigma), e = 1 / sqrt(harmonic), with the polynomials that integration by parts leaves,
        integral of v^j exp(-v^2/2) below sigma = -exp(-sigma^2/2) H_j(sigma) + c_j Phi(sigma),
        H_j = sigma^(j-1) + (j-1) H_(j-2),  H_0 = 0,  H_1 = 1. */
double Correction(const NormalForm& form, double sigma)
{
    const double e = 1 / std::sqrt(form.harmonic);
    const double ratio = e * sigma;
    const double reach = (std::fabs(ratio) + kMomentReach * e) / kRadius;
    double power = e;   // e^j sigma^(j-1)
    double scaled = e;  // e^j H_j
    double scaledBefore = 0;
    double sum = 0;
    double bound = 1;
    for (int j = 1; j <= kUniformTerms && bound > kSeriesTolerance; j++) {
        sum += DensityCoefficient(j, form) * scaled;
        power *= ratio;
        bound *= reach;
        const double next = power + j * e * e * scaledBefore;
        scaledBefore = scaled;
        scaled = next;
    }
    return sum;
}

}  // namespace

bool HasNormalForm(double harmonic, double deviance)
{
    return harmonic >= kLeastHarmonic && deviance <= kLargestDeviance &&
           2 * deviance <= kLargestRatio * kLargestRatio * harmonic;
}

// With the density in the form exp(-sigma^2/2) (1 + sum_j f_j (e sigma)^j) the multiples of the normal
// integral add up to exactly 1, which leaves
//     lower tail = Phi(sigma) - weight / sqrt(harmonic) * sum_j f_j e^j H_j(sigma).
// The f_j are derived in tools/distribution_coefficients.py; related to N. M. Temme (1982), The uniform
// asymptotic expansion of a class of integrals related to cumulative distribution functions.
TailPair TailsOfNormalForm(const NormalForm& form)
{
    const double root = std::sqrt(form.deviance);
    const double half = 0.5 * ScaledErfc(root) * std::exp(-form.deviance);
    const double magnitude = 1.41421356237309504880 * root;
    const double scale = form.weight / std::sqrt(form.harmonic);
    if (form.belowMean > 0) {
        const double lower = half - scale * Correction(form, -magnitude);
        return {lower, 1 - lower, form.weight, form.belowMean, form.deviance};
    }
    const double upper = half + scale * Correction(form, magnitude);
    return {1 - upper, upper, form.weight, form.belowMean, form.deviance};
}

}  // namespace korvenrg::distributions
