/** The report for a fit computed elsewhere: the run of the least squares door on the same terms gives the same tables, and
 * points outside the fit are the prediction door's validation sample. */
#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include "design_fixture.h"
#include "prediction_fixture.h"

namespace linear_test {
namespace {

struct Design
{
    std::vector<Vector> variables;  // p of them, n points each
    int degree = 1, mixed = 0;
    short interact = 0, fixedIntercept = 0;
};

/** All variables, all squares, ..., then the products in pairs. */
std::vector<Vector> TermsOf(const Design& d)
{
    std::vector<Vector> terms;
    const size_t p = d.variables.size(), n = d.variables[0].size();
    for (int power = 1; power <= d.degree; ++power)
        for (const Vector& v : d.variables) {
            terms.push_back(v);
            for (double& cell : terms.back())
                cell = std::pow(cell, power);
        }
    for (size_t a = 0; d.interact == -1 && a < p; ++a)
        for (size_t b = a + 1; b < p; ++b) {
            terms.push_back(d.variables[a]);
            for (size_t i = 0; i < n; ++i)
                terms.back()[i] *= d.variables[b][i];
        }
    return terms;
}

struct StatsResults
{
    int n, terms, code = 0;
    Table fit{15, 2}, anova{3, 5}, coefficients{terms, 1}, parameters{terms, 6}, beta{terms - 1, 6},
        covariance{terms, terms}, errors{n, 6}, residuals{n, 3}, cook{n, 1}, adjusted{n, 1};
};

/** Runs the door on all points; the fit was made on those of type 1. */
StatsResults Stats(const Design& d, Fitted f, Vector y, Vector w, Vector prediction, Vector types)
{
    StatsResults r{static_cast<int>(y.size()), f.p + 1};
    Vector x = Joined(d.variables);
    // clang-format off
    r.code = Cpp_OLSStats(r.n, static_cast<int>(d.variables.size()), y.data(), x.data(), w.data(), prediction.data(),
        types.data(), f.raw.data(), f.swept.data(), f.means.data(), f.deviations.data(), d.degree, d.mixed, d.interact,
        d.fixedIntercept, 1E-4, 0.05, r.fit.cells.data(), r.anova.cells.data(), r.coefficients.cells.data(),
        r.parameters.cells.data(), r.beta.cells.data(), r.covariance.cells.data(), r.errors.cells.data(),
        r.residuals.cells.data(), r.cook.cells.data(), r.adjusted.cells.data());
    // clang-format on
    for (const Table* t : {&r.fit,
                           &r.anova,
                           &r.coefficients,
                           &r.parameters,
                           &r.beta,
                           &r.covariance,
                           &r.errors,
                           &r.residuals,
                           &r.cook,
                           &r.adjusted})
        EXPECT_TRUE(t->cells.IntactGuards());
    return r;
}

void ExpectSame(const Table& actual, const Table& expected, const char* name, double scale = 0.0)
{
    for (int c = 1; c <= expected.cols; ++c)
        for (int r = 1; r <= expected.rows; ++r) {
            SCOPED_TRACE(::testing::Message() << name << "(" << r << "," << c << ")");
            const double value = expected(r, c);
            if (expected.Kept(r, c)) {
                EXPECT_TRUE(actual.Kept(r, c));
            } else if (scale > 0.0) {
                EXPECT_NEAR(actual(r, c), value, kIterative * scale);
            } else {
                ExpectClose(actual(r, c), value, kIterative);
            }
        }
}

const Vector kTemperature{1, 1, 3, 3, 2, 2, 2, 0.5, 3.5, 2, 2, 1.2},
    kAcid{4, 6, 4, 6, 5, 5, 5, 5, 5, 3.6, 6.4, 4.4};
const Vector kYield{76.5, 77, 78, 79.5, 79.9, 80.3, 80, 75.6, 78.4, 77, 78.5, 77.8};
const Vector kCounts{1, 2, 1, 1, 3, 1, 1, 1, 2, 1, 1, 1};

TEST(OlsStats, AgreesWithTheRunOnItsTerms)
{
    const Design quadratic{{kTemperature, kAcid}, 2, 0, -1, 0}, cubic{{kTemperature}, 3, 0, 0, 0},
        plane{{kTemperature, kAcid}, 1, 0, 1, 0};  // a flag of 1 is off
    for (const Design& d : {quadratic, cubic, plane}) {
        OlsProblem q = Regression(kYield, TermsOf(d));
        q.wc = kCounts;
        q.options[kTolerance] = 1E-9;
        const OlsResults run = RunOls(q);
        ASSERT_EQ(run.pFinal[0], q.p);
        const StatsResults r =
            Stats(d, HandOn(run), kYield, kCounts, CellsOf(run.predictions), Vector(kYield.size(), 1.0));
        EXPECT_EQ(r.code, 0);
        ExpectSame(r.fit, run.fit, "fit");
        ExpectSame(r.anova, run.anova, "anova");
        ExpectSame(r.coefficients, run.raw, "coefficients");
        ExpectSame(r.parameters, run.parameters, "parameters");
        ExpectSame(r.beta, run.beta, "beta");
        ExpectSame(r.covariance, run.covariance, "covariance", run.covariance(q.p + 1, q.p + 1));
        ExpectSame(r.errors, run.errors, "errors");
        ExpectSame(r.residuals, run.residuals, "residuals", 1.0);
        ExpectSame(r.cook, run.cook, "cook");
        ExpectSame(r.adjusted, run.leaveOneOut, "adjusted");
    }
}

TEST(OlsStats, PointsOutsideTheFitAreAValidationSample)
{
    // The first, fifth and last point are outside; any type but 1 says so.
    const Design d{{kTemperature, kAcid}, 2, 0, 0, 0};
    const Integers outside{1, 5, 12};
    Vector types(12, 1.0);
    types[0] = 0.0;
    types[4] = 2.0;
    types[11] = -1.0;
    const auto part = [&](const Vector& v, double type) {
        Vector cells;
        for (size_t i = 0; i < v.size(); ++i)
            if ((types[i] == 1.0) == (type == 1.0)) cells.push_back(v[i]);
        return cells;
    };
    std::vector<Vector> terms = TermsOf(d), fitTerms, newTerms;
    for (const Vector& term : terms) {
        fitTerms.push_back(part(term, 1.0));
        newTerms.push_back(part(term, 0.0));
    }
    OlsProblem q = Regression(part(kYield, 1.0), fitTerms);
    q.options[kTolerance] = 1E-9;
    const OlsResults run = RunOls(q);
    const Fitted fit = HandOn(run);
    NewRowsProblem rows;
    rows.nPred = 3;
    rows.x = Joined(newTerms);
    rows.y = part(kYield, 0.0);
    rows.wc = part(kCounts, 0.0);
    rows.wr.assign(3, 1.0);
    rows.isValid = -1;
    const NewRowsResults valid = Predict(fit, rows);

    Vector prediction(12), weights(12, 1.0);
    for (size_t i = 0, inFit = 0, out = 0; i < 12; ++i) {
        prediction[i] = types[i] == 1.0 ? run.predictions(static_cast<int>(++inFit))
                                        : valid.predictions(static_cast<int>(++out));
        if (types[i] != 1.0) weights[i] = kCounts[i];
    }
    const StatsResults r = Stats(d, fit, kYield, weights, prediction, types);
    ExpectSame(r.anova, run.anova, "anova");
    for (int i = 1; i <= 15; ++i)
        ExpectClose(r.fit(i), run.fit(i), kIterative);
    for (int i = 1; i <= 7; ++i)
        ExpectClose(r.fit(i, kFitValidation), valid.fit(i, kFitValidation), kIterative);
    EXPECT_TRUE(r.fit.Kept(8, kFitValidation));
    for (int i = 1; i <= 3; ++i) {
        const int row = outside[At(i)];
        for (int c = 1; c <= 6; ++c)
            ExpectClose(r.errors(row, c), valid.errors(i, c), kIterative);
        for (int c = 1; c <= 3; ++c)
            ExpectClose(r.residuals(row, c), valid.residuals(i, c), kIterative);
        ExpectClose(r.cook(row), valid.cook(i), kIterative);
        EXPECT_EQ(r.adjusted(row), prediction[At(row)]);
    }
    ExpectClose(r.cook(2), run.cook(1), kIterative);
    ExpectClose(r.residuals(11, kResStudentised), run.residuals(9, kResStudentised), kIterative);
}

TEST(OlsStats, AMixtureTakesADegreeOfFreedom)
{
    // Two components that add to 1, without intercept: the mean of the response is in the model.
    const Vector a{0, 0.25, 0.5, 0.75, 1, 0.5}, b{1, 0.75, 0.5, 0.25, 0, 0.5}, y{3, 4.5, 5, 7, 8, 6};
    OlsProblem q = Regression(y, {a, b});
    q.options[kFixedIntercept] = 1.0;
    const OlsResults run = RunOls(q);
    const Design d{{a, b}, 1, 1, 0, -1};
    const StatsResults r = Stats(d, HandOn(run), y, Vector(6, 1.0), CellsOf(run.predictions), Vector(6, 1.0));
    // The line of y on a gives the same fit.
    const OlsResults line = RunOls(Regression(y, {a}));
    ExpectSame(r.anova, line.anova, "anova");
    ExpectClose(r.fit(kFitRSquared), line.fit(kFitRSquared), kIterative);
    ExpectClose(r.fit(kFitMse), line.fit(kFitMse), kIterative);
    EXPECT_EQ(r.fit(kFitAdjustedRSquared), kMissing);
    ExpectClose(r.parameters(3, kParValue), line.raw(2), kIterative);  // b alone is where a is 0
    ExpectClose(r.parameters(3, kParStdError), line.parameters(1, kParStdError), kIterative);
    EXPECT_TRUE(r.covariance.Kept(3, 1) && r.covariance.Kept(3, 3));
}

TEST(OlsStats, BrokenInput)
{
    const Design d{{kTemperature, kAcid}, 1, 0, 0, 0};
    const OlsResults run = RunOls(Regression(kYield, TermsOf(d)));
    const Fitted fit = HandOn(run);
    const Vector ones(12, 1.0), prediction = CellsOf(run.predictions);
    const StatsResults none = Stats(d, fit, kYield, ones, prediction, Vector(12, 0.0));
    EXPECT_EQ(none.code, 0);
    EXPECT_EQ(none.fit.cells.CountChanged(), 0u);
    for (const int mixed : {3, -2147483647 - 1, 2147483647}) {
        Design odd = d;
        odd.mixed = mixed;
        EXPECT_EQ(Stats(odd, fit, kYield, ones, prediction, ones).code, 0);
    }
    for (const double broken : {std::numeric_limits<double>::quiet_NaN(), kMissing, 0.0, -1.0}) {
        Stats(d, fit, kYield, Vector(12, broken), prediction, ones);
        Stats(d, fit, Vector(12, broken), ones, Vector(12, broken), ones);
        Fitted bad = fit;
        std::fill(bad.swept.begin(), bad.swept.end(), broken);
        std::fill(bad.deviations.begin(), bad.deviations.end(), broken);
        Stats(d, bad, kYield, ones, prediction, ones);
    }
    Design constant = d;  // the constant alone
    constant.degree = 0;
    Fitted mean{12, 0, 0, {}, {78.0}, {1.0}, {78.0}, {1.4}, {}};
    const StatsResults r = Stats(constant, mean, kYield, ones, Vector(12, 78.0), ones);
    EXPECT_EQ(r.anova(kAnovaModel, kAnovaF), kMissing);
    EXPECT_EQ(r.fit(kFitDf), 11.0);
    Table untouched(15, 2);
    for (const int size : {-1, -3})
        EXPECT_EQ(Cpp_OLSStats(size,
                               size,
                               nullptr,
                               nullptr,
                               nullptr,
                               nullptr,
                               nullptr,
                               nullptr,
                               nullptr,
                               nullptr,
                               nullptr,
                               size,
                               0,
                               -1,
                               0,
                               0,
                               0,
                               untouched.cells.data(),
                               nullptr,
                               nullptr,
                               nullptr,
                               nullptr,
                               nullptr,
                               nullptr,
                               nullptr,
                               nullptr,
                               nullptr),
                  0);
    EXPECT_EQ(untouched.cells.CountChanged(), 0u);
}

}  // namespace
}  // namespace linear_test
