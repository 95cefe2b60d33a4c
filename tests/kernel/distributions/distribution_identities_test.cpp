// Identities between the distributions, closed forms, and quantiles as inverses.

#include <gtest/gtest.h>

#include <cmath>

#include "kernel/distributions/distributions.h"
#include "kernel/scalars/scalars.h"
#include "support/tolerances.h"

namespace {

using korvenrg::distributions::GammaTails;
using korvenrg::distributions::IncompleteBeta;
using korvenrg::distributions::IncompleteBetaComplement;
using korvenrg::distributions::IncompleteGamma;
using korvenrg::distributions::IncompleteGammaComplement;
using korvenrg::test::ExpectClose;
using korvenrg::test::kRoundoff;

constexpr double kTail = 1e-13;
constexpr double kPi = 3.14159265358979323846;
constexpr double kInfinity = HUGE_VAL;

TEST(DistributionIdentities, StudentWithOneAndTwoDegreesHasClosedForms)
{
    for (double t : {1e-6, 0.2, 0.9, 1.4, 1.8, 3.0, 40.0, 1e5, 1e140, 1e160}) {
        SCOPED_TRACE(t);
        const double root = std::hypot(std::sqrt(2.0), t);
        ExpectClose(pValStudent(t, 1), std::atan(1 / t) / kPi, kTail);
        ExpectClose(CDFStudent(-t, 1), std::atan(1 / t) / kPi, kTail);
        if (t < 1e150) ExpectClose(pValStudent(-t, 2), 1 / (root * (root + t)), kTail);
    }
    for (double p : {1e-200, 1e-7, 0.1, 0.3, 0.499, 0.75, 0.9999}) {
        SCOPED_TRACE(p);
        const double tail = p < 0.5 ? p : 1 - p;
        const double magnitude = tail > 0.25 ? std::tan(kPi * (0.5 - tail)) : 1 / std::tan(kPi * tail);
        ExpectClose(InvCDFStudent(p, 1), p < 0.5 ? -magnitude : magnitude, kTail);
        ExpectClose(InvCDFStudent(p, 2), (2 * p - 1) / std::sqrt(2 * p * (1 - p)), kTail);
    }
}

TEST(DistributionIdentities, ChiSquareWithEvenDegreesIsAPoissonSum)
{
    for (double x : {1e-3, 0.7, 2.6, 3.1, 30.0, 1300.0}) {
        SCOPED_TRACE(x);
        const double h = x / 2;
        ExpectClose(pValChiSq(x, 2), std::exp(-h), kTail);
        ExpectClose(pValChiSq(x, 6), std::exp(-h) * (1 + h * (1 + h / 2)), kTail);
        ExpectClose(CDFChiSq(x, 2), -std::expm1(-h), kTail);
        ExpectClose(InvCDFChiSq(-std::expm1(-h), 2),
                    x > 30 ? kInfinity : x,
                    x > 5 ? 1e-9 : kTail);  // 1 - p is rounded
    }
}

TEST(DistributionIdentities, SquaredStudentIsFisher)
{
    for (double df : {0.3, 1.0, 7.5, 60.0, 1e4})
        for (double t : {0.125, 0.75, 1.5, 2.25, 5.5, 11.0}) {
            SCOPED_TRACE(testing::Message() << "t " << t << " df " << df);
            ExpectClose(2 * pValStudent(t, df), pValFisher(t * t, 1, df), kTail);
        }
}

TEST(DistributionIdentities, ReciprocalFisherSwapsItsDegrees)
{
    for (double df1 : {0.2, 3.0, 41.5, 2500.0})
        for (double df2 : {0.7, 10.0, 300.0, 1e6})
            for (double F : {0.0625, 0.5, 1.0, 2.0, 8.0}) {
                SCOPED_TRACE(testing::Message() << "F " << F << " df " << df1 << ", " << df2);
                ExpectClose(CDFFisher(F, df1, df2, -1), CDFFisher(1 / F, df2, df1, 0), kTail);
            }
}

// I_p(k, n - k + 1) = P(at least k successes among n) (Abramowitz & Stegun 1964, 26.5.24).
TEST(DistributionIdentities, BinomialSumsAreIncompleteBeta)
{
    for (int n : {1, 5, 30})
        for (int k = 1; k <= n; k += 2)
            for (double p : {0.03125, 0.25, 0.625, 0.96875}) {
                SCOPED_TRACE(testing::Message() << "n " << n << " k " << k << " p " << p);
                double atLeast = 0, fewer = 0;
                for (int j = 0; j <= n; j++) {
                    const double point = Cnk(n, j) * std::pow(p, j) * std::pow(1 - p, n - j);
                    (j >= k ? atLeast : fewer) += point;
                    ExpectClose(PDFBinomial(j, n, p), point, kTail);
                }
                ExpectClose(IncompleteBeta(k, n - k + 1, p, 1 - p), atLeast, kTail);
                ExpectClose(IncompleteBetaComplement(k, n - k + 1, p, 1 - p), fewer, kTail);
                ExpectClose(CDFBinomial(k - 1, n, p), fewer, kTail);
                ExpectClose(CDFBinomial(k - 1, n, p, 0), atLeast, kTail);
            }
}

// Failures are successes of the complement, and neighbouring tails differ by a probability: in both tails, to where
// they underflow, on both sides of each switch of method.
TEST(DistributionIdentities, BinomialTailsMirrorAndStep)
{
    for (double n : {7.0, 90.0, 5000.0, 1e7})
        for (double p : {0x1p-20, 0.046875, 0.5, 0.8125})
            for (double z : {-30.0, -7.0, -6.0, -1.5, 0.2, 2.0, 6.5, 7.5, 30.0}) {
                const double k = std::floor(n * p + z * std::sqrt(n * p * (1 - p)));
                if (k < 1 || k >= n) continue;
                SCOPED_TRACE(testing::Message() << "k " << k << " n " << n << " p " << p);
                const double lower = CDFBinomial(k, n, p), upper = CDFBinomial(k, n, p, 0);
                const double point = PDFBinomial(k, n, p);
                ExpectClose(CDFBinomial(n - k - 1, n, 1 - p, 0), lower, kTail);
                ExpectClose(PDFBinomial(n - k, n, 1 - p), point, kTail);
                ExpectClose(CDFBinomial(k - 1, n, p) + point, lower, kTail);
                ExpectClose(CDFBinomial(k - 1, n, p, 0), upper + point, kTail);
            }
}

// Q(a + 1, x) = Q(a, x) + x^a e^-x / gamma(a + 1): ties neighbouring parameters on both sides of each switch.
TEST(DistributionIdentities, IncompleteGammaObeysItsRecurrence)
{
    for (double a : {0.05, 0.6, 3.5, 38.5, 39.75, 40.0, 900.0, 1e5})
        for (double z : {-3.0, -0.5, 0.4, 2.0, 6.2, 9.0}) {
            const double x = a * std::exp(z / std::sqrt(a));
            if (x > 700 && a < 20) continue;
            SCOPED_TRACE(testing::Message() << "a " << a << " x " << x);
            const double step = GammaTails(a, {x, 0}).weight / a;
            ExpectClose(IncompleteGammaComplement(a + 1, x), IncompleteGammaComplement(a, x) + step, kTail);
            ExpectClose(IncompleteGamma(a, x), IncompleteGamma(a + 1, x) + step, kTail);
        }
}

TEST(DistributionIdentities, InfiniteDegreesAreTheLimit)
{
    for (double x : {0.4, 1.3, 2.5, 20.0}) {
        SCOPED_TRACE(x);
        ExpectClose(CDFStudent(x, kInfinity, 0), pValNormalStd(x), kTail);
        ExpectClose(CDFStudent(x, 1e18, 0), pValNormalStd(x), kTail);
        for (double df : {0.5, 5.0, 90.0}) {
            ExpectClose(pValFisher(x, df, kInfinity), pValChiSq(x * df, df), kTail);
            ExpectClose(pValFisher(x, df, 1e19), pValChiSq(x * df, df), kTail);
            ExpectClose(pValFisher(x, kInfinity, df), CDFChiSq(df / x, df), kTail);
            ExpectClose(pValFisher(x, 1e19, df), CDFChiSq(df / x, df), kTail);
        }
    }
    ExpectClose(InvCDFStudent(0.01, kInfinity), InvCDFNormalStd(0.01), kRoundoff);
    ExpectClose(InvCDFFisher(0.95, 4, kInfinity), InvCDFChiSq(0.95, 4) / 4, kRoundoff);
    ExpectClose(InvCDFFisher(0.95, kInfinity, 4), 4 / InvCDFChiSq(0.05, 4), kRoundoff);
}

/** What one ulp of the quantile changes of its tail, relatively: half of it no inverse can avoid. */
template <class Tail>
double Spacing(const Tail& tail, double quantile)
{
    const double value = tail(quantile);
    return std::fabs(tail(std::nextafter(quantile, kInfinity)) / value - 1);
}

/** tail(quantile(p)) = p on the side where p has its digits. A quantile outside the doubles is 0 or
    infinite: then the tail at the end of their range must not have fallen to p yet. */
template <class Quantile, class Lower, class Upper>
void ExpectInverse(const Quantile& quantile, const Lower& lower, const Upper& upper)
{
    constexpr double kInverse = 4e-14;  // twice the measured error of a tail
    constexpr double kRange = 1e-305;   // quantiles below it have lost digits
    for (double p :
         {1e-290, 1e-100, 1e-12, 0.003, 0.2, 0.26, 0.45, 0.4999999, 0.55, 0.9, 0.9995, 1 - 0x1p-40}) {
        const double x = quantile(p);
        SCOPED_TRACE(testing::Message() << "p " << p << " quantile " << x);
        const auto reached = [&](double at) { return p <= 0.5 ? lower(at) : upper(at); };
        const double target = p <= 0.5 ? p : 1 - p;
        if (std::isinf(x))
            EXPECT_GE(reached(std::copysign(1e305, x)), target);
        else if (std::fabs(x) < kRange)
            EXPECT_GE(reached(kRange), target);
        else
            ExpectClose(reached(x), target, kInverse + 0.6 * Spacing(reached, x));
    }
}

TEST(DistributionIdentities, QuantilesInvertTheTails)
{
    ExpectInverse(
        InvCDFNormalStd,
        [](double x) { return CDFNormalStd(x); },
        pValNormalStd);
    for (double df1 : {0.1, 0.9, 1.9, 3.0, 25.5, 39.0, 700.0, 1e6}) {
        SCOPED_TRACE(testing::Message() << "df1 " << df1);
        ExpectInverse([=](double p) { return InvCDFStudent(p, df1); },
                      [=](double x) { return CDFStudent(x, df1); },
                      [=](double x) { return CDFStudent(x, df1, 0); });
        ExpectInverse([=](double p) { return InvCDFChiSq(p, df1); },
                      [=](double x) { return CDFChiSq(x, df1); },
                      [=](double x) { return CDFChiSq(x, df1, 0); });
        for (double df2 : {0.2, 1.0, 2.0, 23.25, 400.0, 1e6}) {
            SCOPED_TRACE(testing::Message() << "df2 " << df2);
            ExpectInverse([=](double p) { return InvCDFFisher(p, df1, df2); },
                          [=](double x) { return CDFFisher(x, df1, df2, 1); },
                          [=](double x) { return CDFFisher(x, df1, df2, 0); });
        }
    }
}

TEST(DistributionIdentities, FarNormalQuantilesAreTheNearestDoubles)
{
    const auto lower = [](double x) { return CDFNormalStd(x); };
    for (int exponent = 12; exponent < 300; exponent++) {
        const double p = std::pow(10.0, -exponent);
        const double z = InvCDFNormalStd(p);
        ExpectClose(lower(z), p, 3e-15 + 0.6 * Spacing(lower, z));
    }
}

TEST(DistributionIdentities, QuantileBesideTheMedianKeepsItsDigits)
{
    const double p = 0.5 + 0x1p-40;
    ExpectClose(InvCDFNormalStd(p), 0x1p-40 * std::sqrt(2 * kPi), kRoundoff);
    ExpectClose(InvCDFStudent(p, 1), 0x1p-40 * kPi, kRoundoff);
    ExpectClose(InvCDFStudent(1 - p, 1), -0x1p-40 * kPi, kRoundoff);
}

}  // namespace
