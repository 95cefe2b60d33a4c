#include "kernel/distributions/rank_sum.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <vector>

#include "core/limits.h"
#include "kernel/scalars/scalars.h"
#include "support/tolerances.h"

namespace {

using namespace korvenrg::test;
using korvenrg::kFalse;
using korvenrg::kMissing;
using korvenrg::kTrue;

struct Options
{
    int tail = 0;
    short exact = kTrue;
    short continuity = kFalse;
    double shift = 0.0;
    short timeStop = kFalse;
    double maxUnits = 0.0;
};

struct Outcome
{
    short exact = 9;
    double u = 0.0;
    double mean = 0.0;
    double variance = 0.0;
    double p = 0.0;
    double spent = -1.0;
    int ties = -1;
};

Outcome RankSumOf(const std::vector<double>& first, const std::vector<double>& second, const Options& options)
{
    std::vector<double> both = first;
    both.insert(both.end(), second.begin(), second.end());
    matrix<double> samples(static_cast<int>(both.size()), 1, both.data(), true);
    Outcome o;
    int seed = 11;
    short seedInit = kFalse;
    int lastSeed = 22;
    WilcoxonMW2(samples,
                static_cast<int>(first.size()),
                static_cast<int>(second.size()),
                options.tail,
                options.exact,
                options.continuity,
                options.shift,
                options.timeStop,
                options.maxUnits,
                o.exact,
                o.u,
                o.mean,
                o.variance,
                o.p,
                o.spent,
                o.ties,
                seed,
                seedInit,
                lastSeed);
    EXPECT_TRUE(seed == 11 && seedInit == kFalse && lastSeed == 22);
    return o;
}

struct Reference
{
    std::vector<double> first;
    std::vector<double> second;
    int tail;
    double exact;  // -1: not worked out
    double plain;
    double corrected;
};

const Reference kReferences[] = {
#include "reference/distributions/rank_sum.inc"
};

TEST(RankSum, AgreesWithRInAllForms)
{
    for (std::size_t k = 0; k < std::size(kReferences); ++k) {
        const Reference& t = kReferences[k];
        SCOPED_TRACE(k);
        if (t.exact >= 0.0) {
            const Outcome exact = RankSumOf(t.first, t.second, {.tail = t.tail});
            EXPECT_EQ(exact.exact, kTrue);
            ExpectClose(exact.p, t.exact, 1e-13);
        }
        const Outcome plain = RankSumOf(t.first, t.second, {.tail = t.tail, .exact = kFalse});
        EXPECT_EQ(plain.exact, kFalse);
        ExpectClose(plain.p, t.plain, 1e-13);
        const Outcome corrected =
            RankSumOf(t.first, t.second, {.tail = t.tail, .exact = kFalse, .continuity = kTrue});
        ExpectClose(corrected.p, t.corrected, 1e-13);
    }
}

// Pairs counted one by one: U, and the moments with ties by the formula of the mean and variance of scores.
TEST(RankSum, StatisticAndMomentsByHand)
{
    const double nan = std::numeric_limits<double>::quiet_NaN();
    const Outcome o = RankSumOf({3, kMissing, 5, 5}, {5, 1, nan, 3, 2}, {});
    EXPECT_EQ(o.u, 2.5 + 3.5 + 3.5);
    EXPECT_EQ(o.mean, 6.0);
    ExpectClose(o.variance, 12.0 / 12.0 * (8.0 - (6.0 + 24.0) / 42.0), kRoundoff);
    EXPECT_EQ(o.ties, 2);
    EXPECT_GE(o.spent, 0.0);
    const Outcome shifted = RankSumOf({3, 5, 5}, {5, 1, 3, 2}, {.shift = 2.5});
    EXPECT_EQ(shifted.u, 0.0 + 2.0 + 2.0);
}

// Complete separation of 60 and 40 has the probability 1 / C(100, 40): no digit of it is lost. The tails swap
// with the samples, ties or not.
TEST(RankSum, FarTailsAndMirrors)
{
    std::vector<double> low;
    std::vector<double> high;
    for (int i = 0; i < 60; ++i) {
        low.push_back(i);
        if (i < 40) high.push_back(100 + i);
    }
    ExpectClose(RankSumOf(low, high, {.tail = -1}).p, 1.0 / Cnk(100, 40), 1e-13);
    ExpectClose(RankSumOf(high, low, {.tail = 1}).p, 1.0 / Cnk(100, 40), 1e-13);
    ExpectClose(RankSumOf(high, low, {}).p, 2.0 / Cnk(100, 40), 1e-13);
    ExpectClose(RankSumOf(low, high, {.tail = 1}).p, 1.0, kRoundoff);
    const std::vector<double> x = {1, 2, 2, 5, 9, 9};
    const std::vector<double> y = {2, 2, 6, 7, 9};
    for (const int tail : {0, 1, -1}) {
        ExpectClose(RankSumOf(x, y, {.tail = tail}).p, RankSumOf(y, x, {.tail = -tail}).p, kRoundoff);
    }
}

TEST(RankSum, DegenerateSamples)
{
    const Outcome empty = RankSumOf({}, {1, 2}, {});
    EXPECT_EQ(empty.p, kMissing);
    EXPECT_EQ(empty.u, kMissing);
    EXPECT_EQ(empty.exact, kFalse);
    EXPECT_EQ(RankSumOf({kMissing}, {1, 2}, {}).p, kMissing);
    for (const short exact : {kTrue, kFalse}) {
        EXPECT_EQ(RankSumOf({4, 4}, {4, 4, 4}, {.exact = exact}).p, 1.0);
    }
    EXPECT_EQ(RankSumOf({7}, {1}, {.tail = 1}).p, 0.5);
}

// A limit that has passed before the first step, and a distribution too large for memory: asymptotic, and
// said so.
TEST(RankSum, FallsBackToTheAsymptoticForm)
{
    std::vector<double> x;
    std::vector<double> y;
    for (int i = 0; i < 2000; ++i) {
        x.push_back(std::fmod(i * 0.618033988749895, 1.0));
        y.push_back(std::fmod(i * 0.414213562373095, 1.0) + 0.02);
    }
    const Outcome asymptotic = RankSumOf(x, y, {.exact = kFalse});
    for (const Options& options : {Options{.timeStop = kTrue, .maxUnits = -1.0}, Options{}}) {
        const Outcome o = RankSumOf(x, y, options);
        EXPECT_EQ(o.exact, kFalse);
        EXPECT_EQ(o.p, asymptotic.p);
    }
    x.resize(20);
    y.resize(20);
    EXPECT_EQ(RankSumOf(x, y, {.timeStop = kTrue, .maxUnits = -1.0}).exact, kFalse);
    EXPECT_EQ(RankSumOf(x, y, {.timeStop = kTrue, .maxUnits = 1e9}).exact, kTrue);
}

}  // namespace
