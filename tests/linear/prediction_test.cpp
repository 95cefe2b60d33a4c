/** New rows: against predict of R, closed forms, the formulas of a validation sample, broken input. */
#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include "prediction_fixture.h"
#include "reference_cases.h"

namespace linear_test {
namespace {

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();

class PredictionReference : public ::testing::TestWithParam<Case>
{
};

TEST_P(PredictionReference, EveryTableAgreesWithR)
{
    const Case& c = GetParam();
    const auto options = c["options"].Numbers();
    std::vector<Vector> columns;
    for (int j = 1; j <= c["x"].cols; ++j)
        columns.push_back(c["x"].Column(j));
    OlsProblem fit = Regression(c["y"].Numbers(), columns);
    fit.wc = c["wc"].Numbers();
    fit.wr = c["wr"].Numbers();
    fit.options[kFixedIntercept] = options[0];
    NewRowsProblem rows;
    rows.nPred = c["new_y"].rows;
    rows.x = c["new_x"].Numbers();
    rows.y = c["new_y"].Numbers();
    rows.wc = c["new_wc"].Numbers();
    rows.wr = c["new_wr"].Numbers();
    rows.alpha = options[1];
    rows.fixedIntercept = static_cast<short>(-options[0]);
    rows.isValid = static_cast<short>(-options[2]);
    const NewRowsResults r = Predict(HandOn(RunOls(fit)), rows);

    const Scale ofResponse = [&](int, int) { return 1E-3 * rows.y[0]; };
    ExpectTable(r.predictions, c["predictions"], "predictions");
    ExpectTable(r.errors, c["prediction_errors"], "prediction_errors");
    ExpectTable(r.residuals, c["residuals"], "residuals", ofResponse);
    ExpectTable(r.cook, c["cook"], "cook");
    ExpectTable(r.adjusted, c["adjusted"], "adjusted");
    const Reference& column = c["fit"];
    for (int i = 1; i <= 15; ++i) {
        const std::string& want = column.cells[At(i)];
        if (want == "kept") {
            EXPECT_TRUE(r.fit.Kept(i, kFitValidation)) << i;
        } else {
            ExpectClose(r.fit(i, kFitValidation), want == "missing" ? kMissing : std::stod(want), kPrinted);
        }
    }
}

INSTANTIATE_TEST_SUITE_P(Linear,
                         PredictionReference,
                         ::testing::ValuesIn(ReadCases("prediction_values.txt")),
                         [](const auto& c) { return c.param.name; });

/** y on two columns, means 3.5 and 2. */
Fitted SmallFit()
{
    return HandOn(RunOls(Regression({1, 3, 2, 5, 4, 7}, {{1, 2, 3, 4, 5, 6}, {2, 0, 1, 5, 3, 1}})));
}

NewRowsProblem NewRowsOf(const std::vector<Vector>& columns, const Vector& y = {})
{
    NewRowsProblem rows;
    rows.nPred = static_cast<int>(columns[0].size());
    for (const Vector& column : columns)
        rows.x.insert(rows.x.end(), column.begin(), column.end());
    rows.y = y;
    rows.wc.assign(columns[0].size(), 1.0);
    rows.wr = rows.wc;
    rows.isValid = y.empty() ? 0 : -1;
    return rows;
}

TEST(OlsPrediction, ARowOfMeansHasTheErrorOfTheMean)
{
    const Fitted fit = SmallFit();
    const NewRowsResults r = Predict(fit, NewRowsOf({{3.5}, {2}}));
    const double mse = fit.fit[At(kFitMse)];
    ExpectClose(r.predictions(1), 22.0 / 6.0, kRoundoff);
    ExpectClose(r.errors(1, kPredMeanError), std::sqrt(mse / 6.0), kRoundoff);
    ExpectClose(r.errors(1, kPredError), std::sqrt(mse + mse / 6.0), kRoundoff);
}

TEST(OlsPrediction, WithoutAColumnTheInterceptIsThePrediction)
{
    Fitted fit = SmallFit();
    fit.pFinal = 0;
    const NewRowsResults r = Predict(fit, NewRowsOf({{7, -1}, {2, kNaN}}));
    for (int i = 1; i <= 2; ++i) {
        EXPECT_EQ(r.predictions(i), fit.raw[2]);
        ExpectClose(r.errors(i, kPredMeanError), std::sqrt(fit.fit[At(kFitMse)] / 6.0), kRoundoff);
    }
}

TEST(OlsPrediction, AFlagOfOneIsOff)
{
    NewRowsProblem rows = NewRowsOf({{7}, {2}});
    rows.fixedIntercept = rows.isValid = 1;  // Predict sees that no validation table changed
    EXPECT_EQ(Predict(SmallFit(), rows).errors(1, 1),
              Predict(SmallFit(), NewRowsOf({{7}, {2}})).errors(1, 1));
}

TEST(OlsPrediction, ValidationFormulas)
{
    // One column, 4 observations, b = 1, intercept 0, MSE 2 on 2 degrees of freedom; the column has mean 0 and
    // standard deviation 1, so the new row 3 has d = w 9 / 3.
    Fitted fit{4, 1, 1, {kIn}, {1.0, 0.0}, {-1, 0, 0, 0.4}, {0, 0}, {1, 1}, Vector(15, 0.0)};
    fit.fit[At(kFitObservations)] = fit.fit[At(kFitSumOfWeights)] = 4;
    fit.fit[At(kFitDf)] = 2;
    fit.fit[At(kFitMse)] = 2;
    fit.fit[At(kFitRmse)] = std::sqrt(2.0);
    NewRowsProblem rows = NewRowsOf({{3, 3, 4}}, {5, 5, 2});
    rows.wr = {2, 0, 1};
    rows.wc = {1, 1, 2};
    const NewRowsResults r = Predict(fit, rows);
    const double h = 2.0 / 4.0 + 6.0;
    EXPECT_EQ(r.residuals(1, kResRaw), 2.0);
    ExpectClose(r.residuals(1, kResStandardised), 2.0 / std::sqrt(2.0), kRoundoff);
    ExpectClose(r.residuals(1, kResStudentised), 2.0 / std::sqrt((h + 1.0) * 2.0 / 2.0), kRoundoff);
    ExpectClose(r.errors(1, kPredMeanError), std::sqrt(h), kRoundoff);
    const double share = ((0.25 + 6.0) / 7.25 + 0.25 - 0.2) * 2.0;
    const double cook = (0.25 + share) * 4.0 / ((1.0 - share - 0.2) * 4.0 + 4.0);
    ExpectClose(r.cook(1), cook / (2.0 / 3.0), kRoundoff);
    // The row of weight 0 has no error; its prediction and residual stand.
    for (int c = 1; c <= 6; ++c)
        EXPECT_EQ(r.errors(2, c), kMissing);
    EXPECT_EQ(r.residuals(2, kResStudentised), kMissing);
    EXPECT_EQ(r.residuals(2, kResRaw), 2.0);
    // Ranks under case weights: responses {2, 2, 5, 5}, predictions {4, 4, 3, 3} give -1.
    ExpectClose(r.fit(kFitRSquared, kFitValidation), 1.0, kRoundoff);
    EXPECT_EQ(r.fit(kFitObservations, kFitValidation), 4.0);
    EXPECT_EQ(r.fit(kFitSumOfWeights, kFitValidation), 4.0);
    EXPECT_EQ(r.fit(kFitMse, kFitValidation), (4.0 + 4.0 + 4.0) / 2.0);  // squared errors are not weighted

    rows.fixedIntercept = -1;
    const NewRowsResults fixed = Predict(fit, rows);
    const double c1 = 6.0 / (6.0 / 2.0 + 1.0);
    ExpectClose(fixed.errors(1, kPredMeanError), std::sqrt(6.0), kRoundoff);
    ExpectClose(fixed.residuals(1, kResStudentised), r.residuals(1, kResStudentised), kExact);
    ExpectClose(fixed.cook(1), 4.0 * c1 / ((1.0 - c1) * 4.0 + 4.0) / (2.0 / 3.0), kRoundoff);
    EXPECT_EQ(fixed.cook(2), kMissing);
}

TEST(OlsPrediction, APairWithoutScaleResetsTheLeverage)
{
    // Three columns about 0; the second has no scale. The pairs up to (2, 2) are forgotten; (3, 2) forgets (3, 1) too, so
    // that (3, 3) alone is left: z = 2 on 4 observations.
    Fitted fit{4,
               3,
               3,
               {kIn, kIn, kIn},
               {1, 1, 1, 0},
               Vector(16, -1.0),
               Vector(4, 0.0),
               {1, 1E-13, 1, 1},
               Vector(15, 1.0)};
    fit.fit[At(kFitObservations)] = fit.fit[At(kFitSumOfWeights)] = 4;
    const NewRowsResults r = Predict(fit, NewRowsOf({{1}, {1}, {2}}));
    ExpectClose(r.errors(1, kPredMeanError), std::sqrt(0.25 + 4.0 / 3.0), kRoundoff);
    // First in order instead: the pairs (2, 2), (3, 2), (3, 3) after the last reset stay but for (2, 2), since (3, 1) resets.
    fit.deviations = {1E-13, 1, 1, 1};
    const NewRowsResults first = Predict(fit, NewRowsOf({{1}, {1}, {2}}));
    ExpectClose(first.errors(1, kPredMeanError), std::sqrt(0.25 + (2.0 * 2.0 + 4.0) / 3.0), kRoundoff);
}

TEST(OlsPrediction, WithoutAnErrorOfTheFitCellsAreMissing)
{
    const Fitted fit = HandOn(RunOls(Regression({1, 3, 2}, {{1, 2, 3}, {2, 0, 1}})));
    const NewRowsResults r = Predict(fit, NewRowsOf({{7, 2}, {2, 2}}, {1, 2}));
    for (int i = 1; i <= 2; ++i) {
        for (int c = 1; c <= 6; ++c)
            EXPECT_EQ(r.errors(i, c), kMissing);
        EXPECT_EQ(r.residuals(i, kResStandardised), kMissing);
        EXPECT_EQ(r.residuals(i, kResStudentised), kMissing);
        EXPECT_EQ(r.cook(i), kMissing);
        ExpectClose(r.residuals(i, kResRaw), i - r.predictions(i), kExact);
    }
    EXPECT_EQ(r.fit(kFitDf, kFitValidation), -1.0);
    EXPECT_EQ(r.fit(kFitMse, kFitValidation), kMissing);
}

TEST(OlsPrediction, BrokenInput)
{
    const Fitted fit = SmallFit();
    NewRowsProblem none = NewRowsOf({{}, {}});
    none.isValid = -1;
    const NewRowsResults empty = Predict(fit, none);
    EXPECT_EQ(empty.fit(kFitObservations, kFitValidation), 0.0);
    EXPECT_EQ(empty.fit(kFitDf, kFitValidation), -3.0);
    none.nPred = -4;
    EXPECT_TRUE(Predict(fit, none).fit.Kept(kFitDf, kFitValidation));

    for (const double broken : {kNaN, std::numeric_limits<double>::infinity(), kMissing, -1.0, 0.0}) {
        Fitted bad = fit;
        std::fill(bad.fit.begin(), bad.fit.end(), broken);
        NewRowsProblem rows = NewRowsOf({{7, 2}, {2, 2}}, {1, 2});
        Predict(bad, rows);
        rows.wr[0] = rows.wc[1] = rows.alpha = rows.x[0] = broken;
        const NewRowsResults r = Predict(fit, rows);
        ExpectClose(r.predictions(2), Predict(fit, NewRowsOf({{7, 2}, {2, 2}})).predictions(2), kExact);
    }
    Fitted noColumns = fit;
    noColumns.p = -1;
    Predict(noColumns, NewRowsOf({{7}, {2}}));
}

}  // namespace
}  // namespace linear_test
