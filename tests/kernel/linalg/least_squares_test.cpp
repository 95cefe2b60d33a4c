#include "kernel/linalg/least_squares.h"

#include <gtest/gtest.h>

#include <cmath>
#include <vector>

#include "core/limits.h"
#include "support/tolerances.h"

namespace {

using namespace korvenrg::test;
using Table = matrix<double>;
using korvenrg::kFalse;
using korvenrg::kTrue;

// Two columns of twelve rows without pattern.
Table Columns()
{
    double cells[] = {1.5, -0.5, 2.25, 0.75, -1.25, 3.0,  -2.0, 1.0, 0.25, -0.75, 2.5,  1.75,
                      0.5, 2.0,  -1.5, 1.25, 0.75,  -2.0, 1.0,  3.0, -0.5, 0.25,  2.75, -1.0};
    return Table(12, 2, cells, false);
}

// y = 3 + x1 - 2 x2 + 0.5 x1^2 + 4 x2^2 - x1 x2 without error: the terms come degree by degree, the constant last.
TEST(LeastSquares, RecoversAPolynomialTermByTerm)
{
    Table X = Columns();
    Table Y(12, 1);
    for (int i = 1; i <= 12; ++i) {
        const double a = X.vbget(i, 1);
        const double b = X.vbget(i, 2);
        Y.vbset(i, 3.0 + a - 2.0 * b + 0.5 * a * a + 4.0 * b * b - a * b);
    }
    Table coefficients(6, 1);
    Table fitted(12, 1);
    OLSBasic(12, 2, &X, &Y, nullptr, 2, kTrue, kFalse, 1e-10, &coefficients, &fitted);
    const double expected[] = {1, -2, 0.5, 4, -1, 3};
    for (int j = 1; j <= 6; ++j) {
        ExpectClose(coefficients.vbget(j), expected[j - 1], kIterative);
    }
    ExpectClose(fitted.vbget(6), Y.vbget(6), kIterative);
    Table level(1, 1);
    OLSBasic(12, 2, &X, &Y, nullptr, 0, kFalse, kFalse, 1e-10, &level, &fitted);
    double sum = 0.0;
    for (int i = 1; i <= 12; ++i) {
        sum += Y.vbget(i);
    }
    ExpectClose(level.vbget(1), sum / 12.0, kRoundoff);
}

// Residuals are orthogonal to each term under the weights, and to the constant when there is one.
TEST(LeastSquares, WeightedNormalEquationsHold)
{
    Table X = Columns();
    Table Y(12, 1);
    Table W(12, 1);
    for (int i = 1; i <= 12; ++i) {
        Y.vbset(i, std::sin(static_cast<double>(i)) + 1e6);
        W.vbset(i, i == 4 ? 0.0 : 1.0 + i % 3);
    }
    for (const short interceptFixed : {kTrue, kFalse}) {
        Table coefficients(3, 1, 9.0);
        Table fitted(12, 1);
        OLSBasic(12, 2, &X, &Y, &W, 1, kFalse, interceptFixed, 1e-4, &coefficients, &fitted);
        double scores[3] = {};
        for (int i = 1; i <= 12; ++i) {
            const double weighted = W.vbget(i) * (Y.vbget(i) - fitted.vbget(i));
            scores[0] += weighted * X.vbget(i, 1);
            scores[1] += weighted * X.vbget(i, 2);
            scores[2] += weighted;
        }
        const double rounding = 1e6 * 24 * 1e-15;  // of twelve products of the size of Y
        EXPECT_NEAR(scores[0], 0.0, rounding);
        EXPECT_NEAR(scores[1], 0.0, rounding);
        if (interceptFixed == kTrue) {
            EXPECT_EQ(coefficients.vbget(3), 0.0);
            EXPECT_GT(std::fabs(scores[2]), 1.0);
        } else {
            EXPECT_NEAR(scores[2], 0.0, rounding);
        }
    }
}

TEST(LeastSquares, RefusedTermsHaveCoefficientZero)
{
    Table X(5, 3);
    Table Y(5, 1);
    const double y[] = {1, 3, 2, 5, 4};
    for (int i = 1; i <= 5; ++i) {
        X.vbset(i, 1, i);
        X.vbset(i, 2, 2.0 * i + (i == 3 ? 1e-3 : 0.0));  // tolerance about 2e-8
        X.vbset(i, 3, 7.0);
        Y.vbset(i, y[i - 1]);
    }
    Table coefficients(4, 1, 9.0);
    Table errors(4, 1, 9.0);
    Table fitted(5, 1);
    double mse = 0.0;
    OLSBasic2(5, 3, &X, &Y, nullptr, 1, kFalse, kFalse, 1e-4, &coefficients, &errors, &fitted, &mse);
    ExpectClose(coefficients.vbget(1), 0.8, kRoundoff);
    ExpectClose(coefficients.vbget(4), 0.6, kRoundoff);
    EXPECT_EQ(coefficients.vbget(2), 0.0);
    EXPECT_EQ(coefficients.vbget(3), 0.0);
    ExpectClose(mse, 1.2, kRoundoff);  // 3.6 over 3
    ExpectClose(errors.vbget(1), std::sqrt(0.12), kRoundoff);
    ExpectClose(errors.vbget(4), std::sqrt(1.2 * (0.2 + 0.9)), kRoundoff);
    EXPECT_EQ(errors.vbget(2), 0.0);
    OLSBasic2(2, 1, &X, &Y, nullptr, 1, kFalse, kFalse, 1e-4, &coefficients, &errors, &fitted, &mse);
    EXPECT_EQ(errors.vbget(1), korvenrg::kMissing) << "no degree of freedom is left";

    // Through the origin b = 53 / 55, and one degree of freedom goes instead of two.
    OLSBasic2(5, 1, &X, &Y, nullptr, 1, kFalse, korvenrg::kTrue, 1e-4, &coefficients, &errors, &fitted, &mse);
    ExpectClose(coefficients.vbget(1), 53.0 / 55, kRoundoff);
    ExpectClose(mse, (55 - 53.0 * 53.0 / 55) / 4, kRoundoff);
    ExpectClose(errors.vbget(1), std::sqrt(mse / 55), kRoundoff);
    OLSBasic(5, 1, &X, &Y, nullptr, 1, kFalse, kFalse, 1.0, &coefficients, &fitted);
    EXPECT_EQ(coefficients.vbget(1), 0.0) << "a tolerance of exactly 1 is not above 1";
}

// Weights are replicated rows, in the standard errors too. A flag of 1 is off.
TEST(LeastSquares, StandardErrorsCountTheWeights)
{
    Table X = Columns();
    Table Y(12, 1);
    Table W(12, 1);
    Table all(24, 2);
    Table allY(24, 1);
    int row = 0;
    for (int i = 1; i <= 12; ++i) {
        Y.vbset(i, std::sin(static_cast<double>(i)));
        W.vbset(i, 1.0 + i % 3);
        for (int copy = 0; copy <= i % 3; ++copy) {
            row += 1;
            all.vbset(row, 1, X.vbget(i, 1));
            all.vbset(row, 2, X.vbget(i, 2));
            allY.vbset(row, Y.vbget(i));
        }
    }
    Table out[6] = {Table(3, 1), Table(3, 1), Table(12, 1), Table(3, 1), Table(3, 1), Table(24, 1)};
    double mse[2] = {};
    for (const short fixed : {short{1}, kTrue}) {
        OLSBasic2(12, 2, &X, &Y, &W, 1, 1, fixed, 1e-10, &out[0], &out[1], &out[2], &mse[0]);
        OLSBasic2(24, 2, &all, &allY, nullptr, 1, 1, fixed, 1e-10, &out[3], &out[4], &out[5], &mse[1]);
        double sse = 0.0;
        for (int i = 1; i <= 24; ++i) {
            sse += std::pow(allY.vbget(i) - out[5].vbget(i), 2.0);
        }
        ExpectClose(mse[0], sse / (fixed == kTrue ? 22.0 : 21.0), kIterative);
        ExpectClose(mse[0], mse[1], kIterative);
        for (int j = 1; j <= 3; ++j) {
            ExpectClose(out[0].vbget(j), out[3].vbget(j), kIterative);
            ExpectClose(out[1].vbget(j), out[4].vbget(j), kIterative);
        }
        EXPECT_EQ(out[1].vbget(3) == 0.0, fixed == kTrue);
    }
}

// Powers 1..8 of 0..9, whose correlations have the condition 6e11: the refinement brings what an orthogonal
// factorisation would (7e-8) out of a sweep that keeps four digits.
TEST(LeastSquares, RefinementOfAPolynomialOfHighDegree)
{
    Table X(10, 1);
    Table Y(10, 1);
    for (int i = 1; i <= 10; ++i) {
        X.vbset(i, i - 1.0);
        double power = 1.0;
        double sum = 0.0;
        for (int d = 0; d <= 8; ++d) {
            sum += power;
            power *= i - 1.0;
        }
        Y.vbset(i, sum);
    }
    Table coefficients(9, 1);
    Table fitted(10, 1);
    OLSBasic(10, 1, &X, &Y, nullptr, 8, kFalse, kFalse, 0.0, &coefficients, &fitted);
    for (int j = 1; j <= 9; ++j) {
        EXPECT_NEAR(coefficients.vbget(j), 1.0, 5e-8) << j;
    }
}

}  // namespace
