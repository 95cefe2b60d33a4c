#include "kernel/linalg/letter_groups.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <functional>
#include <random>
#include <set>
#include <string>
#include <vector>

#include "core/limits.h"

namespace {

using korvenrg::kFalse;
using korvenrg::kTrue;

constexpr int kID1 = 4;
constexpr int kID2 = 2;

/** A call with p categories; verdict(a, b) for identifiers a < b fills the contrasts, listed as (b, a) in two of the
 * four columns. */
struct Grouping
{
    int p;
    matrix<double> means;
    matrix<double> contrasts;
    matrix<int> signif;
    matrix<std::wstring> letters;
    matrix<double> ranks;
    int groups = -1;

    template <typename Verdict>
    Grouping(int count, const Verdict& verdict)
        : p(count),
          means(count, 2),
          contrasts(count * (count - 1) / 2, 4, 1.0),
          signif(count * (count - 1) / 2, 1),
          letters(count, 256, L"old"),
          ranks(count, 1)
    {
        int k = 0;
        for (int a = 1; a <= p; ++a) {
            ranks.vbset(a, a);
            means.vbset(a, 1, a);
            means.vbset(a, 2, 100 + a);
            for (int b = a + 1; b <= p; ++b) {
                k += 1;
                contrasts.vbset(k, kID1, b);
                contrasts.vbset(k, kID2, a);
                signif.vbset(k, verdict(a, b));
            }
        }
    }

    short Run(short sort, short down)
    {
        return BuildGroupingForDiffs(&means,
                                     2,
                                     &contrasts,
                                     p,
                                     &signif,
                                     &letters,
                                     &groups,
                                     &ranks,
                                     kID1,
                                     kID2,
                                     &sort,
                                     down);
    }

