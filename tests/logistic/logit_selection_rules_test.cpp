/* The rules by which a selection compares factors, and the order in which parts of a subset are tried. */
#include <gtest/gtest.h>

#include "logistic/best_logit_subsets.h"
#include "logistic/logit_selection.h"

namespace korvenrg::logistic {
namespace {

struct RuleCase
{
    const char* name;
    std::vector<FactorTest> tests;  // statistic, p, df of factors 1, 2, ..
    int enters, leaves;
};

TEST(LogitSelectionRules, DegreesOfFreedomFirst)
{
    const RuleCase cases[] = {
        {"equal statistics: the first", {{3.0, 0.08, 1}, {3.0, 0.08, 1}}, 1, 1},
        {"equal df: the statistic alone", {{3.0, 0.08, 1}, {4.0, 0.9, 1}}, 2, 1},
        {"equal df: the statistic alone, turned round", {{4.0, 0.9, 1}, {3.0, 0.08, 1}}, 1, 2},
        {"larger df with the smaller statistic and p", {{6.0, 0.05, 1}, {5.0, 0.01, 2}}, 2, 1},
        {"larger df with the larger statistic and p", {{3.0, 0.08, 1}, {4.0, 0.14, 2}}, 1, 2},
        {"smaller df after larger: the statistic", {{6.0, 0.05, 2}, {5.9, 0.02, 1}}, 1, 2},
        {"larger df that lost still raises the bar", {{4.0, 0.05, 1}, {5.0, 0.08, 2}, {4.5, 0.11, 2}}, 3, 3},
        {"p of 0 never leaves, and then nothing does", {{900.0, 0.0, 1}, {1.0, 0.3, 1}}, 1, 0},
        {"statistics of 0 do not enter", {{0.0, 1.0, 1}, {-1.0, 1.0, 2}}, 0, 1},
        {"a missing statistic is the smallest", {{3.0, 0.08, 1}, {kMissing, 0.0, 1}}, 1, 2},
    };
    for (const RuleCase& c : cases) {
        EntryChoice entry;
        RemovalChoice removal;
        for (std::size_t i = 0; i < c.tests.size(); ++i) {
            entry.Consider(static_cast<int>(i) + 1, c.tests[i]);
            removal.Consider(static_cast<int>(i) + 1, c.tests[i]);
        }
        EXPECT_EQ(entry.factor, c.enters) << c.name;
        EXPECT_EQ(removal.factor, c.leaves) << c.name;
    }
}

TEST(LogitSelectionRules, PartsInOrder)
{
    int parents[] = {3, 1, 1, 2, 2};
    matrix<int> factorOf(5, 1, parents, true);
    FactorDescription factors{};
    factors.subParents = &factorOf;
    const std::vector<std::vector<int>> expected = {{3, 5}, {3, 4}, {2, 3}, {2, 5}, {2, 4}, {4, 5}};
    EXPECT_EQ(PartsInOrder(factors, {2, 3, 4, 5}, 2), expected);
    EXPECT_EQ(PartsInOrder(factors, {2, 3}, 2), (std::vector<std::vector<int>>{{2, 3}}));
    EXPECT_EQ(PartsInOrder(factors, {2, 3, 4}, 1), (std::vector<std::vector<int>>{{3}, {2}, {4}}));
}

}  // namespace
}  // namespace korvenrg::logistic
