/** Which categories a column stands for, and the removed ones. */
#include <gtest/gtest.h>

#include "comparisons/category_involved.h"
#include "comparisons/identify_removed.h"
#include "means_fixture.h"

namespace comparisons_test {
namespace {

/** Variables 1 quantitative, 2, 3, 4 qualitative of 2, 3 and 2 categories; factors 5 = (2, 3, 4), 6 = (4, 2), 7 = (1, 3),
 * with the columns 1 | 2 3 | 4 5 6 | 7 8 | 9..20 | 21..24 | 25 26 27. */
struct Factors
{
    int p = 27;
    Integers type{1, 2, 2, 2, 4, 4, 5}, active{1, 1, 1, 1, 1, 1, 1}, nbVars{1, 1, 1, 1, 3, 2, 2},
        nbSub{1, 2, 3, 2, 12, 4, 3}, listVars{1, 2, 3, 4, 2, 4, 1, 0, 0, 0, 0, 3, 2, 3, 0, 0, 0, 0, 4, 0, 0},
        parents;

    Factors()
    {
        for (int f = 1; f <= 7; ++f)
            parents.insert(parents.end(), static_cast<size_t>(nbSub[At(f)]), f);
    }
};

TEST(CategoryInvolved, ComparesTheDigitsOfSharedVariables)
{
    Factors t;
    const auto view = [](Integers& v, int rows, int cols = 1) {
        return matrix<int>(rows, cols, v.data(), true);
    };
    matrix<int> type = view(t.type, 7), counts = view(t.nbSub, 7), list = view(t.listVars, 7, 3),
                number = view(t.nbVars, 7), parents = view(t.parents, t.p);
    const struct
    {
        int column1, factor1, column2, factor2, involved;
    } cases[] = {
        {9, 5, 2, 2, -1},    // cell (1, 1, 1) and category 1 of variable 2
        {14, 5, 2, 2, -1},   // (1, 3, 2)
        {15, 5, 2, 2, 0},    // (2, 1, 1)
        {15, 5, 3, 2, -1},   //
        {18, 5, 5, 3, -1},   // (2, 2, 2)
        {18, 5, 8, 4, -1},   //
        {18, 5, 7, 4, 0},    //
        {18, 5, 24, 6, -1},  // (2, 2, 2) and cell (2, 2) of variables 4 and 2
        {18, 5, 22, 6, 0},   // cell (1, 2): variable 4 differs
        {10, 5, 23, 6, -1},  // (1, 1, 2) and (2, 1)
        {26, 7, 12, 5, -1},  // category 2 of variable 3 with (1, 2, 2)
        {26, 7, 14, 5, 0},   //
        {26, 7, 1, 1, -1},   // the quantitative variable has one category
        {2, 2, 4, 3, 0},     // nothing shared
        {25, 7, 22, 6, 0},   //
        {5, 3, 5, 3, -1},    // the column itself
        {1, 99, 1, 1, 0},    // no such factor
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(::testing::Message() << c.column1 << " " << c.column2);
        EXPECT_EQ(::CategoryInvolved(c.column1,
                                     c.factor1,
                                     c.column2,
                                     c.factor2,
                                     t.p,
                                     7,
                                     3,
                                     &type,
                                     &counts,
                                     &list,
                                     &number,
                                     &parents),
                  c.involved);
        EXPECT_EQ(::CategoryInvolved(c.column2,
                                     c.factor2,
                                     c.column1,
                                     c.factor1,
                                     t.p,
                                     7,
                                     3,
                                     &type,
                                     &counts,
                                     &list,
                                     &number,
                                     &parents),
                  c.involved);
    }
}

enum class Order
{
    kParents,
    kTypes
};

/** The columns flagged, in order. */
Integers Flagged(Factors t, Order form, const Integers& removed, const Integers& cleaned = {})
{
    Integers states(static_cast<size_t>(t.p), 0), after(static_cast<size_t>(t.p), kDropped);
    for (const int j : removed)
        states[At(j)] = korvenrg::linear::kConstant;
    for (const int j : cleaned)
        after[At(j)] = korvenrg::linear::kConstant;
    states[0] = kRefused;
    GuardedArray<int> flags(static_cast<size_t>(t.p));
    if (form == Order::kParents)
        Cpp_identifyRemoved(t.active.data(),
                            7,
                            t.p,
                            3,
                            t.parents.data(),
                            t.listVars.data(),
                            t.nbSub.data(),
                            states.data(),
                            flags.data());
    else
        Cpp_identifyRemoved2(t.active.data(),
                             7,
                             t.p,
                             3,
                             t.type.data(),
                             t.listVars.data(),
                             t.nbSub.data(),
                             states.data(),
                             after.data(),
                             flags.data());
    EXPECT_TRUE(flags.IntactGuards());
    Integers flagged;
    for (int j = 1; j <= t.p; ++j) {
        if (!flags.IsSentinel(At(j))) {
            EXPECT_EQ(flags[At(j)], 1);
            flagged.push_back(j);
        }
    }
    return flagged;
}

TEST(IdentifyRemoved, FlagsTheColumnAndTheCategoriesBehindIt)
{
    const Factors t;
    for (const Order form : {Order::kParents, Order::kTypes}) {
        EXPECT_EQ(Flagged(t, form, {}), Integers{});
        EXPECT_EQ(Flagged(t, form, {9}), (Integers{2, 4, 7, 9}));
        EXPECT_EQ(Flagged(t, form, {17}), (Integers{3, 5, 7, 17}));  // (2, 2, 1)
        EXPECT_EQ(Flagged(t, form, {22}), (Integers{3, 7, 22}));     // variable 4 first: (1, 2)
        EXPECT_EQ(Flagged(t, form, {27}), (Integers{6, 27}));        // not the quantitative variable
        EXPECT_EQ(Flagged(t, form, {5}), Integers{5});               // a main effect
        EXPECT_EQ(Flagged(t, form, {14, 27}), (Integers{2, 6, 8, 14, 27}));
    }
    EXPECT_EQ(Flagged(t, Order::kParents, {}, {9}), Integers{});
    EXPECT_EQ(Flagged(t, Order::kTypes, {27}, {9}), (Integers{2, 4, 6, 7, 9, 27}));
}

TEST(IdentifyRemoved, AMainEffectOutsideTheTable)
{
    Factors t;  // variable 2 has categories and no columns
    t.active[1] = 0;
    t.p = 25;
    t.parents.erase(t.parents.begin() + 1, t.parents.begin() + 3);
    for (const Order form : {Order::kParents, Order::kTypes}) {
        EXPECT_EQ(Flagged(t, form, {15}), (Integers{3, 5, 15}));  // (2, 2, 1)
        EXPECT_EQ(Flagged(t, form, {20}), (Integers{5, 20}));     // (1, 2)
    }
    t.active = Integers(7, 0);
    EXPECT_EQ(Flagged(t, Order::kTypes, {15}), Integers{15});
    t.nbSub = Integers(7, -3);
    t.listVars = Integers(21, 77);
    for (const Order form : {Order::kParents, Order::kTypes})
        EXPECT_EQ(Flagged(t, form, {15}), Integers{15});
}

}  // namespace
}  // namespace comparisons_test
