#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <memory>
#include <vector>

#include "core/limits.h"
#include "kernel/random/indicators.h"
#include "kernel/random/uniform.h"

namespace {

using korvenrg::kFalse;
using korvenrg::kTrue;

// The first outputs of the published SplitMix generator from state 0 and from one step back.
TEST(Uniform, IsTheMixedCounter)
{
    int seed = 0;
    int last = 0;
    EXPECT_EQ(Cpp_Random01(&seed, kTrue, &last), (static_cast<double>(0xE220A8397B1DCULL) + 0.5) * 0x1p-52);
    EXPECT_EQ(seed, 0);
    seed = 1;
    EXPECT_EQ(Cpp_Random01(&seed, kTrue, &last), (static_cast<double>(0x6E789E6AA1B96ULL) + 0.5) * 0x1p-52);
    seed = -1;  // the counter is 32 bits wide: place 2^32 of the generator, worked out by hand in Python
    EXPECT_EQ(Cpp_Random01(&seed, kTrue, nullptr), (static_cast<double>(0xbeeb67eaf1fc5ULL) + 0.5) * 0x1p-52);
}

TEST(Uniform, LastSeedContinuesTheStream)
{
    int seed = -77;
    int last = 0;
    matrix<double>* table = nullptr;
    M_GenerateRandom01(table, 5, 4, &seed, kTrue, &last);
    const std::unique_ptr<matrix<double>> whole(table);
    int state = -77;
    for (int k = 1; k <= 20; ++k) {
        EXPECT_EQ(Cpp_Random01(&state, kTrue, &state), whole->vbget(k)) << k;
    }
    EXPECT_EQ(state, last);
}

TEST(Uniform, FirstDrawReportsTheClocksSeed)
{
    int seed = -5;
    int last = 0;
    const double first = Cpp_Random01(&seed, kFalse, &last);
    EXPECT_GT(seed, 0);
    EXPECT_EQ(Cpp_Random01(&seed, kTrue, nullptr), first);
    matrix<double> column(9, 1), again(9, 1);
    matrix<double>* table = &column;
    int seeds[3] = {-5, -5, -5};
    M_GenerateRandom01(table, 9, 1, &seeds[0], kFalse, nullptr);
    EXPECT_GT(seeds[0], 0);
    GenerateRandomIndicator(&again, 9, 4, &seeds[1], kFalse, nullptr);
    EXPECT_GT(seeds[1], 0);
    GenerateRandomCounts(&again, 9, 4, &seeds[2], kFalse, nullptr);
    EXPECT_GT(seeds[2], 0);
    EXPECT_EQ(GetSeed2(-5, kTrue), -5);
    EXPECT_GT(GetSeed2(-5, kFalse), 0);
}

double ChiSquare(const std::vector<int>& counts, double expected)
{
    double sum = 0.0;
    for (const int count : counts) {
        sum += (count - expected) * (count - expected) / expected;
    }
    return sum;
}

// (chi-square - df) / sqrt(2 df); the sequences are fixed, so a limit of 4 fails for a changed generator
// alone.
double Standardized(const std::vector<int>& counts, double expected)
{
    const auto df = static_cast<double>(counts.size() - 1);
    return (ChiSquare(counts, expected) - df) / std::sqrt(2.0 * df);
}

constexpr int kDraws = 1 << 18;
constexpr double kLimit = 4.0;

struct TwoSeeds
{
    int first;
    int second;  // where the partner of a pair is drawn from
};

class UniformQuality : public testing::TestWithParam<TwoSeeds>
{
  protected:
    korvenrg::random::UniformStream stream_{GetParam().first};
    korvenrg::random::UniformStream partner_{GetParam().second};
};

TEST_P(UniformQuality, BinsOfValuesAndOfSerialPairs)
{
    std::vector<int> bins(256);
    std::vector<int> pairs(64 * 64);
    double before = partner_.Next();
    for (int k = 0; k < kDraws; ++k) {
        const double u = stream_.Next();
        bins[static_cast<std::size_t>(u * 256)] += 1;
        pairs[static_cast<std::size_t>(std::floor(u * 64) * 64 + std::floor(before * 64))] += 1;
        before = GetParam().first == GetParam().second ? u : partner_.Next();
    }
    EXPECT_LT(std::fabs(Standardized(bins, kDraws / 256.0)), kLimit);
    EXPECT_LT(std::fabs(Standardized(pairs, kDraws / 4096.0)), kLimit);
}

TEST_P(UniformQuality, EveryBitIsSetHalfOfTheTime)
{
    std::vector<int> ones(52);
    for (int k = 0; k < kDraws; ++k) {
        const auto bits = static_cast<std::uint64_t>(stream_.Next() * 0x1p52);
        for (std::size_t b = 0; b < ones.size(); ++b) {
            ones[b] += static_cast<int>(bits >> b & 1U);
        }
    }
    for (std::size_t b = 0; b < ones.size(); ++b) {
        EXPECT_LT(std::fabs(ones[b] - 0.5 * kDraws) / std::sqrt(0.25 * kDraws), kLimit) << "bit " << b;
    }
}

// Gaps between values below 1/8 are geometric; the last bin holds gaps of 40 and more.
TEST_P(UniformQuality, GapsAreGeometric)
{
    constexpr double kHit = 0.125;
    constexpr int kLongest = 40;
    std::vector<int> gaps(kLongest + 1);
    int total = 0;
    for (int k = 0, gap = 0; k < kDraws; ++k) {
        if (stream_.Next() >= kHit) {
            gap += 1;
            continue;
        }
        gaps[static_cast<std::size_t>(std::min(gap, kLongest))] += 1;
        total += 1;
        gap = 0;
    }
    double chiSquare = 0.0;
    for (int gap = 0; gap <= kLongest; ++gap) {
        const double expected = total * std::pow(1 - kHit, gap) * (gap < kLongest ? kHit : 1.0);
        const double excess = gaps[static_cast<std::size_t>(gap)] - expected;
        chiSquare += excess * excess / expected;
    }
    EXPECT_LT(std::fabs(chiSquare - kLongest) / std::sqrt(2.0 * kLongest), kLimit);
}

INSTANTIATE_TEST_SUITE_P(Seeds,
                         UniformQuality,
                         testing::Values(TwoSeeds{0, 0},
                                         TwoSeeds{1, 2},  // neighbouring seeds side by side
                                         TwoSeeds{-1, 0},
                                         TwoSeeds{0x40000000, static_cast<int>(0x80000000)},
                                         TwoSeeds{12345, 12345 + 4096}));

TEST(Indicators, MarkARange)
{
    matrix<double> column(6, 1, 9.0);
    GenerateIndicator(&column, 5, 4, 99);
    const double expected[] = {0, 0, 0, 1, 1, 9};
    for (int r = 1; r <= 6; ++r) {
        EXPECT_EQ(column.vbget(r), expected[r - 1]) << r;
    }
}

// All 20 sets of 3 rows among 6 must come equally often, and each draw moves the seed by n steps.
TEST(Indicators, RandomMarksAreExactInNumberAndEvenOverSets)
{
    constexpr int kSamples = 20000;
    std::vector<int> sets(64);
    matrix<double> column(6, 1);
    int seed = 2024;
    for (int k = 0; k < kSamples; ++k) {
        GenerateRandomIndicator(&column, 6, 3, &seed, kTrue, &seed);
        unsigned marked = 0;
        for (int r = 1; r <= 6; ++r) {
            if (column.vbget(r) == 1.0) marked |= 1U << (r - 1);
        }
        ASSERT_EQ(__builtin_popcount(marked), 3);
        sets[marked] += 1;
    }
    std::erase(sets, 0);
    ASSERT_EQ(sets.size(), 20U);
    EXPECT_LT(std::fabs(Standardized(sets, kSamples / 20.0)), kLimit);
    for (const int nv : {-2, 0, 6, 7}) {
        GenerateRandomIndicator(&column, 6, nv, &seed, kTrue, &seed);
        EXPECT_EQ(std::count(column.data, column.data + 6, 1.0), std::clamp(nv, 0, 6)) << nv;
    }
}

// 4 draws of 3 rows: the 15 tables of counts come with multinomial probabilities.
TEST(Indicators, CountsAreDrawsWithReplacement)
{
    constexpr int kSamples = 30000;
    matrix<double> column(4, 1, 9.0);
    std::vector<int> seen(25);  // by the counts of the first two rows
    int seed = 11;
    for (int k = 0; k < kSamples; ++k) {
        GenerateRandomCounts(&column, 3, 4, &seed, kTrue, &seed);
        ASSERT_EQ(column.vbget(1) + column.vbget(2) + column.vbget(3), 4.0);
        seen[static_cast<std::size_t>(5 * column.vbget(1) + column.vbget(2))] += 1;
    }
    EXPECT_EQ(column.vbget(4), 9.0);
    const double factorial[] = {1, 1, 2, 6, 24};
    double chiSquare = 0.0;
    for (int a = 0; a <= 4; ++a) {
        for (int b = 0; a + b <= 4; ++b) {
            const double expected =
                kSamples * 24.0 / 81.0 / (factorial[a] * factorial[b] * factorial[4 - a - b]);
            const double gap = seen[static_cast<std::size_t>(5 * a + b)] - expected;
            chiSquare += gap * gap / expected;
        }
    }
    EXPECT_LT(std::fabs(chiSquare - 14.0) / std::sqrt(28.0), kLimit);
    int state = 11, last = 0;
    GenerateRandomCounts(&column, 3, 4, &state, kTrue, &last);
    for (int k = 0; k < 4; ++k)
        Cpp_Random01(&state, kTrue, &state);
    EXPECT_EQ(state, last) << "one uniform a draw";
    GenerateRandomCounts(&column, 3, -1, &state, kTrue, nullptr);
    EXPECT_EQ(column.vbget(1), 0.0);
}

}  // namespace
