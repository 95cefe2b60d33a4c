#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <memory>
#include <vector>

#include "core/limits.h"
#include "kernel/contingency/contingency_statistics.h"
#include "kernel/contingency/contingency_table.h"
#include "support/tolerances.h"

namespace {

using namespace korvenrg::test;
using namespace korvenrg::contingency;
using korvenrg::kMissing;

struct Statistics
{
    int code;
    std::unique_ptr<matrix<double>> cells;
    double operator()(int row, int column = kValue) const
    {
        return cells->vbget(row, column);
    }
};

Statistics StatisticsOf(int r, int c, std::vector<double> cells)
{
    const matrix<double> table(r, c, cells.data(), true);
    matrix<double>* stats = nullptr;
    const int code = cGetContingencyStats(&table, r, c, stats);
    return {code, std::unique_ptr<matrix<double>>(stats)};
}

struct Reference
{
    const char* name;
    int r;
    int c;
    std::vector<double> cells;
    std::vector<double> statistics;  // by columns
};

const Reference kReferences[] = {
#include "reference/contingency.inc"
};

TEST(ContingencyStatistics, AgreeWithRCellByCell)
{
    for (const Reference& t : kReferences) {
        const Statistics stats = StatisticsOf(t.r, t.c, t.cells);
        EXPECT_EQ(stats.code, kStatisticsDone);
        ASSERT_EQ(stats.cells->total, t.statistics.size());
        for (std::size_t k = 0; k < t.statistics.size(); ++k) {
            SCOPED_TRACE(testing::Message() << t.name << ", row " << k % kStatistics + 1);
            ExpectClose(stats.cells->data[k], t.statistics[k], 1e-12);
        }
    }
}

// A perfect line against one: what the measures are at their ends, and what does not exist.
TEST(ContingencyStatistics, EndsAndMissingOnes)
{
    const Statistics reversed = StatisticsOf(2, 2, {0, 3, 5, 0});
    EXPECT_EQ(reversed(kPhi), -1.0);
    EXPECT_EQ(reversed(kGamma), -1.0);
    EXPECT_EQ(reversed(kTauB), -1.0);
    for (const Statistic row :
         {kCramer, kTschuprow, kLambdaRows, kLambdaColumns, kLambdaSymmetric, kTauRows, kTauColumns})
    {
        ExpectClose(reversed(row), 1.0, kRoundoff);
    }
    const Statistics oneRow = StatisticsOf(2, 3, {4, 0, 1, 0, 5, 0});
    EXPECT_EQ(oneRow.code, kStatisticsDone);
    EXPECT_EQ(oneRow(kPearson), 0.0);
    EXPECT_EQ(oneRow(kPearson, kDegreesOfFreedom), 0.0);
    EXPECT_EQ(oneRow(kLikelihoodRatio), 0.0);
    EXPECT_EQ(oneRow(kLambdaColumns), 0.0);
    EXPECT_EQ(oneRow(kLambdaSymmetric), 0.0);
    for (const Statistic row : {kCramer, kTschuprow, kLambdaRows, kTauRows, kGamma, kTauB, kYates}) {
        EXPECT_EQ(oneRow(row), kMissing) << row;
    }
    EXPECT_EQ(oneRow(kPearson, kPValue), kMissing);
    const double nan = std::numeric_limits<double>::quiet_NaN();
    for (const double bad : {-1.0, nan, -kMissing * 10.0}) {
        const Statistics none = StatisticsOf(2, 2, {1, 2, bad, 4});
        EXPECT_EQ(none.code, kBadContingencyTable);
        EXPECT_EQ(none(kPearson), kMissing);
    }
    EXPECT_EQ(StatisticsOf(2, 2, {0, 0, 0, 0}).code, kBadContingencyTable);
    EXPECT_EQ(StatisticsOf(0, 0, {}).code, kBadContingencyTable);
}

TEST(ContingencyTable, SumsWeightsOfValidCodes)
{
    const double nan = std::numeric_limits<double>::quiet_NaN();
    const double first[] = {1, 2, 2, 0, 3, 1, 1.5, nan, 2, 1, 2};
    const double second[] = {3, 1, 1, 1, 1, 4, 1, 1, 3, 3, 2};
    const double weight[] = {0.5, 1, 2, 9, 9, 9, 9, 9, -1, 0.25, nan};
    matrix<double> rowCodes(11, 1);
    matrix<double> columnCodes(11, 1);
    matrix<double> weights(11, 1);
    std::copy_n(first, 11, rowCodes.data);
    std::copy_n(second, 11, columnCodes.data);
    std::copy_n(weight, 11, weights.data);
    matrix<double>* table = new matrix<double>(7, 1, 5.0);
    EXPECT_EQ(BuildContTableW(&rowCodes, 2, &columnCodes, 3, 11, &weights, table), 3.75);
    const std::unique_ptr<matrix<double>> weighted(table);
    EXPECT_EQ(std::vector<double>(table->data, table->data + table->total),
              (std::vector<double>{0, 3, 0, 0, 0.75, 0}));
    matrix<int> codes(4, 1, 2);
    matrix<double>* counts = nullptr;
    EXPECT_EQ(BuildContTableW(&codes, 2, &codes, 2, 4, nullptr, counts), 4.0);
    EXPECT_EQ(counts->vbget(2, 2), 4.0);
    delete counts;
}

}  // namespace
