#include "kernel/scalars/scalars.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

namespace {

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();

TEST(Scalars, NamesMeanWhatTheScriptLanguageSays)
{
    EXPECT_EQ(sqr(9), 3);  // the root, not the square
    EXPECT_TRUE(std::isnan(sqr(-1)));
    EXPECT_EQ(Log10(1000), 3);
    EXPECT_EQ(std::sin(Pi() / 2), 1);
    EXPECT_EQ(Min(-2, 3), -2);
    EXPECT_EQ(Max(-2, 3), 3);
    EXPECT_EQ(Min(7, kNaN), 7);
    EXPECT_TRUE(std::isnan(Max(kNaN, 7)));
    EXPECT_EQ(FSgn(-1e-300), -1);
    EXPECT_EQ(FSgn(0), 0);
    EXPECT_EQ(FSgn(5), 1);
    double a = 1, b = 2;
    SwapDbl(a, b);
    EXPECT_EQ(a, 2);
    EXPECT_EQ(b, 1);
}

TEST(Scalars, BinomialCoefficientIsExactBelowTwoToThe53)
{
    EXPECT_EQ(Cnk(0, 0), 1);
    EXPECT_EQ(Cnk(5, 6), 0);
    EXPECT_EQ(Cnk(5, -1), 0);
    EXPECT_EQ(Cnk(2147483647, 1), 2147483647);
    EXPECT_EQ(Cnk(300000, 3), 4499955000100000.0);
    EXPECT_EQ(Cnk(56, 28), 7648690600760440.0);
    EXPECT_DOUBLE_EQ(Cnk(1029, 514), 1.429820686498904e308);  // beside the largest double
    EXPECT_TRUE(std::isinf(Cnk(1030, 515)));
    EXPECT_TRUE(std::isinf(Cnk(2147483647, 1000000000)));
}

// C(n, k) = C(n-1, k-1) + C(n-1, k) exactly, below and beyond the integers that a machine word holds.
TEST(Scalars, PascalsTriangle)
{
    for (int n = 1; n <= 56; n++)
        for (int k = 1; k < n; k++)
            EXPECT_EQ(Cnk(n, k), Cnk(n - 1, k - 1) + Cnk(n - 1, k)) << n << ", " << k;
    for (int n : {70, 200, 900})
        for (int k = 1; k < n; k += 13)
            EXPECT_NEAR(Cnk(n, k) / (Cnk(n - 1, k - 1) + Cnk(n - 1, k)), 1, 5e-16) << n << ", " << k;
}

}  // namespace
