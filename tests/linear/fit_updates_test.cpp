/** The small repairs of finished tables: closed forms and missing cells. */
#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include "ols_fixture.h"

namespace linear_test {
namespace {

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();

TEST(UpdateGof, PressAndQSquared)
{
    struct
    {
        double df, rmse, total, press, q2;
    } const cases[] = {
        {12, 1.5, 90, 27, 0.7},
        {0, 1.5, 90, kMissing, kMissing},
        {-3, 1.5, 90, kMissing, kMissing},
        {kNaN, 1.5, 90, kMissing, kMissing},
        {12, kMissing, 90, kMissing, kMissing},
        {12, 1.5, 0, 27, kMissing},
        {12, 1.5, kMissing, 27, kMissing},
        {12, 0, 90, 0, 1},
    };
    for (const auto& c : cases) {
        GuardedArray<double> anova(Vector(15, -7.0)), fit(Vector(16, -7.0));
        anova[5] = c.total;  // cell (3, 2)
        fit[2] = c.df;
        fit[13] = c.rmse;
        EXPECT_EQ(Cpp_UpdateGOF(anova.data(), fit.data()), 0);
        ExpectClose(fit[14], c.press, kRoundoff);
        ExpectClose(fit[15], c.q2, kRoundoff);
        EXPECT_TRUE(fit.IntactGuards() && anova.IntactGuards());
        for (size_t i = 0; i < 13; ++i)
            EXPECT_TRUE(i == 2 || fit[i] == -7.0);
    }
}

TEST(NoFixedEffects, RowSumsAndResiduals)
{
    // Row sums 1e8 + {3, 7, 8}: sums of squares from the plain squares would lose the digits.
    Vector y{1E8 + 1, 1E8 + 2, 1E8 + 6, 2, 5, 2};
    Table between(5, 1), residuals(3, 2);
    Cpp_NoFixedComput(3, 2, y.data(), between.cells.data(), residuals.cells.data());
    EXPECT_EQ(between(1), 2.0);
    ExpectClose(between(2), 14.0, kRoundoff);
    EXPECT_EQ(between.cells.CountChanged(), 2u);
    EXPECT_EQ(CellsOf(residuals), (Vector{-2, -1, 3, -1, 2, -1}));

    for (const int n : {0, -2}) {
        Table none(5, 1), nothing(1, 1);
        Cpp_NoFixedComput(n, 2, y.data(), none.cells.data(), nothing.cells.data());
        EXPECT_EQ(none(1), n - 1.0);
        EXPECT_EQ(none(2), 0.0);
        EXPECT_TRUE(nothing.Kept(1));
    }
}

/** Indicators of the groups of each observation, p of them. */
Vector IndicatorsOf(const Integers& group, int p)
{
    Vector x;
    for (int c = 1; c <= p; ++c)
        for (const int g : group)
            x.push_back(g == c ? 1.0 : 0.0);
    return x;
}

/** Contrasts of pairs of groups, as the door takes them. */
Table Modified(const std::vector<Vector>& pairs, Vector x, Vector y, Vector w, int p)
{
    const int count = static_cast<int>(pairs.size());
    Table contrasts(count, 10);
    for (int c = 1; c <= count; ++c) {
        contrasts.cells[contrasts.Position(c, 9)] = pairs[At(c)][0];
        contrasts.cells[contrasts.Position(c, 10)] = pairs[At(c)][1];
    }
    Cpp_ModifyStdDev(static_cast<int>(y.size()),
                     count,
                     p,
                     contrasts.cells.data(),
                     x.data(),
                     y.data(),
                     w.data());
    EXPECT_TRUE(contrasts.cells.IntactGuards());
    EXPECT_EQ(contrasts.cells.CountChanged(),
              static_cast<size_t>(3 * count));  // two of them by the lines above
    return contrasts;
}

TEST(ModifyStdDev, TwoGroupsAlone)
{
    const Integers group{1, 2, 3, 1, 2, 3, 1, 2, 3};
    const Vector y{1, 4, 90, 3, 4, -70, 2, 7, 5}, x = IndicatorsOf(group, 3), ones(9, 1.0);
    // Groups 1 {1, 3, 2} and 2 {4, 4, 7}: within sums of squares 2 and 6, so 8 / 4 (1/3 + 1/3); ids are truncated.
    const Table t = Modified({{1, 2.9}, {2, 1}, {3, 3}, {0, 2}, {-5, kNaN}, {1, 1E300}}, x, y, ones, 3);
    ExpectClose(t(1, 2), 4.0 / 3.0, kRoundoff);
    ExpectClose(t(2, 2), 4.0 / 3.0, kRoundoff);
    EXPECT_GT(t(3, 2), 0.0);       // one group twice
    EXPECT_EQ(t(4, 2), kMissing);  // the first group is empty
    EXPECT_EQ(t(5, 2), kMissing);

    // Weights go with the leading observations: those of group 3, in places 3 and 6, weigh rows of groups 1 and 2.
    Vector odd = ones, late = ones;
    odd[2] = 3.0;
    late[8] = 3.0;
    EXPECT_NE(Modified({{1, 2}}, x, y, odd, 3)(1, 2), t(1, 2));
    EXPECT_EQ(Modified({{1, 2}}, x, y, late, 3)(1, 2), t(1, 2));
}

TEST(ModifyStdDev, UnbalancedAndEmpty)
{
    // m = 5 / 2 = 2: the fifth row of the two groups is left out, wherever it is.
    const Vector y{1, 2, 3, 5, 1000}, ones(5, 1.0);
    const Table t = Modified({{1, 2}}, IndicatorsOf({1, 1, 2, 2, 2}, 2), y, ones, 2);
    ExpectClose(t(1, 2), (0.5 + 2.0) / 2.0, kRoundoff);
    for (const int p : {0, -1, 4, 7})  // m is 1 at most
        EXPECT_EQ(Modified({{1, 2}}, Vector(35, 1.0), y, ones, p)(1, 2), kMissing) << p;
}

}  // namespace
}  // namespace linear_test
