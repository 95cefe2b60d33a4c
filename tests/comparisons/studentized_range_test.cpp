/** The quadrature scheme of the studentized range: R has the same one below 25000 degrees of freedom. */
#include "comparisons/studentized_range.h"

#include <cmath>

#include "kernel/distributions/comparison_laws.h"
#include "kernel/distributions/gamma_functions.h"
#include "linear/reference_cases.h"

using namespace korvenrg::comparisons;
using namespace korvenrg::test;
using linear_test::At;
using linear_test::ReadCases;
using linear_test::Reference;
using linear_test::Vector;

namespace {

// Rounding of the density's base, ff log(df) - df log 2 - log gamma(ff), whose terms cancel: with f degrees of freedom
// some units of 1E-16 f log f.
double RoundingAt(double df)
{
    return 1E-12 + 3E-15 * df;
}

TEST(StudentizedRange, SchemeOfR)
{
    const auto cases = ReadCases("comparison_values.txt");
    const auto& scheme = cases.back();
    const Vector q = scheme["cells"].Column(1), k = scheme["cells"].Column(2), df = scheme["cells"].Column(3),
                 p = scheme["p"].Numbers();
    for (size_t i = 0; i < p.size(); ++i)
        EXPECT_NEAR(PTukey(q[i], 1, k[i], df[i]), p[i], RoundingAt(df[i]))
            << q[i] << " " << k[i] << " " << df[i];

    // the secants of both take the same steps
    const Vector conf = scheme["inverse"].Column(1), means = scheme["inverse"].Column(2),
                 f = scheme["inverse"].Column(3);
    int without = 0;
    for (size_t i = 0; i < conf.size(); ++i) {
        const std::string& expected = scheme["q"].cells[i];
        const double value = QTukey(conf[i], 1, means[i], f[i]);
        if (expected == "missing") {
            EXPECT_EQ(value, -1.0);
            without += 1;
        } else {
            ExpectClose(value, std::stod(expected), 100 * RoundingAt(f[i]));
        }
    }
    EXPECT_EQ(without, 1);
}

// The range of two normals is sqrt(2) |Z|. Beyond a half range of 8 it has probability 1, by definition and not by rounding.
TEST(StudentizedRange, RangeOfNormals)
{
    bool saturated = true;
    for (const double w : {0.3, 1.0, 2.9, 3.1, 6.0, 11.0}) {
        const double one = WProb(w, 1, 2, saturated);
        ExpectClose(one, derf(w / 2), 1E-9);  // the rule's own error
        EXPECT_FALSE(saturated);
        ExpectClose(WProb(w, 3, 2, saturated), one * one * one, kRoundoff);
    }
    EXPECT_EQ(WProb(16.0, 1, 5, saturated), 1.0);
    EXPECT_FALSE(saturated);
    EXPECT_LT(WProb(15.9, 1, 5, saturated), 1.0);  // what lies beyond 8 is missing
    EXPECT_FALSE(saturated);
    EXPECT_EQ(WProb(15.9, 1E-8, 5, saturated), 1.0);
    EXPECT_TRUE(saturated);
    EXPECT_EQ(WProb(0.0, 1, 5, saturated), 0.0);
    // what is below exp(-30) is nothing, and so is a range that 100 normals hardly fit into
    EXPECT_EQ(WProb(1E-14, 1, 2, saturated), 0.0);
    EXPECT_EQ(WProb(0.5, 1, 100, saturated), 0.0);
}

// Two means make it Student's t; more of them are compared with the law that is exact to rounding.
TEST(StudentizedRange, CloseToTheLaw)
{
    matrix<double> lambda(99, 1, std::sqrt(0.5));
    for (const double df : {10.0, 24.0, 200.0, 6000.0})
        for (const int k : {2, 3, 20, 100}) {
            SCOPED_TRACE(::testing::Message() << k << " means, " << df);
            const double q = QTukey(0.95, 1, k, df);
            EXPECT_NEAR(q, qmcav(k, &lambda, df, 0.95) * std::sqrt(2.0), 6E-4);
            EXPECT_NEAR(PTukey(q, 1, k, df), 1 - pvmcav(k, &lambda, df, q / std::sqrt(2.0)), 2E-5);
        }
}

// A range that saturates gives 0 instead of 1, but only beyond 25000 degrees of freedom. A fraction of one range
// saturates; a whole one stays below 1 up to a half range of 8, and has probability 1 by definition from there on, which
// does not count.
TEST(StudentizedRange, HugeStatisticAtHugeDf)
{
    EXPECT_EQ(PTukey(15, 1E-8, 5, 25001), 0.0);
    EXPECT_GT(PTukey(15, 1E-8, 5, 25000), 0.999);
    EXPECT_GT(PTukey(15, 1, 5, 25001), 0.999);
    EXPECT_GT(PTukey(16, 1E-8, 5, 25001), 0.999);
    EXPECT_NEAR(PTukey(3.5, 1, 3, 25001),
                PTukey(3.5, 1, 3, 25000),
                1E-8);  // an unsaturated range is thrown away
    // The intervals over the scale do not get finer: the density falls between their nodes, and there is no quantile.
    EXPECT_NEAR(PTukey(12, 1, 3, 1E6), 0.96726, 1E-5);
    EXPECT_EQ(QTukey(0.95, 1, 3, 1E9), -1.0);
}

// By the formula in another language. With the source's -0.0204 for the second coefficient the first row would be
// 1.4142 times the normal deviates 0.674, 1.960 and 3.291.
TEST(StudentizedRange, StartOfTheInverse)
{
    const struct
    {
        double means, df, starts[3];  // for 0.5, 0.95, 0.999
    } rows[] = {{2, 120, {0.8595170471169735, 2.227848292001358, 3.8249458631399067}},
                {10, 20, {1.843298567040609, 4.2482657193868185, 6.1631348440986455}},
                {10, 120, {1.8467650132681717, 3.993702505315798, 5.267457463090826}}};
    const double p[] = {0.5, 0.95, 0.999};
    for (const auto& row : rows)
        for (int i = 0; i < 3; ++i)
            ExpectClose(QTukeyStart(p[i], row.means, row.df), row.starts[i], kRoundoff);
    EXPECT_EQ(QTukey(0, 1, 3, 10), 0.0);
}

TEST(StudentizedRange, BadArgumentsEnd)
{
    EXPECT_EQ(QTukey(1, 1, 3, 10), -1.0);
    EXPECT_EQ(QTukey(0.95, 1, 3, 0), -1.0);
    EXPECT_EQ(QTukey(0.95, 1, 3, NAN), -1.0);
    EXPECT_TRUE(std::isnan(PTukey(3, 1, 3, -5)));
    EXPECT_TRUE(std::isnan(PTukey(NAN, 1, 3, 10)));
}

}  // namespace
