#include "kernel/linalg/letter_groups.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <vector>

#include "core/limits.h"

namespace {

using korvenrg::kFalse;
using korvenrg::kTrue;

/** A call with p categories; verdict(a, b) for identifiers a < b fills the contrasts, listed as (b, a). */
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
          contrasts(count * (count - 1) / 2, 2),
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
                contrasts.vbset(k, 1, b);
                contrasts.vbset(k, 2, a);
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
                                     1,
                                     2,
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

bool ShareALetter(const Grouping& g, int i, int j)
{
    for (int k = 1; k <= g.groups; ++k) {
        if (!g.letters.vbget(i, k).empty() && !g.letters.vbget(j, k).empty()) return true;
    }
    return false;
}

// The pairwise verdicts come back from the letters, and no group lies inside another, for 60 verdict tables.
TEST(LetterGroups, LettersSayExactlyTheVerdicts)
{
    for (std::uint32_t table = 1; table <= 60; ++table) {
        const auto verdict = [&](int a, int b) {
            const auto mixed = (table * 40503U + static_cast<std::uint32_t>(a * 31 + b * 7)) * 2654435761U;
            return static_cast<int>(mixed >> 28) < static_cast<int>(table % 16) ? 1 : 0;
        };
        Grouping g(8, verdict);
        ASSERT_EQ(g.Run(kFalse, kFalse), kTrue);
        for (int i = 1; i <= 8; ++i) {
            for (int j = i + 1; j <= 8; ++j) {
                EXPECT_EQ(ShareALetter(g, i, j), verdict(i, j) == 0) << table << ": " << i << ", " << j;
            }
        }
        for (int a = 1; a <= g.groups; ++a) {
            for (int b = 1; b <= g.groups; ++b) {
                int onlyInA = 0;
                for (int i = 1; i <= 8; ++i) {
                    if (!g.letters.vbget(i, a).empty() && g.letters.vbget(i, b).empty()) ++onlyInA;
                }
                EXPECT_TRUE(a == b || onlyInA > 0) << table << ": group " << a << " lies in " << b;
            }
        }
    }
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
    g.means.vbset(3, 1, korvenrg::kMissing);  // the category without a mean takes its contrasts with it
    EXPECT_EQ(g.Run(kFalse, kFalse), kTrue);
    EXPECT_EQ(g.Of(1) + L"|" + g.Of(2) + L"|" + g.Of(3), L"A|A|");
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
