/** Every result table of the least squares run against lm of R, cell by cell, from the raw data through both
 * doors. */
#include <gtest/gtest.h>

#include <cmath>

#include "reference_cases.h"

namespace linear_test {
namespace {

class OlsReference : public ::testing::TestWithParam<Case>
{
};

TEST_P(OlsReference, EveryTableAgreesWithR)
{
    const Case& c = GetParam();
    const auto options = c["options"].Numbers();
    const DesignResults design = BuildDesign(DesignOf(c));
    ASSERT_EQ(design.pMod, c["parents"].rows);
    for (int j = 1; j <= design.pMod; ++j) {
        EXPECT_EQ(design.parents[At(j)], c["parents"].Numbers()[At(j)]);
        EXPECT_EQ(design.removed[At(j)], c["dropped"].Numbers()[At(j)] == 1.0 ? kDropped : kIn);
    }
    ExpectTable(design.design, c["design"], "design");

    OlsProblem q = FitOf(design, c["y"].Numbers(), static_cast<int>(options[0]));
    q.wc = c["wc"].Numbers();
    q.wr = c["wr"].Numbers();
    q.options[kFixedIntercept] = options[2];
    q.options[kInterceptValue] = options[3];
    q.options[kTolerance] = 1E-6;
    q.options[kKeepRawCov] = options[4];
    q.options[kAlpha] = options[5];
    const OlsResults r = RunOls(q);
    ASSERT_EQ(r.code, 0);

    const double size = std::abs(*std::max_element(q.y.begin(), q.y.end()));
    const Scale ofResponse = [&](int, int) { return 1E-3 * size; };
    const Scale ofDeviations = [&](int row, int) {
        return 1E-3 * r.deviations(row);
    };  // weighted sums may be 0
    const auto error = [&](int i) { return r.parameters(i <= q.p ? i + 1 : 1, kParStdError); };
    const Scale ofErrors = [&](int row, int col) {
        return 1E-3 * error(row) * error(col);
    };  // covariances may be 0
    ExpectTable(r.anova, c["anova"], "anova");
    ExpectTable(r.fit, c["fit"], "fit");
    ExpectTable(r.means, c["means"], "means", ofDeviations);
    ExpectTable(r.deviations, c["deviations"], "deviations");
    ExpectTable(r.raw, c["raw"], "raw");
    ExpectTable(r.reported, c["reported"], "reported");
    ExpectTable(r.parameters, c["parameters"], "parameters");
    ExpectTable(r.beta, c["beta"], "beta");
    ExpectTable(r.covariance, c["covariance"], "covariance", ofErrors);
    ExpectTable(r.predictions, c["predictions"], "predictions");
    ExpectTable(r.errors, c["prediction_errors"], "prediction_errors");
    ExpectTable(r.residuals, c["residuals"], "residuals", ofResponse);
    ExpectTable(r.cook, c["cook"], "cook");
    ExpectTable(r.leaveOneOut, c["leave_one_out"], "leave_one_out");
}

INSTANTIATE_TEST_SUITE_P(Linear,
                         OlsReference,
                         ::testing::ValuesIn(ReadCases("linear_values.txt")),
                         [](const auto& c) { return c.param.name; });

constexpr double kElevenDigits =
    1E-11;  // the certified values' own precision, less the condition of the data

TEST(OlsLongley, AgreesToElevenDigits)
{
    const Case c = ReadCases("longley_exact.txt").at(0);
    std::vector<Vector> columns;
    for (int j = 1; j <= 6; ++j)
        columns.push_back(c["x"].Column(j));
    OlsProblem q = Regression(c["y"].Numbers(), columns);
    q.options[kTolerance] = 1E-6;
    const OlsResults r = RunOls(q);
    const auto b = c["coefficients"].Numbers(), se = c["standard_errors"].Numbers(),
               s = c["sigma_r2"].Numbers();
    double worst = 0.0;
    for (int i = 0; i < 7; ++i) {
        const auto k = static_cast<size_t>(i);
        ExpectClose(r.parameters(i + 1, kParValue), b[k], kElevenDigits);
        ExpectClose(r.parameters(i + 1, kParStdError), se[k], kElevenDigits);
        worst = std::max({worst,
                          std::abs(r.parameters(i + 1, kParValue) / b[k] - 1.0),
                          std::abs(r.parameters(i + 1, kParStdError) / se[k] - 1.0)});
    }
    RecordProperty("worst_longley", std::to_string(std::log10(worst)));
    ExpectClose(r.fit(kFitRmse), s[0], kElevenDigits);
    ExpectClose(r.fit(kFitRSquared), s[1], kElevenDigits);
}

}  // namespace
}  // namespace linear_test
