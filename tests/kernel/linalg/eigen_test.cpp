#include "kernel/linalg/eigen.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <memory>

#include "core/limits.h"
#include "kernel/linalg/projections.h"
#include "support/dense.h"
#include "support/tolerances.h"

namespace {

using namespace korvenrg::test;

struct Pairs
{
    std::unique_ptr<matrix<double>> values;
    std::unique_ptr<matrix<double>> vectors;
    int result;
};

Pairs Decompose(matrix<double>& A, short sort = korvenrg::kTrue)
{
    matrix<double>* values = nullptr;
    matrix<double>* vectors = nullptr;
    const int result = M_Eigen(&A, values, vectors, A.rows, sort);
    return {std::unique_ptr<matrix<double>>(values), std::unique_ptr<matrix<double>>(vectors), result};
}

// Values descending, A V = V D and V'V = I to some units of n eps.
void ExpectDecomposition(matrix<double>& A)
{
    const Pairs pairs = Decompose(A);
    ASSERT_EQ(pairs.result, 0);
    const int n = A.rows;
    matrix<double> scaled(*pairs.vectors);
    for (int j = 1; j <= n; ++j) {
        EXPECT_GE(pairs.values->vbget(j > 1 ? j - 1 : j), pairs.values->vbget(j));
        for (int i = 1; i <= n; ++i) {
            scaled.vbset(i, j, scaled.vbget(i, j) * pairs.values->vbget(j));
        }
    }
    const double unit = 10.0 * n * korvenrg::kEps;
    EXPECT_LE(Distance(Times(A, *pairs.vectors), scaled), unit * RowNorm(A)) << n;
    EXPECT_LE(Distance(Times(Transpose(*pairs.vectors), *pairs.vectors), IdentityOf(n)), unit) << n;
}

TEST(Eigen, ResidualsStayAtRoundingForEveryKindOfMatrix)
{
    for (const int n : {1, 2, 3, 8, 9, 40, 67}) {
        for (const double smallest : {1.0, 1e-6, 1e-30}) {
            matrix<double> A = RandomDefinite(n, smallest);
            ExpectDecomposition(A);
            // the same upside down, and with both signs
            matrix<double> reversed(n, n);
            for (int i = 1; i <= n; ++i) {
                for (int j = 1; j <= n; ++j) {
                    reversed.vbset(i, j, A.vbget(n + 1 - i, n + 1 - j) - (i == j && i % 2 == 0 ? 0.3 : 0.0));
                }
            }
            ExpectDecomposition(reversed);
        }
        matrix<double> zero(n, n);
        ExpectDecomposition(zero);
        matrix<double> one(n, n, 0.25);  // rank 1
        ExpectDecomposition(one);
        for (const double scale : {1e300, 1e-300}) {
            matrix<double> scaled = IdentityOf(n);
            for (int i = 1; i < n; ++i) {
                scaled.vbset(i, i + 1, 0.5);
                scaled.vbset(i + 1, i, 0.5);
            }
            for (int i = 1; i <= n * n; ++i) {
                scaled.vbset(i, scaled.vbget(i) * scale);
            }
            ExpectDecomposition(scaled);
        }
    }
}

TEST(Eigen, KnownValues)
{
    // Second differences: 2 - 2 cos(pi k / (n + 1)).
    constexpr int n = 50;
    matrix<double> A(n, n);
    for (int i = 1; i <= n; ++i) {
        A.vbset(i, i, 2.0);
        if (i < n) A.vbset(i, i + 1, -1.0);
        if (i < n) A.vbset(i + 1, i, -1.0);
    }
    const Pairs pairs = Decompose(A);
    for (int k = 1; k <= n; ++k) {
        const double angle = std::acos(-1.0) * (n + 1 - k) / (n + 1.0);
        EXPECT_NEAR(pairs.values->vbget(k), 2.0 - 2.0 * std::cos(angle), 4.0 * n * korvenrg::kEps);
    }
}

TEST(Eigen, OrderAndSigns)
{
    matrix<double> A = ByRows(2, 2, {-1, -2, -2, -1});  // 1 with (1, -1), -3 with (1, 1)
    const double half = std::sqrt(0.5);
    for (const short sort : {korvenrg::kTrue, korvenrg::kFalse}) {
        const Pairs pairs = Decompose(A, sort);
        const int one = sort == korvenrg::kTrue ? 1 : 2;
        ExpectClose(pairs.values->vbget(one), 1.0, kRoundoff);
        ExpectClose(pairs.values->vbget(3 - one), -3.0, kRoundoff);
        ExpectClose(pairs.vectors->vbget(1, one), half, kRoundoff);
        ExpectClose(pairs.vectors->vbget(2, one), -half, kRoundoff);
        ExpectClose(pairs.vectors->vbget(2, 3 - one), half, kRoundoff);
    }
}

// The coordinates beside the largest one do not turn a vector, whatever their order and sign.
TEST(Eigen, NoiseTurnsNoVector)
{
    for (const double noise : {-1e-9, 1e-9}) {
        matrix<double> A = ByRows(2, 2, {1, noise, noise, 2});
        const Pairs pairs = Decompose(A);
        EXPECT_GT(pairs.vectors->vbget(2, 1), 0.999);
        EXPECT_GT(pairs.vectors->vbget(1, 2), 0.999);
    }
}

TEST(Eigen, NotFiniteFailsAndShapesAreMade)
{
    for (const double bad : {std::numeric_limits<double>::quiet_NaN(), HUGE_VAL}) {
        matrix<double> A = IdentityOf(3);
        A.vbset(2, 1, bad);
        auto* values = new matrix<double>(7, 2, 5.0);
        matrix<double>* vectors = nullptr;
        EXPECT_EQ(M_Eigen(&A, values, vectors, 3, -1), -1);
        EXPECT_EQ(Distance(*values, matrix<double>(3, 1)), 0.0);
        EXPECT_EQ(Distance(*vectors, matrix<double>(3, 3)), 0.0);
        delete values;
        delete vectors;
    }
}

TEST(Eigen, FilterDropsWhatIsNearZero)
{
    matrix<double> values = ByRows(5, 1, {4, 1, 1e-3, 1e-13, -2});
    const struct
    {
        double tol, level;
        int kept;
    } cases[] =
        {{1e-12, 0, 3}, {1e-12, 0.01, 2}, {1e-12, 0.3, 1}, {1e-12, 1, 3}, {1, 0, 1}, {0, 0, 4}, {9, 0, 0}};
    for (const auto& c : cases) {
        EXPECT_EQ(FilterEigen(&values, 5, c.tol, c.level), c.kept) << c.tol << ' ' << c.level;
    }
}

TEST(Projections, SquareRootAndNearestSemidefinite)
{
    matrix<double> A = ByRows(3, 3, {5, 0, 4, 0, 9, 0, 4, 0, 5});
    matrixSparse sparse(&A);
    matrix<double> root(3, 3);
    EXPECT_EQ(M_SquareRoot(&sparse, 3, &root), 0);
    EXPECT_LE(Distance(root, ByRows(3, 3, {2, 0, 1, 0, 3, 0, 1, 0, 2})), kRoundoff);
    sparse.vbset(2, 2, -9.0);
    EXPECT_EQ(M_SquareRoot(&sparse, 3, &root), -1);
    EXPECT_EQ(root.vbget(2, 2), 0.0);

    // Eigenvalues of 2e6 and -5e-10, which is rounding, or -5e-7, which is not.
    for (const double below : {1e-9, 1e-6}) {
        matrix<double> rounded = ByRows(2, 2, {1e6, 1e6, 1e6, 1e6 - below});
        matrixSparse sparseRounded(&rounded);
        EXPECT_EQ(M_SquareRoot(&sparseRounded, 2, &root), below < 1e-7 ? 0 : -1) << below;
    }

    matrix<double> indefinite = ByRows(2, 2, {1, 2, 2, 1});  // 3 and -1
    matrix<double>* nearest = nullptr;
    M_SProject(&indefinite, 2, nearest);
    EXPECT_LE(Distance(*nearest, matrix<double>(2, 2, 1.5)), kRoundoff);
    M_SProject(&A, 3, nearest);
    EXPECT_EQ(Distance(*nearest, A), 0.0) << "it has no negative eigenvalue";
    indefinite.vbset(1, 1, HUGE_VAL);
    M_SProject(&indefinite, 2, nearest);
    ASSERT_EQ(nearest->rows, 2);
    EXPECT_EQ(nearest->vbget(1, 1), HUGE_VAL);
    EXPECT_EQ(nearest->vbget(2, 1), 2.0);
    delete nearest;
}

}  // namespace
