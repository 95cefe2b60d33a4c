#include "kernel/linalg/moments.h"

#include <gtest/gtest.h>

#include <cmath>

#include "support/tolerances.h"

namespace {

using namespace korvenrg::linalg;
using namespace korvenrg::test;

// x = 1, 2, 3, 4 and y = 2, 1, 4, 3 with weights 1, 2, 1, 2: means 16/6 and 13/6 ... by hand over weights 6.
TEST(Moments, HandWorkedWeightedTable)
{
    const std::vector<double> x = {1, 2, 3, 4};
    const std::vector<double> y = {2, 1, 4, 3};
    const std::vector<double> weights = {1, 2, 1, 2};
    const double* columns[] = {x.data(), y.data()};
    const Moments moments = CorrelationMoments(columns, 4, weights.data());
    const double sxx = 1 + 8 + 9 + 32 - 16.0 * 16.0 / 6.0;
    const double syy = 4 + 2 + 16 + 18 - 14.0 * 14.0 / 6.0;
    const double sxy = 2 + 4 + 12 + 24 - 16.0 * 14.0 / 6.0;
    ExpectClose(moments.mean[0], 16.0 / 6.0, kRoundoff);
    ExpectClose(moments.mean[1], 14.0 / 6.0, kRoundoff);
    ExpectClose(moments.variance[0], sxx / 5.0, kRoundoff);
    ExpectClose(moments.standardDeviation[1], std::sqrt(syy / 5.0), kRoundoff);
    ExpectClose(moments.correlation[1], sxy / std::sqrt(sxx * syy), kRoundoff);
    EXPECT_EQ(moments.correlation[0], 1.0);

    const Moments aboutZero = MomentsAboutZero(columns, 4, weights.data());
    ExpectClose(aboutZero.correlation[1], 42.0 / 5.0 / std::sqrt(sxx / 5.0 * (syy / 5.0)), kRoundoff);
    ExpectClose(aboutZero.correlation[0], 50.0 / 5.0 / (sxx / 5.0), kRoundoff);
}

// Proportional columns, on scales whose squares leave the range too: 1 or -1 exactly, never an ulp beside it.
TEST(Moments, ProportionalColumnsCorrelateExactly)
{
    for (const double scale : {1.0, 1e-90, 1e100}) {
        for (int k = 1; k <= 50; ++k) {
            std::vector<double> x, minus;
            for (int i = 0; i < 7; ++i)
                x.push_back(scale * std::sin(k * 1.7 + i * i));
            for (const double cell : x)
                minus.push_back(-2.0 * cell);
            const double* columns[] = {x.data(), x.data(), minus.data()};
            const std::vector<double> r = CorrelationMoments(columns, 7, nullptr).correlation;
            ASSERT_EQ(r[1], 1.0) << scale << ' ' << k;
            ASSERT_EQ(r[2], -1.0) << scale << ' ' << k;
        }
    }
    EXPECT_EQ(CorrelationOf(3.0, 1.0, 4.0), 1.5) << "no covariance matrix: shown as it is";
    EXPECT_EQ(CorrelationOf(-1.0 - 1e-15, 1.0, 1.0), -1.0);
}

TEST(Moments, ConstantColumnHasNoSpreadAndNoCorrelation)
{
    const std::vector<double> constant(5, 0.3);
    const std::vector<double> x = {1, 5, 2, 4, 3};
    const double* columns[] = {constant.data(), x.data()};
    for (const Moments& moments :
         {CorrelationMoments(columns, 5, nullptr), MomentsAboutZero(columns, 5, nullptr)})
    {
        EXPECT_EQ(moments.standardDeviation[0], 0.0);
        EXPECT_EQ(moments.correlation[0], 0.0);
        EXPECT_EQ(moments.correlation[1], 0.0);
    }
    EXPECT_EQ(CorrelationMoments(columns, 1, nullptr).standardDeviation[1], 0.0);
}

TEST(Moments, StandardizedColumnsHaveMeanZeroAndUnitSpread)
{
    const std::vector<double> x = {1000001, 1000005, 1000002, 1000004, 1000003};
    const std::vector<double> constant(5, 7.0);
    const double* columns[] = {x.data(), constant.data()};
    std::vector<double> out(10);
    StandardizeColumns(columns, 5, out.data());
    const double unit = 1.0 / std::sqrt(2.5);
    const double expected[] = {-2 * unit, 2 * unit, -unit, unit, 0.0};
    for (std::size_t r = 0; r < 5; ++r) {
        ExpectClose(out[r], expected[r], kRoundoff);
        EXPECT_EQ(out[5 + r], 0.0);
    }
}

}  // namespace
