#include "kernel/linalg/column_moments.h"

#include <gtest/gtest.h>

#include <cmath>
#include <memory>
#include <vector>

#include "core/limits.h"
#include "kernel/linalg/extremes.h"
#include "kernel/linalg/vector_moments.h"
#include "support/tolerances.h"

namespace {

using namespace korvenrg::test;
using Table = matrix<double>;
using korvenrg::kFalse;
using korvenrg::kTrue;

// Outputs that the operations create, owned by the test.
struct Outputs
{
    Table* R = nullptr;
    Table* mean = nullptr;
    Table* sd = nullptr;
    Table* variance = nullptr;
    ~Outputs()
    {
        delete R;
        delete mean;
        delete sd;
        delete variance;
    }
};

constexpr int kRows = 7;
constexpr double kData[] = {3, 1, 4, 1, 5, 9, 2, 6, 5, 3, 5, 8, 9, 7};
constexpr double kCounts[] = {2, 1, 0, 3, 1, 2, 1};

// Each row as often as its weight says.
Table Replicated()
{
    std::vector<int> rows;
    for (int r = 0; r < kRows; ++r) {
        rows.insert(rows.end(), static_cast<std::size_t>(kCounts[r]), r);
    }
    Table table(static_cast<int>(rows.size()), 2);
    for (int i = 1; i <= table.rows; ++i) {
        const int row = rows[static_cast<std::size_t>(i - 1)];
        table.vbset(i, 1, kData[row]);
        table.vbset(i, 2, kData[kRows + row]);
    }
    return table;
}

TEST(ColumnMoments, WeightsAreReplicatedRowsAndMaskedRowsAreGone)
{
    Table X(kRows, 2, const_cast<double*>(kData), false);
    Table W(kRows, 1, const_cast<double*>(kCounts), false);
    Table plain = Replicated();
    for (const short sample : {kTrue, kFalse}) {
        for (const short corr : {kTrue, kFalse}) {
            for (const short aboutZero : {kTrue, kFalse}) {
                Outputs weighted;
                Outputs replicated;
                M_CovCorrAndMeanStDevVar(&X,
                                         kRows,
                                         2,
                                         weighted.R,
                                         weighted.mean,
                                         weighted.sd,
                                         weighted.variance,
                                         corr,
                                         nullptr,
                                         &W,
                                         kTrue,
                                         sample,
                                         aboutZero,
                                         kFalse,
                                         kTrue);
                M_CovCorrAndMeanStDevVar(&plain,
                                         plain.rows,
                                         2,
                                         replicated.R,
                                         replicated.mean,
                                         replicated.sd,
                                         replicated.variance,
                                         corr,
                                         nullptr,
                                         nullptr,
                                         kFalse,
                                         sample,
                                         aboutZero,
                                         kFalse,
                                         kTrue);
                for (int k = 1; k <= 4; ++k) {
                    ExpectClose(weighted.R->vbget(k), replicated.R->vbget(k), kRoundoff);
                }
                for (int k = 1; k <= 2; ++k) {
                    ExpectClose(weighted.mean->vbget(k), replicated.mean->vbget(k), kRoundoff);
                    ExpectClose(weighted.variance->vbget(k), replicated.variance->vbget(k), kRoundoff);
                }
            }
        }
    }
    // A mask in the place of the one weight that is 0, all other weights 1.
    short mask[kRows] = {0, 0, -1, 0, 0, 0, 0};
    Outputs masked;
    M_MeanStDevVar(&X, kRows, 2, masked.mean, masked.sd, masked.variance, mask, &W, kFalse, kTrue);
    ExpectClose(masked.mean->vbget(1), 21.0 / 6.0, kRoundoff);
    ExpectClose(masked.variance->vbget(1), 121.0 / 5.0 - 21.0 * 21.0 / 30.0, kRoundoff);
    double mean = 0.0;
    double variance = 0.0;
    V_MeanVar(&X, kRows, mean, variance, mask, &W, kFalse, kTrue);
    ExpectClose(variance, masked.variance->vbget(1), kRoundoff);
    ExpectClose(V_VarIfSup0W(&X, kRows, nullptr, &W, kTrue), variance, kRoundoff);
    ExpectClose(GetSSE(&X, kRows, &W, &mean), V_Var2(&X, kRows, &W) * 9.0, kRoundoff);
    ExpectClose(mean, V_Mean(&X, kRows, nullptr, &W), kRoundoff);
}

// Integers 1..5 on top of 2^52: the mean is 1e15 times the spread and every sum of deviations is exact.
TEST(ColumnMoments, NearConstantDataKeepTheirDigits)
{
    const double top = 4503599627370496.0;
    Table X(5, 2);
    const double first[] = {1, 4, 2, 5, 3};
    const double second[] = {2, 1, 4, 3, 5};
    for (int i = 1; i <= 5; ++i) {
        X.vbset(i, 1, top + first[i - 1]);
        X.vbset(i, 2, second[i - 1]);
    }
    Outputs out;
    M_CovCorrAndMeanStDevVar(&X,
                             5,
                             2,
                             out.R,
                             out.mean,
                             out.sd,
                             out.variance,
                             kTrue,
                             nullptr,
                             nullptr,
                             kFalse,
                             kTrue,
                             kFalse,
                             kTrue,
                             kTrue);
    EXPECT_EQ(out.variance->vbget(1), 2.5);
    ExpectClose(out.R->vbget(1, 2), -0.1, kRoundoff);
    const double unit = 1.0 / std::sqrt(2.5);
    ExpectClose(X.vbget(1, 1), -2.0 * unit, kRoundoff);
    ExpectClose(X.vbget(4, 1), 2.0 * unit, kRoundoff);
}

TEST(ColumnMoments, MatricesOfCorrelations)
{
    Table X(kRows, 2, const_cast<double*>(kData), false);
    Table constant(kRows, 1, 4.0);
    Outputs out;
    Table* input = &X;
    M_CovCorr(input, kRows, 2, out.R, kFalse, nullptr, nullptr, kFalse, kTrue, kFalse);
    Table R(2, 2);
    M_CorrMatFromCovMat(out.R, 2, &R, kFalse);
    Table* between = nullptr;
    M_CorrMatMat(&X, kRows, 2, &X, 1, nullptr, nullptr, between);
    ASSERT_EQ(between->cols, 1);
    ExpectClose(R.vbget(2, 1), between->vbget(2, 1), kRoundoff);
    EXPECT_EQ(between->vbget(1, 1), 1.0);
    delete between;

    Table singular(2, 2);
    singular.vbset(1, 1, 4.0);
    Table scaled(2, 2, 9.0);
    M_CorrMatFromCovMat(&singular, 2, &scaled, kFalse);
    EXPECT_EQ(scaled.vbget(2, 2), 0.0);
    M_CorrMatFromCovMat(&singular, 2, &scaled, kTrue);
    EXPECT_EQ(scaled.vbget(2, 2), 1.0);
    EXPECT_EQ(scaled.vbget(1, 2), 0.0);
    M_Standardize2(&constant, kRows, 1, kTrue);
    EXPECT_EQ(constant.vbget(3), 0.0) << "a column of zero variance stays centred";
}

TEST(ColumnMoments, DeviationsAboutZero)
{
    Table X(kRows, 2, const_cast<double*>(kData), false);
    Outputs out;
    M_MeanStDev(&X, kRows, 2, out.mean, out.sd, nullptr, nullptr, kFalse, kTrue, kTrue);
    ExpectClose(out.sd->vbget(1), std::sqrt(137.0 / 6.0), kRoundoff);
    ExpectClose(out.mean->vbget(1), 25.0 / 7.0, kRoundoff);
}

TEST(Extremes, FirstOfTiesWithoutMaskedCellsAndNaN)
{
    double cells[] = {2, NAN, 7, -3, 7, -3};
    Table x(6, 1, cells, true);
    short mask[] = {0, 0, 0, -1, 0, -1};
    int position = 0;
    EXPECT_EQ(V_MaxAndMaxPos(&x, 6, &position), 7.0);
    EXPECT_EQ(position, 3);
    EXPECT_EQ(V_MinAndMinPos(&x, 6, &position), -3.0);
    EXPECT_EQ(position, 4);
    EXPECT_EQ(V_Min(&x, 6, mask), 2.0);
    EXPECT_EQ(V_Max2(&x, 0), korvenrg::kMissing);
    EXPECT_EQ(V_MinAndMinPos(&x, 0, &position), korvenrg::kLargest);
    EXPECT_EQ(position, 0);
    Table low(1, 1);
    Table high(1, 1);
    x.vbset(2, korvenrg::kMissing);
    M_MinMax(&x, 6, 1, &low, &high, mask, kTrue);
    EXPECT_EQ(low.vbget(1), 2.0);
    M_MinMax(&x, 6, 1, &low, &high, mask, kFalse);
    EXPECT_EQ(low.vbget(1), korvenrg::kMissing);
    EXPECT_EQ(high.vbget(1), 7.0);
}

}  // namespace
