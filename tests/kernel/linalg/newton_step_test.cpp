#include "kernel/linalg/newton_step.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include "core/limits.h"
#include "kernel/linalg/constrained_inverse.h"
#include "support/dense.h"
#include "support/tolerances.h"

namespace {

using namespace korvenrg::test;

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();

// A problem of n parameters and the outputs of a step, filled with a value that no step leaves.
struct Problem
{
    Problem(const matrix<double>& H, std::initializer_list<double> g)
        : n(H.rows),
          hessian(H),
          gradient(ByRows(n, 1, g)),
          beta(n, 1, 2.0),
          work(n, 1, 77.0),
          inverse(n, n, 77.0),
          fixed(n, 1)
    {
    }

    int Step(double tol = 1e-6, short flag = korvenrg::kFalse, double ridge = 0.5)
    {
        return cNewtonRaphson(&beta, n, &fixed, &gradient, &hessian, tol, &work, &inverse, flag, ridge);
    }

    int n;
    matrix<double> hessian, gradient, beta, work, inverse;
    matrix<int> fixed;
};

TEST(NewtonStep, RegularStep)
{
    Problem p(ByRows(2, 2, {-4, 1, 1, -2}), {3, -2});
    EXPECT_EQ(p.Step(), 0);
    // H^-1 = [-2 -1; -1 -4] / 7, H^-1 g = (-4, 5) / 7
    EXPECT_LE(Distance(p.inverse, ByRows(2, 2, {-2.0 / 7, -1.0 / 7, -1.0 / 7, -4.0 / 7})), kRoundoff);
    EXPECT_LE(Distance(p.beta, ByRows(2, 1, {2 + 4.0 / 7, 2 - 5.0 / 7})), kRoundoff);
    EXPECT_LE(Distance(p.work, ByRows(2, 1, {2.0 / 7, 4.0 / 7})), kRoundoff);
}

TEST(NewtonStep, StopsWhenNothingCanBeGained)
{
    // The decrement is g^2 / 2: at the limit eps tol it stops, above it does not; the step is made either way.
    const double tol = 0x1p-10;
    const double atLimit = std::sqrt(2.0 * korvenrg::kEps * tol) * 0.999;
    const struct
    {
        double g, tol;
        int result;
    } cases[] = {{0, tol, 2}, {0, -1, 2}, {atLimit, tol, 2}, {1.01 * atLimit, tol, 0}, {atLimit, kNaN, 0}};
    for (const auto& c : cases) {
        Problem p(ByRows(1, 1, {-2}), {c.g});
        EXPECT_EQ(p.Step(c.tol), c.result) << c.g;
        EXPECT_EQ(p.beta.vbget(1), 2.0 + c.g / 2.0);
    }
    Problem held(ByRows(1, 1, {-2}), {1});
    held.fixed.vbset(1, 1);
    EXPECT_EQ(held.Step(), 2);
    EXPECT_EQ(held.beta.vbget(1), 2.0);
    EXPECT_EQ(held.work.vbget(1), 0.0);
}

TEST(NewtonStep, HeldParametersAreNotRead)
{
    Problem p(ByRows(3, 3, {-4, kNaN, 1, kNaN, kNaN, kNaN, 1, kNaN, -2}), {3, kNaN, -2});
    p.fixed.vbset(2, 1);
    EXPECT_EQ(p.Step(), 0);
    EXPECT_LE(Distance(p.beta, ByRows(3, 1, {2 + 4.0 / 7, 2, 2 - 5.0 / 7})), kRoundoff);
    EXPECT_EQ(p.inverse.vbget(2, 2), 0.0);
    EXPECT_EQ(p.inverse.vbget(1, 2), 0.0);
    EXPECT_EQ(p.work.vbget(2), 0.0);

    matrix<double> marks = ByRows(3, 1, {0, 1, 0});
    matrix<double> again(3, 1, 2.0);
    EXPECT_EQ(cNewtonRaphson(&again, 3, &marks, &p.gradient, &p.hessian, 1e-6, &p.work, &p.inverse, 0, 0.5),
              0);
    EXPECT_EQ(Distance(again, p.beta), 0.0);
}

TEST(NewtonStep, LaterParametersOfAnAliasedSetStay)
{
    // Columns of the design: a, b, a + 3 b, on scales far apart.
    matrix<double> x = ByRows(4, 3, {1, 2e6, 0, 2, -1e6, 0, -1, 1e6, 0, 3, 0, 0});
    for (int i = 1; i <= 4; ++i) {
        x.vbset(i, 3, 1e-5 * (x.vbget(i, 1) + 3e-6 * x.vbget(i, 2)));
    }
    matrix<double> H = Times(Transpose(x), x);
    for (int i = 1; i <= 9; ++i) {
        H.vbset(i, -H.vbget(i));
    }
    Problem p(H, {3, 4e6, 5e-5});
    EXPECT_EQ(p.Step(), 1);
    EXPECT_EQ(p.beta.vbget(3), 2.0);
    EXPECT_EQ(p.work.vbget(3), 0.0);
    EXPECT_EQ(p.inverse.vbget(3, 1), 0.0);
    EXPECT_GT(p.work.vbget(1), 0.0);

    Problem reduced(p.hessian, {3, 4e6, 5e-5});
    reduced.fixed.vbset(3, 1);
    EXPECT_EQ(reduced.Step(), 0);
    EXPECT_EQ(Distance(reduced.beta, p.beta), 0.0);
}

TEST(NewtonStep, FailsWithoutTouchingTheParameters)
{
    const struct
    {
        const char* what;
        matrix<double> hessian;
        double gradient;
    } cases[] = {{"zero", ByRows(2, 2, {0, 0, 0, 0}), 1},
                 {"Hessian", ByRows(2, 2, {-1, kNaN, 0, -1}), 1},
                 {"gradient", ByRows(2, 2, {-1, 0, 0, -1}), kNaN},
                 {"overflow", ByRows(2, 2, {-1e-300, 0, 0, -1}), 1e300}};
    for (const auto& c : cases) {
        Problem p(c.hessian, {c.gradient, 1});
        EXPECT_EQ(p.Step(), -1) << c.what;
        EXPECT_EQ(p.beta.vbget(1), 2.0);
        EXPECT_EQ(Distance(p.inverse, matrix<double>(2, 2)), 0.0) << c.what;
        EXPECT_EQ(p.work.vbget(2), 0.0);
    }
}

TEST(NewtonStep, IndefiniteHessianMakesTheLiteralStep)
{
    Problem exchange(ByRows(2, 2, {0, 2, 2, 0}), {3, -2});
    EXPECT_EQ(exchange.Step(), 0);
    EXPECT_LE(Distance(exchange.beta, ByRows(2, 1, {3, 0.5})), kRoundoff);

    // The first pivot is tiny, but the block is well conditioned.
    Problem tiny(ByRows(2, 2, {1e-18, 1, 1, 1e-18}), {3, -2});
    EXPECT_EQ(tiny.Step(), 0);
    EXPECT_LE(Distance(tiny.beta, ByRows(2, 1, {4, -1})), kRoundoff);

    // The pivot that turns the sign stands in the middle.
    const matrix<double> turned = ByRows(3, 3, {-1, 2, 0, 2, -1, 0, 0, 0, -1});
    Problem middle(turned, {1, 1, 1});
    EXPECT_EQ(middle.Step(), 0);
    EXPECT_LE(Distance(middle.beta, ByRows(3, 1, {1, 1, 3})), kRoundoff);
    EXPECT_LE(Distance(middle.inverse, ByRows(3, 3, {1.0 / 3, 2.0 / 3, 0, 2.0 / 3, 1.0 / 3, 0, 0, 0, -1})),
              kRoundoff);

    // Indefinite and singular: the third parameter repeats the first.
    Problem aliased(ByRows(3, 3, {0, 2, 0, 2, 0, 2, 0, 2, 0}), {3, -2, 3});
    EXPECT_EQ(aliased.Step(), 1);
    EXPECT_LE(Distance(aliased.beta, ByRows(3, 1, {3, 0.5, 2})), kRoundoff);
}

TEST(NewtonStep, DampedStepKeepsTheUndampedInverse)
{
    Problem p(ByRows(2, 2, {-4, 1, 1, -2}), {3, -2});
    EXPECT_EQ(p.Step(1e-6, korvenrg::kTrue, 1.0), 0);
    // (H with -8 and -4 on the diagonal)^-1 g = (-10, 13) / 31
    EXPECT_LE(Distance(p.beta, ByRows(2, 1, {2 + 10.0 / 31, 2 - 13.0 / 31})), kRoundoff);
    ExpectClose(p.work.vbget(2), 4.0 / 7, kRoundoff);
    for (const double ridge : {-0.5, HUGE_VAL, kNaN}) {  // none of them damps
        Problem plain(ByRows(1, 1, {-2}), {3});
        EXPECT_EQ(plain.Step(1e-6, korvenrg::kTrue, ridge), 0);
        ExpectClose(plain.beta.vbget(1), 3.5, kRoundoff);
    }
}

TEST(ConstrainedInverse, FreeBlockAlone)
{
    matrix<double> A = ByRows(3, 3, {4, kNaN, -1, kNaN, kNaN, kNaN, -1, kNaN, 2});
    matrix<double> inverse(3, 3, 77.0);
    matrix<double> marks = ByRows(3, 1, {0, 1, 0});
    EXPECT_EQ(cCleanConstraintsAndInvert(3, &marks, &A, &inverse), 0);
    EXPECT_LE(Distance(inverse, ByRows(3, 3, {2.0 / 7, 0, 1.0 / 7, 0, 0, 0, 1.0 / 7, 0, 4.0 / 7})),
              kRoundoff);

    matrix<int> none(3, 1);
    EXPECT_EQ(cCleanConstraintsAndInvert(3, &none, &A, &inverse), -1);
    EXPECT_EQ(Distance(inverse, matrix<double>(3, 3)), 0.0);
    matrix<double> singular = ByRows(3, 3, {2, 2, 0, 2, 2, 0, 0, 0, 4});
    EXPECT_EQ(cCleanConstraintsAndInvert(3, &none, &singular, &inverse), -1);
    EXPECT_LE(Distance(inverse, ByRows(3, 3, {0.5, 0, 0, 0, 0, 0, 0, 0, 0.25})), kRoundoff);
    EXPECT_EQ(inverse.vbget(2, 2), 0.0);
}

TEST(ConstrainedInverse, AllMarkedRestrictsNothing)
{
    matrix<double> A = ByRows(2, 2, {-4, 1, 1, -2});
    matrix<double> inverse(2, 2);
    matrix<int> ones(2, 1, 1);
    EXPECT_EQ(cCleanConstraintsAndInvert(2, &ones, &A, &inverse), 0);
    EXPECT_LE(Distance(Times(A, inverse), IdentityOf(2)), kRoundoff);
}

TEST(ConstrainedInverse, PackedMatrixAndRoot)
{
    matrix<double> packed = ByRows(6, 1, {2, 1, 3, 5, 6, 4});  // (2), (1 3), (5 6 4)
    matrix<double> marks = ByRows(3, 1, {0, 0, 1});
    matrix<double>* result = nullptr;
    EXPECT_EQ(cCleanConstraintsAndInvertTriang(3, &marks, &packed, korvenrg::kFalse, result), 0);
    EXPECT_LE(Distance(*result, ByRows(3, 3, {0.6, -0.2, 0, -0.2, 0.4, 0, 0, 0, 0})), kRoundoff);

    matrix<double> none(3, 1);
    EXPECT_EQ(cCleanConstraintsAndInvertTriang(3, &none, &packed, korvenrg::kTrue, result), 0);
    const matrix<double> root = ByRows(3, 3, {2, 0, 0, 1, 3, 0, 5, 6, 4});
    EXPECT_LE(Distance(Times(Transpose(root), *result), IdentityOf(3)), kRoundoff);
    marks.vbset(2, 1.0);
    marks.vbset(3, 0.0);
    EXPECT_EQ(cCleanConstraintsAndInvertTriang(3, &marks, &packed, korvenrg::kTrue, result), 0);
    EXPECT_LE(Distance(*result, ByRows(3, 3, {0.5, 0, -0.625, 0, 0, 0, 0, 0, 0.25})), kRoundoff);
    packed.vbset(3, 0.0);
    EXPECT_EQ(cCleanConstraintsAndInvertTriang(3, &none, &packed, korvenrg::kTrue, result), -1);
    EXPECT_EQ(result->vbget(2, 2), 0.0);
    EXPECT_LE(Distance(*result, ByRows(3, 3, {0.5, 0, -0.625, 0, 0, 0, 0, 0, 0.25})), kRoundoff);
    EXPECT_EQ(cCleanConstraintsAndInvertTriang(4, nullptr, &packed, korvenrg::kTrue, result), -1);
    EXPECT_EQ(Distance(*result, matrix<double>(4, 4)), 0.0) << "six cells are no triangle of four rows";
    delete result;
}

}  // namespace
