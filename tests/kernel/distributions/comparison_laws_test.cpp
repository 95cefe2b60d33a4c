// The laws of multiple comparisons: oracle and R values, closed forms, quantiles as inverses, ends and bad arguments.

#include "kernel/distributions/comparison_laws.h"
#include "kernel/distributions/equal_range.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <vector>

#include "kernel/distributions/normal.h"
#include "kernel/distributions/student.h"
#include "kernel/distributions/studentized_tail.h"
#include "support/tolerances.h"

namespace {

using namespace korvenrg::distributions;
using korvenrg::test::ExpectClose;

constexpr double kTail = 1e-12;      // the promised accuracy of an upper tail
constexpr double kQuantile = 1e-10;  // of a critical value, judged by its tail
constexpr double kEqual = 0.70710678118654752;
constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();

struct ComparisonRow
{
    double law;
    double k;
    double firstFactor;
    double lastFactor;
    double df;
    double t;
    double upper;
    double error = 0;
};

constexpr ComparisonRow kOracle[] = {
#include "reference/distributions/comparisons.inc"
};
constexpr ComparisonRow kFromR[] = {
#include "reference/distributions/comparison_r.inc"
};

matrix<double> FactorsOf(int k, double first, double last)
{
    matrix<double> lambda(k - 1, 1);
    for (int i = 1; i < k; i++)
        lambda.vbset(i, first + (last - first) / (k > 2 ? k - 2 : 1) * (i - 1));
    return lambda;
}

double PValue(int law, int k, matrix<double>* lambda, double df, double t)
{
    return law == 0   ? pvmcav(k, lambda, df, t)
           : law == 1 ? pvmcbv(k, lambda, df, t)
                      : pvmccv(k, lambda, df, t);
}

double CriticalValue(int law, int k, matrix<double>* lambda, double df, double confidence)
{
    if (law == 0) return qmcav(k, lambda, df, confidence);
    matrix<double> conf(1, 1, confidence);
    matrix<double> result(1, 1);
    if (law == 1) qmcbv(k, lambda, 1.0, df, 1.0, &conf, &result);
    if (law == 2) qmccv(k, lambda, df, 1.0, &conf, &result);
    return result.vbget(1);
}

double PValueOf(const ComparisonRow& row)
{
    const int k = static_cast<int>(row.k);
    matrix<double> lambda = FactorsOf(k, row.firstFactor, row.lastFactor);
    return PValue(static_cast<int>(row.law), k, &lambda, row.df, row.t);
}

TEST(ComparisonLaws, UpperTailsMatchTheOracleAndR)
{
    for (const ComparisonRow& row : kOracle) {
        SCOPED_TRACE(testing::Message()
                     << "law " << row.law << " k " << row.k << " df " << row.df << " t " << row.t);
        ExpectClose(PValueOf(row), row.upper, kTail);
    }
    for (const ComparisonRow& row : kFromR) {
        SCOPED_TRACE(testing::Message() << "R, law " << row.law << " k " << row.k << " df " << row.df);
        EXPECT_NEAR(PValueOf(row), row.upper, 2 * row.error);
    }
}

// k phi(x) Phi(x)^(k-1) (1 - (1 - Phi(x - w) / Phi(x))^(k-1)) by a fine trapezoidal rule in long doubles.
long double RangeTailByFineRule(int k, double w)
{
    const auto below = [](long double x) { return 0.5L * erfcl(-x * sqrtl(0.5L)); };
    constexpr long double kFineStep = 1.0L / 128;
    long double sum = 0;
    for (long double x = -12; x < 24; x += kFineStep) {
        const long double all = expl((k - 1) * logl(below(x)));
        const long double any = -expm1l((k - 1) * log1pl(-below(x - w) / below(x)));
        sum += expl(-0.5L * x * x) * all * any;
    }
    return k * 0.39894228040143267794L * sum * kFineStep;
}

// At the ends of the ranges of k that share a step, from the certain to the all but impossible.
TEST(ComparisonLaws, EqualRangeOnItsGrid)
{
    using korvenrg::distributions::EqualRange;
    for (const int k : {3, 10, 11, 30, 31, 200, 201, EqualRange::kMostMeans}) {
        const EqualRange range(k);
        for (const double w : {0.01, 0.7, 2.97, 3.0, 3.03, 6.28, 11.0, EqualRange::kWidest}) {
            SCOPED_TRACE(testing::Message() << "k " << k << " w " << w);
            ExpectClose(range.UpperTail(w), static_cast<double>(RangeTailByFineRule(k, w)), kTail);
        }
    }
}

// The doors take k = 2 from Student's distribution; the integrals have to give it by themselves.
TEST(ComparisonLaws, OneComparisonIsStudent)
{
    for (double factor : {0.05, kEqual, 0.99})
        for (double df : {0.1, 1.0, 7.5, 1000.0, 1e12})
            for (double t : {0.125, 1.5, 6.0, 40.0}) {
                if (df > 100 && t > 30) continue;
                SCOPED_TRACE(testing::Message() << "factor " << factor << " df " << df << " t " << t);
                const double tail = pValStudent(t, df);
                const auto upperOf = [&](ComparisonKind kind) {
                    return StudentizedTail(MakeComparisonLaw(kind, {factor}), df, t, Side::kUpper);
                };
                ExpectClose(upperOf(ComparisonKind::kRange), 2 * tail, 1e-13);
                ExpectClose(upperOf(ComparisonKind::kOneSided), tail, 1e-13);
                ExpectClose(upperOf(ComparisonKind::kTwoSided), 2 * tail, 1e-13);
            }
}

// Factors of 0 make the differences independent; without estimated scale their law is a power. With one factor of 0
// among others the order does not matter.
TEST(ComparisonLaws, IndependentComparisonsMultiply)
{
    constexpr double kInfinity = HUGE_VAL;
    matrix<double> none = FactorsOf(6, 0, 0);
    for (double t : {-1.0, 0.5, 2.0, 8.0}) {
        SCOPED_TRACE(t);
        const double tail = pValNormalStd(t);
        ExpectClose(pvmcbv(6, &none, kInfinity, t), -std::expm1(5 * std::log1p(-tail)), kTail);
        if (t > 0) ExpectClose(pvmccv(6, &none, kInfinity, t), -std::expm1(5 * std::log1p(-2 * tail)), kTail);
    }
    matrix<double> rising = FactorsOf(4, 0.1, 0.9);
    matrix<double> falling = FactorsOf(4, 0.9, 0.1);
    for (int law : {0, 1, 2})
        ExpectClose(PValue(law, 4, &rising, 9, 2.2), PValue(law, 4, &falling, 9, 2.2), kTail);
}

// The orthant P(all t_i <= 0) of correlations 1/2 is 1/k; no scale enters.
TEST(ComparisonLaws, OneSidedLawAtZero)
{
    for (int k : {3, 10, 60}) {
        matrix<double> lambda = FactorsOf(k, kEqual, kEqual);
        ExpectClose(pvmcbv(k, &lambda, 8, 0), 1 - 1.0 / k, kTail);
    }
}

TEST(ComparisonLaws, CriticalValuesInvertTheTails)
{
    struct Case
    {
        int k;
        double firstFactor;
        double lastFactor;
        double df;
    };
    const Case cases[] = {{3, kEqual, kEqual, 5},
                          {12, kEqual, kEqual, 33.3},
                          {100, kEqual, kEqual, 1e6},
                          {3, 0.3, 0.9, 1}};
    for (const auto& [k, first, last, df] : cases)
        for (int law : {0, 1, 2})
            for (double conf : {0.01, 0.4, 0.95, 0.9999, 1 - 1e-10}) {
                SCOPED_TRACE(testing::Message()
                             << "law " << law << " k " << k << " df " << df << " conf " << conf);
                matrix<double> lambda = FactorsOf(k, first, last);
                const double critical = CriticalValue(law, k, &lambda, df, conf);
                const double upper = PValue(law, k, &lambda, df, critical);
                if (conf > 0.5)
                    ExpectClose(upper, 1 - conf, kQuantile);
                else
                    ExpectClose(1 - upper, conf, kQuantile);
            }
    matrix<double> pair = FactorsOf(2, 0.6, 0.6);
    ExpectClose(CriticalValue(0, 2, &pair, 7, 0.95), InvCDFStudent(0.975, 7), korvenrg::test::kRoundoff);
    ExpectClose(CriticalValue(1, 2, &pair, 7, 0.95), InvCDFStudent(0.95, 7), korvenrg::test::kRoundoff);
}

// A stepwise procedure asks for fewer means than the factors describe: only the first m - 1 factors count.
TEST(ComparisonLaws, FewerMeansThanFactors)
{
    matrix<double> three = FactorsOf(3, kEqual, kEqual);
    matrix<double> ten = FactorsOf(10, kEqual, kEqual);
    EXPECT_EQ(pvmcav(3, &ten, 12, 2.5), pvmcav(3, &three, 12, 2.5));
    EXPECT_EQ(qmcav(3, &ten, 12, 0.95), qmcav(3, &three, 12, 0.95));
}

TEST(ComparisonLaws, EndsAndInvalidArguments)
{
    matrix<double> lambda = FactorsOf(4, kEqual, kEqual);
    matrix<double> bad = FactorsOf(4, 0.5, 1.0);
    for (int law : {0, 1, 2}) {
        SCOPED_TRACE(law);
        EXPECT_EQ(PValue(law, 4, &lambda, 5, HUGE_VAL), 0);
        EXPECT_EQ(PValue(law, 4, &lambda, 5, -HUGE_VAL), 1);
        EXPECT_EQ(PValue(law, 4, &lambda, HUGE_VAL, 60), 0);
        EXPECT_LT(PValue(law, 4, &lambda, 0.1, 1e308), 1e-29);  // the law of few degrees is that flat
        EXPECT_GT(PValue(law, 4, &lambda, 0.1, 1e308), 1e-31);
        EXPECT_EQ(CriticalValue(law, 4, &lambda, 5, 1), HUGE_VAL);
        EXPECT_EQ(CriticalValue(law, 4, &lambda, 5, 0), law == 1 ? -HUGE_VAL : 0);
        EXPECT_TRUE(std::isnan(PValue(law, 1, &lambda, 5, 2)));
        EXPECT_TRUE(std::isnan(PValue(law, 4, &lambda, 0, 2)));
        EXPECT_TRUE(std::isnan(PValue(law, 4, &lambda, kNaN, 2)));
        EXPECT_TRUE(std::isnan(PValue(law, 4, &lambda, 5, kNaN)));
        EXPECT_TRUE(std::isnan(PValue(law, 6, &lambda, 5, 2)));  // too few factors
        EXPECT_TRUE(std::isnan(PValue(law, 4, &bad, 5, 2)));
        EXPECT_TRUE(std::isnan(PValue(law, 4, nullptr, 5, 2)));
        EXPECT_TRUE(std::isnan(CriticalValue(law, 4, &lambda, 5, 1.5)));
        EXPECT_TRUE(std::isnan(CriticalValue(law, 4, &lambda, -1, 0.95)));
    }
    EXPECT_EQ(pvmcav(4, &lambda, 5, -1), 1);
    EXPECT_EQ(pvmccv(4, &lambda, 5, 0), 1);
}

}  // namespace
