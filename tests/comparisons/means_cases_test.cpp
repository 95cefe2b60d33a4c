/** Closed forms, permutations and odd cases of category means, LS means and their contrasts. */
#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include "means_fixture.h"

namespace comparisons_test {
namespace {

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();

/** Three categories of two rows each, weights 1 to 6; coefficients 4, 2, 7 and the intercept 10; variances 1, 4, 9 and 16 and
 * the covariance of columns 1 and 2 is 0.5, of each column with the intercept -2. */
MeansProblem OneWay()
{
    MeansProblem m;
    m.n = 6;
    m.p = 3;
    m.x = {1, 1, 0, 0, 0, 0, 0, 0, 1, 1, 0, 0, 0, 0, 0, 0, 1, 1};
    m.w = {1, 2, 3, 4, 5, 6};
    m.stats = {4, 2, 7, 10};
    m.covariance = {1, 0.5, 0, -2, 0.5, 4, 0, -2, 0, 0, 9, -2, -2, -2, -2, 16};
    m.type = {2};
    m.active = m.nbVars = m.listVars = {1};
    m.nbSub = m.nbSubInit = {3};
    m.states = m.cleaned = {0, 0, 0};
    m.parents = {1, 1, 1};
    m.df = 2.0;
    return m;
}

/** Two variables of 2 and 3 categories and the interaction of both, coefficients 1, 2, 4, ..., 1024 and the intercept 0: the
 * shares can be read from the mean. */
MeansProblem Powers()
{
    MeansProblem m;
    m.p = 11;
    m.interlevel = 2;
    m.type = {2, 2, 4};
    m.active = {1, 1, 1};
    m.nbVars = {1, 1, 2};
    m.listVars = {1, 2, 1, 0, 0, 2};
    m.nbSub = m.nbSubInit = {2, 3, 6};
    m.parents = {1, 1, 2, 2, 2, 3, 3, 3, 3, 3, 3};
    m.states = m.cleaned = Integers(11, 0);
    for (int i = 0; i < 11; ++i)
        m.stats.push_back(std::ldexp(1.0, i));
    m.stats.push_back(0.0);
    m.covariance.assign(144, 0.0);
    m.df = 1.0;
    return m;
}

void ExpectContrast(const MeansResults& r, int row, const Vector& cells)
{
    const int columns[] = {kContrastDifference,
                           kContrastVariance,
                           kContrastFirstRank,
                           kContrastSecondRank,
                           kContrastStandardised,
                           kContrastFirstId,
                           kContrastSecondId};
    for (size_t k = 0; k < cells.size(); ++k)
        ExpectClose(r.contrasts(row, columns[k]), cells[k], kRoundoff);
}

TEST(CategoryMeans, ClosedForm)
{
    MeansProblem m = OneWay();
    m.alpha = 0.1;
    const double t = 2.919985580355516;  // of 2 degrees of freedom: (1 - alpha) sqrt(2 / (alpha (2 - alpha)))
    for (const MeansResults& r : {FittedMeans(m), LsMeans(m)}) {
        const Integers ids{2, 1, 3};
        const Vector means{12, 14, 17}, variances{16 + 4 - 4, 16 + 1 - 4, 16 + 9 - 4};
        for (int i = 1; i <= 3; ++i) {
            const double error = std::sqrt(variances[At(i)]);
            EXPECT_EQ(r.Id(i), ids[At(i)]);
            ExpectClose(r.means(i, kMean), means[At(i)], kRoundoff);
            ExpectClose(r.means(i, kMeanStdError), error, kRoundoff);
            ExpectClose(r.means(i, kMeanLower), means[At(i)] - t * error, kIterative);
            ExpectClose(r.means(i, kMeanUpper), means[At(i)] + t * error, kIterative);
        }
        EXPECT_EQ(r.nbNull[0], 0);
        ExpectContrast(r, 1, {-2, 4, 1, 2, -1, 2, 1});  // 4 + 1 - 2 * 0.5
        ExpectContrast(r, 2, {-5, 13, 1, 3, -5 / std::sqrt(13.0), 2, 3});
        ExpectContrast(r, 3, {-3, 10, 2, 3, -3 / std::sqrt(10.0), 1, 3});
    }
}

TEST(CategoryMeans, ARemovedCategoryIsMissingAndComesFirst)
{
    MeansProblem m = OneWay();
    m.removed = {7, 0, 0};
    const MeansResults r = FittedMeans(m);
    EXPECT_EQ(r.nbNull[0], 1);
    for (int column = 1; column <= 4; ++column)
        EXPECT_EQ(r.means(1, column), kMissing);
    ExpectContrast(r, 1, {kMissing, kMissing, 1, 2, kMissing, 1, 2});
    ExpectContrast(r, 2, {kMissing, kMissing, 1, 3, kMissing, 1, 3});
    ExpectContrast(r, 3, {-5, 13, 2, 3, -5 / std::sqrt(13.0), 2, 3});
    EXPECT_EQ(r.means(3, kMean), 17.0);
}

TEST(LsMeansCases, RemovedCategoriesAndTheirContrastsComeLast)
{
    MeansProblem m = OneWay();
    m.removed = {0, 1, 0};
    const MeansResults r = LsMeans(m);
    EXPECT_EQ(r.nbNull[0], 1);
    EXPECT_EQ(r.Id(1), 1);
    EXPECT_EQ(r.Id(3), 2);
    for (int column = 1; column <= 4; ++column)
        EXPECT_EQ(r.means(3, column), kMissing);
    ExpectContrast(r, 1, {-3, 10, 1, 2, -3 / std::sqrt(10.0), 1, 3});
    ExpectContrast(r, 2, {kMissing, kMissing, 1, 3, kMissing, 1, 2});
    ExpectContrast(r, 3, {kMissing, kMissing, 2, 3, kMissing, 3, 2});
    // All pairs of the means that exist stand before the others.
    MeansProblem cells = Powers();
    cells.factor = 3;
    cells.removed = {0, 0, 1, 0, 0, 1};
    const MeansResults four = LsMeans(cells);
    const Integers first{1, 1, 1, 2, 2, 3, 1, 1, 2, 2, 3, 3, 4, 4, 5},
        second{2, 3, 4, 3, 4, 4, 5, 6, 5, 6, 5, 6, 5, 6, 6};
    for (int row = 1; row <= 15; ++row) {
        EXPECT_EQ(four.contrasts(row, kContrastFirstRank), first[At(row)]);
        EXPECT_EQ(four.contrasts(row, kContrastSecondRank), second[At(row)]);
        EXPECT_EQ(four.contrasts(row, kContrastDifference) == kMissing, row > 6);
    }
    m.removed = {1, 1, 1};
    ExpectContrast(LsMeans(m), 3, {kMissing, kMissing, 2, 3, kMissing});
}

TEST(CategoryMeans, WithoutWeightTheMeanIsTheIntercept)
{
    MeansProblem m = OneWay();
    m.w[0] = m.w[1] = 0.0;
    const MeansResults r = FittedMeans(m);
    EXPECT_EQ(r.Mean(1), 10.0);
    EXPECT_EQ(r.Mean(1, kMeanStdError), 4.0);
    ExpectContrast(r, 1, {-2, 4, 1, 2, -1, 1, 2});  // the variance of the second coefficient alone
}

TEST(CategoryMeans, ANegativeDummyInALaterColumnExcludesARow)
{
    MeansProblem m = OneWay();
    m.x[6] = -1.0;  // row 1, column 2; category 1 has row 2 alone, and category 2 keeps its rows
    m.stats[1] = 200.0;
    EXPECT_EQ(FittedMeans(m).Mean(1), 14.0);
    EXPECT_EQ(FittedMeans(m).Mean(2), 210.0);
    m = OneWay();
    m.x[6] = -1E-16;  // not below -eps: row 1 stays, and has a mark of its own in column 3
    m.x[12] = 0.75;
    ExpectClose(FittedMeans(m).Mean(1), 14.0 + 7.0 * 0.75 / 3.0, kRoundoff);
    m = OneWay();
    m.x[8] = 1E-16;  // row 3, column 2: not above eps
    m.w[3] = 100.0;
    EXPECT_EQ(FittedMeans(m).Mean(2), 12.0);
    m = OneWay();
    m.x[2] = 0.5;  // row 3 is above 0 in column 1 too: a row of both categories
    ExpectClose(FittedMeans(m).Mean(1), 10.0 + (3 * 4 + 3 * (0.5 * 4 + 2)) / 6.0, kRoundoff);
}

TEST(CategoryMeans, ACovariateFarFromZeroCancelsFromTheContrasts)
{
    MeansProblem m = OneWay();
    m.p = 4;
    for (int i = 0; i < 6; ++i)
        m.x.push_back(3E6 + 0.1);
    m.stats = {4, 2, 7, 1, 10};
    m.covariance = {1,   0.5, 0,   0.3, -2,  0.5, 4.1, 0,  0.7, -2, 0,  0, 9,
                    0.1, -2,  0.3, 0.7, 0.1, 1,   -2,  -2, -2,  -2, -2, 16};
    m.type = {2, 1};
    m.active = m.nbVars = {1, 1};
    m.listVars = {1, 2};
    m.nbSub = m.nbSubInit = {3, 1};
    m.states = m.cleaned = {0, 0, 0, 0};
    m.parents = {1, 1, 1, 2};
    for (const MeansResults& r : {FittedMeans(m), LsMeans(m)}) {
        ExpectClose(r.Mean(2), 3E6 + 12.1, kRoundoff);
        ExpectContrast(r, 2, {-5, 13.1, 1, 3, -5 / std::sqrt(13.1), 2, 3});
    }
}

TEST(CategoryMeans, OtherTypesOfFactors)
{
    MeansProblem m = OneWay();
    m.type = {5};  // a product with -1 and 3 in rows 1 and 2; row 4 has no value
    m.x = {-1, 3, 0, 0, 0, 0, 0, 0, 1, 0, 0, 0, 0, 0, 0, 0, 1, 1};
    ExpectClose(FittedMeans(m).Mean(1), 10.0 + 4.0 * (-1 + 2 * 3) / 3.0, kRoundoff);
    EXPECT_EQ(FittedMeans(m).Mean(2), 12.0);
    ExpectClose(LsMeans(m).Mean(1), 10.0 + 4.0 * (-1 + 2 * 3) / 21.0, kRoundoff);
    m.type = {1};  // columns of a quantitative factor are not categories: all rows
    m.nbSub = m.nbSubInit = {1};
    ExpectClose(FittedMeans(m).Mean(1), 10.0 + (4.0 * 5 + 2.0 * 3 + 7.0 * 11) / 21.0, kRoundoff);
    EXPECT_EQ(LsMeans(m).Mean(1), 14.0);
}

TEST(CategoryMeans, DifferencesWithoutVarianceHaveNoRatio)
{
    MeansProblem m = OneWay();
    std::fill(m.covariance.begin(), m.covariance.end(), 0.0);
    m.covariance[0] = 4.0 * korvenrg::kEps;
    m.covariance[5] = korvenrg::kEps / 4.0;
    const MeansResults r = LsMeans(m);
    EXPECT_EQ(r.contrasts(2, kContrastStandardised), kMissing);  // 2 with 3
    EXPECT_LT(r.contrasts(2, kContrastVariance), korvenrg::kEps);
    ExpectClose(r.contrasts(3, kContrastStandardised), -3.0 / std::sqrt(4.0 * korvenrg::kEps), kRoundoff);
    EXPECT_EQ(r.Mean(3, kMeanStdError), 0.0);
    EXPECT_EQ(r.Mean(3, kMeanLower), 17.0);
}

TEST(CategoryMeans, WhereNoNumberComesOutTheCellIsMissing)
{
    MeansProblem m = OneWay();
    m.df = 0.0;
    MeansResults r = LsMeans(m);
    EXPECT_EQ(r.Mean(1), 14.0);
    EXPECT_EQ(r.Mean(1, kMeanStdError), std::sqrt(13.0));
    EXPECT_EQ(r.Mean(1, kMeanUpper), kMissing);
    m.df = 2.0;
    m.covariance[15] = -20.0;
    r = FittedMeans(m);
    EXPECT_EQ(r.Mean(1, kMeanStdError), kMissing);
    EXPECT_EQ(r.Mean(1, kMeanLower), kMissing);
    m.covariance[0] = kNaN;
    m.stats[2] = kNaN;
    r = FittedMeans(m);
    EXPECT_EQ(r.Mean(3), kMissing);
    for (int row = 1; row <= 3; ++row)
        for (const int column : {kContrastDifference, kContrastVariance, kContrastStandardised})
            EXPECT_FALSE(std::isnan(r.contrasts(row, column)));
}

TEST(CategoryMeans, BrokenInput)
{
    MeansProblem m = OneWay();
    for (const int rows : {0, 1, 5}) {  // fewer rows than contrasts, and more
        EXPECT_EQ(LsMeans(m, rows).contrasts.cells.CountChanged(),
                  static_cast<size_t>(7 * std::min(rows, 3)));
        EXPECT_EQ(FittedMeans(m, rows).contrasts.cells.CountChanged(),
                  static_cast<size_t>(7 * std::min(rows, 3)));
    }
    m.n = 0;
    for (int c = 1; c <= 3; ++c)
        EXPECT_EQ(FittedMeans(m).Mean(c), 10.0);
    EXPECT_EQ(LsMeans(m).Mean(1), 14.0);
    m = OneWay();
    m.parents = {1, 9, -4};  // columns of no factor
    EXPECT_EQ(LsMeans(m).Mean(1), 14.0);
    EXPECT_EQ(LsMeans(m).Mean(2), 10.0);
    EXPECT_EQ(FittedMeans(m).Mean(3), 10.0);
    m.listVars = {-3};
    m.nbVars = {12};
    LsMeans(m);
    m = OneWay();
    Table untouched(3, 10);
    int nbNull = -1;
    for (const int factor : {0, 2, -5}) {  // of no factor: no categories
        // clang-format off
        Cpp_GetMeansContrastsStatVar2(m.x.data(), m.w.data(), m.n, m.p, 3, 1, 1, factor, 2, m.nbSub.data(),
            m.parents.data(), nullptr, m.stats.data(), m.covariance.data(), 0.05, 2.0, nullptr, untouched.cells.data(),
            nullptr, &nbNull);
        GetLSMeansContrastsStatVar(m.x.data(), m.w.data(), m.n, m.p, 4, 3, 1, 1, factor, m.type.data(), m.active.data(),
            m.nbSub.data(), m.nbSub.data(), m.states.data(), m.states.data(), m.listVars.data(), m.nbVars.data(),
            m.parents.data(), nullptr, m.stats.data(), m.covariance.data(), 0.05, 2.0, nullptr, untouched.cells.data(),
            nullptr, &nbNull);
        // clang-format on
        EXPECT_EQ(nbNull, 0);
    }
    EXPECT_EQ(untouched.cells.CountChanged(), 0u);
}

/** An unbalanced two-way table with a covariate far from 0: 1 covariate, 2 and 3 qualitative of 3 and 2 levels, 4 their
 * interaction. `order` gives the sequence of the categories of the first. */
DesignProblem TwoWay(const Integers& order)
{
    DesignProblem d;
    const int first[] = {1, 2, 3, 1, 2, 3, 1, 1, 2, 3, 3, 2, 1, 3},
              second[] = {1, 1, 1, 2, 2, 2, 1, 2, 1, 1, 2, 2, 1, 1};
    d.model.n = 14;
    d.labelX = {L"x"};
    d.labelQ = {L"a", L"b"};
    d.model.x.emplace_back();
    d.model.q.resize(2);
    for (size_t i = 0; i < 14; ++i) {
        d.model.x[0].push_back(50.0 + static_cast<double>(i * 5 % 9));
        d.model.q[0].push_back(L"a" + std::to_wstring(first[i]));
        d.model.q[1].push_back(L"b" + std::to_wstring(second[i]));
    }
    d.categories = {{}, {L"b1", L"b2"}};
    for (const int category : order)
        d.categories[0].push_back(L"a" + std::to_wstring(category));
    d.type = {1, 2, 2, 4};
    d.factors = {{1}, {2}, {3}, {2, 3}};
    return d;
}

OlsProblem FitOfTwoWay(const DesignProblem& d)
{
    Vector y;
    for (size_t i = 0; i < d.model.x[0].size(); ++i)
        y.push_back(static_cast<double>(i * i % 11) + 0.25 * d.model.x[0][i] - 12.5);
    OlsProblem q = FitOf(BuildDesign(d), y, 0);
    q.options[kTolerance] = 1E-9;
    return q;
}

TEST(MeansInvariants, PermutingCategoriesPermutesTheReport)
{
    const Integers order{3, 1, 2};  // category k of the permuted table is order[k]
    for (const bool fitted : {true, false})
        for (const int factor : {2, 3, 4}) {
            MeansProblem a = MeansOf(FitOfTwoWay(TwoWay({1, 2, 3})), fitted),
                         b = MeansOf(FitOfTwoWay(TwoWay(order)), fitted);
            a.factor = b.factor = factor;
            const MeansResults plain = fitted ? FittedMeans(a) : LsMeans(a),
                               permuted = fitted ? FittedMeans(b) : LsMeans(b);
            for (int rank = 1; rank <= a.CategoryCount(); ++rank) {
                const int id = permuted.Id(rank);
                const int same = factor == 2   ? order[At(id)]
                                 : factor == 3 ? id
                                               : 2 * order[static_cast<size_t>((id - 1) / 2)] - id % 2;
                EXPECT_EQ(plain.Id(rank), same);
                for (int column = 1; column <= 4; ++column)
                    ExpectClose(permuted.means(rank, column),
                                plain.means(rank, column),
                                1E-9);  // x is 2,000 sd off
            }
            for (int row = 1; row <= plain.contrasts.rows; ++row)
                for (const int column : {kContrastDifference, kContrastVariance, kContrastStandardised})
                    ExpectClose(permuted.contrasts(row, column), plain.contrasts(row, column), kIterative);
        }
}

double MeanOfBits(const Integers& bits)
{
    double sum = 0.0;
    for (const int bit : bits)
        sum += std::ldexp(1.0, bit);
    return sum / static_cast<double>(bits.size());
}

TEST(LsMeansCases, SharesOfTheOtherFactors)
{
    MeansProblem m = Powers();
    const double ofSecond = MeanOfBits({2, 3, 4});
    ExpectClose(LsMeans(m).Mean(2), 2.0 + ofSecond + MeanOfBits({8, 9, 10}), kRoundoff);
    m.factor = 2;
    ExpectClose(LsMeans(m).Mean(2), 8.0 + MeanOfBits({0, 1}) + MeanOfBits({6, 9}), kRoundoff);
    m.factor = 3;  // the main effects go with the cell through their variable
    ExpectClose(LsMeans(m).Mean(5), 2.0 + 8.0 + 512.0, kRoundoff);
    m.factor = 1;
    m.listVars = {1, 2, 2, 0, 0, 1};  // the other order of variables: the second one changes slowest
    ExpectClose(LsMeans(m).Mean(2), 2.0 + ofSecond + MeanOfBits({6, 8, 10}), kRoundoff);
}

TEST(LsMeansCases, AnInteractionWithoutAMainEffect)
{
    // The second variable has categories and no columns of its own.
    MeansProblem m = Powers();
    m.p = 8;
    m.active[1] = m.nbSub[1] = 0;
    m.parents = {1, 1, 3, 3, 3, 3, 3, 3};
    m.stats[8] = 0.0;
    ExpectClose(LsMeans(m).Mean(2), 2.0 + MeanOfBits({5, 6, 7}), kRoundoff);
}

TEST(LsMeansCases, AnEmptyCellCounts)
{
    // A constant column is no parameter of an independent factor; in an interaction with the category it keeps its share.
    MeansProblem m = Powers();
    m.states[3] = m.states[9] = kConstant;
    m.stats[3] = m.stats[9] = 0.0;
    ExpectClose(LsMeans(m).Mean(2), 2.0 + (4.0 + 16.0) / 2.0 + (256.0 + 1024.0) / 3.0, kRoundoff);
    m.states[3] = kDropped;  // a dropped level is a parameter
    ExpectClose(LsMeans(m).Mean(2), 2.0 + (4.0 + 16.0) / 3.0 + (256.0 + 1024.0) / 3.0, kRoundoff);
}

TEST(Contrasts, OfParameters)
{
    MeansProblem m = Powers();
    for (int i = 1; i <= 12; ++i)
        for (int j = 1; j <= 12; ++j)
            m.covariance[static_cast<size_t>((j - 1) * 12 + i - 1)] = i == j ? i : 0.01 * (i + j);
    const auto contrasts = [&](int factor, int rows) {
        Table table(rows, 5);
        GuardedArray<int> count(1);
        GetContrastsStatVar(m.p,
                            12,
                            2,
                            factor,
                            m.parents.data(),
                            m.stats.data(),
                            m.covariance.data(),
                            rows,
                            count.data(),
                            table.cells.data());
        EXPECT_TRUE(table.cells.IntactGuards() && count.IntactGuards());
        return std::pair(std::move(table), count[0]);
    };
    const auto [table, count] = contrasts(2, 4);
    EXPECT_EQ(count, 3);
    const Vector expected[] = {{4 - 8, 3 + 4 - 0.14, 1, 2},
                               {4 - 16, 3 + 5 - 0.16, 1, 3},
                               {8 - 16, 4 + 5 - 0.18, 2, 3}};
    for (int row = 1; row <= 3; ++row) {
        for (int column = 1; column <= 4; ++column)
            ExpectClose(table(row, column), expected[row - 1][At(column)], kRoundoff);
        EXPECT_TRUE(table.Kept(row, 5));
    }
    for (int column = 1; column <= 5; ++column)
        EXPECT_TRUE(table.Kept(4, column));
    EXPECT_EQ(contrasts(3, 7).second, 15);  // fewer rows than contrasts
    EXPECT_EQ(contrasts(3, 7).first(7, 4), 4.0);
    EXPECT_EQ(contrasts(3, 7).first(1, 3), 1.0);
    EXPECT_EQ(contrasts(9, 2).second, 0);
    EXPECT_EQ(contrasts(1, 0).second, 1);
}

}  // namespace
}  // namespace comparisons_test
