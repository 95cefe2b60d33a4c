/** The doors beside MCATest: a control, plain contrasts, the false discovery rate, single comparisons, letter groups. */
#include <gtest/gtest.h>

#include <cmath>
#include <functional>
#include <limits>

#include "comparisons/comparison_run.h"
#include "comparisons/scalar_tests.h"
#include "contrast_fixture.h"

namespace comparison_test {
namespace {

Layout ReferenceLayout(size_t number)
{
    return LayoutOf(ReadCases("comparison_values.txt")[number]);
}

// ---- a control ----

struct Controlled
{
    Table contrasts, table;
    GuardedArray<int> verdicts;
};

/** Runs the door on a table whose column 5 is filled as the means' doors do. */
Controlled CompareWithControl(const Layout& layout, Vector factors, int tail)
{
    const int rows = static_cast<int>(factors.size());
    Controlled r{layout.ContrastTable(), Table(rows, kControlCols), GuardedArray<int>(factors.size())};
    for (int row = 1; row <= layout.Rows(); ++row) {
        const Contrast& c = layout.contrasts[At(row)];
        r.contrasts.cells[r.contrasts.Position(row, kContrastStandardised)] =
            c.difference / std::sqrt(c.variance);
    }
    const Vector before = linear_test::CellsOf(r.contrasts);
    MCBTest(layout.k,
            layout.control,
            rows,
            factors.data(),
            r.contrasts.cells.data(),
            layout.Rows(),
            layout.df,
            layout.alpha,
            r.table.cells.data(),
            r.verdicts.data(),
            tail);
    EXPECT_EQ(linear_test::CellsOf(r.contrasts), before);
    EXPECT_TRUE(r.contrasts.cells.IntactGuards() && r.table.cells.IntactGuards() &&
                r.verdicts.IntactGuards());
    return r;
}

TEST(MCBTest, ReferenceLayouts)
{
    for (const Case& c : ReadCases("comparison_values.txt")) {
        if (c.name == "scheme") continue;
        for (const int tail : {0, -1, 1}) {
            SCOPED_TRACE(c.name + ", tail " + std::to_string(tail));
            const Controlled r = CompareWithControl(LayoutOf(c), c["factors"].Numbers(), tail);
            linear_test::ExpectTable(r.table, c["control" + std::to_string(tail)], "control");
            for (size_t i = 0; i < r.verdicts.size(); ++i)
                EXPECT_EQ(r.verdicts[i], c["control_verdict" + std::to_string(tail)].cells[i] == "1");
        }
    }
}

// Dunnett's tables for 10 degrees of freedom, 5 %, one to four treatments: 1955 one-sided, 1964 two-sided.
TEST(MCBTest, PublishedCriticalValues)
{
    const double oneSided[] = {1.81, 2.15, 2.34, 2.47}, twoSided[] = {2.23, 2.57, 2.76, 2.89};
    for (int others = 1; others <= 4; ++others) {
        Layout layout{.k = others + 1, .df = 10};
        layout.contrasts = {{-1, 1, 1, 2, 1, 2}};
        const Vector factors(static_cast<size_t>(others), std::sqrt(0.5));
        EXPECT_NEAR(CompareWithControl(layout, factors, 0).table(1, kControlCritical),
                    twoSided[others - 1],
                    5E-3);
        EXPECT_NEAR(CompareWithControl(layout, factors, 1).table(1, kControlCritical),
                    oneSided[others - 1],
                    5E-3);
    }
}

TEST(MCBTest, TinyVariance)
{
    Layout layout{.k = 4, .df = 10};
    layout.contrasts = {{-1, 0, 1, 2, 1, 2},
                        {-1, 1E-17, 1, 3, 3, 1},
                        {-1, 1E-17, 2, 3, 3, 2},
                        {-9, 1, 1, 4, 1, 4}};
    const struct
    {
        int tail, tiny, last;
    } expected[] = {{0, 1, 1}, {-1, 0, 1}, {1, 0, 0}};
    for (const auto& [tail, tiny, last] : expected) {
        SCOPED_TRACE(tail);
        const Controlled r = CompareWithControl(layout, {0.7, 0.7, 0.7}, tail);
        EXPECT_EQ(r.verdicts[0], -1);
        EXPECT_EQ(r.verdicts[1], tiny);
        EXPECT_EQ(r.verdicts[2], last);
        for (const int row : {1, 2})
            for (int column = kControlDifference; column <= kControlP; ++column)
                EXPECT_EQ(r.table(row, column), kMissing);
        EXPECT_EQ(r.table(2, kControlId), 1.0);
        EXPECT_EQ(r.table(2, kControlOtherId), 3.0);
    }
}

// Codes beyond -1 are the upper tail in the verdict, and the sign of the code in the critical value and the p-value.
TEST(MCBTest, OtherTailCodes)
{
    Layout layout{.k = 3, .df = 10};
    layout.contrasts = {{-1, 1, 1, 2, 1, 2}, {-9, 1, 1, 3, 1, 3}, {9, 1, 1, 3, 1, 3}};
    const Controlled upper = CompareWithControl(layout, {0.7, 0.7}, 1),
                     two = CompareWithControl(layout, {0.7, 0.7}, 2),
                     lower = CompareWithControl(layout, {0.7, 0.7}, -1),
                     beyond = CompareWithControl(layout, {0.7, 0.7}, -2);
    EXPECT_EQ(linear_test::CellsOf(two.table), linear_test::CellsOf(upper.table));
    EXPECT_EQ(linear_test::CellsOf(beyond.table), linear_test::CellsOf(lower.table));
    EXPECT_EQ(beyond.verdicts[0], 1);  // -1 is above the critical value of about -2.2
    EXPECT_EQ(lower.verdicts[0], 0);
    EXPECT_EQ(beyond.verdicts[1], 0);
    // a third contrast of the control has no row, and does not spill into the second column
    EXPECT_EQ(upper.table(1, kControlStandardised), -1.0);
}

TEST(MCBTest, TheCriticalValueItselfIsNotSignificant)
{
    for (const int tail : {0, -1, 1}) {
        Layout layout{.k = 3, .df = 10};
        layout.contrasts = {{1, 1, 1, 2, 1, 2}, {1, 1, 1, 3, 1, 3}};
        layout.contrasts[0].difference =
            CompareWithControl(layout, {0.7, 0.7}, tail).table(1, kControlCritical);
        layout.contrasts[1].difference =
            std::nextafter(layout.contrasts[0].difference, tail < 0 ? -9.0 : 9.0);
        const Controlled r = CompareWithControl(layout, {0.7, 0.7}, tail);
        EXPECT_EQ(r.verdicts[0], 0) << tail;
        EXPECT_EQ(r.verdicts[1], 1) << tail;
    }
}

// ---- plain contrasts ----

TEST(TestContrasts, StudentsTest)
{
    const Layout layout = ReferenceLayout(1);
    const Compared lsd = Compare(layout, kFisherLsd);
    Table table(layout.Rows() + 2, kTestedContrastCols);
    for (int row = 1; row <= table.rows; ++row) {
        const bool tiny = row > layout.Rows();
        const Contrast c = tiny ? Contrast{1, row == table.rows ? korvenrg::kEps : -1.0, 0, 0, 0, 0}
                                : layout.contrasts[At(row)];
        table.cells[table.Position(row, kContrastDifference)] = c.difference;
        table.cells[table.Position(row, kContrastVariance)] = c.variance;
    }
    GuardedArray<int> verdicts(static_cast<size_t>(table.rows));
    TestContrasts(table.rows, layout.df, table.cells.data(), layout.alpha, verdicts.data());
    EXPECT_TRUE(table.cells.IntactGuards() && verdicts.IntactGuards());
    for (int row = 1; row <= table.rows; ++row) {
        const bool tested = row <= layout.Rows();
        EXPECT_EQ(table(row, kContrastStandardised),
                  tested ? lsd.contrasts(row, kContrastStandardised) : kMissing);
        ExpectClose(table(row, kTestedContrastP),
                    tested ? lsd.contrasts(row, kContrastP) : kMissing,
                    kRoundoff);
        EXPECT_EQ(verdicts[At(row)], tested ? lsd.verdicts[At(row)] : 0);
        for (const int column : {3, 4, 7})
            EXPECT_TRUE(table.Kept(row, column));
    }
}

// ---- false discovery rate ----

struct Discovered
{
    Vector adjusted;
    Integers rejected;
};

Discovered Discover(const Vector& p, int column = kContrastP, double alpha = 0.05)
{
    Table table(static_cast<int>(p.size()), kContrastCols);
    for (int row = 1; row <= table.rows; ++row)
        table.cells[table.Position(row, column)] = p[At(row)];
    GuardedArray<int> rejected(p.size());
    Cpp_BenjaminiHochBerg(table.cells.data(), column, table.rows, alpha, rejected.data());
    EXPECT_TRUE(table.cells.IntactGuards() && rejected.IntactGuards());
    for (int row = 1; row <= table.rows; ++row)
        for (int c = 1; c <= kContrastCols; ++c)
            EXPECT_EQ(table.Kept(row, c), c != column);
    return {table.Column(column), Integers(rejected.data(), rejected.data() + p.size())};
}

TEST(BenjaminiHochberg, ReferenceLayouts)
{
    for (const Case& c : ReadCases("comparison_values.txt")) {
        if (c.name == "scheme") continue;
        const Compared lsd = Compare(LayoutOf(c), kFisherLsd);
        const Discovered r = Discover(lsd.contrasts.Column(kContrastP));
        for (int row = 1; row <= c["fdr"].rows; ++row) {
            ExpectClose(r.adjusted[At(row)], c["fdr"].Column(1)[At(row)], kPrinted);
            EXPECT_EQ(r.rejected[At(row)], c["fdr"].Column(2)[At(row)]);
        }
    }
}

TEST(BenjaminiHochberg, FirstFailureEndsTheWalk)
{
    // 0.03 fails at 2 x 0.05 / 4; 0.032 would pass at 3 x 0.05 / 4, and the textbook would reject three
    const Discovered stopped = Discover({0.9, 0.032, 0.001, 0.03}, 2);
    EXPECT_EQ(stopped.rejected, (Integers{0, 0, 1, 0}));
    const Vector adjusted{0.9, 0.032 * 4 / 3, 0.004, 0.032 * 4 / 3};
    for (size_t i = 0; i < 4; ++i)
        ExpectClose(stopped.adjusted[i], adjusted[i], kRoundoff);
    // i alpha / p itself is rejected, and all can be
    EXPECT_EQ(Discover({0.05, 0.025}).rejected, (Integers{1, 1}));
    EXPECT_EQ(Discover({std::nextafter(0.05, 1), 0.025}).rejected, (Integers{0, 1}));
    EXPECT_EQ(Discover({0.7, 0.9, 1.0}).adjusted, Vector(3, 1.0));
    // a marker sorts first
    const Discovered marked = Discover({0.01, kMissing, 0.9});
    EXPECT_EQ(marked.rejected, (Integers{1, 1, 0}));
    EXPECT_TRUE(korvenrg::IsMissing(marked.adjusted[1]));
    EXPECT_EQ(marked.adjusted[0], 0.01 * 3 / 2);
}

// ---- single comparisons ----

struct Single
{
    GuardedArray<double> level{1}, critical{1}, p{1};
};

// A row of the driver is the single comparison.
TEST(SingleComparisons, AreTheRowsOfATable)
{
    const Layout layout = ReferenceLayout(0);
    const double k = layout.k, df = layout.df, alpha = layout.alpha;
    const std::function<void(Single&, double, double)> calls[] = {
        [&](Single& s, double, double t) {
            double oldDF = 0, oldk = 0, crit = 0;
            VB_MCATestTukey(df, k, t, alpha, s.critical.data(), s.p.data(), &oldDF, &oldk, &crit);
            EXPECT_EQ((Vector{oldDF, oldk, crit}), (Vector{df, k, s.critical[0]}));
        },
        [&](Single& s, double, double t) {
            double oldDF = 0, crit = 0;
            VB_MCATestFischerLSD(df, t, alpha, s.critical.data(), s.p.data(), &oldDF, &crit);
            EXPECT_EQ((Vector{oldDF, crit}), (Vector{df, s.critical[0]}));
        },
        [&](Single& s, double, double t) {
            double oldDF = 0, oldk = 0, crit = 0;
            VB_MCATestBonferroni(df,
                                 k,
                                 t,
                                 alpha,
                                 s.level.data(),
                                 s.critical.data(),
                                 s.p.data(),
                                 &oldDF,
                                 &oldk,
                                 &crit);
            EXPECT_EQ((Vector{oldDF, oldk, crit}), (Vector{df, k, s.critical[0]}));
        },
        [&](Single& s, double, double t) {
            VB_MCATestDunnSidak(df, k, t, alpha, s.level.data(), s.critical.data(), s.p.data());
        },
        [&](Single& s, double m, double t) {
            VB_MCATestNewmanKeuls(df, m, k, t, alpha, s.critical.data(), s.p.data());
        },
        [&](Single& s, double m, double t) {
            VB_MCATestDuncan(df, m, k, t, alpha, s.level.data(), s.critical.data(), s.p.data());
        }};
    for (int procedure = kTukey; procedure <= kDuncan; ++procedure) {
        const Compared table = Compare(layout, procedure);
        for (const int row : {1, 6, 10}) {  // tested by all
            SCOPED_TRACE(::testing::Message() << "procedure " << procedure << ", row " << row);
            const Contrast& c = layout.contrasts[At(row)];
            Single s;
            calls[procedure - 1](s,
                                 c.secondRank - c.firstRank + 1,
                                 -table.contrasts(row, kContrastStandardised));
            ExpectClose(s.critical[0], table.contrasts(row, kContrastCritical), kIterative);
            ExpectClose(s.p[0], table.contrasts(row, kContrastP), kIterative);
            const bool hasLevel = procedure == kBonferroni || procedure == kDunnSidak;
            EXPECT_EQ(s.level[0],
                      procedure == kDuncan ? table.contrasts(row, kContrastLevel)
                      : hasLevel           ? table.level[0]
                                           : SentinelOf<double>());
        }
    }
}

TEST(SingleComparisons, RegwqComputesOneHalf)
{
    for (const double m : {2.0, 4.0, 5.0, 6.0}) {
        Single quick, slow, keuls;
        VB_MCATestREGWQ(24, m, 6, 3.1, 0.05, -1, quick.level.data(), quick.critical.data(), quick.p.data());
        VB_MCATestREGWQ(24, m, 6, 3.1, 0.05, 1, slow.level.data(), slow.critical.data(), slow.p.data());
        EXPECT_TRUE(quick.p.IsSentinel(0) && slow.level.IsSentinel(0) && slow.critical.IsSentinel(0));
        ExpectClose(quick.level[0], m >= 5 ? 0.05 : 1 - std::pow(0.95, m / 6), 100 * kRoundoff);
        VB_MCATestNewmanKeuls(24, m, 6, 3.1, quick.level[0], keuls.critical.data(), keuls.p.data());
        EXPECT_EQ(quick.critical[0], keuls.critical[0]);
        EXPECT_EQ(slow.p[0], keuls.p[0]);
    }
}

TEST(SingleComparisons, TheMemoIsTrusted)
{
    double critical = 0, p = 0, level = 0;
    const struct
    {
        double df, means;
        bool hit;
    } memos[] = {{10, 4, true}, {10, 3, false}, {11, 4, false}};
    for (const auto& [df, means, hit] : memos) {
        double oldDF = df, oldk = means, crit = 77;
        VB_MCATestTukey(10, 4, 2, 0.05, &critical, &p, &oldDF, &oldk, &crit);
        EXPECT_EQ(critical == 77, hit);
        EXPECT_EQ((Vector{oldDF, oldk, crit}), (Vector{10, 4, critical}));
        oldDF = df, oldk = means, crit = 77;
        VB_MCATestBonferroni(10, 4, 2, 0.05, &level, &critical, &p, &oldDF, &oldk, &crit);
        EXPECT_EQ(critical == 77, hit);
        oldDF = df, crit = 77;
        VB_MCATestFischerLSD(10, 2, 0.05, &critical, &p, &oldDF, &crit);
        EXPECT_EQ(critical == 77, df == 10);
    }
    double oldDF = 10, oldk = 4, crit = 77;  // two categories have a memo of their own
    VB_MCATestTukey(10, 2, 2, 0.05, &critical, &p, &oldDF, &oldk, &crit);
    EXPECT_LT(critical, 3);
}

// p-values keep their digits where 1 - F has none left.
TEST(SingleComparisons, SmallP)
{
    double critical = 0, p = 0, oldDF = 0, crit = 0;
    VB_MCATestFischerLSD(3, 1E6, 0.05, &critical, &p, &oldDF, &crit);
    ExpectClose(p, 2.2053155816792323e-18, kIterative);  // R: 2 * pt(-1e6, 3)
}

TEST(SingleComparisons, DunnettC)
{
    double critical = 0, p = 0;
    MCATestDunnettC(5, 9, 0.4, 0.1, 2, 1.0, 0.05, &critical, &p);
    ExpectClose(critical, (2.7764451051977987 * 0.4 + 2.3060041350333704 * 0.1) / 0.5, kPrinted);
    EXPECT_EQ(p, kMissing);
    // the divisor is not quite sqrt(2)
    double tukey = 0, oldDF = 0, oldk = 0, crit = 0;
    MCATestDunnettC(5, 5, 0.3, 0.2, 4, 1.0, 0.05, &critical, &p);
    MCATestTukey(4, 4, 1.0, 0.05, &tukey, &p, &oldDF, &oldk, &crit);
    ExpectClose(tukey / critical, 1.4142135623731 / 1.4142135623730951, 1E-15);
    EXPECT_NE(tukey, critical);
}

TEST(SingleComparisons, BadArguments)
{
    constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
    for (const double m : {1.0, 7.0, -3.0, 1E300, kNaN}) {
        double critical = 0, p = 0;
        VB_MCATestNewmanKeuls(10, m, 6, 2, 0.05, &critical, &p);
        EXPECT_TRUE(std::isnan(critical) && std::isnan(p)) << m;
    }
}

// ---- letter groups ----

// The groups of Tukey's test in the textbook: 28.82 and 23.98; 23.98, 19.92 and 18.70; the last four.
TEST(Grouping, LettersOfTheCloverMeans)
{
    constexpr int kCategories = 6, kColumns = 256;
    const Layout layout = ReferenceLayout(0);
    const Compared tukey = Compare(layout, kTukey);
    Vector contrasts = linear_test::CellsOf(tukey.contrasts);
    Integers verdicts = tukey.Verdicts();
    Table means(kCategories, 2);
    GuardedArray<double> ranks(Vector{1, 2, 3, 4, 5, 6});
    const double byCategory[] =
        {28.82, 13.26, 14.64, 23.98, 19.92, 18.70};  // levels in the order of their texts
    for (int id = 1; id <= kCategories; ++id) {
        means.cells[means.Position(id, 1)] = byCategory[id - 1];
        means.cells[means.Position(id, 2)] = id;
    }
    linear_test::TextArray letters(kCategories * kColumns), none(kCategories * kColumns);
    GuardedArray<int> groups(1);
    VARIANT_BOOL sort = -1;
    const auto group = [&](linear_test::TextArray& into) {
        return Cpp_BuildGroupingForDiffs(means.cells.data(),
                                         2,
                                         contrasts.data(),
                                         kCategories,
                                         verdicts.data(),
                                         into.data(),
                                         groups.data(),
                                         ranks.data(),
                                         kContrastFirstId,
                                         kContrastSecondId,
                                         &sort,
                                         -1);
    };
    ASSERT_EQ(group(letters), -1);
    EXPECT_TRUE(letters.IntactGuards() && ranks.IntactGuards() && groups.IntactGuards() &&
                means.cells.IntactGuards());
    EXPECT_EQ(groups[0], 3);
    EXPECT_EQ(Vector(ranks.data(), ranks.data() + 6), (Vector{1, 4, 5, 6, 3, 2}));
    EXPECT_EQ(means.Column(1), (Vector{28.82, 23.98, 19.92, 18.70, 14.64, 13.26}));
    EXPECT_EQ(means.Column(2), (Vector{1, 4, 5, 6, 3, 2}));
    const wchar_t* expected[] = {L"AA    ", L" BBB  ", L"  CCCC"};
    const linear_test::Text texts = letters.Read(kCategories * kColumns);
    for (size_t cell = 0; cell < texts.size(); ++cell) {
        const size_t column = cell / kCategories, row = cell % kCategories;
        const bool member = column < 3 && expected[column][row] != L' ';
        EXPECT_EQ(texts[cell], member ? std::wstring(1, expected[column][row]) : L"");
    }
    verdicts[3] = -1;
    EXPECT_EQ(group(none), 0);
    EXPECT_EQ(groups[0], 0);
}

}  // namespace
}  // namespace comparison_test
