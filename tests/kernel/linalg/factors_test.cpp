#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include "core/limits.h"
#include "kernel/linalg/cholesky.h"
#include "kernel/linalg/determinants.h"
#include "support/dense.h"
#include "support/tolerances.h"

namespace {

using namespace korvenrg::test;
using korvenrg::kFalse;
using korvenrg::kTrue;

TEST(Cholesky, FactorOrFirstBadPivot)
{
    matrix<double> A = ByRows(3, 3, {4, 77, 77, 2, 10, 77, 10, 23, 77});  // the lower triangle is read
    A.vbset(3, 3, 77.0);
    matrix<double>* L = nullptr;
    EXPECT_EQ(M_CholDecomp(&A, 3, L), 0);
    EXPECT_EQ(Distance(*L, ByRows(3, 3, {2, 0, 0, 1, 3, 0, 5, 6, 4})), 0.0);
    for (const double last : {61.0, 60.0, std::numeric_limits<double>::quiet_NaN()}) {
        A.vbset(3, 3, last);
        EXPECT_EQ(M_CholDecomp(&A, 3, L), -3) << last;
        EXPECT_EQ(Distance(*L, ByRows(3, 3, {2, 0, 0, 1, 3, 0, 5, 6, 0})), 0.0);
    }
    delete L;

    matrix<double> blocks = ByRows(4, 4, {4, 0, 2, 0, 0, 9, 0, 3, 2, 0, 10, 0, 0, 3, 0, 1});
    matrixSparse sparse(&blocks);
    matrixSparse factor;
    EXPECT_EQ(M_CholDecomp(&sparse, 4, &factor), -4);
    EXPECT_EQ(factor.vbget(3, 3), 3.0);
    EXPECT_EQ(factor.vbget(4, 2), 1.0);
    EXPECT_EQ(factor.NonZeros(), 5U);
}

TEST(Cholesky, CleanedSkipsMarkedAndEmptyPivots)
{
    // Row 2 is marked, row 4 repeats row 1, the others give (2; 1 3).
    matrix<double> A = ByRows(4, 4, {4, 7, 2, 4, 7, 7, 7, 7, 2, 7, 10, 2, 4, 7, 2, 4});
    matrix<double> marks = ByRows(4, 1, {0, 1, 0, 0});
    matrix<double>* L = nullptr;
    EXPECT_EQ(M_CholDecompCleaned(&A, 4, &marks, L), 0);
    EXPECT_EQ(Distance(*L, ByRows(10, 1, {2, 0, 0, 1, 0, 3, 2, 0, 0, 0})), 0.0);
    short ok = kFalse;
    ExpectClose(M_DeterminantCleaned(&A, 4, &marks, &ok), 36.0, kRoundoff);
    EXPECT_EQ(ok, kTrue);
    A.vbset(3, 3, 0.5);
    EXPECT_EQ(M_CholDecompCleaned(&A, 4, &marks, L), -3);
    EXPECT_EQ(M_DeterminantCleaned(&A, 4, &marks, &ok), 0.0);
    EXPECT_EQ(ok, kFalse);
    delete L;
}

// Covariances of two columns at correlation c and a combination of both: what is left of its pivot is rounding of what was
// cancelled, far above that of the cell itself. A third column with a spread of 1e-5 of its own stays.
TEST(Cholesky, CleanedKnowsWhatCancellationLeaves)
{
    for (const double c : {0.0, 0.9, 0.999, 0.99999}) {
        for (int k = 1; k <= 40; ++k) {
            const double a = std::sqrt(k) / 3, b = -1 / std::sqrt(k + 1);
            const double toFirst = a + b * c, toSecond = a * c + b, own = a * toFirst + b * toSecond;
            matrix<double> A = ByRows(3, 3, {1, c, toFirst, c, 1, toSecond, toFirst, toSecond, own});
            matrix<double>* L = nullptr;
            EXPECT_EQ(M_CholDecompCleaned(&A, 3, nullptr, L), 0) << c << ' ' << k;
            EXPECT_EQ(L->vbget(6), 0.0) << c << ' ' << k;
            A.vbset(3, 3, own + 1e-10);
            EXPECT_EQ(M_CholDecompCleaned(&A, 3, nullptr, L), 0);
            EXPECT_NEAR(L->vbget(6), 1e-5, 1e-7) << c << ' ' << k;
            A.vbset(3, 3, own - 1e-4);
            EXPECT_EQ(M_CholDecompCleaned(&A, 3, nullptr, L), -3);
            delete L;
        }
    }
}

TEST(Cholesky, PivotedFactorOfASemidefiniteMatrix)
{
    matrix<double> A = ByRows(3, 3, {1, 1, 2, 1, 1, 2, 2, 2, 13});
    matrixSparse sparse(&A);
    matrixSparse factor;
    matrix<double> pivots(3, 1);
    matrix<double> L(3, 3);
    EXPECT_EQ(M_CholDecompPrinc(&sparse, 3, &factor, &pivots, kTrue), 0);
    factor.outputSparse(&L);
    EXPECT_LE(Distance(Times(L, Transpose(L)), A), 4e-15);
    EXPECT_EQ(pivots.vbget(1), 3.0);
    EXPECT_EQ(M_CholDecompPrinc(&sparse, 3, &factor, nullptr, kFalse), 0);
    ExpectClose(factor.vbget(1, 1), std::sqrt(13.0), kRoundoff);
    EXPECT_EQ(factor.vbget(1, 2), 0.0);
    matrix<double> cycle = ByRows(3, 3, {4, 2, 1, 2, 25, 5, 1, 5, 10});  // pivots in the order 2, 3, 1
    matrixSparse sparseCycle(&cycle);
    EXPECT_EQ(M_CholDecompPrinc(&sparseCycle, 3, &factor, &pivots, kTrue), 0);
    EXPECT_EQ(Distance(pivots, ByRows(3, 1, {2, 3, 1})), 0.0);
    factor.outputSparse(&L);
    EXPECT_LE(Distance(Times(L, Transpose(L)), cycle), 1e-14);
    EXPECT_EQ(M_CholDecompPrinc(&sparseCycle, 3, &factor, nullptr, kFalse), 0);
    EXPECT_EQ(Distance(ByRows(1, 3, {factor.vbget(1, 1), factor.vbget(2, 1), factor.vbget(2, 2)}),
                       ByRows(1, 3, {5, 1, 3})),
              0.0);
    sparse.vbset(2, 2, 0.5);
    EXPECT_EQ(M_CholDecompPrinc(&sparse, 3, &factor, nullptr, kFalse), -1);
    matrix<double> exchange = ByRows(2, 2, {0, 1, 1, 0});
    sparse = matrixSparse(&exchange);
    EXPECT_EQ(M_CholDecompPrinc(&sparse, 2, &factor, nullptr, kFalse), -1);
}

TEST(Determinants, SignsScalesAndDegenerateMatrices)
{
    matrix<double> A = ByRows(3, 3, {0, 2, 0, 3, 1, 0, 0, 0, -5});
    EXPECT_EQ(M_Determinant(&A, 3), 30.0);
    EXPECT_EQ(M_Determinant(&A, 2), -6.0);
    EXPECT_EQ(M_Determinant(&A, 1), 0.0);
    EXPECT_EQ(M_Determinant(&A, 0), 1.0);
    // 200 pivots of -1e-3, then as many of -1e3: no product of the way leaves the range.
    matrix<double> graded(400, 400);
    for (int i = 1; i <= 400; ++i) {
        graded.vbset(i, i, i <= 200 ? -1e-3 : -1e3);
    }
    ExpectClose(M_Determinant(&graded, 400), 1.0, kIterative);
    const korvenrg::linalg::LogDeterminant half = korvenrg::linalg::LogDeterminantOf(graded, 199);
    EXPECT_EQ(half.sign, -1);
    ExpectClose(half.logAbsolute, -597.0 * std::log(10.0), kRoundoff);
    graded.vbset(3, 3, std::numeric_limits<double>::quiet_NaN());
    EXPECT_TRUE(std::isnan(M_Determinant(&graded, 3)));
}

TEST(Rank, CountsColumnsOnAnyScale)
{
    // The third column is the sum of the others, up to rounding; scales of 1e-12 and 1e12.
    matrix<double> X(5, 4);
    for (int i = 1; i <= 5; ++i) {
        X.vbset(i, 1, 1e-12 * std::sin(i));
        X.vbset(i, 2, 1e12 * std::cos(i));
        X.vbset(i, 3, std::sin(i) / 3 + std::cos(i) / 7);
    }
    EXPECT_EQ(M_Rank(&X, 5, 2, 0.0), 2);
    EXPECT_EQ(M_Rank(&X, 5, 4, 0.0), 2);
    X.vbset(2, 4, 1e-9);
    EXPECT_EQ(M_Rank(&X, 5, 4, 1e-10), 3);
    EXPECT_EQ(M_Rank(&X, 2, 4, 0.0), 2);
    X.vbset(1, 3, X.vbget(1, 3) + 1e-8);
    EXPECT_EQ(M_Rank(&X, 5, 3, 1e-10), 3);
    EXPECT_EQ(M_Rank(&X, 5, 3, 1e-6), 2);
    matrix<double> zero(3, 3);
    EXPECT_EQ(M_Rank(&zero, 3, 0.0), 0);
}

TEST(Norms, TraceAndRowSums)
{
    matrix<double> A = ByRows(2, 3, {1, -2, 3, -4, 5, -6});
    EXPECT_EQ(M_Trace(&A, 2), 6.0);
    EXPECT_EQ(M_RowSumNorm(&A, 2, 3), 15.0);
    EXPECT_EQ(M_RowSumNorm(&A, 1, 2), 3.0);
}

}  // namespace
