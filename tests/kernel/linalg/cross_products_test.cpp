#include "kernel/linalg/cross_products.h"

#include <gtest/gtest.h>

#include <limits>
#include <random>

#include "support/tolerances.h"

namespace {

using namespace korvenrg::linalg;
using namespace korvenrg::test;

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();

// A table of small integers: every product and sum below is exact, in any order.
std::vector<std::vector<double>> IntegerTable(int n, int q)
{
    std::mt19937 generator(7);
    std::vector<std::vector<double>> columns(static_cast<std::size_t>(q));
    for (auto& column : columns) {
        for (int r = 0; r < n; ++r) {
            column.push_back(static_cast<double>(generator() % 19) - 9.0);
        }
    }
    return columns;
}

std::vector<const double*> PointersTo(const std::vector<std::vector<double>>& columns)
{
    std::vector<const double*> pointers;
    for (const auto& column : columns) {
        pointers.push_back(column.data());
    }
    return pointers;
}

// Around the lane count, the stream stride, the tile width and the block length.
TEST(CrossProducts, ExactOnIntegersAtAllEdges)
{
    for (const int n : {0, 1, 7, 8, 9, 31, 33, 255, 256, 257, 600}) {
        for (const int q : {1, 2, 3, 4, 5, 9}) {
            const auto columns = IntegerTable(n, q);
            const auto pointers = PointersTo(columns);
            std::vector<double> weights;
            for (int r = 0; r < n; ++r) {
                weights.push_back(r % 4);
            }
            const auto size = static_cast<std::size_t>(q);
            std::vector<double> plain(size * size);
            std::vector<double> weighted(size * size);
            CrossProducts(pointers, n, nullptr, ZeroCentres(size), false, plain.data());
            CrossProducts(pointers, n, weights.data(), ZeroCentres(size), false, weighted.data());
            for (std::size_t i = 0; i < size; ++i) {
                for (std::size_t j = 0; j < size; ++j) {
                    double sum = 0.0;
                    double weightedSum = 0.0;
                    for (std::size_t r = 0; r < static_cast<std::size_t>(n); ++r) {
                        sum += columns[i][r] * columns[j][r];
                        weightedSum += weights[r] * columns[i][r] * columns[j][r];
                    }
                    ASSERT_EQ(plain[j * size + i], sum) << n << " x " << q;
                    ASSERT_EQ(weighted[j * size + i], weightedSum) << n << " x " << q;
                }
            }
        }
    }
}

TEST(CrossProducts, RowsOfWeightZeroAreNotLookedAt)
{
    for (const std::size_t row : {std::size_t{0}, std::size_t{5}, std::size_t{299}}) {
        auto columns = IntegerTable(300, 3);
        std::vector<double> weights(300, 2.0);
        weights[row] = 0.0;
        auto without = columns;
        columns[1][row] = kNaN;
        columns[2][row] = std::numeric_limits<double>::infinity();
        for (auto& column : without) {
            column.erase(column.begin() + static_cast<std::ptrdiff_t>(row));
        }
        const std::vector<double> weightsWithout(299, 2.0);

        const Centres means = WeightedMeans(PointersTo(columns), 300, weights.data());
        const Centres expected = WeightedMeans(PointersTo(without), 299, weightsWithout.data());
        std::vector<double> products(9);
        std::vector<double> expectedProducts(9);
        CrossProducts(PointersTo(columns), 300, weights.data(), means, true, products.data());
        CrossProducts(PointersTo(without),
                      299,
                      weightsWithout.data(),
                      expected,
                      true,
                      expectedProducts.data());
        for (std::size_t k = 0; k < 9; ++k) {
            if (k < 3) ExpectClose(means.value[k], expected.value[k], kRoundoff);
            ExpectClose(products[k], expectedProducts[k], kRoundoff);
        }
    }
}

// Values m + d with d a small integer: the mean is m + mean(d), the products those of d.
TEST(CrossProducts, KeepEveryDigitOfNearConstantData)
{
    const double base = 1099511627776.0;  // 2^40, so that m + d is exact
    const auto deviations = IntegerTable(1000, 2);
    auto columns = deviations;
    for (auto& column : columns) {
        for (double& cell : column) {
            cell += base;
        }
    }
    const Centres means = WeightedMeans(PointersTo(columns), 1000, nullptr);
    const Centres small = WeightedMeans(PointersTo(deviations), 1000, nullptr);
    std::vector<double> products(4);
    std::vector<double> expected(4);
    CrossProducts(PointersTo(columns), 1000, nullptr, means, true, products.data());
    CrossProducts(PointersTo(deviations), 1000, nullptr, small, true, expected.data());
    for (std::size_t k = 0; k < 4; ++k) {
        ExpectClose(products[k], expected[k], kRoundoff);
    }
    for (std::size_t j = 0; j < 2; ++j) {
        ExpectClose((means.value[j] - base) + means.correction[j], small.value[j], kRoundoff);
    }
}

TEST(WeightedMeans, ConstantColumnsAreExactAndNoWeightGivesZero)
{
    const std::vector<double> tenths(777, 0.1);
    std::vector<double> weights(777, 1.0 / 3.0);
    const double* column = tenths.data();
    double product = 1.0;
    Centres means = WeightedMeans({&column, 1}, 777, weights.data());
    CrossProducts({&column, 1}, 777, weights.data(), means, true, &product);
    EXPECT_EQ(means.value[0], 0.1);
    EXPECT_EQ(product, 0.0);

    std::fill(weights.begin(), weights.end(), 0.0);
    means = WeightedMeans({&column, 1}, 777, weights.data());
    EXPECT_EQ(means.value[0], 0.0);
}

}  // namespace
