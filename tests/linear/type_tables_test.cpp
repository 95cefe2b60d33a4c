/** Type I, II and III tables: against R on real data, and the answers in odd cases. */
#include <gtest/gtest.h>

#include "linear/type_tables.h"
#include "reference_cases.h"

namespace linear_test {
namespace {

class TypeTables : public ::testing::TestWithParam<Case>
{
};

TEST_P(TypeTables, AgreeWithR)
{
    const Case& c = GetParam();
    const auto options = c["options"].Numbers();
    const DesignResults design = BuildDesign(DesignOf(c));
    OlsProblem q = FitOf(design, c["y"].Numbers(), static_cast<int>(options[0]));
    q.wr = c["wr"].Numbers();
    q.options[kTolerance] = 1e-8;
    q.options[kTypeI] = q.options[kTypeII] = q.options[kTypeIII] = 1.0;
    const OlsResults r = RunOls(q);
    ASSERT_EQ(r.code, 0);
    ExpectTable(r.type1, c["type1"], "type1");
    ExpectTable(r.type2, c["type2"], "type2");
    ExpectTable(r.type3, c["type3"], "type3");
    EXPECT_EQ(r.type4.cells.CountChanged(), 0u);
}

INSTANTIATE_TEST_SUITE_P(Linear,
                         TypeTables,
                         ::testing::ValuesIn(ReadCases("type_values.txt")),
                         [](const auto& c) { return c.param.name; });

/** Two qualitative factors of two levels and their interaction, unbalanced, with a quantitative one in front. */
OlsProblem TwoWay(int constraint)
{
    DesignProblem d;
    const int first[] = {1, 1, 1, 1, 2, 2, 2, 2, 2, 1, 2, 1};
    const int second[] = {1, 2, 1, 2, 1, 2, 1, 1, 2, 1, 2, 2};
    Vector y;
    d.model.n = 12;
    d.constraint = constraint;
    d.labelX = {L"x"};
    d.labelQ = {L"a", L"b"};
    d.categories = {{L"l1", L"l2"}, {L"l1", L"l2"}};
    d.model.q.resize(2);
    d.model.x.emplace_back();
    for (int i = 0; i < 12; ++i) {
        d.model.q[0].push_back(L"l" + std::to_wstring(first[i]));
        d.model.q[1].push_back(L"l" + std::to_wstring(second[i]));
        d.model.x[0].push_back(i * 7 % 5);
        y.push_back(2.0 * first[i] + second[i] * first[i] + i * 5 % 7);
    }
    d.w.assign(12, 1.0);
    d.type = {1, 2, 2, 4};
    d.factors = {{1}, {2}, {3}, {2, 3}};
    OlsProblem q = FitOf(BuildDesign(d), y, constraint);
    q.options[kTolerance] = 1e-8;
    return q;
}

void ExpectRow(const Table& table, int row, const Vector& cells)
{
    for (int j = 1; j <= 5; ++j)
        ExpectClose(table(row, j), cells[At(j)], kIterative);
}

void ExpectSameTable(const Table& a, const Table& b)
{
    for (int i = 1; i <= a.rows; ++i)
        ExpectRow(a, i, {b(i, 1), b(i, 2), b(i, 3), b(i, 4), b(i, 5)});
}

TEST(TypeTablesOddities, DroppedFactorHasARowOfItsOwn)
{
    OlsProblem q = TwoWay(0);
    q.options[kMethod] = 3;
    q.options[kPRemove] = 0.2;
    q.options[kTypeI] = q.options[kTypeII] = q.options[kTypeIII] = 1.0;
    const OlsResults r = RunOls(q);
    ASSERT_EQ(r.active, (Integers{0, 1, 1, 0})) << "the quantity and the interaction leave";
    for (const Table* table : {&r.type1, &r.type2, &r.type3}) {
        ExpectRow(*table, 1, {0, 0, kMissing, kMissing, kMissing});
        EXPECT_EQ((*table)(2, 1) + (*table)(3, 1), 2.0);
        ExpectRow(*table, 4, {0, 0, kMissing, kMissing, kMissing});
    }
    ExpectClose(r.type1(2, 2) + r.type1(3, 2), r.anova(1, 2), kIterative);
}

TEST(TypeTablesOddities, OnlyTypeIvCopiesTheUnfilledTable)
{
    OlsProblem q = TwoWay(0);
    q.options[kTypeIV] = 1.0;
    const OlsResults r = RunOls(q);
    EXPECT_EQ(r.type2.cells.CountChanged(), 0u);
    EXPECT_EQ(r.type3(1, 1), SentinelOf<double>());
}

// Under a sum-type constraint the sweeps answer, with the interaction kept in. The last row's leverage term decides
// whether they are asked at all: with a weight of 0 it is 0, and the copy of the Type II table stays.
TEST(TypeTablesOddities, LastLeverageTermTriggers)
{
    OlsProblem q = TwoWay(2);
    q.options[kTypeIII] = 1.0;
    const OlsResults kept = RunOls(q);
    EXPECT_GT(std::fabs(kept.type3(2, 2) - kept.type2(2, 2)), 1e-3);
    q.options[kTypeII] = 1.0;
    const OlsResults copied = RunOls(q);
    ExpectSameTable(copied.type3, copied.type2);
    q.options[kTypeII] = 0.0;
    q.wr.back() = 0.0;
    const OlsResults untriggered = RunOls(q);
    ExpectSameTable(untriggered.type3, untriggered.type2);
}

// Type II has an answer where the error is 0; the other tables have none.
TEST(TypeTablesOddities, AnswersAtAPerfectFit)
{
    OlsProblem q = Regression({-1, 1, -1, 1}, {{-1, 1, -1, 1}});
    q.options[kTypeI] = q.options[kTypeII] = 1.0;
    const OlsResults r = RunOls(q);
    ASSERT_LE(r.anova(2, 3), 2.3e-16);
    EXPECT_EQ(r.type2(1, 4), 0.0);
    EXPECT_EQ(r.type2(1, 5), 1.0);

    const int p = 1;
    matrix<double> swept(3, 1), active(1, 1, 1.0), parents(1, 1, 1.0), states(1, 1), table(1, 5);
    swept.vbset(1, -1.0);
    swept.vbset(2, 1.0);
    OLSGetTypeIIITable(p, 4, 1.3, 1.69, 5.0, 2, 0.0, &swept, 1, &active, &parents, &states, &table);
    EXPECT_EQ(table.vbget(4), kMissing);
    EXPECT_EQ(table.vbget(1), 1.0);
}

// The plain form drops each factor from the full model: for main effects that is the Type II table.
TEST(TypeTablesOddities, PlainTypeIiiDropsEachFactor)
{
    OlsProblem q = Regression({3, 1, 4, 1, 5, 9, 2, 6},
                              {{2, 7, 1, 8, 2, 8, 1, 8}, {1, 4, 1, 4, 2, 1, 3, 5}, {1, 7, 3, 2, 0, 5, 0, 8}},
                              {1, 1, 2});
    q.options[kTypeII] = 1.0;
    const OlsResults r = RunOls(q);
    matrix<double> swept(10, 1), active(2, 1, 1.0), parents(3, 1, 1.0), states(3, 1), table(2, 5);
    parents.vbset(3, 2.0);
    for (int i = 1, at = 0; i <= 4; ++i)
        for (int j = 1; j <= i; ++j)
            swept.vbset(++at, r.swept(i, j));
    const double sY = r.deviations(4);
    OLSGetTypeIIITable(3,
                       8,
                       sY,
                       sY * sY,
                       r.anova(1, 2),
                       r.anova(2, 1),
                       r.anova(2, 3),
                       &swept,
                       2,
                       &active,
                       &parents,
                       &states,
                       &table);
    for (int i = 1; i <= 2; ++i)
        for (int j = 1; j <= 5; ++j)
            ExpectClose(table.vbget(i, j), r.type2(i, j), kIterative);
    EXPECT_EQ(swept.vbget(10), r.swept(4, 4)) << "the vector is as it was";
}

}  // namespace
}  // namespace linear_test
