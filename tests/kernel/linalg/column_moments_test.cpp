#include "kernel/linalg/column_moments.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
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

// Sums over the rows that count, each as often as its weight says: exact on these integers.
struct Sums
{
    double n = 0.0;
    double x[2] = {};
    double square[2] = {};
    double product = 0.0;

    Sums(const double* weights, const short* mask)
    {
        for (int r = 0; r < kRows; ++r) {
            const double w = mask != nullptr && mask[r] != 0 ? 0.0 : weights != nullptr ? weights[r] : 1.0;
            n += w;
            for (int j = 0; j < 2; ++j) {
                x[j] += w * kData[kRows * j + r];
                square[j] += w * kData[kRows * j + r] * kData[kRows * j + r];
            }
            product += w * kData[r] * kData[kRows + r];
        }
    }

    double Centred(int j) const
    {
        return square[j] - x[j] * x[j] / n;
    }
};

void ExpectCells(const Table* actual, int cols, const std::vector<double>& expected, const char* what)
{
    ASSERT_EQ(actual->cols, cols) << what;
    ASSERT_EQ(actual->total, expected.size()) << what;
    SCOPED_TRACE(what);
    for (int k = 1; k <= static_cast<int>(expected.size()); ++k) {
        ExpectClose(actual->vbget(k), expected[static_cast<std::size_t>(k - 1)], kRoundoff);
    }
}

// The leading 7 x 2 of a larger table, with and without a mask, weights, and the sample divisor. Outputs of other
// shapes, or of the run before, take the new one.
class EveryForm : public ::testing::Test
{
  protected:
    EveryForm() : X(kRows + 2, 3, 1e6), W(kRows, 1, const_cast<double*>(kCounts), false), meets(kRows, 1, 1.0)
    {
        for (int k = 0; k < 2 * kRows; ++k) {
            X.vbset(k % kRows + 1, k / kRows + 1, kData[k]);
        }
        meets.vbset(2, 0.0);
        meets.vbset(6, -1.0);
        out.mean = new Table(1, 5, 77.0);
        out.R = new Table(3, 3, 77.0);
    }

    static constexpr short kOff = 1;  // a flag is on at -1 alone
    Table X;
    Table W;
    Table meets;  // above 0 where the mask lets a row through
    short mask[kRows] = {0, -1, 0, 0, 0, 1, 0};
    Outputs out;
    double mean = 0.0;
    double spread = 0.0;
};

