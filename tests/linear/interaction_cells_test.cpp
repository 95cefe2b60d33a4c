/** Factorials, nesting and empty cells of interactions, through their doors. */
#include "linear/interaction_cells.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include "design_fixture.h"

namespace linear_test {
namespace {

constexpr int kMost = std::numeric_limits<int>::max();

template <typename T>
std::vector<T> CellsOf(const GuardedArray<T>& array)
{
    EXPECT_TRUE(array.IntactGuards());
    std::vector<T> cells;
    for (size_t i = 0; i < array.size(); ++i)
        cells.push_back(array[i]);
    return cells;
}

TEST(Nuplets, FullFactorial)
{
    Integers sizes{2, 3, 2};
    GuardedArray<int> rows(36);
    EXPECT_EQ(NumberNuplets(3, sizes.data()), 12);
    GenerateNuplets(rows.data(), 3, sizes.data());
    EXPECT_EQ(CellsOf(rows), (Integers{1, 1, 1, 1, 1, 1, 2, 2, 2, 2, 2, 2, 1, 1, 2, 2, 3, 3,
                                       1, 1, 2, 2, 3, 3, 1, 2, 1, 2, 1, 2, 1, 2, 1, 2, 1, 2}));
}

TEST(Nuplets, SizesWithoutRows)
{
    struct
    {
        int n;
        Integers sizes;
        int product;
    } cases[] = {{0, {5}, 1}, {-3, {5}, 1}, {2, {4, 0}, 0}, {2, {4, -2}, -8}, {2, {65536, 65536}, kMost}};
    for (auto& c : cases) {
        GuardedArray<int> rows(4);
        EXPECT_EQ(NumberNuplets(c.n, c.sizes.data()), c.product);
        GenerateNuplets(rows.data(), c.n, c.sizes.data());
        EXPECT_TRUE(rows.IntactGuards() && rows.CountChanged() == 0u);
    }
}

TEST(Nesting, VariablesOfAFactor)
{
    // Variable 1 is quantitative; of the qualitative ones 2, 3, 4, that is 1, 2, 3, both 2 and 3 are nested in 1.
    const int kKept = SentinelOf<int>();
    Integers lists{1, 2, 3, 3, 4, 0, 0, 0, 2, 3}, nested{0, 1, 1, 0, 0, 0, 0, 0, 0};
    struct
    {
        int factor;
        short found;
        Integers places, nesting;
    } const cases[] = {
        {1,
         0,
         {0, -1},
         {kKept, kKept}},  // a variable 0 must not read the end of a column of the nesting matrix
        {2, 0, {1, -1}, {kKept, kKept}},
        {3, -1, {2, -1}, {kKept, kKept}},  // nested, though the factor does not hold the other
        {4, -1, {2, 0}, {kKept, 1}},
        {5, -1, {3, 2}, {kKept, kKept}},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.factor);
        GuardedArray<int> places(2), nesting(2);
        EXPECT_EQ(Cpp_GetNestedVars(c.factor,
                                    1,
                                    3,
                                    5,
                                    2,
                                    lists.data(),
                                    nested.data(),
                                    places.data(),
                                    nesting.data()),
                  c.found);
        EXPECT_EQ(CellsOf(places), c.places);
        EXPECT_EQ(CellsOf(nesting), c.nesting);
    }
    EXPECT_EQ(Cpp_GetNestedVars(4, 1, 3, 5, 0, lists.data(), nested.data(), nullptr, nullptr), 0);
    EXPECT_EQ(Cpp_GetNestedVars(-4, 1, -3, -5, 2, lists.data(), nullptr, nullptr, nullptr), 0);
}

TEST(Nesting, TypeTable)
{
    // Factors 1 and 2, 3 = {2, 1}, 4 = {1, 3}; rows are those of the active ones.
    struct
    {
        Integers active, pair;
        double meanSquare;  // of the factor that joins the two
        int row;            // of the nesting factor; 0: the table stays
    } const cases[] = {
        {{1, 1, 1, 1}, {1, 2}, 4.0, 2},
        {{1, 1, 1, 1}, {2, 1}, 4.0, 1},
        {{0, 1, 1, 1}, {1, 2}, 4.0, 1},
        {{1, 1, 1, 1}, {1, 2}, 1E-16, 2},
        {{1, 1, 1, 1}, {1, 2}, kMissing, 2},
        {{1, 0, 1, 1}, {1, 2}, 4.0, 0},
        {{1, 1, 0, 1}, {1, 2}, 4.0, 0},
        {{1, 1, 1, 1}, {0, 0}, 4.0, 0},
    };
    for (const auto& c : cases) {
        Integers active = c.active, pair = c.pair, lists{1, 2, 2, 1, 0, 0, 1, 3};
        const auto joint = static_cast<size_t>(active[0] + active[1]);
        Vector cells(20);
        for (size_t i = 0; i < 20; ++i)
            cells[i] = static_cast<double>(i) + 3.0;
        cells[joint] = 2.0;
        cells[8 + joint] = c.meanSquare;
        GuardedArray<double> table(cells);
        Cpp_NestedTypeTable(table.data(), 4, 2, active.data(), pair.data(), lists.data());
        EXPECT_TRUE(table.IntactGuards());
        EXPECT_EQ(table.CountChanged(), c.row == 0 ? 0u : 2u);
        if (c.row == 0) continue;
        // With 2 degrees of freedom below, P(F > f) = 1 - (d f / (d f + 2))^(d / 2).
        const double d = cells[At(c.row)], f = cells[8 + At(c.row)] / 4.0;
        const double p = 1.0 - std::pow(d * f / (d * f + 2.0), d / 2.0);
        ExpectClose(table[12 + At(c.row)], c.meanSquare == 4.0 ? f : kMissing, kRoundoff);
        ExpectClose(table[16 + At(c.row)], c.meanSquare == 4.0 ? p : kMissing, kRoundoff);
    }
}

TEST(InteractionCells, ColumnsWithoutObservations)
{
    // Factors: x, then a (3 categories), b (2), and their interactions {b, a} and {x, a}, {a} being there twice.
    const Text a{L"low", L"high", L"mid", L"mid"}, b{L"n", L"y", L"y", L"y"};
    Integers nbCat{3, 2}, type{1, 2, 2, 4, 5}, nbVars{1, 1, 1, 2, 2}, lists{1, 2, 3, 3, 1, 0, 0, 0, 2, 2};
    const auto flags = [&](Integers active, int n, int count) {
        TextArray q(Joined<std::wstring>({a, b}));
        const int columns =
            GetXModelSize(5, 1, 2, 2, nbCat.data(), type.data(), lists.data(), nbVars.data(), active.data());
        GuardedArray<int> missing(Integers(static_cast<size_t>(columns), 9));
        EXPECT_EQ(Cpp_GetMissingInteractions(q.data(),
                                             n,
                                             5,
                                             1,
                                             2,
                                             2,
                                             nbCat.data(),
                                             type.data(),
                                             lists.data(),
                                             nbVars.data(),
                                             active.data(),
                                             missing.data()),
                  count);
        return CellsOf(missing);
    };
    // Columns of {b, a}: n-high, n-low, n-mid, y-high, y-low, y-mid.
    EXPECT_EQ(flags({1, 1, 1, 1, 1}, 4, 3), (Integers{9, 9, 9, 9, 9, 9, 1, 0, 1, 0, 1, 0, 9, 9, 9}));
    EXPECT_EQ(flags({0, 1, 1, 1, 0}, 4, 3), (Integers{9, 9, 9, 9, 9, 1, 0, 1, 0, 1, 0}));
    EXPECT_EQ(flags({1, 1, 1, 0, 1}, 4, 0), Integers(9, 9));
    EXPECT_EQ(flags({0, 0, 0, 1, 0}, 0, 6), Integers(6, 1));
    nbCat = {4, 2};  // the category without observations comes last
    EXPECT_EQ(flags({0, 0, 0, 1, 0}, 4, 5), (Integers{1, 0, 1, 1, 0, 1, 0, 1}));
}

TEST(InteractionCells, OneNeighbourDecides)
{
    struct
    {
        Integers groups;
        Vector frequencies;
        short partly;
    } const cases[] = {
        {{}, {}, 0},
        {{1}, {0}, 0},
        {{1, 1}, {0, 5}, -1},
        {{1, 1}, {5, 0}, -1},
        {{1, 2}, {0, 5}, 0},
        {{1, 2}, {5, 0}, 0},
        {{1, 1, 1}, {0, 0, 5}, 0},  // the cell before is empty, and the one behind is not looked at
        {{1, 1, 1}, {5, 0, 0}, -1},
        {{1, 2, 2}, {5, 0, 3}, -1},
        {{1, 2, 3}, {5, 0, 3}, 0},
        {{1, 1, 2, 2}, {0, 0, 4, 4}, 0},
        {{1, 1, 2, 2}, {2, 2, -0.0, 1E-300}, -1},
        {{1, 1}, {0, -3}, 0},
    };
    for (const auto& c : cases) {
        Integers groups = c.groups;
        Vector frequencies = c.frequencies;
        int n = static_cast<int>(groups.size());
        EXPECT_EQ(Cpp_CheckInteractions(groups.data(), frequencies.data(), &n), c.partly)
            << ::testing::PrintToString(c.frequencies);
    }
    int negative = -2;
    EXPECT_EQ(Cpp_CheckInteractions(nullptr, nullptr, &negative), 0);
}

TEST(InteractionCells, MainEffectsOfInteractionsLeaveTheTable)
{
    // Factors of 3, 2 and 3 columns (2, 1 and 2 of them in X) and an interaction of 3 (2 in X).
    matrix<double> x(2, 7);
    for (int i = 1; i <= 14; ++i)
        x.vbset(i, i);
    struct
    {
        Integers active, type, lists;
        Integers columns;  // of X; 0 the column of ones
    } const cases[] = {
        {{1, 1, 1, 1}, {2, 2, 2, 4}, {1, 2, 3, 1, 0, 0, 0, 3}, {3, 6, 7, 0}},
        {{1, 1, 1, 1}, {2, 1, 2, 5}, {1, 2, 3, 2, 0, 0, 0, 1}, {4, 5, 6, 7, 0}},
        {{0, 1, 1, 1}, {2, 2, 2, 4}, {1, 2, 3, 1, 0, 0, 0, 3}, {1, 4, 5, 0}},  // X holds active factors alone
        {{1, 1, 1, 0}, {2, 2, 2, 4}, {1, 2, 3, 1, 0, 0, 0, 3}, {1, 2, 3, 4, 5, 6, 7}},
    };
    for (const auto& c : cases) {
        matrix<int> active(4, 1), type(4, 1), nbSub(4, 1), lists(4, 2);
        for (int f = 1; f <= 4; ++f) {
            active.vbset(f, c.active[At(f)]);
            type.vbset(f, c.type[At(f)]);
            nbSub.vbset(f, f == 2 ? 2 : 3);
        }
        for (int i = 1; i <= 8; ++i)
            lists.vbset(i, c.lists[At(i)]);
        matrix<double>* out = nullptr;
        for (const bool again : {false, true}) {  // created, then found in the right shape or not
            if (again) out->Redim(1, 3);
            int p = -1;
            CheckForInteraction(&x, 7, 2, 2, 4, &active, &type, &nbSub, &lists, &p, out);
            ASSERT_EQ(p, static_cast<int>(c.columns.size()));
            ASSERT_TRUE(out->rows == 2 && out->cols == p);
            for (int j = 1; j <= p; ++j)
                for (int i = 1; i <= 2; ++i)
                    EXPECT_EQ(out->vbget(i, j), c.columns[At(j)] == 0 ? 1.0 : x.vbget(i, c.columns[At(j)]));
        }
        nbSub.vbset(1, kMost);
        nbSub.vbset(3, -kMost);
        int p = -1;
        CheckForInteraction(&x, 7, 2, 2, 4, &active, &type, &nbSub, &lists, &p, out);
        EXPECT_LE(p, 8);
        delete out;
    }
    matrix<double>* copy = nullptr;
    matrix<int> none(1, 1);
    int p = -1;
    CheckForInteraction(&x, 7, 2, 0, 0, &none, &none, &none, &none, &p, copy);
    EXPECT_EQ(p, 7);
    EXPECT_EQ(copy->vbget(2, 7), 14.0);
    CheckForInteraction(&x, -1, -2, 0, -5, &none, &none, &none, &none, &p, copy);
    EXPECT_EQ(copy->total, 0u);
    delete copy;
}

}  // namespace
}  // namespace linear_test
