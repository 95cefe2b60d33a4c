#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include "core/limits.h"
#include "kernel/linalg/constrained_inverse.h"
#include "kernel/linalg/elimination.h"
#include "kernel/linalg/g2_sweep.h"
#include "kernel/linalg/generalized_inverse.h"
#include "support/dense.h"
#include "support/tolerances.h"

namespace {

using namespace korvenrg::test;
using korvenrg::kFalse;
using korvenrg::kTrue;

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();

TEST(Solving, ScaledResidualsStayAtRounding)
{
    for (const int n : {1, 2, 7, 30, 90}) {
        for (const double smallest : {1.0, 1e-6}) {  // conditions up to some 1e13
            matrix<double> A = RandomDefinite(n, smallest);
            const double unit = 10.0 * n * korvenrg::kEps;

            matrix<double> B(n, 3, 1.0);
            B.vbset(1, 2, -2.0);
            B.vbset(n, 3, 0.25);
            matrix<double> X(B);
            ASSERT_EQ(M_Gauss(&A, n, 3, &X, kTrue, kTrue), 0);
            EXPECT_LE(Distance(Times(A, X), B), unit * RowNorm(A) * RowNorm(X)) << n;

            matrix<double> inverse(n, n);
            ASSERT_EQ(cCleanConstraintsAndInvert(n, static_cast<matrix<int>*>(nullptr), &A, &inverse), 0);
            const double scale = unit * RowNorm(A) * RowNorm(inverse);
            EXPECT_LE(Distance(Times(A, inverse), IdentityOf(n)), scale) << n;
            int rank = 0;
            ASSERT_EQ(M_InvGeneralized(&A, n, &inverse, 1e-14, rank), 0);
            EXPECT_EQ(rank, n);
            EXPECT_LE(Distance(Times(A, inverse), IdentityOf(n)), scale) << n;
        }
    }
}

TEST(Gauss, FlagsChoosePivotingAndTheCopy)
{
    matrix<double> A = ByRows(2, 2, {0, 2, 4, 1});
    matrix<double> B = ByRows(2, 1, {6, 11});
    EXPECT_EQ(M_Gauss(&A, 2, 1, &B, kFalse, kTrue), -1);
    EXPECT_EQ(B.vbget(2), 11.0);
    EXPECT_EQ(M_Gauss(&A, 2, 1, &B, kTrue, kTrue), 0);
    EXPECT_EQ(Distance(B, ByRows(2, 1, {2, 3})), 0.0);
    EXPECT_EQ(A.vbget(1, 1), 0.0);
    EXPECT_EQ(M_Gauss(&A, 2, 1, &B, kTrue, kFalse), 0);
    EXPECT_EQ(A.vbget(1, 1), 4.0);  // the factor

    matrix<double> aliased = ByRows(2, 2, {1.0 / 3, 0.7, 10.0 / 3, 7.0});  // dependent up to rounding
    EXPECT_EQ(M_Gauss(&aliased, 2, 1, &B, kTrue, kTrue), -1);
    matrix<double> graded = ByRows(2, 2, {1, 1e-20, 1e-20, 2e-39});  // regular on any scale
    EXPECT_EQ(M_Gauss(&graded, 2, 1, &B, kTrue, kTrue), 0);
}

TEST(InverseWithTolerance, LimitIsOneOfTwo)
{
    // Pivots 2 and `last`, after a row exchange.
    const struct
    {
        double last, limit;
        int result;
    } cases[] = {{1e-8, 1e-12, -1},
                 {1.01e-8, 1e-12, 0},
                 {1e-8, 0, 0},
                 {2.220446049250313E-16, 0, -1},
                 {2.3e-16, -1, 0},
                 {kNaN, 0, -1}};
    for (const auto& c : cases) {
        matrix<double> A = ByRows(2, 2, {0, c.last, 2, 0});
        matrix<double>* inverse = nullptr;
        short failed = 7;
        EXPECT_EQ(InverseWithTolerance(&A, inverse, failed, c.limit), c.result) << c.last;
        EXPECT_EQ(failed, c.result);
        if (c.result == 0) {
            EXPECT_EQ(inverse->vbget(1, 2), 0.5);
            EXPECT_EQ(inverse->vbget(2, 1), 1.0 / c.last);
        }
        delete inverse;
    }
    matrix<double> wide = ByRows(1, 2, {1, 1});
    auto* kept = new matrix<double>(1, 1, 7.0);
    short failed = 0;
    EXPECT_EQ(InverseWithTolerance(&wide, kept, failed, 0.0), -1);
    EXPECT_EQ(failed, -1);
    EXPECT_EQ(kept->vbget(1), 7.0);
    delete kept;
}

TEST(ForwardDoolittle, RowsAreSequentialHypotheses)
{
    // The third column repeats the first.
    matrix<double> A = ByRows(3, 3, {4, 2, 4, 2, 5, 2, 4, 2, 4});
    matrix<double>* U = nullptr;
    EXPECT_EQ(M_ForwardDoolittle(&A, 3, 1e-12, U), 2);
    EXPECT_EQ(Distance(*U, ByRows(3, 3, {1, 0.5, 1, 0, 1, 0, 0, 0, 0})), 0.0);
    A.vbset(3, 3, 4.0 + 1e-9);
    EXPECT_EQ(M_ForwardDoolittle(&A, 3, 1e-8, U), 2);
    EXPECT_EQ(M_ForwardDoolittle(&A, 3, 1e-11, U), 3);
    A.vbset(1, 3, kNaN);
    EXPECT_EQ(M_ForwardDoolittle(&A, 3, 1e-12, U), -1);
    EXPECT_EQ(Distance(*U, matrix<double>(3, 3)), 0.0);
    delete U;
}

TEST(G2Sweep, SelectedPivotsAndTheSolution)
{
    // Columns 1, 2, 3 = 1 + 2 and the response, in the leading part of a larger matrix.
    const matrix<double> x = ByRows(4, 4, {1, 0, 1, 3, 1, 1, 2, 5, 1, 2, 3, 6, 1, 3, 4, 10});
    matrix<double> A = Times(Transpose(x), x);
    matrix<int> selected(4, 1, 1);
    selected.vbset(4, 0);
    matrix<double> G(4, 4, 77.0);
    for (const short relative : {kFalse, kTrue}) {
        M_InverseG2Selective(&A, 4, &selected, 1e-6, &G, relative);
        ExpectClose(G.vbget(1, 4), 2.7, kRoundoff);
        ExpectClose(G.vbget(2, 4), 2.2, kRoundoff);
        ExpectClose(G.vbget(4, 2), -2.2, kRoundoff);
        ExpectClose(G.vbget(4, 4), 1.8, kIterative);  // residual sum of squares
        ExpectClose(G.vbget(1, 1), 0.7, kRoundoff);
        for (int j = 1; j <= 4; ++j) {
            EXPECT_EQ(G.vbget(3, j), 0.0);
            EXPECT_EQ(G.vbget(j, 3), 0.0);
        }
    }
    M_InverseG2Selective(&A, 4, &selected, 5.0, &G, kFalse);  // refuses the first pivot, 4, alone
    EXPECT_EQ(G.vbget(1, 4), 0.0);
    EXPECT_NE(G.vbget(2, 4), 0.0);
    M_InverseG2Selective(&A, 4, &selected, 0.9, &G, kTrue);  // 5 is left of the second pivot's 14
    EXPECT_EQ(G.vbget(1, 4), 6.0);
    EXPECT_EQ(G.vbget(2, 4), 0.0);
}

TEST(G2Sweep, TwiceRestoresAndBadPivotsAreCleared)
{
    matrix<double> m = ByRows(3, 3, {4, 2, 8, 2, 5, 1, 9, 9, 9});
    G2SweepStep(&m, 2, 1, 1e-12);  // the leading 2 x 2 alone
    EXPECT_EQ(Distance(m, ByRows(3, 3, {0.25, 0.5, 8, -0.5, 4, 1, 9, 9, 9})), 0.0);
    G2SweepStep(&m, 2, 1, 1e-12);
    EXPECT_EQ(Distance(m, ByRows(3, 3, {4, 2, 8, 2, 5, 1, 9, 9, 9})), 0.0);
    G2SweepStep(&m, 2, 3, 1e-12);
    EXPECT_EQ(m.vbget(3, 3), 9.0);
    matrix<double> narrow(3, 2, 4.0);
    G2SweepStep(&narrow, 3, 1, 1e-12);
    EXPECT_EQ(Distance(narrow, matrix<double>(3, 2, 4.0)), 0.0) << "fewer than n x n cells";
    for (const double pivot : {1e-13, -4.0, kNaN}) {
        double cells[] = {4, 2, 2, pivot};
        G2SweepStep(cells, 2, 2, 1e-12);
        EXPECT_EQ(cells[0], 4.0);
        EXPECT_EQ(cells[1] + cells[2] + cells[3], 0.0);
    }
}

TEST(GeneralizedInverse, SingularAndUnsymmetric)
{
    const struct
    {
        matrix<double> A;
        int rank;
    } cases[] = {{ByRows(3, 3, {4, 2, 4, 2, 5, 2, 4, 2, 4}), 2},
                 {ByRows(3, 3, {0, 1, 0, 0, 0, 1, 1, 0, 0}), 3},
                 {ByRows(3, 3, {0, 2, 0, 2, 0, 2, 0, 2, 0}), 2},  // indefinite
                 {ByRows(3, 3, {1, 2, 0, 2, 1, 0, 0, 0, 1}), 3},  // by its middle pivot
                 {ByRows(3, 3, {1, 2, 3, 2, 4, 6, 1, 0, 1e-9}), 2},
                 {ByRows(3, 3, {1, 0, 0, 3e-20, 1e-20, 0, 0, 0, 1e20}), 3},
                 {ByRows(3, 3, {1, 0.5, 0, 0.1, 1, 0, 0, 0, 1}), 3},
                 {matrix<double>(3, 3), 0}};
    for (const auto& c : cases) {
        matrix<double> A(c.A);
        matrix<double> G(3, 3);
        matrixSparse sparse(&A);
        matrixSparse sparseG;
        int rank = -1;
        int sparseRank = -1;
        EXPECT_EQ(M_InvGeneralized(&A, 3, &G, 1e-12, rank), 0);
        EXPECT_EQ(rank, c.rank);
        const double scale = RowNorm(A) * RowNorm(G);
        EXPECT_LE(Distance(Times(Times(A, G), A), A), 1e-15 * scale * RowNorm(A)) << rank;
        EXPECT_LE(Distance(Times(Times(G, A), G), G), 1e-15 * scale * RowNorm(G)) << rank;
        EXPECT_EQ(M_InvGeneralized(&sparse, 3, &sparseG, 1e-12, sparseRank), 0);
        EXPECT_EQ(sparseRank, c.rank);
        matrix<double> dense(3, 3);
        sparseG.outputSparse(&dense);
        EXPECT_LE(Distance(Times(Times(A, dense), A), A), 1e-15 * scale * RowNorm(A));
    }
    // Of a dependent set the later row is left out, and the upper triangle is not read.
    matrix<double> lower = ByRows(3, 3, {4, kNaN, kNaN, 2, 5, kNaN, 4, 2, 4});
    matrix<double> G(3, 3);
    int rank = 0;
    EXPECT_EQ(M_InvGeneralizedSym(&lower, 3, &G, 1e-8, rank), 0);
    EXPECT_LE(Distance(G, ByRows(3, 3, {5.0 / 16, -0.125, 0, -0.125, 0.25, 0, 0, 0, 0})), kRoundoff);
    // The same for a matrix that rounding has made unsymmetric, though the row that depends is the largest.
    matrix<double> nearly = ByRows(3, 3, {1, 0, 3, 0, 1, 4, 3, 4 + 1e-14, 25});
    EXPECT_EQ(M_InvGeneralized(&nearly, 3, &G, 1e-8, rank), 0);
    EXPECT_LE(Distance(G, ByRows(3, 3, {1, 0, 0, 0, 1, 0, 0, 0, 0})), kRoundoff);
    matrix<double> mirrored = ByRows(3, 3, {0, kNaN, kNaN, 2, 0, kNaN, 0, 2, 0});  // indefinite
    EXPECT_EQ(M_InvGeneralizedSym(&mirrored, 3, &G, 1e-8, rank), 0);
    EXPECT_EQ(rank, 2);
    EXPECT_LE(Distance(G, ByRows(3, 3, {0, 0.5, 0, 0.5, 0, 0, 0, 0, 0})), kRoundoff);
    // The tolerance is a share of the diagonal: the second pivot is 1 of 1e6 + 1.
    matrix<double> scaled = ByRows(2, 2, {1e6, 1e6, 1e6, 1e6 + 1});
    for (const double tolerance : {1e-7, 1e-5}) {
        EXPECT_EQ(M_InvGeneralized(&scaled, 2, &G, tolerance, rank), 0);
        EXPECT_EQ(rank, tolerance < 1e-6 ? 2 : 1);
    }
    EXPECT_EQ(M_InvGeneralized(&lower, 3, &G, 1e-8, rank), -1);
    EXPECT_EQ(rank, 0);
}

}  // namespace
