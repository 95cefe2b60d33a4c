#include "kernel/distributions/student_expansion.h"

#include <cmath>

#include "kernel/distributions/coefficients.h"
#include "kernel/distributions/gamma_functions.h"

namespace korvenrg::distributions {

namespace {

constexpr double kLeastDf = 40.0;      // the asymptotic series is exact to 1e-17 from here (derived)
constexpr double kLeastT = 0.7;        // below, P(|T| <= t) would be the small difference of two numbers
constexpr double kLargestT = 6.0;      // beyond, the rounding of the exponent would show in the tail (tuned)
constexpr double kLargestRatio = 0.9;  // of t^2 / df, for the convergence in log(1 + t^2 / df) (derived)
constexpr double kReciprocalRootTwoPi = 0.398942280401432677940;
constexpr double kSeriesTolerance = 1e-18;

/** The three sums over j of c_j (the coefficients of sqrt(x / sinh x)) with q = 1 / (2 df - 1). */
struct ExpansionSums
{
    double moments;  // c_j q^(2j) (4j-1)!!: the normalisation
    double tail;     // c_j q^(2j) G_4j(s), G_m = s^(m-1) + (m-1) s^(m-3) + (m-1)(m-3) s^(m-5) + ...
    double density;  // c_j (q s^2)^(2j)
};

ExpansionSums SumExpansion(double s, double q)
{
    const double qq = q * q;
    const double ss = s * s;
    ExpansionSums sums = {1, 0, 1};
    double moment = 1;
    double power = s;    // q^(2j) s^(4j+1)
    double partial = 0;  // q^(2j) G_4j
    int m = 0;           // 4j
    for (const double c : kStudentSeries) {
        partial = qq * (power * (ss + (m + 3)) + (m + 3.0) * (m + 1.0) * partial);
        moment *= qq * (m + 1.0) * (m + 3.0);
        power *= qq * ss * ss;
        m += 4;
        sums.moments += c * moment;
        sums.tail += c * partial;
        sums.density += c * power / s;
        if (std::fabs(c * partial) < kSeriesTolerance) break;
    }
    return sums;
}

}  // namespace

bool HasStudentExpansion(double t, double df)
{
    return df >= kLeastDf && t >= kLeastT && t <= kLargestT && t * t <= kLargestRatio * df;
}

// With u = log(1 + t^2 / df), x = u / 2 and s^2 = (df - 1/2) u, the density becomes
//     K exp(-s^2/2) sqrt(x / sinh x) ds,   x = s^2 / (2 df - 1):
// an even series in x, each power of which is integrated by parts down to the normal tail. The normal tails
// add up to exactly one, hence 1 / K = sqrt(2 pi) sum_j c_j q^(2j) (4j-1)!!. The variable s is akin to that
// of D. L. Wallace (1959), Bounds on normal approximations to Student's and the chi-square distributions.
TailPair StudentTailsByExpansion(double t, double df)
{
    const double n = df - 0.5;
    const double deviance = 0.5 * n * std::log1p(t / df * t);
    const double s = std::sqrt(2 * deviance);
    const ExpansionSums sums = SumExpansion(s, 0.5 / n);
    const double fall = std::exp(-deviance);
    const double height = kReciprocalRootTwoPi / sums.moments * fall;

    const double beyond = ScaledErfc(std::sqrt(deviance)) * fall + 2 * height * sums.tail;
    const double share = t / (df + t * t) * t;  // t^2 / (df + t^2)
    const double weight = 2 * height * sums.density * n * share / s;
    return {1 - beyond, beyond, weight, 1 - (df + 1) * share, deviance};
}

}  // namespace korvenrg::distributions
