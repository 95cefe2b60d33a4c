#include "kernel/linalg/sorting.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <numeric>
#include <vector>

#include "core/limits.h"

namespace {

using korvenrg::kFalse;
using korvenrg::kTrue;

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
constexpr double kInfinity = std::numeric_limits<double>::infinity();

template <typename T>
std::vector<T> Cells(const matrix<T>& m)
{
    return {m.data, m.data + m.total};
}

template <typename T>
void Fill(matrix<T>& m, const std::vector<T>& values)
{
    std::copy(values.begin(), values.end(), m.data);
}

struct KeyOrder
{
    short descending;
    std::vector<double> index;
};

// Both zeros are one key, ties keep their order, NaN is last either way, the marker is the smallest number.
TEST(Sorting, OrderOfSpecialKeysBothWays)
{
    const std::vector<double> keys =
        {kNaN, 0.0, 3, -kInfinity, -0.0, korvenrg::kMissing, 3, -1e-320, kNaN, kInfinity};
    const KeyOrder orders[] = {
        {kFalse, {4, 6, 8, 2, 5, 3, 7, 10, 1, 9}},
        {kTrue, {10, 3, 7, 2, 5, 8, 6, 4, 1, 9}},
    };
    for (const KeyOrder& order : orders) {
        matrix<double> key(10, 1);
        matrix<double> index(10, 1);
        Fill(key, keys);
        std::iota(index.data, index.data + 10, 1.0);
        SortQ<double>(&index, 10, 1, 1, 10, &key, nullptr, 0, order.descending, kFalse);
        EXPECT_EQ(Cells(index), order.index) << order.descending;
        EXPECT_EQ(key.vbget(3), 3.0);  // the key itself was not to be sorted
    }
}

// Rows 2..4 of 5 by hand; cell (r, j) of the table is 10 j + r and of the companion 100 + r.
TEST(Sorting, MovesTableCompanionAndKeyInTheRangeOnly)
{
    matrix<int> table(5, 2);
    matrix<int> companion(5, 3);
    matrix<int> key(5, 1);
    Fill(table, {11, 12, 13, 14, 15, 21, 22, 23, 24, 25});
    Fill(companion, {101, 102, 103, 104, 105, 201, 202, 203, 204, 205, 301, 302, 303, 304, 305});
    Fill(key, {9, 5, -7, 1, 0});
    SortQ<int>(&table, 5, 2, 2, 4, &key, &companion, 2, kFalse, kTrue);
    EXPECT_EQ(Cells(table), (std::vector<int>{11, 13, 14, 12, 15, 21, 23, 24, 22, 25}));
    EXPECT_EQ(Cells(companion),
              (std::vector<int>{101, 103, 104, 102, 105, 201, 203, 204, 202, 205, 301, 302, 303, 304, 305}));
    EXPECT_EQ(Cells(key), (std::vector<int>{9, -7, 1, 5, 0}));
    SortQ<int>(&table, 5, 2, 4, 3, &key, &companion, 1, kFalse, kTrue);     // empty range
    SortQ<int>(&table, 5, 2, 1, 5, nullptr, &companion, 1, kFalse, kTrue);  // no key
    EXPECT_EQ(Cells(key), (std::vector<int>{9, -7, 1, 5, 0}));
    SortQ<
        int>(&key, 5, 1, -3, 99, &key, nullptr, 0, kTrue, kTrue);  // table and key are one; the range is cut
    EXPECT_EQ(Cells(key), (std::vector<int>{9, 5, 1, 0, -7}));
    EXPECT_EQ(SortQMatrixCol(&table, 5, 2, 3, 1, 5, kFalse), -1);
    EXPECT_EQ(SortQMatrixCol<matrix<int>>(&table, 5, 2, 2, 3, 5, kTrue), 0);
    EXPECT_EQ(Cells(table), (std::vector<int>{11, 13, 15, 14, 12, 21, 23, 25, 24, 22}));
}

// Keys that descend, in steps of one, of rounding, and not at all.
TEST(Sorting, DescendingKeysTurnRoundStably)
{
    const double keys[] = {3, 2 + 2e-15, 2 + 1e-15, 2, 2, 1, 1, 1, -4};
    EXPECT_EQ(korvenrg::linalg::SortedOrder(keys, 9, false), (std::vector<int>{8, 5, 6, 7, 3, 4, 2, 1, 0}));
    EXPECT_EQ(korvenrg::linalg::SortedOrder(keys, 9, true), (std::vector<int>{0, 1, 2, 3, 4, 5, 6, 7, 8}));
}

// A range whose keys stand in reverse, without and with a tie: the rows around it stay, and tied rows keep their order.
TEST(Sorting, ReversedRangesTakeTheirRowsAlong)
{
    struct
    {
        int last;
        std::vector<int> rows;
    } const ranges[] = {{5, {1, 5, 4, 3, 2, 6, 7}}, {6, {1, 6, 5, 4, 3, 2, 7}}, {7, {1, 6, 7, 5, 4, 3, 2}}};
    for (const auto& [last, rows] : ranges) {
        matrix<double> key(7, 1);
        Fill(key, {0, 9, 7, 5, 4, 3, 3});
        matrix<double> table(7, 1);
        Fill(table, {1, 2, 3, 4, 5, 6, 7});
        SortQ<double>(&table, 7, 1, 2, last, &key, nullptr, 0, kFalse, kTrue);
        EXPECT_EQ(Cells(table), std::vector<double>(rows.begin(), rows.end())) << last;
        EXPECT_TRUE(std::is_sorted(key.data + 1, key.data + last)) << last;
    }
}

// Long enough for the digit passes: against the standard library's stable sort, with many ties, all decades,
// and two thousand keys that differ in their last bits only.
TEST(Sorting, LongVectorsAgreeWithAStableSort)
{
    constexpr int kCount = 10000;
    std::vector<double> keys;
    for (int i = 0; i < kCount; ++i) {
        const double spread = std::fmod(i * 0.6180339887498949, 1.0);
        const double tied = std::floor(40 * spread) - 20;
        const double scattered = (spread - 0.5) * std::pow(10.0, i % 600 - 300);
        const double close = -1.0 - spread * 1e-10;
        keys.push_back(i % 5 == 0 ? close : i % 3 == 0 ? tied : scattered);
    }
    keys[17] = kNaN;
    for (const bool descending : {false, true}) {
        std::vector<int> expected(kCount);
        std::iota(expected.begin(), expected.end(), 0);
        std::stable_sort(expected.begin(), expected.end(), [&](int a, int b) {
            const double x = keys[static_cast<std::size_t>(a)];
            const double y = keys[static_cast<std::size_t>(b)];
            if (std::isnan(x) || std::isnan(y)) return !std::isnan(x) && std::isnan(y);
            return descending ? y < x : x < y;
        });
        EXPECT_EQ(korvenrg::linalg::SortedOrder(keys.data(), kCount, descending), expected) << descending;
    }
    matrix<int> codes(kCount, 1);
    for (int i = 1; i <= kCount; ++i) {
        codes.vbset(i, i * 7919 % 4001 * (i % 2 == 0 ? 1 : -500000));
    }
    SortQVector(&codes, kCount, 1, kCount, kTrue);
    EXPECT_TRUE(std::is_sorted(codes.data, codes.data + kCount, std::greater<>()));
}

TEST(Sorting, RowsBySeveralColumns)
{
    matrix<int> table(5, 3);
    Fill(table, {2, 1, 2, 1, 2, 5, 9, 3, 9, 3, 0, 7, -1, 6, -8});
    SortMatrixSeqQ(&table, 5, 3, kFalse);
    EXPECT_EQ(Cells(table), (std::vector<int>{1, 1, 2, 2, 2, 9, 9, 3, 3, 5, 6, 7, -8, -1, 0}));
    SortMatrixSeqQ(&table, 5, 3, kTrue);
    EXPECT_EQ(Cells(table), (std::vector<int>{2, 2, 2, 1, 1, 5, 3, 3, 9, 9, 0, -1, -8, 7, 6}));
}

// Sizes that the tables do not have: nothing outside is touched (for the sanitizers), cells inside stay a
// permutation.
TEST(Sorting, SizesBeyondTheTablesAreHarmless)
{
    matrix<double> key(3, 1);
    matrix<double> table(2, 2);
    Fill(key, {3, 1, 2});
    Fill(table, {1, 2, 3, 4});
    SortQ<double>(&table, 9, 5, 1, 9, &key, nullptr, 3, kFalse, kTrue);
    EXPECT_EQ(key.total, 3U);
    SortQVector(&key, -4, 1, 9, kFalse);
    EXPECT_EQ(SortQMatrixCol<matrix<double>>(nullptr, 3, 1, 1, 1, 3, kFalse), -1);
}

}  // namespace
