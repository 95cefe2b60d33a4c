#include "kernel/distributions/combinations.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <set>
#include <vector>

#include "kernel/distributions/subset_tree.h"
#include "kernel/scalars/scalars.h"

namespace {

using Members = std::vector<int>;

Members FirstCells(const matrix<int>& state, int k)
{
    return {state.data, state.data + k};
}

TEST(Combinations, DescendFromTheTopAndStartAgain)
{
    const Members expected[] = {{2, 3, 4},
                                {1, 3, 4},
                                {0, 3, 4},
                                {1, 2, 4},
                                {0, 2, 4},
                                {0, 1, 4},
                                {1, 2, 3},
                                {0, 2, 3},
                                {0, 1, 3},
                                {0, 1, 2},
                                {2, 3, 4}};
    matrix<int> state(5, 1);
    state.vbset(4, 77);
    for (const Members& members : expected) {
        cKurtzberg(5, 3, &state);
        EXPECT_EQ(FirstCells(state, 3), members);
    }
    EXPECT_EQ(state.vbget(4), 77);
}

TEST(Combinations, EdgesOfSizeAndState)
{
    matrix<int> state(4, 1);
    for (const int member : {3, 2, 1, 0, 3}) {  // with k = 1 the last combination looks like the zero state
        cKurtzberg(4, 1, &state);
        EXPECT_EQ(state.vbget(1), member);
    }
    for (int k = 0; k < 2; ++k) {  // one combination only
        cKurtzberg(4, 4, &state);
        EXPECT_EQ(FirstCells(state, 4), (Members{0, 1, 2, 3}));
    }
    for (const int k : {0, -1, 5}) {
        cKurtzberg(4, k, &state);
        EXPECT_EQ(FirstCells(state, 4), (Members{0, 1, 2, 3})) << k;
    }
    state.vbset(2, 9);  // out of range: no combination, so the sequence starts
    cKurtzberg(4, 3, &state);
    EXPECT_EQ(FirstCells(state, 3), (Members{1, 2, 3}));
}

Members MembersOf(const LogNode& node)
{
    Members members;
    for (int k = 1; k <= node.size(); ++k) {
        members.push_back(node.getObjectList(k));
    }
    return members;
}

TEST(SubsetTree, LeavesBySizeInTheOrderOfTheList)
{
    matrix<double> objects(4, 1);
    const double numbers[] = {7, 3, 9, 5};
    std::copy(numbers, numbers + 4, objects.data);
    LogTree tree;
    ASSERT_EQ(tree.BuildTreeLeaves(4, 2, 3, &objects, 0), 10);
    const Members expected[] =
        {{7, 3}, {7, 9}, {7, 5}, {3, 9}, {3, 5}, {9, 5}, {7, 3, 9}, {7, 3, 5}, {7, 9, 5}, {3, 9, 5}};
    for (int i = 1; i <= 10; ++i) {
        EXPECT_EQ(MembersOf(tree.getTreeNode(i)), expected[i - 1]) << i;
    }
    for (const int outside : {0, 11, -3}) {
        EXPECT_EQ(tree.getTreeNode(outside).size(), 0);
    }
    EXPECT_EQ(tree.getTreeNode(1).getObjectList(3), 0);
    EXPECT_EQ(tree.BuildTreeLeaves(4, -2, 99, &objects, 0),
              16);  // the limits are cut, the empty subset counts
    EXPECT_EQ(tree.BuildTreeLeaves(4, 1, 4, &objects, 6), 6);
    EXPECT_EQ(MembersOf(tree.getTreeNode(6)), (Members{7, 9}));
    EXPECT_EQ(tree.BuildTreeLeaves(4, 3, 2, &objects, 0), 0);
}

// Far more leaves than memory could hold.
TEST(SubsetTree, CountsBeyondMemory)
{
    matrix<double> objects(200, 1);
    for (int i = 1; i <= 200; ++i) {
        objects.vbset(i, i);
    }
    LogTree tree;
    ASSERT_EQ(tree.BuildTreeLeaves(200, 1, 150, &objects, 0), 2147483647);
    const int ofSizesToFour = static_cast<int>(200 + Cnk(200, 2) + Cnk(200, 3) + Cnk(200, 4));
    EXPECT_EQ(MembersOf(tree.getTreeNode(ofSizesToFour)), (Members{197, 198, 199, 200}));
    EXPECT_EQ(MembersOf(tree.getTreeNode(ofSizesToFour + 1)), (Members{1, 2, 3, 4, 5}));
    EXPECT_EQ(tree.getTreeNode(2147483647).size(), 5);
}

}  // namespace