TEST_F(EveryForm, CountsItsWeightsAndItsMask)
{
    for (int choice = 0; choice < 8; ++choice) {
        short* rows = (choice & 1) != 0 ? mask : nullptr;
        const short weighted = (choice & 2) != 0 ? kTrue : kOff;
        const short sample = (choice & 4) != 0 ? kTrue : kOff;
        Table* weights = weighted == kTrue ? &W : nullptr;
        const Sums s(weighted == kTrue ? kCounts : nullptr, rows);
        const double divisor = sample == kTrue ? s.n - 1.0 : s.n;
        const std::vector<double> means = {s.x[0] / s.n, s.x[1] / s.n};
        const std::vector<double> variances = {s.Centred(0) / divisor, s.Centred(1) / divisor};
        const std::vector<double> deviations = {std::sqrt(variances[0]), std::sqrt(variances[1])};
        const double covariance = (s.product - s.x[0] * s.x[1] / s.n) / divisor;
        const double correlation = covariance / (deviations[0] * deviations[1]);
        SCOPED_TRACE(choice);

        M_MeanStDevVar(&X, kRows, 2, out.mean, out.sd, out.variance, rows, &W, weighted, sample);
        ExpectCells(out.mean, 1, means, "M_MeanStDevVar");
        ExpectCells(out.sd, 1, deviations, "M_MeanStDevVar");
        ExpectCells(out.variance, 1, variances, "M_MeanStDevVar");
        M_MeanStDev(&X, kRows, 1, out.mean, out.sd, rows, &W, weighted, sample, kOff);
        ExpectCells(out.mean, 1, {means[0]}, "M_MeanStDev");
        ExpectCells(out.sd, 1, {deviations[0]}, "M_MeanStDev");
        M_MeanStDev(&X, kRows, 1, out.mean, out.sd, rows, &W, weighted, sample, kTrue);
        ExpectCells(out.sd, 1, {std::sqrt(s.square[0] / divisor)}, "M_MeanStDev about 0");
        Table* input = &X;
        EXPECT_EQ(M_CovCorr(input, kRows, 2, out.R, kOff, rows, &W, weighted, sample, kOff), 0);
        ExpectCells(out.R, 2, {variances[0], covariance, covariance, variances[1]}, "M_CovCorr");
        const auto matrixAndMoments = [&](short corr, short aboutZero) {
            M_CovCorrAndMeanStDevVar(&X,
                                     kRows,
                                     2,
                                     out.R,
                                     out.mean,
                                     out.sd,
                                     out.variance,
                                     corr,
                                     rows,
                                     &W,
                                     weighted,
                                     sample,
                                     aboutZero,
                                     kOff,
                                     kTrue);
            ExpectCells(out.mean, 1, means, "M_CovCorrAndMeanStDevVar");
            ExpectCells(out.sd, 1, deviations, "M_CovCorrAndMeanStDevVar");
            ExpectCells(out.variance, 1, variances, "M_CovCorrAndMeanStDevVar");
        };
        matrixAndMoments(kTrue, kOff);
        ExpectCells(out.R, 2, {1.0, correlation, correlation, 1.0}, "correlations");
        const double product = s.product / divisor;
        const std::vector<double> squares = {s.square[0] / divisor, s.square[1] / divisor};
        M_CovCorr(input, kRows, 2, out.R, kOff, rows, &W, weighted, sample, kTrue);
        ExpectCells(out.R, 2, {squares[0], product, product, squares[1]}, "M_CovCorr about 0");
        matrixAndMoments(kTrue, kTrue);
        const double scaled = product / (deviations[0] * deviations[1]);
        ExpectCells(out.R,
                    2,
                    {squares[0] / variances[0], scaled, scaled, squares[1] / variances[1]},
                    "correlations about 0");
        Table second(kRows, 1, const_cast<double*>(kData + kRows), true);
        M_CorrMatMat(&X, kRows, 1, &second, 1, rows, weights, out.R);
        ExpectCells(out.R, 1, {correlation}, "M_CorrMatMat");

        V_MeanVar(&X, kRows, mean, spread, rows, &W, weighted, sample);
        ExpectClose(mean, means[0], kRoundoff);
        ExpectClose(spread, variances[0], kRoundoff);
        V_MeanStdev(&X, kRows, mean, spread, rows, &W, weighted, sample);
        ExpectClose(mean, means[0], kRoundoff);
        ExpectClose(spread, deviations[0], kRoundoff);
        ExpectClose(V_Mean(&X, kRows, rows, weights), means[0], kRoundoff);
        ExpectClose(V_Var(&X, kRows, rows, weights, sample), variances[0], kRoundoff);
        Table* condition = rows != nullptr ? &meets : nullptr;
        ExpectClose(V_VarIfSup0W(&X, kRows, weights, condition, sample), variances[0], kRoundoff);
        if (weighted == kOff) {
            EXPECT_EQ(V_Sum(&X, kRows, rows), s.x[0]);
        }
    }
}

// The forms that have no mask, or no weights either, by the same sums.
TEST_F(EveryForm, WithoutAMask)
{
    const Sums plain(nullptr, nullptr);
    const Sums weighted(kCounts, nullptr);
    for (const Sums& s : {plain, weighted}) {
        Table* weights = s.n == plain.n ? nullptr : &W;
        M_Mean2(&X, kRows, 2, weights, out.mean);
        ExpectCells(out.mean, 1, {s.x[0] / s.n, s.x[1] / s.n}, "M_Mean2");
        ExpectClose(V_Var2(&X, kRows, weights), s.Centred(0) / (s.n - 1.0), kRoundoff);
        ExpectClose(GetSSE(&X, kRows, weights, &mean), s.Centred(0), kRoundoff);
        ExpectClose(mean, s.x[0] / s.n, kRoundoff);
        for (const short sample : {kTrue, kFalse}) {
            V_MeanVarW2(&X, kRows, &W, &mean, &spread, weights == nullptr ? kOff : kTrue, sample);
            ExpectClose(mean, s.x[0] / s.n, kRoundoff);
            ExpectClose(spread, s.Centred(0) / (sample == kTrue ? s.n - 1.0 : s.n), kRoundoff);
        }
    }
    M_Mean3(&X, kRows, 2, out.sd);
    ExpectCells(out.sd, 1, {plain.x[0] / plain.n, plain.x[1] / plain.n}, "M_Mean3");
    M_SumByCols(&X, kRows, 2, out.mean);
    ExpectCells(out.mean, 1, {plain.x[0], plain.x[1]}, "M_SumByCols");
    V_MeanStdev2(&X, kRows, mean, spread);
    EXPECT_EQ(mean, V_Mean2(&X, kRows));
    ExpectClose(mean, plain.x[0] / plain.n, kRoundoff);
    ExpectClose(spread * spread, V_Var2(&X, kRows), kRoundoff);
    ExpectClose(spread, std::sqrt(plain.Centred(0) / (plain.n - 1.0)), kRoundoff);
    EXPECT_EQ(V_Sum2(&X, kRows), plain.x[0]);
    EXPECT_EQ(V_SumSq(&X, kRows), plain.square[0]);
    Table negative(W);
    negative.vbset(3, -2.0);
    ExpectClose(V_VarIfSup0W(&X, kRows, &negative, nullptr, kTrue), V_Var2(&X, kRows, &W), kRoundoff);
    short none[kRows];
    std::fill_n(none, kRows, kTrue);
    EXPECT_EQ(V_Mean(&X, kRows, none, nullptr), 0.0) << "no row at all";
}

