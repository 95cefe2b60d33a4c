/** Degenerate and broken input: no crash, nothing written outside, and the states that are promised. */
#include <gtest/gtest.h>

#include <cmath>
#include <functional>
#include <limits>

#include "ols_fixture.h"

namespace linear_test {
namespace {

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
constexpr double kInfinity = std::numeric_limits<double>::infinity();

const Vector kY{1, 3, 2, 5, 4, 7}, kA{1, 2, 3, 4, 5, 6}, kB{2, 0, 1, 5, 3, 1}, kFlat(6, 2.0);

/** Regression of kY on kA and kB, first cut to n rows. */
OlsProblem Rows(size_t n)
{
    const auto cut = [n](const Vector& v) {
        return Vector(v.begin(), v.begin() + static_cast<std::ptrdiff_t>(n));
    };
    return Regression(cut(kY), {cut(kA), cut(kB)});
}

OlsProblem Changed(const std::function<void(OlsProblem&)>& change)
{
    OlsProblem q = Rows(6);
    change(q);
    return q;
}

TEST(OlsBadInput, CodeColumnsAndStates)
{
    struct
    {
        const char* what;
        OlsProblem q;
        int code, columns;
        Integers states;
    } const cases[] = {
        // clang-format off
        {"constant beside a good one", Regression(kY, {kFlat, kB}), 0, 1, {kConstant, kIn}},
        {"identical", Regression(kY, {kA, kA}), 0, 1, {kIn, kRefused}},
        {"identical but for the sign", Regression(kY, {kA, {-1, -2, -3, -4, -5, -6}}), 0, 1, {kIn, kRefused}},
        {"constant response", Regression(kFlat, {kA, kB}), 0, 2, {kIn, kIn}},
        {"one row fewer than columns", Rows(2), 0, 1, {kIn, kRefused}},
        {"no degree of freedom left", Rows(3), 0, 2, {kIn, kIn}},
        {"NaN in a column", Changed([](auto& q) { q.x[1] = kNaN; }), 0, 1, {kRefused, kIn}},
        {"infinity in a column", Changed([](auto& q) { q.x[7] = kInfinity; }), 0, 1, {kIn, kRefused}},
        {"missing marker in a column", Changed([](auto& q) { q.x[7] = kMissing; }), 0, 1, {kIn, kRefused}},
        {"NaN in the response", Changed([](auto& q) { q.y[2] = kNaN; }), 0, 2, {kIn, kIn}},
        {"missing marker in the response", Changed([](auto& q) { q.y[2] = kMissing; }), 0, 2, {kIn, kIn}},
        {"tolerance NaN", Changed([](auto& q) { q.options[kTolerance] = kNaN; }), -5, 0,
         {kRefused, kRefused}},
        {"no factor active", Changed([](auto& q) { q.active = {0, 0}; }), -5, 0,
         {kCandidate, kCandidate}},
        {"active means exactly 1", Changed([](auto& q) { q.active = {-1, 1}; }), 0, 1,
         {kCandidate, kIn}},
        {"a parent of 0", Changed([](auto& q) { q.parents[0] = 0; }), 0, 1, {kCandidate, kIn}},
        {"a parent below 0", Changed([](auto& q) { q.parents[0] = -7; }), 0, 1, {kCandidate, kIn}},
        {"a parent beyond the factors", Changed([](auto& q) { q.parents[1] = 99999; }), 0, 1,
         {kIn, kCandidate}},
        {"a constant with no parent", Changed([](auto& q) { std::fill(q.x.begin(), q.x.begin() + 6, 1.0); q.parents[0] = 40; }), 0, 1,
         {kConstant, kIn}},
        // clang-format on
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.what);
        const OlsResults r = RunOls(c.q);
        EXPECT_EQ(r.code, c.code);
        EXPECT_EQ(r.pFinal[0], c.columns);
        EXPECT_EQ(r.states, c.states);
        if (r.code != 0) continue;
        for (int j = 1; j <= c.q.p; ++j) {
            if (c.states[At(j)] == kIn) continue;
            for (int col = 1; col <= 6; ++col) {
                EXPECT_EQ(r.parameters(j + 1, col), col <= kParStdError ? 0.0 : kMissing);
                EXPECT_EQ(r.beta(j, col), r.parameters(j + 1, col));
            }
            EXPECT_EQ(r.raw(j), 0.0);
        }
    }
}

TEST(OlsBadInput, EveryOptionAndWeightMayBeBroken)
{
    // Nothing is promised here but a return, intact guards and inputs: RunOls checks them.
    for (const double broken : {kNaN, kInfinity, -kInfinity, kMissing, 0.0, -1.0, 1E300}) {
        for (size_t i = 0; i < 17; ++i)
            RunOls(Changed([&](auto& q) { q.options[i] = broken; }));
        for (const bool all : {false, true}) {
            RunOls(Changed(
                [&](auto& q) { std::fill(q.wc.begin(), all ? q.wc.end() : q.wc.begin() + 1, broken); }));
            RunOls(Changed(
                [&](auto& q) { std::fill(q.wr.begin(), all ? q.wr.end() : q.wr.begin() + 1, broken); }));
        }
    }
    for (const int broken : {-2147483647, -1, 0, 7, 2147483647})
        for (const size_t i : {0u, 1u}) {
            RunOls(Changed([&](auto& q) { q.type[i] = broken; }));
            RunOls(Changed([&](auto& q) { q.nbVars[i] = q.nbSub[i] = q.listVars[i] = broken; }));
            RunOls(Changed([&](auto& q) { q.parents[i] = broken; }));
        }
}

TEST(OlsBadInput, EmptyExtents)
{
    OlsProblem noRows = Rows(6);
    noRows.n = 0;
    RunOls(noRows);
    RunOls(Rows(1));
    OlsProblem noColumns = Rows(6);
    noColumns.p = 0;
    EXPECT_EQ(RunOls(noColumns).code, -5);
    OlsProblem noFactors = Rows(6);
    noFactors.type.clear();
    EXPECT_EQ(RunOls(noFactors).code, -5);
}

TEST(OlsBadInput, WithoutDegreesOfFreedomTheTestsAreMissing)
{
    const OlsResults r = RunOls(Rows(3));
    EXPECT_EQ(r.fit(kFitDf), 0.0);
    for (int row : {kFitAdjustedRSquared, kFitMse, kFitRmse, kFitPc})
        EXPECT_EQ(r.fit(row), kMissing) << row;
    EXPECT_TRUE(r.fit.Kept(kFitPress) && r.fit.Kept(kFitQSquared));
    EXPECT_EQ(r.anova(kAnovaError, kAnovaMeanSquare), kMissing);
    EXPECT_EQ(r.anova(kAnovaModel, kAnovaF), kMissing);
    EXPECT_EQ(r.anova(kAnovaModel, kAnovaP), kMissing);
    for (int j = 1; j <= 3; ++j)
        for (int c = j == 1 ? kParT : kParStdError; c <= kParUpper; ++c)
            EXPECT_EQ(r.parameters(j, c), kMissing) << j << c;
    for (int i = 1; i <= 3; ++i) {
        ExpectClose(r.predictions(i), kY[At(i)], kIterative);
        for (int c = 1; c <= 6; ++c)
            EXPECT_EQ(r.errors(i, c), kMissing);
    }
}

TEST(OlsBadInput, AlphaTouchesTheBoundsOnly)
{
    const OlsResults usual = RunOls(Rows(6));
    for (const double alpha : {0.0, 1.0, kNaN, -1.0, 2.5}) {
        SCOPED_TRACE(alpha);
        const OlsResults r = RunOls(Changed([&](auto& q) { q.options[kAlpha] = alpha; }));
        for (int j = 1; j <= 3; ++j) {
            for (int c = kParValue; c <= kParP; ++c)
                EXPECT_EQ(r.parameters(j, c), usual.parameters(j, c));
            if (alpha == 1.0) {
                EXPECT_EQ(r.parameters(j, kParLower), r.parameters(j, kParValue));
            }
        }
        EXPECT_EQ(r.errors(1, kPredMeanError), usual.errors(1, kPredMeanError));
        EXPECT_EQ(r.anova(kAnovaModel, kAnovaP), usual.anova(kAnovaModel, kAnovaP));
    }
}

}  // namespace
}  // namespace linear_test
