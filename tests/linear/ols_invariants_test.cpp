/** Identities that any least squares fit keeps, on weighted data with several columns. */
#include <gtest/gtest.h>

#include <cmath>

#include "ols_fixture.h"

namespace linear_test {
namespace {

constexpr size_t kN = 30, kP = 4;

/** Four moderately correlated columns of different scales, one factor each, and a response. */
OlsProblem Sample(bool weighted)
{
    std::vector<Vector> x(kP, Vector(kN));
    Vector y(kN);
    for (size_t i = 0; i < kN; ++i) {
        const double t = static_cast<double>(i);
        x[0][i] = std::sin(1.3 * t);
        x[1][i] = 100 + 20 * std::cos(0.7 * t) + 5 * x[0][i];
        x[2][i] = t * t / 300 + std::sin(5 * t);
        x[3][i] = -0.01 * std::cos(2.1 * t) - 0.003 * x[2][i];
        y[i] = 10 + 3 * x[0][i] - 0.2 * x[1][i] + 40 * x[3][i] + std::sin(11 * t * t);
    }
    OlsProblem q = Regression(y, x);
    for (size_t i = 0; i < kN && weighted; ++i) {
        q.wc[i] = static_cast<double>(1 + i % 3);
        q.wr[i] = 0.5 + static_cast<double>(i % 7) / 4;
    }
    return q;
}

double Cell(const OlsProblem& q, size_t row, size_t column)
{
    return q.x[column * static_cast<size_t>(q.n) + row];
}

/** The problem on the given rows and columns (from 0), in that order; a row may come twice. */
OlsProblem Rearranged(const OlsProblem& q,
                      const std::vector<size_t>& rows,
                      const std::vector<size_t>& columns)
{
    Vector y;
    std::vector<Vector> x(columns.size());
    OlsProblem result;
    for (size_t r : rows) {
        y.push_back(q.y[r]);
        for (size_t j = 0; j < columns.size(); ++j)
            x[j].push_back(Cell(q, r, columns[j]));
    }
    result = Regression(y, x);
    for (size_t i = 0; i < rows.size(); ++i) {
        result.wc[i] = q.wc[rows[i]];
        result.wr[i] = q.wr[rows[i]];
    }
    result.options = q.options;
    return result;
}

std::vector<size_t> Iota(size_t n)
{
    std::vector<size_t> all(n);
    for (size_t i = 0; i < n; ++i)
        all[i] = i;
    return all;
}

TEST(OlsInvariants, NormalEquationsAndTotals)
{
    struct
    {
        bool weighted;
        double fixed, value;
    } const cases[] = {{false, 0, 0}, {true, 0, 0}, {false, 1, 0}, {false, 1, -3}, {true, 1, 5}};
    for (const auto& c : cases) {
        SCOPED_TRACE(::testing::Message() << c.weighted << c.fixed << c.value);
        OlsProblem q = Sample(c.weighted);
        q.options[kFixedIntercept] = c.fixed;
        q.options[kInterceptValue] = c.value;
        const OlsResults r = RunOls(q);
        for (size_t j = 0; j <= kP; ++j) {
            if (j == kP && c.fixed == 1) continue;  // residuals need not sum to zero
            double score = 0, size = 0;
            for (size_t i = 0; i < kN; ++i) {
                const double term = q.wc[i] * q.wr[i] * r.residuals(static_cast<int>(i) + 1, kResRaw) *
                                    (j < kP ? Cell(q, i, j) : 1.0);
                score += term;
                size += std::abs(term);
            }
            EXPECT_LE(std::abs(score), 1E-11 * size) << j;  // cancelling sum of terms that carry 1e-13 each
        }
        double sse = 0, sw = 0, swc = 0;
        for (size_t i = 0; i < kN; ++i) {
            const double w = q.wc[i] * q.wr[i], e = r.residuals(static_cast<int>(i) + 1, kResRaw);
            sse += w * e * e;
            sw += w;
            swc += q.wc[i];
        }
        if (c.fixed == 1)
            sse *= (swc - 1) / (sw - 1);  // a fixed intercept leaves the deviations on the sum of weights
        ExpectClose(r.anova(kAnovaError, kAnovaSumOfSquares), sse, kIterative);
        if (c.fixed == 1)
        {  // R squared is that of the response on its prediction under the regression weights
            OlsProblem onPrediction = Regression(q.y, {r.predictions.Column(1)});
            onPrediction.wr = q.wr;
            ExpectClose(r.fit(kFitRSquared), RunOls(onPrediction).fit(kFitRSquared), kIterative);
        }
        ExpectClose(r.anova(kAnovaModel, kAnovaSumOfSquares) + r.anova(kAnovaError, kAnovaSumOfSquares),
                    r.anova(kAnovaTotal, kAnovaSumOfSquares),
                    kRoundoff);
        EXPECT_EQ(r.anova(kAnovaModel, kAnovaDf) + r.anova(kAnovaError, kAnovaDf),
                  r.anova(kAnovaTotal, kAnovaDf));
        EXPECT_EQ(r.anova(kAnovaTotal, kAnovaDf), swc - (c.fixed == 1 ? 0 : 1));
        ExpectClose(r.anova(kAnovaModel, kAnovaF),
                    r.anova(kAnovaModel, kAnovaMeanSquare) / r.anova(kAnovaError, kAnovaMeanSquare),
                    kRoundoff);
    }
}

TEST(OlsInvariants, FIsTheSquareOfTForOneColumn)
{
    const OlsProblem q = Sample(true);
    for (size_t j = 0; j < kP; ++j) {
        const OlsResults r = RunOls(Rearranged(q, Iota(kN), {j}));
        ExpectClose(r.anova(kAnovaModel, kAnovaF),
                    r.parameters(2, kParT) * r.parameters(2, kParT),
                    kIterative);
        ExpectClose(r.anova(kAnovaModel, kAnovaP), r.parameters(2, kParP), kIterative);
        ExpectClose(r.beta(1, kParT), r.parameters(2, kParT), kIterative);
    }
}

TEST(OlsInvariants, OrderOfRowsAndColumns)
{
    const OlsProblem q = Sample(true);
    const OlsResults r = RunOls(q);
    std::vector<size_t> rows(kN);
    for (size_t i = 0; i < kN; ++i)
        rows[i] = (7 * i + 3) % kN;
    const std::vector<size_t> columns{2, 0, 3, 1};
    const OlsResults s = RunOls(Rearranged(q, rows, columns));
    for (int c = 1; c <= 6; ++c) {
        ExpectClose(s.parameters(1, c), r.parameters(1, c), kIterative);
        for (int j = 1; j <= 4; ++j) {
            const int from = static_cast<int>(columns[At(j)]) + 1;
            ExpectClose(s.parameters(j + 1, c), r.parameters(from + 1, c), kPrinted);  // small t lose a digit
            ExpectClose(s.beta(j, c), r.beta(from, c), kPrinted);                      // the same
            if (c <= 4)
                ExpectClose(s.covariance(j, c),
                            r.covariance(from, static_cast<int>(columns[At(c)]) + 1),
                            kPrinted);  // covariances near zero cancel
        }
    }
    for (int i = 1; i <= static_cast<int>(kN); ++i) {
        const int from = static_cast<int>(rows[At(i)]) + 1;
        ExpectClose(s.predictions(i), r.predictions(from), kIterative);
        for (int c = 1; c <= 6; ++c)
            ExpectClose(s.errors(i, c), r.errors(from, c), kIterative);
        ExpectClose(s.leaveOneOut(i), r.leaveOneOut(from), kIterative);
        ExpectClose(s.cook(i), r.cook(from), kPrinted);  // the square of a residual that may be small
    }
}

TEST(OlsInvariants, CaseWeightsAreReplicatedRows)
{
    OlsProblem q = Sample(false);
    std::vector<size_t> rows;
    for (size_t i = 0; i < kN; ++i)
        for (size_t copy = 0; copy <= i % 3; ++copy)
            rows.push_back(i);
    const OlsResults replicated = RunOls(Rearranged(q, rows, Iota(kP)));
    for (size_t i = 0; i < kN; ++i)
        q.wc[i] = static_cast<double>(1 + i % 3);
    const OlsResults weighted = RunOls(q);
    // Not the rows that count records: Durbin-Watson, PC, PRESS and Q squared.
    for (int row = kFitObservations; row <= kFitSbc; ++row)
        if (row != kFitDurbinWatson) ExpectClose(weighted.fit(row), replicated.fit(row), kIterative);
    for (int j = 1; j <= 5; ++j)
        for (int c = 1; c <= 6; ++c) {
            ExpectClose(weighted.parameters(j, c),
                        replicated.parameters(j, c),
                        kPrinted);  // small t lose a digit
            if (c <= 5)
                ExpectClose(weighted.covariance(j, c), replicated.covariance(j, c), kPrinted);  // the same
        }
    for (int row = 1; row <= 3; ++row)
        for (int c = 1; c <= 5; ++c)
            ExpectClose(weighted.anova(row, c), replicated.anova(row, c), kIterative);
    for (size_t i = 0, k = 0; i < kN; k += 1 + i % 3, ++i)
        ExpectClose(weighted.predictions(static_cast<int>(i) + 1),
                    replicated.predictions(static_cast<int>(k) + 1),
                    kIterative);
}

TEST(OlsInvariants, TheSweptMatrixHoldsInflationsAndStandardisedCoefficients)
{
    const OlsProblem q = Sample(true);
    const OlsResults r = RunOls(q);
    ExpectClose(r.swept(5, 5), 1 - r.fit(kFitRSquared), kRoundoff);
    for (int i = 1; i <= 5; ++i)
        for (int j = 1; j <= 5; ++j)
            EXPECT_EQ(r.swept(i, j), r.swept(j, i));
    for (size_t j = 0; j < kP; ++j) {
        const int at = static_cast<int>(j) + 1;
        std::vector<size_t> others = Iota(kP);
        others.erase(others.begin() + static_cast<std::ptrdiff_t>(j));
        OlsProblem auxiliary = Rearranged(q, Iota(kN), others);
        for (size_t i = 0; i < kN; ++i)
            auxiliary.y[i] = Cell(q, i, j);
        ExpectClose(-r.swept(at, at), 1 / (1 - RunOls(auxiliary).fit(kFitRSquared)), kIterative);
        ExpectClose(r.beta(at, kParValue), r.swept(5, at), kIterative);
        ExpectClose(r.parameters(at + 1, kParValue),
                    r.swept(5, at) * r.deviations(5) / r.deviations(at),
                    kIterative);
    }
}

TEST(OlsInvariants, LeaveOneOutIsARefit)
{
    const OlsProblem q = Sample(false);
    const OlsResults all = RunOls(q);
    double press = 0;
    for (size_t i = 0; i < kN; ++i) {
        std::vector<size_t> rows = Iota(kN);
        rows.erase(rows.begin() + static_cast<std::ptrdiff_t>(i));
        const OlsResults refit = RunOls(Rearranged(q, rows, Iota(kP)));
        double prediction = refit.raw(5);
        for (size_t j = 0; j < kP; ++j)
            prediction += refit.raw(static_cast<int>(j) + 1) * Cell(q, i, j);
        ExpectClose(all.leaveOneOut(static_cast<int>(i) + 1), prediction, kIterative);
        press += (q.y[i] - prediction) * (q.y[i] - prediction);
    }
    ExpectClose(all.fit(kFitPress), press, kIterative);
}

TEST(OlsInvariants, AnInterceptFixedAtItsEstimateChangesNoCoefficient)
{
    OlsProblem q = Sample(false);
    const OlsResults free = RunOls(q);
    q.options[kFixedIntercept] = 1.0;
    q.options[kInterceptValue] = free.parameters(1, kParValue);
    const OlsResults fixed = RunOls(q);
    for (int j = 2; j <= 5; ++j)
        ExpectClose(fixed.parameters(j, kParValue), free.parameters(j, kParValue), kPrinted);  // no centring
    ExpectClose(fixed.anova(kAnovaError, kAnovaSumOfSquares),
                free.anova(kAnovaError, kAnovaSumOfSquares),
                kPrinted);                                                   // the same
    ExpectClose(fixed.fit(kFitRSquared), free.fit(kFitRSquared), kPrinted);  // the same
    EXPECT_EQ(fixed.fit(kFitDf), free.fit(kFitDf) + 1);
}

// Two combinations of two columns, about zero and with a tolerance of 0: whatever the level, rounding lets neither in.
TEST(OlsInvariants, AliasedColumnsStayOutOnAnyLevel)
{
    constexpr size_t kRows = 50;
    for (const double level : {0.0, 5.0, 30.0, 1000.0}) {
        for (int k = 1; k <= 15; ++k) {
            std::vector<Vector> x(5, Vector(kRows));
            Vector y(kRows);
            for (size_t i = 0; i < kRows; ++i) {
                const double t = static_cast<double>(i) * (1 + 0.01 * k);
                x[0][i] = level + std::sin(7.1 * t);
                x[1][i] = level + std::cos(3.3 * t * t);
                x[2][i] = level + std::sin(1.9 * t * t + k);
                x[3][i] = 0.7 * x[1][i] + 0.9 * x[2][i];
                x[4][i] = (x[1][i] + x[2][i]) / 1.4;
                y[i] = x[0][i] + std::cos(t);
            }
            OlsProblem q = Regression(y, x);
            q.options[kFixedIntercept] = 1.0;
            q.options[kTolerance] = 0.0;
            const OlsResults r = RunOls(q);
            EXPECT_EQ(r.pFinal[0], 3) << level << ' ' << k;
            EXPECT_EQ(r.anova(kAnovaError, kAnovaDf), kRows - 3.0) << level << ' ' << k;
        }
    }
}

}  // namespace
}  // namespace linear_test
