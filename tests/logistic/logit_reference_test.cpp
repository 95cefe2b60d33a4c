/* The logit run against glm, multinom and symbolic derivatives in R (tests/reference/logit_values.R), cell by cell. */
#include <cmath>

#include "logit_fixture.h"
#include "support/reference_file.h"

namespace logistic_test {
namespace {

Integers WholeNumbers(const Reference& table)
{
    Integers numbers;
    for (const double number : table.Numbers())
        numbers.push_back(static_cast<int>(number));
    return numbers;
}

Sample RowsOf(const LogitProblem& q, const Integers& rows)
{
    Sample sample;
    for (int i : rows) {
        sample.y.push_back(q.y[At(i)]);
        sample.wc.push_back(q.wc[At(i)]);
    }
    for (int j = 0; j < q.p; ++j)
        for (int i : rows)
            sample.x.push_back(q.x[static_cast<size_t>(j * q.n) + At(i)]);
    return sample;
}

LogitProblem ProblemOf(const Case& c)
{
    const Vector options = c["options"].Numbers();
    const Integers info = WholeNumbers(c["info"]);
    LogitProblem q;
    q.n = c["y"].rows;
    q.p = c["x"].cols;
    q.qualitative = static_cast<int>(options[0]);
    q.categories = static_cast<int>(options[1]);
    q.form = static_cast<int>(options[2]);
    q.link = static_cast<int>(options[3]);
    q.convergence = options[4];
    q.maxIterations = static_cast<int>(options[5]);
    q.tolerance = options[6];
    q.constraint = static_cast<int>(options[7]);
    q.reference = static_cast<int>(options[8]);
    q.alpha = options[9];
    q.cut = options[10];
    q.y = c["y"].Numbers();
    q.x = c["x"].Numbers();
    q.wc = c["wc"].Numbers();
    q.wr = c["wr"].Numbers();
    q.design = c["design"].Numbers();
    q.mortality = c["mortality"].Numbers();
    q.type = WholeNumbers(c["type"]);
    q.parents = WholeNumbers(c["parents"]);
    q.states = WholeNumbers(c["states"]);
    q.active.assign(q.type.size(), 1);
    std::copy(info.begin(), info.end(), q.info.begin());
    q.valid = RowsOf(q, WholeNumbers(c["valid"]));
    q.fresh = RowsOf(q, WholeNumbers(c["new"]));
    return q;
}

// Steps that promise a rise above eps are made, so estimates stand within 2e-8 standard errors of the maximum.
constexpr double kSettled = 2E-8;
// With a mortality the computed rise decides, which is rounding from about 1e-8 standard errors on, on each platform its own.
constexpr double kSettledMortality = 1E-7;
// Under the penalty steps are those of the unpenalised Hessian: convergence is linear and ends earlier. Profile bounds end
// within 1e-5 of the critical value.
constexpr double kSettledFirth = 1E-6;

// Estimates are as large as their standard errors at least.
Scale ErrorsOf(const Table& table)
{
    return [&table](int r, int c) {
        const bool onScale = c == kCoefValue || (c >= kCoefLower && c <= kCoefProfileUpper);
        return onScale ? table(r, kCoefStdError) : 0.0;
    };
}

double ToleranceOf(const Case& c)
{
    if (c.name.starts_with("firth")) return kSettledFirth;
    return c.name.starts_with("mortality") ? kSettledMortality : kSettled;
}

TEST(LogitReference, EveryTableOfEveryCase)
{
    const std::vector<Case> cases = ReadCases("logit_values.txt");
    ASSERT_EQ(cases.size(), 17u);
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        const LogitProblem problem = ProblemOf(c);
        const LogitResults r = RunLogit(problem);
        ASSERT_EQ(r.code, 0);
        const Scale products = [&r](int i, int j) {
            return std::sqrt(r.covariance(i, i) * r.covariance(j, j));
        };
        const Scale one = [](int, int) { return 1.0; };
        const double settled = ToleranceOf(c);
        ExpectTable(r.tests, c["tests"], "tests", {}, settled);
        ExpectTable(r.fit, c["fit"], "fit");
        ExpectTable(r.coefficients, c["coefficients"], "coefficients", ErrorsOf(r.coefficients), settled);
        ExpectTable(r.standardised, c["standardised"], "standardised", ErrorsOf(r.standardised), settled);
        ExpectTable(r.covariance, c["covariance"], "covariance", products, settled);
        ExpectTable(r.predictions, c["predictions"], "predictions", one, settled);
        ExpectTable(r.validPredictions, c["valid_predictions"], "valid_predictions", one, settled);
        ExpectTable(r.newPredictions, c["new_predictions"], "new_predictions", one, settled);
        ExpectTable(r.classification, c["classification"], "classification");
        ExpectTable(r.validClassification, c["valid_classification"], "valid_classification");
        ExpectTable(r.doses, c["doses"], "doses", {}, settled);
        ExpectTable(r.curve, c["dose_curve"], "dose_curve", {}, settled);
        ExpectTable(r.hetero, c["hetero"], "hetero", {}, settled);
        ExpectTable(r.marginal, c["marginal"], "marginal");
        EXPECT_EQ(r.states, WholeNumbers(c["states_out"]));
        EXPECT_EQ(r.separate[0], WholeNumbers(c["separate"])[0]);
        EXPECT_EQ(r.nbActive, static_cast<int>(r.active.size()));
        for (size_t k = 0; k < r.mortality.size(); ++k)
            ExpectClose(r.mortality[k], c["mortality_out"].Numbers()[k], settled);
    }
}

}  // namespace
}  // namespace logistic_test
