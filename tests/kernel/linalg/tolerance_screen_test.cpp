#include "kernel/linalg/tolerance_screen.h"

#include <gtest/gtest.h>

#include <cmath>

#include "core/limits.h"
#include "support/dense.h"
#include "support/tolerances.h"

namespace {

using namespace korvenrg::test;
using korvenrg::kFalse;
using korvenrg::kMissing;
using korvenrg::kTrue;

// Correlations of five columns: 1 and 2 at 0.6, 3 nearly their sum, 4 constant, 5 free of all.
matrix<double> Correlations()
{
    const double c = 1.6 / std::sqrt(3.2) * (1 - 1e-6);
    return ByRows(5, 5, {1, 0.6, c, 0, 0, 0.6, 1, c, 0, 0, c, c, 1, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 1});
}

struct Screen
{
    matrix<double> R = Correlations();
    matrix<int> states = matrix<int>(5, 1);
    matrix<double> tolerances = matrix<double>(5, 1, 77.0);
    matrix<double> inflations = matrix<double>(5, 1, 77.0);
    matrix<int>* active = nullptr;
    matrix<int>* parents = nullptr;

    void Run(int n, double tol, short throughZero = kFalse, short restart = kFalse, short applies = kTrue)
    {
        CheckTolerance(&R,
                       n,
                       5,
                       active,
                       parents,
                       tol,
                       throughZero,
                       restart,
                       applies,
                       kTrue,
                       &states,
                       &tolerances,
                       &inflations);
    }

    void ExpectStates(std::initializer_list<int> expected) const
    {
        int j = 0;
        for (const int state : expected) {
            EXPECT_EQ(states.vbget(++j), state) << j;
        }
    }
};

TEST(ToleranceScreen, MarksWhatDependsOnEarlierColumns)
{
    Screen screen;
    screen.Run(30, 1e-4);
    screen.ExpectStates({0, 0, 1, 1, 0});
    ExpectClose(screen.tolerances.vbget(1), 0.64, kRoundoff);
    ExpectClose(screen.inflations.vbget(2), 1 / 0.64, kRoundoff);
    ExpectClose(screen.tolerances.vbget(3), 2e-6 - 1e-12, kPrinted);  // 1 - (1 - 1e-6)^2
    EXPECT_EQ(screen.tolerances.vbget(4), 0.0);
    EXPECT_EQ(screen.inflations.vbget(4), kMissing);
    EXPECT_EQ(screen.inflations.vbget(5), 1.0);

    screen.Run(30, 1e-4, kFalse, kTrue, kFalse);  // started again, for exact dependence alone
    screen.ExpectStates({0, 0, 0, 1, 0});
    EXPECT_LT(screen.tolerances.vbget(1), 1e-5);
}

// Column 2 repeats column 1 up to rounding of either sign.
TEST(ToleranceScreen, ARefusedColumnHasNoInflation)
{
    for (const double rounding : {-4e-16, 0.0, 4e-16}) {
        Screen screen;
        screen.R.vbset(1, 2, 1.0 + rounding);
        screen.R.vbset(2, 1, 1.0 + rounding);
        screen.Run(30, 1e-4);
        EXPECT_EQ(screen.states.vbget(2), 1);
        EXPECT_EQ(screen.tolerances.vbget(2), 0.0);
        EXPECT_EQ(screen.inflations.vbget(2), kMissing);
    }
}

TEST(ToleranceScreen, KeepsToWhatTakesPart)
{
    Screen held;
    held.states.vbset(2, 40000);
    held.Run(30, 1e-4);
    held.ExpectStates({0, 40000, 0, 1, 0});
    EXPECT_EQ(held.tolerances.vbget(2), kMissing);
    EXPECT_EQ(held.inflations.vbget(2), kMissing);
    EXPECT_GT(held.tolerances.vbget(3), 0.1);

    Screen inactive;
    matrix<int> active(2, 1);
    active.vbset(2, 1);
    matrix<int> parents(5, 1, 2);
    parents.vbset(1, 1);
    inactive.active = &active;
    inactive.parents = &parents;
    inactive.Run(30, 1e-4);
    inactive.ExpectStates({0, 0, 0, 1, 0});
    EXPECT_EQ(inactive.tolerances.vbget(1), kMissing);
    EXPECT_EQ(inactive.tolerances.vbget(5), 1.0);
}

TEST(ToleranceScreen, ObservationsLimitTheColumns)
{
    const struct
    {
        int n;
        short throughZero;
        int fifth;
    } cases[] = {{3, kFalse, 1}, {3, kTrue, 0}, {4, kFalse, 0}, {0, kFalse, 0}};
    for (const auto& c : cases) {
        Screen screen;
        screen.Run(c.n, 1e-4, c.throughZero);
        EXPECT_EQ(screen.states.vbget(5), c.fifth) << c.n;
    }
}

}  // namespace
