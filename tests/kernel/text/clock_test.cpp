#include "kernel/text/clock.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <ctime>

namespace {

TEST(Clock, CountsDaysFromTheEndOf1899)
{
    const auto seconds = static_cast<double>(std::time(nullptr));
    EXPECT_NEAR(COleDateTimeGetCurrentTime(), 25569.0 + seconds / 86400.0, 10.0 / 86400.0);
}

// The smallest of many steps: a single one is long when another process runs in between.
TEST(Clock, MovesInStepsBelowAMillisecond)
{
    double smallest = 1.0;
    double before = COleDateTimeGetCurrentTime();
    for (int k = 0; k < 100000; ++k) {
        const double now = COleDateTimeGetCurrentTime();
        if (now > before) smallest = std::min(smallest, now - before);
        before = now;
    }
    EXPECT_LT(smallest, 1.0 / 86400e3);
}

TEST(Clock, ElapsedUnitsAreNotSeconds)
{
    EXPECT_NEAR(korvenrg::text::ElapsedUnits(45000.0, 45000.0 + 1.0 / 86400.0), 1.0 / 0.864, 1e-6);
}

}  // namespace
