/** The ten procedures on real layouts against R, their oddities, and what holds on any data. */
#include "comparisons/category_tests.h"

#include <gtest/gtest.h>

#include <cmath>

#include "comparisons/comparison_run.h"
#include "contrast_fixture.h"

namespace comparison_test {
namespace {

constexpr int kProcedures[] = {1, 2, 3, 4, 5, 6, 7, 9, 10, 11};
constexpr int kStepwise[] = {kNewmanKeuls, kDuncan, kRegwq};
constexpr int kUnpooled[] = {kGamesHowell, kTamhaneT2, kDunnettC};
constexpr int kWritten[] = {kContrastStandardised, kContrastCritical, kContrastP, kContrastLevel};

/** Columns 5 to 8 as a table of their own. */
Table Written(const Compared& r)
{
    Table written(r.contrasts.rows, 4);
    for (int c = 1; c <= 4; ++c)
        for (int row = 1; row <= written.rows; ++row)
            written.cells[written.Position(row, c)] = r.contrasts(row, kWritten[At(c)]);
    return written;
}

/** Four categories whose six differences fall along the first ranks; every variance is 1. */
Layout FourMeans(const Vector& differences)
{
    Layout layout{.k = 4, .df = 20};
    const int pairs[][2] = {{1, 4}, {1, 3}, {1, 2}, {2, 4}, {2, 3}, {3, 4}};
    for (size_t i = 0; i < differences.size(); ++i) {
        const auto& [a, b] = pairs[i];
        layout.contrasts.push_back({-differences[i], 1.0, a, b, a, b});
    }
    layout.sizes = {5, 6, 7, 8};
    layout.variances = {1, 2, 3, 4};
    return layout;
}

bool IsUntested(const Compared& r, int row)
{
    return r.contrasts(row, kContrastCritical) == kMissing && r.contrasts(row, kContrastP) == kMissing &&
           r.contrasts(row, kContrastLevel) == kMissing;
}

TEST(MCATest, ReferenceLayouts)
{
    for (const Case& c : ReadCases("comparison_values.txt")) {
        if (c.name == "scheme") continue;
        for (const int procedure : kProcedures) {
            SCOPED_TRACE(c.name + ", procedure " + std::to_string(procedure));
            const std::string code = std::to_string(procedure);
            const Compared r = Compare(LayoutOf(c), procedure);
            // 1 - P of the studentized range has P's absolute error
            const bool complement = procedure == kTukey || procedure == kGamesHowell;
            const auto scale = [&](int, int column) { return complement && column == 3 ? 1E-3 : 0.0; };
            linear_test::ExpectTable(Written(r), c["test" + code], ("procedure " + code).c_str(), scale);
            const Integers verdicts = r.Verdicts();
            EXPECT_EQ(Vector(verdicts.begin(), verdicts.end()), c["verdict" + code].Numbers());
            const std::string& level = c["level" + code].cells[0];
            if (level == "kept") {
                EXPECT_TRUE(r.level.IsSentinel(0));
            } else {
                ExpectClose(r.level[0], std::stod(level), kPrinted);
            }
        }
    }
}

// Nitrogen in red clover (Steel and Torrie 1980, Principles and Procedures of Statistics, 24 degrees of freedom), on the
// scale of the range. Tables of the 5 % points: Harter 1960, "Tables of range and studentized range" and "Critical values
// for Duncan's new multiple range test".
TEST(MCATest, PublishedCriticalValues)
{
    Layout clover = LayoutOf(ReadCases("comparison_values.txt")[0]);
    for (Contrast& c : clover.contrasts)
        c.difference *= 100;  // every row significant, so every range is tested
    const struct
    {
        int procedure;
        Vector points;  // of 2, 3, ... means
    } tables[] = {{kTukey, {4.373, 4.373, 4.373, 4.373, 4.373}},
                  {kNewmanKeuls, {2.919, 3.532, 3.901, 4.166, 4.373}},
                  {kDuncan, {2.919, 3.066, 3.160, 3.226, 3.276}}};
    for (const auto& [procedure, points] : tables) {
        const Compared r = Compare(clover, procedure);
        for (int row = 1; row <= 15; ++row) {
            const Contrast& c = clover.contrasts[At(row)];
            EXPECT_NEAR(r.contrasts(row, kContrastCritical) * std::sqrt(2.0),
                        points[At(c.secondRank - c.firstRank)],
                        6E-4)
                << procedure << ", row " << row;
        }
    }
}

TEST(MCATest, RowsThatCannotBeTested)
{
    for (const int procedure : kProcedures) {
        SCOPED_TRACE(procedure);
        const bool stepwise = procedure >= kNewmanKeuls && procedure <= kRegwq;
        Layout layout = FourMeans({9, 8, 7});
        layout.contrasts[0].variance = 0;
        layout.contrasts[1].variance = -1;
        layout.contrasts[2].variance = 1E-17;
        const Compared r = Compare(layout, procedure);
        EXPECT_EQ(r.Verdicts(), (Integers{-1, -1, stepwise ? -1 : 1}));
        for (int row = 1; row <= 2; ++row) {
            for (const int column : {kContrastStandardised, kContrastCritical, kContrastP})
                EXPECT_EQ(r.contrasts(row, column), kMissing);
            EXPECT_EQ(r.contrasts(row, kContrastLevel) == kMissing, stepwise);
        }
        EXPECT_EQ(IsUntested(r, 3), stepwise);
        EXPECT_LT(r.contrasts(3, kContrastStandardised), -2.0);
    }
}

TEST(MCATest, HarmonicVariance)
{
    Layout layout = FourMeans({9, 8});
    layout.contrasts[1].variance = 0;
    layout.harmonic = 4;
    for (const int flag : {0, 1, -1}) {
        layout.useHarmonic = static_cast<short>(flag);
        const Compared r = Compare(layout, kFisherLsd);
        EXPECT_EQ(r.contrasts(1, kContrastStandardised), flag == -1 ? -4.5 : -9.0);
        EXPECT_EQ(r.verdicts[1], -1);
    }
}

TEST(MCATest, OtherCodesCompareWithWhatStandsThere)
{
    const Layout layout = FourMeans({3, 3});
    for (const int procedure : {8, 0, 12, -1}) {
        Compared r(layout);
        r.contrasts.cells[r.contrasts.Position(1, kContrastCritical)] = 3.0;
        r.contrasts.cells[r.contrasts.Position(2, kContrastCritical)] = 2.9;
        RunInto(r, layout, procedure);
        EXPECT_EQ(r.Verdicts(), (Integers{0, 1}));
        EXPECT_EQ(r.contrasts(1, kContrastStandardised), -3.0);
        EXPECT_EQ(r.contrasts(1, kContrastCritical), 3.0);
        EXPECT_TRUE(r.contrasts.Kept(1, kContrastP) && r.contrasts.Kept(1, kContrastLevel));
    }
}

TEST(MCATest, SingleObservationKeepsTheRowBefore)
{
    Layout layout{.k = 3, .df = 8};
    layout.sizes = {5, 4, 1};
    layout.variances = {2, 3, 100};
    layout.contrasts = {{-2, 1, 1, 3, 1, 2}, {-3, 1, 1, 2, 1, 3}};
    const double standardError = std::sqrt(2.0 / 5 + 3.0 / 4);
    for (const int procedure : kUnpooled) {
        SCOPED_TRACE(procedure);
        const Compared r = Compare(layout, procedure);
        ExpectClose(r.contrasts(1, kContrastStandardised), -2 / standardError, kRoundoff);
        ExpectClose(r.contrasts(2, kContrastStandardised), -3 / standardError, kRoundoff);
        if (procedure != kDunnettC) {
            EXPECT_EQ(r.contrasts(2, kContrastCritical), r.contrasts(1, kContrastCritical));
        }

        Layout turned = layout;  // nothing to keep yet: a division by 0
        std::swap(turned.contrasts[0], turned.contrasts[1]);
        const Compared first = Compare(turned, procedure);
        EXPECT_EQ(first.contrasts(1, kContrastStandardised), -HUGE_VAL);
        EXPECT_EQ(first.verdicts[0], 1);
        EXPECT_EQ(first.contrasts(2, kContrastStandardised), r.contrasts(1, kContrastStandardised));
    }
}

// Row (1, 2) spans two means and takes the thresholds of the row behind it, (2, 4), which spans three.
TEST(MCATest, RegwqCriticalValuesNeverRise)
{
    Layout layout = FourMeans({90, 80, 70, 60, 50, 40});
    const Compared falling = Compare(layout, kRegwq);
    for (const int column : {kContrastCritical, kContrastLevel}) {
        EXPECT_EQ(falling.contrasts(3, column), falling.contrasts(4, column));
        EXPECT_EQ(falling.contrasts(2, column), falling.contrasts(4, column));
        EXPECT_EQ(falling.contrasts(5, column), falling.contrasts(6, column));
    }
    EXPECT_GT(falling.contrasts(1, kContrastCritical), falling.contrasts(2, kContrastCritical));
    EXPECT_GT(falling.contrasts(4, kContrastCritical), falling.contrasts(5, kContrastCritical));
    EXPECT_EQ(falling.contrasts(1, kContrastLevel), 0.05);
    EXPECT_EQ(falling.contrasts(4, kContrastLevel), 0.05);
    ExpectClose(falling.contrasts(6, kContrastLevel),
                1 - std::sqrt(0.95),
                kRoundoff * 100);  // cancels in 1 - ...

    // The rows as they come: with (1, 2), (1, 3), (1, 4) the first two take those of four means.
    std::swap(layout.contrasts[0], layout.contrasts[2]);
    const Compared rising = Compare(layout, kRegwq);
    for (int row = 1; row <= 3; ++row)
        EXPECT_EQ(rising.contrasts(row, kContrastCritical), falling.contrasts(1, kContrastCritical));
}

// A variance that the pass takes for one and the preparation does not leaves zeros, and a level of 0 rejects nothing.
TEST(MCATest, RegwqPreparesVariancesAboveTheGuard)
{
    Layout layout = FourMeans({50});
    layout.contrasts[0].variance = 1E-12;
    const Compared r = Compare(layout, kRegwq);
    EXPECT_EQ(r.contrasts(1, kContrastCritical), 0.0);
    EXPECT_EQ(r.contrasts(1, kContrastLevel), 0.0);
    EXPECT_EQ(r.verdicts[0], 0);
}

TEST(MCATest, TheBarrierFollowsTheRange)
{
    constexpr double kNo = 0.1, kYes = 50;
    const struct
    {
        Vector differences;
        Integers untestable, verdicts, untested;  // rows
    } walks[] = {
        // (2, 4) is tested inside the non-significant (1, 4)
        {{kNo, kYes, kYes, kYes, kYes, kYes}, {}, {0, 0, 0, 1, 1, 1}, {2, 3}},
        // and (3, 4) inside (2, 4)
        {{kYes, kNo, kYes, kNo, kYes, kYes}, {}, {1, 0, 0, 0, 0, 1}, {3, 5}},
        {{kYes, kYes, kNo, kYes, kNo, kNo}, {}, {1, 1, 0, 1, 0, 0}, {}},
        // an untestable row inside the barrier leaves it at four means
        {{kNo, kYes, kYes, kYes, kYes, kYes}, {2}, {0, -1, 0, 1, 1, 1}, {2, 3}},
        // one that reaches it takes it down: (2, 3) is tested
        {{kYes, kYes, kNo, kYes, kYes, kYes}, {4}, {1, 1, 0, -1, 1, 1}, {4}},
        {{kYes, kNo, kYes, kYes, kYes, kYes}, {3, 4}, {1, 0, -1, -1, 1, 1}, {3, 4}},
    };
    for (const int procedure : kStepwise)
        for (size_t w = 0; w < std::size(walks); ++w) {
            SCOPED_TRACE(::testing::Message() << "procedure " << procedure << ", walk " << w);
            Layout layout = FourMeans(walks[w].differences);
            for (const int row : walks[w].untestable)
                layout.contrasts[At(row)].variance = 0;
            const Compared r = Compare(layout, procedure);
            EXPECT_EQ(r.Verdicts(), walks[w].verdicts);
            for (int row = 1; row <= 6; ++row)
                EXPECT_EQ(IsUntested(r, row),
                          std::count(walks[w].untested.begin(), walks[w].untested.end(), row))
                    << row;
        }
}

// With two categories every procedure is Student's or Welch's t test.
TEST(MCATest, TwoCategoriesAreOneTTest)
{
    Layout layout{.k = 2, .df = 9};
    layout.sizes = {4, 7};
    layout.variances = {2, 5};
    layout.contrasts = {{-3, 1.7, 1, 2, 2, 1}};
    const Compared lsd = Compare(layout, kFisherLsd), games = Compare(layout, kGamesHowell);
    for (const int procedure : kProcedures) {
        if (procedure == kDunnettC) continue;
        SCOPED_TRACE(procedure);
        const Compared r = Compare(layout, procedure), &expected = procedure < kGamesHowell ? lsd : games;
        for (const int column : {kContrastStandardised, kContrastCritical, kContrastP})
            ExpectClose(r.contrasts(1, column), expected.contrasts(1, column), kIterative);
        EXPECT_EQ(r.Verdicts(), expected.Verdicts());
    }
}

// Other identifiers, and another order of the rows, give the same report.
TEST(MCATest, PermutedCategories)
{
    const Layout layout = LayoutOf(ReadCases("comparison_values.txt")[1]);
    const Integers renamed{4, 6, 1, 5, 2, 3};
    Layout other = layout;
    for (int id = 1; id <= layout.k; ++id) {
        other.sizes[At(renamed[At(id)])] = layout.sizes[At(id)];
        other.variances[At(renamed[At(id)])] = layout.variances[At(id)];
    }
    for (Contrast& c : other.contrasts) {
        c.firstId = renamed[At(c.firstId)];
        c.secondId = renamed[At(c.secondId)];
    }
    Layout reversed = layout;
    std::reverse(reversed.contrasts.begin(), reversed.contrasts.end());
    for (const int procedure : kProcedures) {
        SCOPED_TRACE(procedure);
        const Compared r = Compare(layout, procedure), same = Compare(other, procedure);
        EXPECT_EQ(r.Verdicts(), same.Verdicts());
        for (const int column : kWritten)
            EXPECT_EQ(r.contrasts.Column(column), same.contrasts.Column(column));
        if (procedure >= kNewmanKeuls && procedure <= kRegwq) continue;
        Vector column = Compare(reversed, procedure).contrasts.Column(kContrastCritical);
        std::reverse(column.begin(), column.end());
        EXPECT_EQ(r.contrasts.Column(kContrastCritical), column);
    }
}

TEST(MCATest, NativeTableOfFewerRows)
{
    matrix<double> groups(2, 1, 5.0), contrasts(1, 10, 1.0);
    matrix<int> verdicts(3, 1, 7);
    contrasts.vbset(1, kContrastDifference, 50.0);
    cMCATest(2, &groups, &groups, 0.0, 0, &contrasts, 3, kFisherLsd, 8.0, 0.05, nullptr, &verdicts);
    EXPECT_EQ(verdicts.vbget(1), 1);
    EXPECT_EQ(verdicts.vbget(2), 7);
}

}  // namespace
}  // namespace comparison_test
