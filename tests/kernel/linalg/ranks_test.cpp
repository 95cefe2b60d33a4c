#include "kernel/linalg/ranks.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <limits>
#include <string>
#include <vector>

#include "core/limits.h"
#include "kernel/linalg/quantiles.h"
#include "support/tolerances.h"

namespace {

using namespace korvenrg::test;

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();

template <typename T>
matrix<T> Column(const std::vector<T>& values)
{
    matrix<T> column(static_cast<int>(values.size()), 1);
    std::copy(values.begin(), values.end(), column.data);
    return column;
}

std::vector<double> Cells(const matrix<double>& m)
{
    return {m.data, m.data + m.total};
}

TEST(Ranks, PlainRanksBreakTiesByRowAndMidRanksShareThem)
{
    matrix<double> x = Column<double>({7, -0.0, 7, kNaN, 0, 3, 7});
    matrix<double> ranks(7, 1);
    V_GetRanks(&x, 7, &ranks);
    EXPECT_EQ(Cells(ranks), (std::vector<double>{4, 1, 5, 7, 2, 3, 6}));
    int ties = 0;
    matrix<double> sizes(7, 1, 99.0);
    V_GetRanksTies(&x, 7, nullptr, &ranks, &ties, &sizes);
    EXPECT_EQ(Cells(ranks), (std::vector<double>{5, 1.5, 5, 7, 1.5, 3, 5}));
    EXPECT_EQ(ties, 2);
    EXPECT_EQ(Cells(sizes), (std::vector<double>{2, 3, 99, 99, 99, 99, 99}));
    V_GetRanksTies(&x, 7, nullptr, &x, nullptr, nullptr);  // in place
    EXPECT_EQ(Cells(x), Cells(ranks));
}

const std::vector<double> kValues = {4, 1, 4, 9, 2, 7};
const std::vector<double> kWeights = {1, 3, 2, 0, 1, 2};
const std::vector<double> kReplicated = {4, 1, 1, 1, 4, 4, 2, 7, 7};

TEST(Ranks, WeightsActAsReplicatedRows)
{
    matrix<double> x = Column(kValues);
    matrix<double> weights = Column(kWeights);
    matrix<double> all = Column(kReplicated);
    matrix<double> ranks(6, 1);
    matrix<double> allRanks(9, 1);
    matrix<double> sizes(9, 1);
    matrix<double> allSizes(9, 1);
    int ties = 0;
    int allTies = 0;
    V_GetRanksTies(&x, 6, &weights, &ranks, &ties, &sizes);
    V_GetRanksTies(&all, 9, nullptr, &allRanks, &allTies, &allSizes);
    const int firstCopy[] = {1, 2, 5, 0, 7, 8};
    for (int r = 1; r <= 6; ++r) {
        if (firstCopy[r - 1] > 0) {
            EXPECT_EQ(ranks.vbget(r), allRanks.vbget(firstCopy[r - 1])) << r;
        }
    }
    EXPECT_EQ(ties, allTies);
    EXPECT_EQ(Cells(sizes), Cells(allSizes));
}

TEST(Ranks, DistinctValues)
{
    matrix<double> numbers = Column<double>({1, kNaN, -0.0, 0.0, kNaN, 1, 5});
    matrix<int> codes = Column<int>({3, 3, -1});
    matrix<std::wstring> texts = Column<std::wstring>({L"b", L"a", L"b", L"B"});
    EXPECT_EQ(V_NbDistinct(&numbers, 7), 4);
    EXPECT_EQ(V_NbDistinct(&numbers, 1), 1);
    EXPECT_EQ(V_NbDistinct(&codes, 3), 2);
    EXPECT_EQ(V_NbDistinct(&texts, 4), 3);
    EXPECT_EQ(V_NbDistinct(&codes, 0), 0);
}

struct QuantileCase
{
    double p;
    double expected;
};

// quantile(c(4, 1, 1, 1, 4, 4, 2, 7, 7), p, type = 2) in R, and the same by weights, at any scale of these.
TEST(Quantiles, WeightsActAsReplicatedRows)
{
    const QuantileCase cases[] = {{0, 1},
                                  {0.2, 1},
                                  {1.0 / 3, 1.5},
                                  {0.4, 2},
                                  {4.0 / 9, 3},
                                  {0.5, 4},
                                  {7.0 / 9, 5.5},
                                  {0.78, 7},
                                  {1, 7},
                                  {-3, 1},
                                  {1.5, 7}};
    matrix<double> x = Column(kValues);
    matrix<double> all = Column(kReplicated);
    for (const double scale : {1.0, 0.1, 1e-300, 3e17}) {
        matrix<double> weights = Column(kWeights);
        std::for_each(weights.data, weights.data + 6, [&](double& w) { w *= scale; });
        for (const QuantileCase& c : cases) {
            EXPECT_EQ(V_QuantileW(&x, 6, &weights, c.p), c.expected) << c.p << " scale " << scale;
            EXPECT_EQ(V_Quantile(&all, 9, c.p), c.expected) << c.p;
        }
    }
}

TEST(Quantiles, WithoutCellsThereIsNone)
{
    matrix<double> x = Column(kValues);
    matrix<double> none = Column<double>({0, 0, -1, kNaN, 0, 0});
    EXPECT_EQ(V_Quantile(&x, 0, 0.5), korvenrg::kMissing);
    EXPECT_EQ(V_QuantileW(&x, 6, &none, 0.5), korvenrg::kMissing);
    EXPECT_EQ(V_Quantile(&x, 6, kNaN), korvenrg::kMissing);
    EXPECT_EQ(V_Quantile(&x, 4, 0.5), 4.0);
}

}  // namespace