    std::wstring Of(int row) const
    {
        std::wstring text;
        for (int g = 1; g <= 256; ++g) {
            text += letters.vbget(row, g);
        }
        return text;
    }
};

/** The sets of rows without a significant pair that no row can join, by trying all sets; row 1 is the highest bit,
 * so that the set with the first rows is the largest number. */
template <typename Verdict>
std::set<std::uint32_t, std::greater<>> GroupsByBruteForce(int p, const Verdict& verdict)
{
    const auto fits = [&](std::uint32_t set) {
        for (int a = 1; a <= p; ++a)
            for (int b = a + 1; b <= p; ++b)
                if ((set >> (p - a) & 1U) != 0 && (set >> (p - b) & 1U) != 0 && verdict(a, b) != 0)
                    return false;
        return true;
    };
    std::set<std::uint32_t, std::greater<>> groups;
    for (std::uint32_t set = 1; set < 1U << p; ++set) {
        bool largest = fits(set);
        for (int a = 0; a < p && largest; ++a)
            largest = (set >> a & 1U) != 0 || !fits(set | 1U << a);
        if (largest) groups.insert(set);
    }
    return groups;
}

// Random verdicts of 1 to 9 categories: the groups are those of the brute force, in the order of the rows; so two rows
// share a letter exactly when their difference is not significant.
TEST(LetterGroups, AreTheLargestSetsWithoutASignificantPair)
{
    std::mt19937 generator(20260);
    for (int table = 1; table <= 300; ++table) {
        const int p = 1 + table % 9;
        std::vector<int> cells(100);
        for (int& cell : cells)
            cell = static_cast<int>(generator() % 16) < table % 17 ? 1 : 0;
        const auto verdict = [&](int a, int b) { return cells[static_cast<std::size_t>(10 * a + b)]; };
        Grouping g(p, verdict);
        ASSERT_EQ(g.Run(kFalse, kFalse), kTrue);
        const auto expected = GroupsByBruteForce(p, verdict);
        ASSERT_EQ(g.groups, static_cast<int>(expected.size())) << "table " << table;
        int column = 0;
        for (const std::uint32_t set : expected) {
            ++column;
            for (int a = 1; a <= p; ++a)
                EXPECT_EQ(g.letters.vbget(a, column),
                          (set >> (p - a) & 1U) != 0 ? korvenrg::linalg::GroupLetters(column) : L"")
                    << "table " << table;
        }
    }
}

// 12 groups at the end; splitting pair by pair would pass through 2^11.
TEST(LetterGroups, ManySetsOnTheWayDoNotMatter)
{
    Grouping g(22, [](int a, int b) { return a > 11 || b == a + 11 ? 1 : 0; });
    EXPECT_EQ(g.Run(kFalse, kFalse), kTrue);
    EXPECT_EQ(g.groups, 12);
    EXPECT_EQ(g.Of(1), L"ABCDEFGHIJK");
    EXPECT_EQ(g.Of(12), L"L");
}

// Rows differ from 31 on: the groups are the windows of 31 rows, in order.
TEST(LetterGroups, WindowsOfManyRows)
{
    Grouping g(150, [](int a, int b) { return b - a >= 31 ? 1 : 0; });
    ASSERT_EQ(g.Run(kFalse, kFalse), kTrue);
    ASSERT_EQ(g.groups, 120);
    for (int group = 1; group <= g.groups; ++group)
        for (int row = 1; row <= 150; ++row)
            ASSERT_EQ(g.letters.vbget(row, group).empty(), row < group || row > group + 30)
                << group << ' ' << row;
}

TEST(LetterGroups, FollowTheSortedRows)
{
    const auto farApart = [](int a, int b) { return b - a >= 2 ? 1 : 0; };
    Grouping up(4, farApart);
    ASSERT_EQ(up.Run(kFalse, kFalse), kTrue);
    EXPECT_EQ(up.groups, 3);
    EXPECT_EQ(up.Of(1) + L"|" + up.Of(2) + L"|" + up.Of(3) + L"|" + up.Of(4), L"A|AB|BC|C");
    Grouping down(4, farApart);
    down.means.vbset(2, 1, 9.0);  // category 2 now has the largest mean
    ASSERT_EQ(down.Run(kTrue, kTrue), kTrue);
    EXPECT_EQ(down.ranks.vbget(1), 2.0);
    EXPECT_EQ(down.ranks.vbget(4), 1.0);
    EXPECT_EQ(down.means.vbget(1, 2), 102.0);
    EXPECT_EQ(down.Of(1) + L"|" + down.Of(2) + L"|" + down.Of(3) + L"|" + down.Of(4), L"AB|C|AC|B");
}

TEST(LetterGroups, NoGroupingWithAnUntestedPair)
{
    Grouping g(3, [](int a, int) { return a == 2 ? -1 : 0; });
    EXPECT_EQ(g.Run(kFalse, kFalse), kFalse);
    EXPECT_EQ(g.groups, 0);
    EXPECT_EQ(g.Of(1), L"");
    Grouping removed(3, [](int, int b) { return b == 3 ? -1 : 0; });
    removed.means.vbset(3, 1, korvenrg::kMissing);  // nor with that of a removed category
    EXPECT_EQ(removed.Run(kFalse, kFalse), kFalse);
    Grouping twice(3, [](int, int) { return 0; });
    twice.contrasts.vbset(3, kID1, 2);  // (2, 1) again: (3, 2) has no contrast
    twice.contrasts.vbset(3, kID2, 1);
    EXPECT_EQ(twice.Run(kFalse, kFalse), kFalse);
}

// m disjoint significant pairs give 2^m groups: 256 for 8 pairs, too many for 9, and far too many for 20.
TEST(LetterGroups, AtMost256Groups)
{
    const auto inPairs = [](int a, int b) { return a % 2 == 1 && b == a + 1 ? 1 : 0; };
    Grouping most(16, inPairs);
    EXPECT_EQ(most.Run(kFalse, kFalse), kTrue);
    EXPECT_EQ(most.groups, 256);
    EXPECT_EQ(most.letters.vbget(16, 256), L"IV");
    for (const int p : {18, 40}) {
        Grouping tooMany(p, inPairs);
        EXPECT_EQ(tooMany.Run(kFalse, kFalse), kFalse);
        EXPECT_EQ(tooMany.groups, 0);
    }
}

TEST(LetterGroups, NamesBeyondZ)
{
    const std::pair<int, const wchar_t*> names[] =
        {{1, L"A"}, {26, L"Z"}, {27, L"AA"}, {52, L"AZ"}, {53, L"BA"}, {702, L"ZZ"}, {703, L"AAA"}};
    for (const auto& [number, name] : names) {
        EXPECT_EQ(korvenrg::linalg::GroupLetters(number), name);
    }
}

}  // namespace
