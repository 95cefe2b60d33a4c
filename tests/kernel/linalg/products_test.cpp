#include "kernel/linalg/products.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include "core/limits.h"
#include "kernel/linalg/fit_quality.h"
#include "kernel/linalg/inverse_products.h"
#include "support/tolerances.h"

namespace {

using namespace korvenrg::test;

TEST(Products, ComputeNewVarIsAVATransposed)
{
    // A = [1 2; 0 3; -1 0], V = [2 1; 1 5]
    double a[] = {1, 0, -1, 2, 3, 0};
    double v[] = {2, 1, 1, 5};
    matrix<double> A(3, 2, a, true);
    matrix<double> V(2, 2, v, true);
    matrix<double> diagonal(3, 1, 77.0);
    matrix<double> out(3, 3, 77.0);
    ComputeNewVar(&A, 3, 2, &V, &diagonal, &out);
    const double expected[] = {26, 33, -4, 33, 45, -3, -4, -3, 2};
    for (int k = 1; k <= 9; ++k) {
        EXPECT_EQ(out.vbget(k), expected[k - 1]) << k;
    }
    EXPECT_EQ(diagonal.vbget(2), 45.0);
    matrix<double> z(2, 1, 3.0);
    EXPECT_EQ(M_ProductTrVBV(&z, 2, &V), 81.0);
    matrix<double> product(3, 1);
    M_ProductBV(&A, 3, 2, &z, &product);
    EXPECT_EQ(product.vbget(1), 9.0);
    EXPECT_EQ(product.vbget(3), -3.0);
    z.vbset(2, std::numeric_limits<double>::quiet_NaN());
    M_ProductBV(&A, 3, 2, &z, &product);
    EXPECT_EQ(product.vbget(3), -3.0) << "a cell of 0 adds nothing";
}

// B = [2 1; 1 5] has the inverse [5 -1; -1 2] / 9; a singular one counts by its first row.
TEST(Products, FormsWithAnInverseInTheMiddle)
{
    double b[] = {2, 1, 1, 5};
    double a[] = {1, 2, 0, 3};
    matrix<double> B(2, 2, b, true);
    matrix<double> A(2, 2, a, true);
    matrix<double> C(2, 2);
    EXPECT_EQ(M_ProductTrAinvBA(&A, 2, 2, &B, korvenrg::kTrue, &C), 0);
    const double expected[] = {1.0, 1.0, 1.0, 2.0};
    for (int k = 1; k <= 4; ++k) {
        ExpectClose(C.vbget(k), expected[k - 1], kRoundoff);
    }
    ExpectClose(M_ProductTrVinvBV(&A, 2, &B), 1.0, kRoundoff);
    double singular[] = {4, 2, 2, 1};
    matrix<double> S(2, 2, singular, true);
    ExpectClose(M_ProductTrVinvBV(&A, 2, &S), 0.25, kRoundoff);
    b[3] = std::numeric_limits<double>::infinity();
    EXPECT_EQ(M_ProductTrAinvBA(&A, 2, 2, &B, korvenrg::kTrue, &C), -1);
    ExpectClose(C.vbget(4), 2.0, kRoundoff);
    EXPECT_TRUE(std::isnan(M_ProductTrVinvBV(&A, 2, &B)));
}

TEST(Products, DesignProductOrdersColumnsAndMergesStates)
{
    // Two columns times three; the second of A and the third of B are dropped.
    matrix<double> A(2, 6);
    double b[] = {1, 10, 2, 20, 3, 30};
    matrix<double> B(2, 3, b, true);
    A.vbset(1, 1, 5.0);
    A.vbset(2, 1, 6.0);
    A.vbset(1, 2, 7.0);
    A.vbset(2, 2, 8.0);
    matrix<int> states(6, 1);
    states.vbset(2, 40000);
    states.vbset(5, 40000);
    matrix<double> work(2, 1);
    int columns = 2;
    M_ProductDesignAB2(&A, 2, &columns, &B, 3, 6, &work, &states);
    EXPECT_EQ(columns, 6);
    const double firstRow[] = {5, 10, 15, 7, 14, 21};
    const double secondRow[] = {60, 120, 180, 80, 160, 240};
    const int merged[] = {0, 0, 40000, 40000, 40000, 40000};
    for (int j = 1; j <= 6; ++j) {
        EXPECT_EQ(A.vbget(1, j), firstRow[j - 1]);
        EXPECT_EQ(A.vbget(2, j), secondRow[j - 1]);
        EXPECT_EQ(states.vbget(j), merged[j - 1]);
    }
    M_ProductDesignAB2(&A, 2, &columns, &B, 3, 17, &work, &states);
    M_ProductDesignAB2(&A, 2, &columns, &B, 0, 6, &work, &states);
    EXPECT_EQ(columns, 6) << "eighteen columns do not fit in seventeen";
}

TEST(FitQuality, MapeLeavesOutZeroResponsesAndWeights)
{
    double y[] = {2, 0, -4, 5};
    double predicted[] = {1, 9, -5, std::numeric_limits<double>::quiet_NaN()};
    double w[] = {1, 1, 3, 0};
    matrix<double> Y(4, 1, y, true);
    matrix<double> P(4, 1, predicted, true);
    matrix<double> W(4, 1, w, true);
    ExpectClose(MAPE(&Y, &P, 4, &W, 1), 100.0 * (0.5 + 3 * 0.25) / 4.0, kRoundoff);
    ExpectClose(MAPE(&Y, &P, 4, &W, 0), (0.5 + 3 * 0.25) / 4.0, kRoundoff);
    matrix<double> none(4, 1);
    EXPECT_EQ(MAPE(&Y, &P, 4, &none, 1), korvenrg::kMissing);
}

}  // namespace
