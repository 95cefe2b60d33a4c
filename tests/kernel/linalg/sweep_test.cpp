#include "kernel/linalg/sweep.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <random>
#include <vector>

#include "support/tolerances.h"

namespace {

using namespace korvenrg::linalg;
using namespace korvenrg::test;

// A packed correlation matrix of m random columns, the last a noisy sum of the others.
matrix<double> RandomCorrelations(int m)
{
    constexpr int kRows = 60;
    std::mt19937 generator(11);
    std::normal_distribution<double> normal;
    std::vector<std::vector<double>> columns(static_cast<std::size_t>(m), std::vector<double>(kRows));
    for (std::size_t r = 0; r < kRows; ++r) {
        double sum = 0.0;
        for (std::size_t j = 0; j + 1 < columns.size(); ++j) {
            columns[j][r] = normal(generator);
            sum += columns[j][r];
        }
        columns.back()[r] = sum + normal(generator);
    }
    const auto product = [&](int i, int j) {
        double sum = 0.0;
        for (std::size_t r = 0; r < kRows; ++r) {
            sum += columns[static_cast<std::size_t>(i - 1)][r] * columns[static_cast<std::size_t>(j - 1)][r];
        }
        return sum;
    };
    matrix<double> packed(static_cast<int>(PackedSize(static_cast<std::size_t>(m))), 1);
    for (int i = 1; i <= m; ++i) {
        for (int j = 1; j <= i; ++j) {
            packed.vbset(static_cast<int>(PackedPosition(i, j)),
                         product(i, j) / std::sqrt(product(i, i) * product(j, j)));
        }
    }
    return packed;
}

double At(const matrix<double>& packed, int i, int j)
{
    return packed.vbget(static_cast<int>(PackedPosition(i, j)));
}

TEST(Sweep, SweptBlockIsTheNegativeInverse)
{
    constexpr int m = 6;
    const matrix<double> original = RandomCorrelations(m);
    matrix<double> packed(original);
    for (const int k : {4, 1, 3}) {
        M_Sweep(&packed, m, k);
    }
    const std::vector<int> swept = {1, 3, 4};
    for (const int i : swept) {
        for (const int j : swept) {
            double product = 0.0;
            for (const int k : swept) {
                product -= At(packed, i, k) * At(original, k, j);
            }
            EXPECT_NEAR(product, i == j ? 1.0 : 0.0, 1e-13);  // condition of the block below 20
        }
        double coefficient = 0.0;
        for (const int k : swept) {
            coefficient -= At(packed, i, k) * At(original, k, m);
        }
        ExpectClose(At(packed, m, i), coefficient, 1e-13);  // the same
    }
}

TEST(Sweep, TwiceRestoresInAnyOrder)
{
    constexpr int m = 7;
    const matrix<double> original = RandomCorrelations(m);
    matrix<double> packed(original);
    for (const int k : {2, 5, 3, 6, 1, 6, 2, 1, 3, 5}) {
        M_Sweep(&packed, m, k);
    }
    for (int i = 1; i <= static_cast<int>(original.total); ++i) {
        EXPECT_NEAR(packed.vbget(i), original.vbget(i), 1e-13);
    }
}

// Column 2 and the response are column 1 with a cell that rounding made too large.
TEST(Sweep, UnsweptDiagonalCellsStopAtZero)
{
    matrix<double> packed(static_cast<int>(PackedSize(3)), 1);
    const double cells[] = {1.0, 1.0 + 1e-15, 1.0, 1.0 + 1e-15, 1.0, 1.0};
    std::copy(cells, cells + 6, packed.data);
    M_Sweep(&packed, 3, 1);
    EXPECT_EQ(At(packed, 2, 2), 0.0);
    EXPECT_EQ(At(packed, 3, 3), 0.0);
    EXPECT_EQ(At(packed, 1, 1), -1.0);
    M_Sweep(&packed, 3, 1);
    EXPECT_NEAR(At(packed, 2, 2), 1.0, kRoundoff);
}

TEST(Sweep, ZeroPivotAndBadArgumentsChangeNothing)
{
    matrix<double> packed(3, 1);
    packed.vbset(2, 0.5);
    packed.vbset(3, 1.0);
    for (const int k : {1, 0, 3, -4}) {
        M_Sweep(&packed, 2, k);
    }
    M_Sweep(&packed, 5, 1);
    EXPECT_EQ(packed.vbget(2), 0.5);
    EXPECT_EQ(packed.vbget(3), 1.0);
    EXPECT_EQ(OLSCheckIfIn(&packed, 9, 1, 0.0), 0.0);
}

TEST(CheckIfIn, GivesTheLowestToleranceThatWouldResult)
{
    // Columns 1 and 2 correlate at c, 3 is free of both: adding 2 to 1 leaves 1 - c^2 for both.
    const double c = 0.99;
    matrix<double> packed(static_cast<int>(PackedSize(4)), 1);
    for (int i = 1; i <= 4; ++i) {
        packed.vbset(static_cast<int>(PackedPosition(i, i)), 1.0);
    }
    packed.vbset(static_cast<int>(PackedPosition(2, 1)), c);
    EXPECT_EQ(OLSCheckIfIn(&packed, 3, 1, 0.1), 1.0);
    M_Sweep(&packed, 4, 1);
    ExpectClose(OLSCheckIfIn(&packed, 3, 2, 0.01), 1.0 - c * c, kIterative);
    EXPECT_LE(OLSCheckIfIn(&packed, 3, 1, 0.01), 0.0);  // already in
    EXPECT_EQ(OLSCheckIfIn(&packed, 3, 3, 0.01), 1.0);
}

TEST(CheckIfIn, ProtectsTheColumnsAlreadyIn)
{
    // Not a correlation matrix on purpose: column 2 has a large scale, so its pivot is well above the
    // tolerance while column 1, which it nearly determines, would fall below.
    matrix<double> packed(static_cast<int>(PackedSize(3)), 1);
    packed.vbset(static_cast<int>(PackedPosition(1, 1)), 1.0);
    packed.vbset(static_cast<int>(PackedPosition(2, 1)), 9.99);
    packed.vbset(static_cast<int>(PackedPosition(2, 2)), 100.0);
    packed.vbset(static_cast<int>(PackedPosition(3, 3)), 1.0);
    M_Sweep(&packed, 3, 1);
    const double tolerance = 1.0 - 9.99 * 9.99 / 100.0;  // of column 1 given column 2
    ExpectClose(OLSCheckIfIn(&packed, 2, 2, 0.01), tolerance, kIterative);
    EXPECT_GT(OLSCheckIfIn(&packed, 2, 2, 0.001), 0.15);  // nothing falls below 0.001: the pivot itself
}

TEST(CheckIfIn, AliasedColumnNeverComesBackOnNoise)
{
    // Column j + 1 is the mean of all columns before it, plus its own scale: exact dependence, inexact
    // arithmetic.
    constexpr int p = 5;
    constexpr int rows = 40;
    std::mt19937 generator(3);
    std::uniform_real_distribution<double> uniform(-1.0, 1.0);
    std::vector<std::vector<double>> x(p, std::vector<double>(rows));
    for (std::size_t r = 0; r < rows; ++r) {
        x[4][r] = 0.0;
        for (std::size_t j = 0; j < 4; ++j) {
            x[j][r] = uniform(generator);
            x[4][r] += x[j][r] / 3.0;
        }
    }
    matrix<double> packed(static_cast<int>(PackedSize(p + 1)), 1);
    packed.vbset(static_cast<int>(PackedPosition(p + 1, p + 1)), 1.0);
    for (int i = 1; i <= p; ++i) {
        for (int j = 1; j <= i; ++j) {
            double sums[3] = {};
            for (std::size_t r = 0; r < rows; ++r) {
                const double a = x[static_cast<std::size_t>(i - 1)][r];
                const double b = x[static_cast<std::size_t>(j - 1)][r];
                sums[0] += a * b;
                sums[1] += a * a;
                sums[2] += b * b;
            }
            packed.vbset(static_cast<int>(PackedPosition(i, j)), sums[0] / std::sqrt(sums[1] * sums[2]));
        }
    }
    for (int k = 1; k < p; ++k) {
        M_Sweep(&packed, p + 1, k);
    }
    EXPECT_LE(OLSCheckIfIn(&packed, p, p, 0.0), 0.0);
}

// Cells of moments about zero, unit spreads: two columns of the given mean, a combination of both, and their sum plus
// noise.
matrix<double> MomentsAboutZero(double mean, double noise, unsigned seed)
{
    constexpr int rows = 50;
    std::mt19937 generator(seed);
    std::uniform_real_distribution<double> uniform(-1.7, 1.7);
    std::vector<std::vector<double>> x(4, std::vector<double>(rows));
    for (std::size_t r = 0; r < rows; ++r) {
        x[0][r] = mean + uniform(generator);
        x[1][r] = mean + uniform(generator);
        x[2][r] = 0.7 * x[0][r] + 0.9 * x[1][r];
        x[3][r] = (x[0][r] + x[1][r]) / 1.4 + noise * uniform(generator);
    }
    matrix<double> packed(static_cast<int>(PackedSize(5)), 1);
    packed.vbset(static_cast<int>(PackedPosition(5, 5)), 1.0);
    for (int i = 1; i <= 4; ++i) {
        for (int j = 1; j <= i; ++j) {
            double sum = 0.0;
            for (std::size_t r = 0; r < rows; ++r) {
                sum += x[static_cast<std::size_t>(i - 1)][r] * x[static_cast<std::size_t>(j - 1)][r] / rows;
            }
            packed.vbset(static_cast<int>(PackedPosition(i, j)), sum);
        }
    }
    return packed;
}

// The third column is refused with a pivot that rounding takes to either side of 0. It must not be taken for a swept
// one when the fourth is judged.
TEST(CheckIfIn, RoundingIsJudgedOnTheScaleOfTheCells)
{
    const struct
    {
        double mean, noise;
        bool enters;
    } cases[] = {{0, 0, false}, {30, 0, false}, {1e4, 0, false}, {5e4, 0, false}, {1e4, 0.1, true}};
    for (const auto& c : cases) {
        for (unsigned seed = 1; seed <= 20; ++seed) {
            matrix<double> packed = MomentsAboutZero(c.mean, c.noise, seed);
            M_Sweep(&packed, 5, 1);
            M_Sweep(&packed, 5, 2);
            EXPECT_LE(OLSCheckIfIn(&packed, 4, 3, 0.0), 0.0) << c.mean;
            EXPECT_EQ(OLSCheckIfIn(&packed, 4, 4, 0.0) > 0.0, c.enters) << c.mean << ' ' << seed;
        }
    }
}

}  // namespace
