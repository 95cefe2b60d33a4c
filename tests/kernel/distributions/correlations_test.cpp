#include "kernel/distributions/correlations.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <vector>

#include "core/limits.h"
#include "support/tolerances.h"

namespace {

using namespace korvenrg::test;

matrix<double> Column(const std::vector<double>& values)
{
    matrix<double> column(static_cast<int>(values.size()), 1);
    std::copy(values.begin(), values.end(), column.data);
    return column;
}

// The response is 2x but for one value: sums by hand give r = 9 / sqrt(5 * 17) and t on 2 degrees of freedom,
// whose tail is 1/2 - t / (2 sqrt(2 + t^2)).
TEST(PearsonRho, MatchesHandWorkedTable)
{
    matrix<double> x = Column({1, 2, 3, 4});
    matrix<double> y = Column({2, 4, 6, 7.5});
    const double rho = 9.25 / std::sqrt(5.0 * 17.1875);
    double p = 0.0;
    ExpectClose(V_PearsonRho(&x, 4, &y, nullptr, nullptr, &p), rho, kRoundoff);
    ExpectClose(p, 1.0 - rho, 1e-11);  // with 2 degrees of freedom p = 1 - |r|; 1 - r cancels two digits
}

TEST(PearsonRho, WeightsActAsReplicatedRowsAndMaskDropsThem)
{
    matrix<double> x = Column({1, 2, 2, 5, 9});
    matrix<double> y = Column({3, 1, 1, 4, std::numeric_limits<double>::quiet_NaN()});
    matrix<double> weights = Column({1, 2, 0, 1, 1});
    const short mask[] = {0, 0, 0, 0, 1};  // any value but 0 leaves the row out
    double weightedP = 0.0;
    double replicatedP = 0.0;
    const double weighted = V_PearsonRho(&x, 5, &y, mask, &weights, &weightedP);
    const double replicated = V_PearsonRho(&x, 4, &y, nullptr, nullptr, &replicatedP);
    ExpectClose(weighted, replicated, kRoundoff);
    ExpectClose(weightedP, replicatedP, kRoundoff);
}

TEST(PearsonRho, DegenerateTables)
{
    matrix<double> x = Column({1, 2});
    matrix<double> constant = Column({5, 5});
    double p = 0.0;
    EXPECT_EQ(V_PearsonRho(&x, 2, &constant, nullptr, nullptr, &p), 0.0);
    EXPECT_EQ(p, korvenrg::kMissing);
}

// Ranks of x 1, 2.5, 2.5, 4, 5 and of y 2, 1, 3.5, 3.5, 5: deviations by hand give 7.25 / 9.5.
TEST(SpearmanRho, HandWorkedTies)
{
    matrix<double> x = Column({-3, 0, 0, 1e6, 2e6});
    matrix<double> y = Column({0.2, 0.1, 7, 7, 1e300});
    ExpectClose(V_SpearmanRho(&x, 5, &y, nullptr, nullptr, nullptr), 7.25 / 9.5, kRoundoff);
}

TEST(SpearmanRho, WeightsActAsReplicatedRows)
{
    constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
    matrix<double> x = Column({4, kNaN, 1, 3, 3, 2, kNaN});
    matrix<double> y = Column({2, kNaN, 5, 5, 1, 4, 1});
    matrix<double> weights = Column({2, 0, 3, 1, 2, 1, 1});
    const short mask[] = {0, 0, 0, 0, 0, 0, korvenrg::kTrue};
    matrix<double> longX = Column({4, 4, 1, 1, 1, 3, 3, 3, 2});
    matrix<double> longY = Column({2, 2, 5, 5, 5, 5, 1, 1, 4});
    double weightedP = 0.0;
    double replicatedP = 0.0;
    const double weighted = V_SpearmanRho(&x, 7, &y, mask, &weights, &weightedP);
    const double replicated = V_SpearmanRho(&longX, 9, &longY, nullptr, nullptr, &replicatedP);
    ExpectClose(weighted, replicated, kRoundoff);
    ExpectClose(weightedP, replicatedP, 1e-13);  // the tail magnifies the last digits of the correlation
    EXPECT_TRUE(std::isnan(V_SpearmanRho(&x, 7, &y, nullptr, &weights, nullptr)));
}

// Both tables against the vector forms cell by cell, and what happens to the caller's matrices.
TEST(CorrelationTables, HoldThePairsOfColumns)
{
    matrix<double> X(6, 2);
    matrix<double> Y(6, 3);
    for (int r = 1; r <= 6; ++r) {
        X.vbset(r, 1, r * r);
        X.vbset(r, 2, r % 3);
        for (int j = 1; j <= 3; ++j) {
            Y.vbset(r, j, std::sin(1.7 * r * j));
        }
    }
    matrix<double> weights = Column({1, 2, 0.5, 0, 1, 3});
    const auto columnOf = [](const matrix<double>& table, int j) {
        std::vector<double> cells;
        for (int r = 1; r <= table.rows; ++r) {
            cells.push_back(table.vbget(r, j));
        }
        return Column(cells);
    };
    const struct
    {
        decltype(&M_PearsonRhoMatMat) ofTables;
        decltype(&V_PearsonRho) ofVectors;
    } forms[] = {{M_PearsonRhoMatMat, V_PearsonRho}, {M_SpearmanRhoMatMat, V_SpearmanRho}};
    for (const auto& [ofTables, ofVectors] : forms) {
        matrix<double>* rho = nullptr;
        auto* kept = new matrix<double>(2, 3);
        matrix<double>* pValues = kept;
        ofTables(&X, 6, 2, &Y, 3, nullptr, &weights, rho, pValues);
        EXPECT_EQ(pValues, kept);
        ASSERT_TRUE(rho->rows == 2 && rho->cols == 3);
        for (int i = 1; i <= 2; ++i) {
            for (int j = 1; j <= 3; ++j) {
                matrix<double> x = columnOf(X, i);
                matrix<double> y = columnOf(Y, j);
                double p = 0.0;
                ExpectClose(rho->vbget(i, j), ofVectors(&x, 6, &y, nullptr, &weights, &p), kRoundoff);
                ExpectClose(pValues->vbget(i, j), p, 1e-13);
            }
        }
        delete rho;
        delete pValues;
    }
}

}  // namespace