// Moments that are not asked for stay, and the table is standardised by the moments of the rows that count.
TEST_F(EveryForm, MomentsNotWantedAndStandardising)
{
    const Sums s(kCounts, mask);
    for (const short withMoments : {kOff, kTrue}) {
        Table copy(X.rows, X);
        Outputs made;
        made.mean = new Table(2, 1, 77.0);
        M_CovCorrAndMeanStDevVar(&copy,
                                 kRows,
                                 2,
                                 made.R,
                                 made.mean,
                                 made.sd,
                                 made.variance,
                                 kFalse,
                                 mask,
                                 &W,
                                 kTrue,
                                 kTrue,
                                 kFalse,
                                 withMoments,
                                 withMoments);
        ExpectClose(made.R->vbget(2, 2), s.Centred(1) / (s.n - 1.0), kRoundoff);
        if (withMoments == kOff) {
            EXPECT_EQ(made.mean->vbget(2), 77.0);
            EXPECT_EQ(made.sd, nullptr);
            EXPECT_EQ(copy.vbget(2, 1), X.vbget(2, 1));
            continue;
        }
        const double deviation = std::sqrt(s.Centred(1) / (s.n - 1.0));
        ExpectClose(copy.vbget(2, 2), (X.vbget(2, 2) - s.x[1] / s.n) / deviation, kRoundoff);
        EXPECT_EQ(copy.vbget(kRows + 1, 2), 1e6);
    }
    for (const short flag : {kTrue, kOff}) {
        Table copy(X.rows, X);
        M_Standardize2(&copy, kRows, 2, flag);
        EXPECT_NEAR(V_Sum2(&copy, kRows), 0.0, kRoundoff);
        ExpectClose(V_SumSq(&copy, kRows), flag == kTrue ? kRows - 1.0 : kRows, kRoundoff);
        EXPECT_EQ(copy.vbget(1, 3), 1e6);
    }
}

// Integers on top of 2^52: the mean is 1e15 times the spread, and 3.2 above 2^52, where no double lies.
TEST(ColumnMoments, NearConstantDataKeepTheirDigits)
{
    const double top = 4503599627370496.0;
    Table X(5, 2);
    const double first[] = {1, 4, 2, 5, 4};
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
    ExpectClose(out.variance->vbget(1), 2.7, kRoundoff);
    ExpectClose(out.R->vbget(1, 2), 1.0 / std::sqrt(108.0), kRoundoff);
    const double unit = 1.0 / std::sqrt(2.7);
    ExpectClose(X.vbget(1, 1), -2.2 * unit, kRoundoff);
    ExpectClose(X.vbget(4, 1), 1.8 * unit, kRoundoff);
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
    M_CorrMatFromCovMat(&singular, 2, &scaled, 1);
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
    EXPECT_EQ(V_Min2(&x, 6), -3.0);
    short topRows[] = {0, 0, -1, 0, 1, 0};
    EXPECT_EQ(V_Max(&x, 6, topRows), 2.0);
    int integers[] = {-4, -9, -2};
    matrix<int> codes(3, 1, integers, true);
    EXPECT_EQ(V_Max(&codes, 3, topRows), -4.0);
    EXPECT_EQ(V_Max2(&codes, 3), -2);
    EXPECT_EQ(V_Min2(&codes, 3), -9);
    EXPECT_EQ(V_Min2(&codes, 0), 0);
    Table nanFirst(5, 1, cells + 1, true);
    EXPECT_EQ(V_Max2(&nanFirst, 5), 7.0);
    EXPECT_EQ(V_Max2(&x, 0), korvenrg::kMissing);
    EXPECT_EQ(V_MinAndMinPos(&x, 0, &position), korvenrg::kLargest);
    EXPECT_EQ(position, 0);
    Table low(2, 1);
    Table high(2, 1);
    Table columns(3, 2, cells, true);
    columns.vbset(2, 1, korvenrg::kMissing);
    short second[] = {0, 0, -1};
    M_MinMax(&columns, 3, 2, &low, &high, nullptr, kTrue);
    EXPECT_EQ(low.vbget(1), 2.0);
    EXPECT_EQ(low.vbget(2), -3.0);
    M_MinMax(&columns, 3, 2, &low, &high, second, kFalse);
    EXPECT_EQ(low.vbget(1), korvenrg::kMissing);
    EXPECT_EQ(high.vbget(1), 2.0);
    EXPECT_EQ(high.vbget(2), 7.0);
}

}  // namespace
