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
    const short mask[] = {0, 0, 0, 0, korvenrg::kTrue};
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

}  // namespace
