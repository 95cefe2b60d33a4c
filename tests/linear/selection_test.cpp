/** Best subsets, stepwise, forward and backward selection: against lm on every subset, and the routines' own ways. */
#include <gtest/gtest.h>

#include <cmath>
#include <fstream>
#include <random>
#include <sstream>
#include <string>

#include "ols_fixture.h"

namespace linear_test {
namespace {

/** A file of lines: words first, then cells by columns. */
struct Values
{
    Vector data;
    int rows = 0, columns = 0;
    Integers parents, types;
    struct Models
    {
        bool best;
        Vector options;  // criterion and chosen row, or method and probabilities
        int rows, columns;
        std::vector<std::string> cells;
    };
    std::vector<Models> selections;
};

template <typename T>
std::vector<T> ReadAll(std::istringstream& words)
{
    std::vector<T> all;
    for (T cell; words >> cell;)
        all.push_back(cell);
    return all;
}

Values ReadValues()
{
    std::ifstream in(std::string(KORVENRG_REFERENCE_DIR) + "/selection_values.txt");
    Values values;
    for (std::string line; std::getline(in, line);) {
        std::istringstream words(line);
        std::string name;
        words >> name;
        int count = 0;
        if (name == "data") {
            words >> values.rows >> values.columns;
            values.data = ReadAll<double>(words);
        } else if (name == "parents" || name == "types") {
            words >> count;
            (name == "types" ? values.types : values.parents) = ReadAll<int>(words);
        } else {
            Values::Models models{name == "best", Vector(name == "best" ? 2 : 3), 0, 0, {}};
            for (double& option : models.options)
                words >> option;
            words >> models.rows >> models.columns;
            models.cells = ReadAll<std::string>(words);
            values.selections.push_back(models);
        }
    }
    return values;
}

OlsProblem CarProblem(const Values& values)
{
    const auto n = static_cast<size_t>(values.rows);
    std::vector<Vector> columns;
    for (size_t j = 1; j < static_cast<size_t>(values.columns); ++j)
        columns.emplace_back(values.data.begin() + static_cast<long>(j * n),
                             values.data.begin() + static_cast<long>((j + 1) * n));
    OlsProblem q =
        Regression(Vector(values.data.begin(), values.data.begin() + values.rows), columns, values.parents);
    q.type = values.types;
    q.options[kTolerance] = 1e-10;
    return q;
}

void ExpectModels(const OlsResults& r, const Values::Models& expected)
{
    for (int i = 1; i <= expected.rows; ++i) {
        for (int j = 1; j <= expected.columns; ++j) {
            SCOPED_TRACE("row " + std::to_string(i) + " column " + std::to_string(j));
            const std::string& cell = expected.cells[At(expected.rows * (j - 1) + i)];
            if (cell != "untouched") ExpectClose(r.models(i, j), std::stod(cell), kPrinted);
        }
    }
    EXPECT_EQ(r.models(expected.rows + 1, 1), 0.0) << "no further row";
}

TEST(Selection, AgreesWithFitsOfEverySubset)
{
    const Values values = ReadValues();
    ASSERT_EQ(values.selections.size(), 12u);
    for (const auto& expected : values.selections) {
        SCOPED_TRACE((expected.best ? "best " : "steps ") + std::to_string(expected.options[0]));
        OlsProblem q = CarProblem(values);
        if (expected.best) {
            q.options[kMethod] = 0;
            q.options[kCriterion] = expected.options[0];
            q.options[kMaxVars] = 100;
        } else {
            q.options[kMethod] = expected.options[0];
            q.options[kPEnter] = expected.options[1];
            q.options[kPRemove] = expected.options[2];
        }
        const OlsResults r = RunOls(q);
        EXPECT_EQ(r.code, 0);
        ExpectModels(r, expected);
        const int row = expected.best ? static_cast<int>(expected.options[1]) : expected.rows;
        EXPECT_TRUE(!expected.best || r.bestId[0] == row);
        EXPECT_EQ(r.pFinal[0], static_cast<int>(r.models(row, 2)));
        ExpectClose(r.anova(2, 2), r.models(row, r.nf + 5), kPrinted);  // the fit is that of the row
        for (int f = 1; f <= r.nf; ++f)
            EXPECT_EQ(r.active[At(f)], static_cast<int>(r.models(row, f + 4))) << "factor " << f;
    }
}

/** A regression of n rows on `columns` of pattern-free numbers. */
OlsProblem Noise(int n, int columns, unsigned seed)
{
    std::mt19937 generator(seed);
    const auto draw = [&generator] { return static_cast<double>(generator() % 2001) / 1000.0 - 1.0; };
    std::vector<Vector> x(static_cast<size_t>(columns));
    Vector y;
    for (int i = 0; i < n; ++i) {
        double sum = 0.0;
        for (size_t j = 0; j < x.size(); ++j) {
            x[j].push_back(draw());
            sum += x[j].back() / static_cast<double>(j + 1);
        }
        y.push_back(sum + draw());
    }
    return Regression(y, x);
}

// x3 is nearly x1 + x2, of which y is the sum: x3 enters first and leaves once both others are in.
TEST(Stepwise, RedundantFactorLeavesAgain)
{
    OlsProblem q = Noise(40, 3, 3);
    std::mt19937 generator(5);
    for (size_t i = 0; i < 40; ++i) {
        const double sum = q.x[i] + q.x[40 + i];
        q.x[80 + i] = sum + static_cast<double>(generator() % 1001) / 1000.0 - 0.5;
        q.y[i] = sum + static_cast<double>(generator() % 101) / 1000.0 - 0.05;
    }
    q.options[kMethod] = 1;
    q.options[kPEnter] = 0.05;
    q.options[kPRemove] = 0.1;
    const OlsResults r = RunOls(q);
    EXPECT_EQ(r.models(1, 4), 3.0);
    int row = 1;
    while (row < 6 && r.models(row + 1, 1) > 0.0)
        ++row;
    EXPECT_EQ(r.models(row, 3), -1.0);
    EXPECT_EQ(r.models(row, 4), 3.0);
    EXPECT_EQ(r.models(row, 1), 2.0);
    EXPECT_EQ(r.models(row, 7), 0.0) << "indicator of factor 3";
    OlsProblem kept = q;
    kept.options[kMethod] = -1;
    kept.active = {1, 1, 0};
    ExpectClose(r.anova(2, 2), RunOls(kept).anova(2, 2), kIterative);
}

// Whatever enters leaves again at a removal probability of 0: the run must end, within its table.
TEST(Stepwise, EndsWhenItWouldRepeatItself)
{
    OlsProblem q = Noise(12, 4, 7);
    q.options[kMethod] = 1;
    q.options[kPEnter] = 1.0;
    q.options[kPRemove] = 0.0;
    EXPECT_EQ(RunOls(q).code, 0);
}

// The second column of the block is the first one but for a thousandth: refused by tolerance, counted as entered.
TEST(Stepwise, CountFollowsTheState)
{
    OlsProblem q = Noise(10, 3, 13);
    for (size_t i = 0; i < 10; ++i) {
        q.x[10 + i] = q.x[i] + 1e-3 * q.x[10 + i];
        q.y[i] = q.x[i] + 0.1 * q.x[20 + i] + 0.01 * static_cast<double>(i % 3);
    }
    q = Regression(q.y,
                   {Vector(q.x.begin(), q.x.begin() + 10),
                    Vector(q.x.begin() + 10, q.x.begin() + 20),
                    Vector(q.x.begin() + 20, q.x.end())},
                   {1, 1, 2});
    q.type = {2, 1};
    q.options[kMethod] = 2;
    q.options[kPEnter] = 0.0;
    OlsProblem blockFirst = q;
    blockFirst.active = {1, 0};
    const OlsResults r = RunOls(q);
    EXPECT_EQ(r.models(1, 4), 1.0);
    EXPECT_EQ(r.models(1, 2), 2.0);
    EXPECT_EQ(r.pFinal[0], 2);
    EXPECT_EQ(r.models(2, 1), 0.0) << "a probability of 0 lets the first factor in and no other";
}

// y = x1 + 2 x2 + 3 x3: what completes an exact fit enters, what belongs to it stays, and nothing is below 0.
TEST(Stepwise, ExactFitsAreFound)
{
    for (unsigned seed = 1; seed <= 40; ++seed) {
        OlsProblem q = Noise(12, 3, seed);
        for (size_t i = 0; i < 12; ++i) {
            for (size_t j = 0; j < 3; ++j)
                q.x[12 * j + i] = std::round(20 * q.x[12 * j + i]);
            q.y[i] = q.x[i] + 2 * q.x[12 + i] + 3 * q.x[24 + i];
        }
        for (const double method : {1.0, 2.0, 3.0}) {
            q.options[kMethod] = method;
            q.options[kPEnter] = q.options[kPRemove] = 0.99;  // no step fails on its own account
            const OlsResults r = RunOls(q);
            EXPECT_EQ(r.pFinal[0], 3) << seed << ' ' << method;
            EXPECT_GE(r.anova(kAnovaError, kAnovaSumOfSquares), 0.0);
            EXPECT_NEAR(r.fit(kFitRmse), 0.0, 1e-5) << "the root of rounding, and never NaN";
        }
    }
}

// A factor of six cells, the fourth of them empty: its constant column stands between columns that belong together.
TEST(BestSubset, AConstantColumnBreaksNoFactor)
{
    constexpr size_t kRows = 20;
    OlsProblem noise = Noise(kRows, 2, 5);
    std::vector<Vector> columns(7, Vector(kRows));
    for (size_t i = 0; i < kRows; ++i) {
        const size_t cell = i % 5 < 3 ? i % 5 : i % 5 + 1;
        columns[0][i] = noise.x[i];
        columns[1 + cell][i] = 1.0;
        noise.y[i] += noise.x[i] + 2.0 * static_cast<double>(cell);
    }
    OlsProblem q = Regression(noise.y, columns, {1, 2, 2, 2, 2, 2, 2});
    q.type = {1, 4};
    q.states.back() = 40000;
    const OlsResults full = RunOls(q);
    q.options[kMethod] = 0;
    q.options[kMinVars] = q.options[kMaxVars] = 2;
    const OlsResults best = RunOls(q);
    EXPECT_EQ(best.pFinal[0], 5);
    EXPECT_EQ(std::count(best.states.begin(), best.states.end(), 0), 5);
    for (const int row : {kAnovaModel, kAnovaError}) {
        EXPECT_EQ(best.anova(row, kAnovaDf), full.anova(row, kAnovaDf));
        ExpectClose(best.anova(row, kAnovaSumOfSquares), full.anova(row, kAnovaSumOfSquares), kPrinted);
    }
    ExpectClose(best.models(1, 2 + kModelSse), full.anova(kAnovaError, kAnovaSumOfSquares), kPrinted);
}

// The scan of a factor ends at a column of another one behind an accepted column; the sweep of the chosen model does not.
TEST(BestSubset, TheScanEndsAtAnotherFactor)
{
    const OlsProblem noise = Noise(20, 3, 9);
    const auto column = [&noise](std::ptrdiff_t j) {
        return Vector(noise.x.begin() + 20 * j, noise.x.begin() + 20 * (j + 1));
    };
    OlsProblem q = Regression(noise.y, {column(0), column(1), column(2)}, {1, 2, 1});
    q.options[kMethod] = 0;
    q.options[kMaxVars] = 1;
    const OlsResults r = RunOls(q);
    EXPECT_EQ(r.models(1, kModelColumns), 1.0);
    EXPECT_EQ(std::count(r.states.begin(), r.states.end(), 0), r.active[0] == 1 ? 2 : 1);
}

// An interaction with its main effect and without it are one model: the smaller one stays.
TEST(BestSubset, TheSameModelOfTwoSizesTies)
{
    int ties = 0;
    for (unsigned seed = 1; seed <= 60; ++seed) {
        const OlsProblem noise = Noise(24, 1, seed);
        std::vector<Vector> columns(3, Vector(24));
        Vector y = noise.y;
        for (size_t i = 0; i < 24; ++i) {
            columns[0][i] = noise.x[i];
            columns[1 + i % 2][i] = noise.x[i];
            y[i] += (i % 2 == 0 ? 2.0 : -2.0) * noise.x[i];
        }
        OlsProblem q = Regression(y, columns, {1, 2, 2});
        q.type = {1, 5};
        q.options[kMethod] = 0;
        q.options[kCriterion] = 1;
        q.options[kMaxVars] = 2;
        const OlsResults r = RunOls(q);
        if (std::fabs(r.models(1, 2 + kModelMse) / r.models(2, 2 + kModelMse) - 1) > 1e-12) continue;
        ties += 1;
        EXPECT_EQ(r.bestId[0], 1) << seed;
    }
    EXPECT_GT(ties, 50);
}

// PC of best subsets has factors in the numerator and c in the denominator.
TEST(BestSubset, RowsHoldTheirOwnPc)
{
    OlsProblem q = Noise(20, 3, 17);
    q = Regression(q.y,
                   {Vector(q.x.begin(), q.x.begin() + 20),
                    Vector(q.x.begin() + 20, q.x.begin() + 40),
                    Vector(q.x.begin() + 40, q.x.end())},
                   {1, 1, 2});
    q.options[kMethod] = 0;
    q.options[kMaxVars] = 2;
    const OlsResults r = RunOls(q);
    const double residual = 1.0 - r.models(2, r.nf + 7);
    ExpectClose(r.models(2, r.nf + 12), (2.0 + 20.0 + 1.0) * residual / (20.0 - 3.0 + 1.0), kRoundoff);
}

TEST(BestSubset, KeepsOneDegreeOfFreedomAndEndsTheSizes)
{
    OlsProblem q = Noise(6, 5, 19);  // at most four columns beside the constant leave one degree of freedom
    q.options[kMethod] = 0;
    q.options[kCriterion] = 3;
    q.options[kMaxVars] = 5;
    const OlsResults r = RunOls(q);
    EXPECT_EQ(r.models(4, 2), 4.0);
    EXPECT_EQ(r.models(5, 1), 0.0) << "no subset of five brings in all its factors";
    EXPECT_EQ(r.pFinal[0] + 2, 6);
}

// C(40, 7) subsets are far above the cap of 200000, all of which hold the two highest factors: the first seven, of which the
// response is the sum, are not found.
TEST(BestSubset, LooksAtTheFirstSubsetsOfASizeAlone)
{
    OlsProblem q = Noise(60, 40, 37);
    for (size_t i = 0; i < 60; ++i) {
        q.y[i] = 0.01 * q.x[10 * 60 + i];
        for (size_t j = 0; j < 7; ++j)
            q.y[i] += q.x[j * 60 + i];
    }
    q.options[kMethod] = 0;
    q.options[kCriterion] = 1;
    q.options[kMinVars] = 7;
    q.options[kMaxVars] = 7;
    const OlsResults r = RunOls(q);
    EXPECT_EQ(r.bestId[0], 1);
    EXPECT_EQ(r.models(1, 1), 7.0);
    EXPECT_EQ(r.models(1, 43) + r.models(1, 44), 2.0) << "indicators of factors 39 and 40";
}

}  // namespace
}  // namespace linear_test
