/** What the least squares run does differently from the textbook, and its edge cases. Each stays as it is. */
#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <numbers>
#include <numeric>

#include "ols_fixture.h"

namespace linear_test {
namespace {

const Vector kY{4.1, 3.2, 7.7, 6.0, 9.4, 8.1, 12.5, 10.2};
const Vector kA{1, 2, 3, 4, 5, 6, 7, 8};
const Vector kB{2, 1, 5, 3, 8, 1, 9, 4};
const Vector kFlat(8, 3.0);

TEST(OlsOddities, ConstantColumnSwitchesOffTheFactorOfItsNumber)
{
    // Factor 1 has columns 1 and 2, factor 2 has column 3: column 2 is constant, and factor 2 is switched
    // off.
    struct
    {
        int type, columns;
        Integers active, states;
    } const cases[] = {
        {1, 1, {1, 0}, {kIn, kConstant, kCandidate}},
        {3, 1, {1, 0}, {kIn, kConstant, kCandidate}},
        {2, 2, {1, 1}, {kIn, kConstant, kIn}},
        {4, 2, {1, 1}, {kIn, kConstant, kIn}},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.type);
        OlsProblem q = Regression(kY, {kA, kFlat, kB}, {1, 1, 2});
        q.type[0] = c.type;
        const OlsResults r = RunOls(q);
        EXPECT_EQ(r.pFinal[0], c.columns);
        EXPECT_EQ(r.active, c.active);
        EXPECT_EQ(r.states, c.states);
    }
    OlsProblem beyond = Regression(kY, {kA, kB, kFlat}, {1, 1, 1});
    beyond.active = {1, 55, 55};  // one factor; column 3 is constant, and no factor 3 exists
    EXPECT_EQ(RunOls(beyond).active, (Integers{1, 55, 55}));
}

TEST(OlsOddities, LeverageSumIsReset)
{
    Vector tiny = kB;
    for (double& v : tiny)
        v *= 1E-8;
    for (const bool tinyFirst : {false, true}) {
        SCOPED_TRACE(tinyFirst);
        const OlsResults r = RunOls(tinyFirst ? Regression(kY, {tiny, kA}) : Regression(kY, {kA, tiny}));
        ASSERT_EQ(r.pFinal[0], 2);
        const Vector& first = tinyFirst ? tiny : kA;
        const Vector& second = tinyFirst ? kA : tiny;
        for (int i = 1; i <= 8; ++i) {
            // The pair (tiny, tiny) comes last and wipes the sum out, or first and is lost alone.
            const double a = (first[At(i)] - r.means(1)) / r.deviations(1);
            const double b = (second[At(i)] - r.means(2)) / r.deviations(2);
            const double sum = tinyFirst ? -2 * a * b * r.swept(1, 2) - b * b * r.swept(2, 2) : 0.0;
            const double h = 1.0 / 8 + sum / 7;
            ExpectClose(r.leaveOneOut(i), kY[At(i)] - r.residuals(i, kResRaw) / (1 - h), kIterative);
        }
    }
}

TEST(OlsOddities, PcCountsRows)
{
    OlsProblem q = Regression(kY, {kA});
    q.wc = {1, 2, 3, 1, 2, 3, 1, 2};
    const OlsResults r = RunOls(q);
    EXPECT_EQ(r.fit(kFitObservations), 15.0);
    ExpectClose(r.fit(kFitPc), (8 + 2) * r.swept(2, 2) / 13, kRoundoff);
}

TEST(OlsOddities, CellsAtLeverageOneStay)
{
    // Four rows at x = 0 with h = 1/4, one at x = 1 with h = 1: residuals are those about the mean of the
    // four.
    const Vector y{1, 2, 4, 5, 11};
    const OlsResults r = RunOls(Regression(y, {{0, 0, 0, 0, 1}}));
    EXPECT_TRUE(r.cook.Kept(5));
    EXPECT_TRUE(r.residuals.Kept(5, kResStudentised));
    EXPECT_FALSE(r.residuals.Kept(5, kResStandardised));
    EXPECT_EQ(r.leaveOneOut(5), 11.0);
    ExpectClose(r.fit(kFitPress), (4 + 1 + 1 + 4) / (0.75 * 0.75), kIterative);
    for (int i = 1; i <= 4; ++i)
        ExpectClose(r.leaveOneOut(i), (12 - y[At(i)]) / 3,
                    kIterative);  // mean of the others
}

TEST(OlsOddities, OneColumnThreeRowsHasAllStatistics)
{
    // Slope 3 with SSE 2 on one degree of freedom: Student's t with closed forms.
    const OlsResults r = RunOls(Regression({1, 3, 5}, {{0, 0, 1}}));
    const double tq = std::tan(std::numbers::pi * (0.5 - 0.025)), se = std::sqrt(3.0);
    const double expected[] = {3.0, se, se, 1.0 / 3, 3 - se * tq, 3 + se * tq};
    for (int c = 1; c <= 6; ++c)
        ExpectClose(r.parameters(2, c), expected[c - 1], 1E-13);  // a dozen roundings
    ExpectClose(r.anova(kAnovaModel, kAnovaF), 3.0, 1E-13);       // the same
    ExpectClose(r.anova(kAnovaModel, kAnovaP), 1.0 / 3, 1E-13);   // the same
    EXPECT_EQ(r.fit(kFitDf), 1.0);
}

TEST(OlsOddities, SmallWeightsAreRescaledInTheCallersArray)
{
    struct
    {
        Vector wc, wr, after;
        double sumOfWeights;
    } const cases[] = {
        {{1, 1, 1, 1}, {0.1, 0.1, 0.1, 0.2}, {0.8, 0.8, 0.8, 1.6}, 4.0},
        {{1, 1, 1, 1}, {0.25, 0.25, 0.25, 0.25}, {1, 1, 1, 1}, 4.0},  // a sum of exactly 1 still is
        {{1, 1, 1, 1}, {0.25, 0.25, 0.25, 0.375}, {0.25, 0.25, 0.25, 0.375}, 1.125},
        {{0, 1, 1, 2}, {0.5, 0.1, 0.1, 0.15}, {0.5, 0.8, 0.8, 1.2}, 4.0},  // a zero case keeps its weight
    };
    for (const auto& c : cases) {
        OlsProblem q = Regression({1, 3, 2, 7}, {{1, 2, 3, 4}});
        q.wc = c.wc;
        q.wr = c.wr;
        const OlsResults r = RunOls(q);
        for (size_t i = 0; i < 4; ++i)
            ExpectClose(r.wr[i], c.after[i], kRoundoff);
        ExpectClose(r.fit(kFitSumOfWeights), c.sumOfWeights, kRoundoff);
        EXPECT_EQ(r.fit(kFitObservations), std::accumulate(c.wc.begin(), c.wc.end(), 0.0));
        EXPECT_FALSE(r.predictions.Kept(1));
    }
}

TEST(OlsOddities, AFlagIsOnAtExactlyOne)
{
    const double estimated = RunOls(Regression(kY, {kA})).parameters(1, kParValue);
    for (const double flag : {0.0, 0.9999, 1.0 + 1E-15, -1.0, 2.0, 1.0}) {
        OlsProblem q = Regression(kY, {kA});
        q.options[kFixedIntercept] = flag;
        q.options[kInterceptValue] = 2.0;
        EXPECT_EQ(RunOls(q).parameters(1, kParValue), flag == 1.0 ? 2.0 : estimated) << flag;
    }
}

// y = 1, 3, 4 on x = 1, 2, 4 through the origin: b = 23 / 21, the leverages are x^2 / 21. 1 / 3 comes on top where an
// estimated intercept has it, which makes the last one 23 / 21, above 1.
TEST(OlsOddities, LeaveOneOutCountsAFixedIntercept)
{
    const Vector x{1, 2, 4}, y{1, 3, 4};
    OlsProblem q = Regression(y, {x});
    q.options[kFixedIntercept] = 1.0;
    const OlsResults r = RunOls(q);
    double press = 0.0;
    for (int i = 1; i <= 3; ++i) {
        const double xi = x[At(i)], g = xi * xi / 21, h = g + 1.0 / 3, e = y[At(i)] - xi * 23 / 21,
                     mse = r.fit(kFitMse);
        const double deleted = e / (1 - h);
        press += deleted * deleted;
        EXPECT_NEAR(r.leaveOneOut(i), y[At(i)] - deleted, kIterative);
        ExpectClose(r.cook(i), g * deleted * deleted / mse, kIterative);
        ExpectClose(r.errors(i, 1), std::sqrt(mse * g), kIterative);
        ExpectClose(r.residuals(i, 3), h < 1 ? e / std::sqrt(mse * (1 - h)) : kMissing, kIterative);
    }
    ExpectClose(r.fit(kFitPress), press, kIterative);
}

// Two groups with the same mean: no column of the block lowers the residual term, and none enters.
TEST(OlsOddities, AModelOfNoColumnsHasNoMeanSquare)
{
    OlsProblem q = Regression({1, 2, 3, 2, 2, 2}, {{1, 0, 1, 0, 1, 0}, {0, 1, 0, 1, 0, 1}}, {1, 1});
    q.type = {2};
    q.options[kMethod] = 2;
    const OlsResults r = RunOls(q);
    ASSERT_EQ(r.code, 0);
    EXPECT_EQ(r.pFinal[0], 0);
    for (const int column : {kAnovaMeanSquare, kAnovaF, kAnovaP})
        EXPECT_EQ(r.anova(kAnovaModel, column), kMissing);
}

TEST(OlsOddities, FarMeansUseStandardisedCorrelations)
{
    // y = 7 + (x - centre) / 4 + exact residuals that are orthogonal to x.
    for (const double sign : {1.0, -1.0}) {
        const Vector deviation{-2, -1, 0, 1, 2}, noise{1, -2, 2, -2, 1};  // noise: sum 0, cross sum 0
        Vector x(5), y(5);
        for (size_t i = 0; i < 5; ++i) {
            x[i] = sign * 524288.0 + deviation[i];
            y[i] = 7 + deviation[i] / 4 + noise[i] / 64;
        }
        const OlsResults r = RunOls(Regression(y, {x}));
        EXPECT_EQ(r.means(1), sign * 524288.0);
        ExpectClose(r.parameters(2, kParValue), 0.25, 1E-13);  // a few roundings of correlations
        ExpectClose(r.anova(kAnovaError, kAnovaSumOfSquares),
                    14.0 / 4096,
                    kIterative);  // 1 - R squared cancels two digits
    }
}

TEST(OlsOddities, ConstantsOnlyGiveNoModel)
{
    const OlsResults r = RunOls(Regression(kY, {kFlat, kFlat}));
    EXPECT_EQ(r.code, -5);
    EXPECT_EQ(r.pFinal[0], 0);
    EXPECT_EQ(r.states, (Integers{kConstant, kConstant}));
    EXPECT_EQ(r.means(1), 3.0);
    EXPECT_EQ(r.deviations(2), 0.0);
    for (const Table* table : r.Tables())
        EXPECT_EQ(table->cells.CountChanged() == 0, table != &r.means && table != &r.deviations);
}

TEST(OlsForcedPass, StatesOfColumns)
{
    // Eight rows that count as three: the columns are independent and only the degrees of freedom end.
    const Vector c{1, 5, 2, 2, 0, 1, 3, 7}, d{7, 1, 4, 9, 2, 2, 5, 1};
    const auto countingThree = [&](const Integers& factorOf) {
        OlsProblem q = Regression(kY, {kA, kB, c, d}, factorOf);
        q.wc.assign(8, 0.375);
        return q;
    };
    const OlsProblem threeRows = countingThree({1, 1, 1, 2}), twoTwo = countingThree({1, 1, 2, 2});
    const OlsProblem two = Regression(kY, {kA, kB});
    struct
    {
        const char* what;
        OlsProblem q;
        Integers given, states, active;
        int columns;
        double fixed;
    } cases[] = {
        // clang-format off
        {"degrees of freedom end in mid-factor", threeRows, {0, 0, 0, 0}, {kIn, kIn, kRefused, kRefused}, {1, 0}, 2, 0},
        {"counted over factors", countingThree({1, 2, 2, 2}), {0, 0, 0, 0}, {kIn, kIn, kRefused, kRefused}, {1, 1}, 2, 0},
        {"one more with a fixed intercept", threeRows, {0, 0, 0, 0}, {kIn, kIn, kIn, kRefused}, {1, 0}, 3, 1},
        {"an excluded one keeps its state", twoTwo, {0, 0, kDropped, 0}, {kIn, kIn, kDropped, kRefused}, {1, 0}, 2, 0},
        {"excluded by the caller", two, {7, 0}, {7, kIn}, {0, 1}, 1, 0},
        {"a candidate enters like a member", two, {-1, -1}, {kIn, kIn}, {1, 1}, 2, 0},
        {"a constant overrides", Regression(kY, {kFlat, kB}), {7, 0}, {kConstant, kIn}, {0, 1}, 1, 0},
        // clang-format on
    };
    for (auto& t : cases) {
        SCOPED_TRACE(t.what);
        t.q.states = t.given;
        t.q.options[kFixedIntercept] = t.fixed;
        const OlsResults r = RunOls(t.q);
        EXPECT_EQ(r.code, 0);
        EXPECT_EQ(r.states, t.states);
        EXPECT_EQ(r.active, t.active);
        EXPECT_EQ(r.pFinal[0], t.columns);
    }
    OlsProblem inactive = Regression(kY, {kA, kB});
    inactive.active[0] = 0;
    EXPECT_EQ(RunOls(inactive).states, (Integers{kCandidate, kIn}));
}

TEST(OlsForcedPass, ToleranceMustBeExceeded)
{
    // Orthogonal designs give tolerances that are exact: 1 before, 1 - r^2 after the first column.
    const Vector u{-1, -1, 1, 1}, v{-1, 1, -1, 1}, y{1, 2, 4, 3};
    Vector mixed(4);
    for (size_t i = 0; i < 4; ++i)
        mixed[i] = u[i] + v[i];  // correlation sqrt(1/2) with u
    struct
    {
        double tolerance;
        int second;
    } const cases[] = {{0.4999999, kIn}, {0.5000001, kRefused}, {0.9, kRefused}};
    for (const auto& c : cases) {
        OlsProblem q = Regression(y, {u, mixed});
        q.options[kTolerance] = c.tolerance;
        EXPECT_EQ(RunOls(q).states, (Integers{kIn, c.second})) << c.tolerance;
    }
    OlsProblem none = Regression(y, {u});
    none.options[kTolerance] = 1.0000001;  // no column is that independent
    EXPECT_EQ(RunOls(none).code, -5);
}

TEST(OlsForcedPass, OneRowOfModelsPerFactorThatEntered)
{
    for (const double criterion : {0.0, 2.0}) {
        OlsProblem q = Regression(kY, {kA, kA, kB});  // factor 2 repeats factor 1 and gets no row
        q.wc = {1, 1, 2, 1, 1, 2, 1, 1};
        q.wr = {1, 0.5, 2, 1, 3, 1, 0.5, 1};
        q.options[kCriterion] = criterion;
        const OlsResults r = RunOls(q);
        OlsProblem one = Regression(kY, {kA});
        one.wc = q.wc;
        one.wr = q.wr;
        const OlsResults nested = RunOls(one);
        const double s = r.fit(kFitSumOfWeights), swc = r.fit(kFitObservations);
        const auto tail = [&](int row, int col) { return r.models(row, 3 + col); };
        double mseFull = 0.0;
        for (int row = 2; row >= 1; --row) {
            const OlsResults& fit = row == 1 ? nested : r;
            const int last = row == 1 ? 2 : 4;
            const double left = fit.swept(last, last), sy = r.deviations(4), columns = row, k = columns + 1;
            const double sse = (s - 1) * left * sy * sy, df = s - k;  // counts with the sum of weights
            if (row == 2) mseFull = sse / df;
            const double logSse = s * std::log(sse / s), adjusted = 1 - left - columns * left / df;
            const double expected[] = {sse,
                                       sse / df,
                                       1 - left,
                                       adjusted,
                                       0.0,
                                       logSse + 2 * k,
                                       logSse + std::log(s) * k,
                                       (s + k) * left / df};
            for (int c = kModelSse; c <= kModelPc; ++c)
                if (c != kModelCp) ExpectClose(tail(row, c), expected[c - kModelSse], kIterative);
            EXPECT_EQ(r.models(row, kModelNumber), row);
            EXPECT_EQ(r.models(row, kModelColumns), columns);
            EXPECT_EQ(r.models(row, kModelMove), 1.0);
            EXPECT_EQ(r.models(row, kModelFactor), row == 1 ? 1.0 : 3.0);
            EXPECT_EQ(r.models(row, kModelFirstIndicator), 1.0);
            EXPECT_TRUE(
                r.models.Kept(row, kModelFirstIndicator + 1));  // copied from row 1, where it is the caller's
            if (criterion == 2.0) {
                ExpectClose(tail(row, kModelCp), 2 * k + tail(row, kModelSse) / mseFull - swc, kIterative);
            } else {
                EXPECT_TRUE(r.models.Kept(row, 3 + kModelCp));
            }
        }
        EXPECT_TRUE(r.models.Kept(1, kModelFirstIndicator + 2));
        EXPECT_EQ(r.models(2, kModelFirstIndicator + 2), 1.0);
        for (int c = 1; c <= 15; ++c)
            EXPECT_TRUE(r.models.Kept(3, c)) << c;
        ExpectClose(r.fit(kFitCp), r.anova(kAnovaError, kAnovaSumOfSquares) / mseFull + 6 - swc, kIterative);
    }
}

TEST(OlsOddities, PerfectFit)
{
    const OlsResults r = RunOls(Regression({0.01, 0.02, 0.03, 0.04, 0.05}, {{1, 2, 3, 4, 5}}));
    EXPECT_EQ(r.fit(kFitAic), kMissing);
    EXPECT_EQ(r.fit(kFitSbc), kMissing);
    EXPECT_EQ(r.fit(kFitCp), 2.0);
    for (int i = 1; i <= 5; ++i) {
        const double h = 0.2 + (i - 3) * (i - 3) / 10.0;
        EXPECT_EQ(r.residuals(i, kResStandardised), 0.0);
        EXPECT_EQ(r.residuals(i, kResStudentised), 1.0);
        ExpectClose(r.cook(i), h, 1E-13);  // the leverage itself; some tens of roundings
        for (int c = 1; c <= 6; ++c)
            EXPECT_EQ(r.errors(i, c), kMissing);
    }
    EXPECT_EQ(r.models(1, 1 + kModelAic), kMissing);
}

/** Two levels coded 1, -1 against each other; the second column is the dropped level. */
OlsProblem TwoLevels(const Vector& y, const Vector& coded)
{
    Vector indicator(coded.size());
    for (size_t i = 0; i < coded.size(); ++i)
        indicator[i] = coded[i] < 0 ? 1.0 : 0.0;
    OlsProblem q = Regression(y, {coded, indicator}, {1, 1});
    q.type[0] = 2;
    q.states[1] = kDropped;
    q.design = {1, -1, 0, 1};
    q.options[kConstraint] = 2;
    return q;
}

TEST(OlsOddities, DerivedLevelsKeepValueAndError)
{
    // Means 2 and 6, two rows each, SSE 4 on 2 degrees of freedom: effect -2 with variance 2/4.
    OlsProblem q = TwoLevels({1, 3, 5, 7}, {1, 1, -1, -1});
    for (const double constraint : {2.0, 3.7, 1.999}) {
        SCOPED_TRACE(constraint);
        q.options[kConstraint] = constraint;
        q.options[kKeepRawCov] = constraint == 2.0 ? 0.0 : 1E-300;  // raw at exactly zero
        const OlsResults r = RunOls(q);
        const bool derived = constraint >= 2;
        ExpectClose(r.parameters(3, kParValue), derived ? 2.0 : 0.0, kRoundoff);
        ExpectClose(r.parameters(3, kParStdError), derived ? std::sqrt(0.5) : 0.0, kRoundoff);
        ExpectClose(r.parameters(3, kParT), derived ? 2 / std::sqrt(0.5) : kMissing, kRoundoff);
        ExpectClose(r.beta(3 - 1, kParT), derived ? 2 / std::sqrt(0.5) : kMissing, kRoundoff);
        EXPECT_EQ(r.raw(2), 0.0);
        ExpectClose(r.reported(2), 2.0, kRoundoff);
        EXPECT_EQ(r.covariance.Kept(2, 2) && r.covariance.Kept(1, 2) && r.covariance.Kept(2, 1),
                  constraint == 2.0);
        if (constraint != 2.0) ExpectClose(r.covariance(2, 1), -0.5, kRoundoff);
    }
    // Without degrees of freedom the columns of the model lose their errors, the derived level shows a zero.
    const OlsResults full = RunOls(TwoLevels({0.1, 0.3}, {1, -1}));
    EXPECT_EQ(full.fit(kFitDf), 0.0);
    EXPECT_EQ(full.parameters(2, kParStdError), kMissing);
    ExpectClose(full.parameters(3, kParValue), 0.1, kRoundoff);
    EXPECT_EQ(full.parameters(3, kParStdError), 0.0);
    EXPECT_EQ(full.parameters(3, kParT), kMissing);
}

}  // namespace
}  // namespace linear_test
