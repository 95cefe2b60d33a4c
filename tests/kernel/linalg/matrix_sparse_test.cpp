#include "kernel/linalg/matrix_sparse.h"

#include <gtest/gtest.h>

#include <type_traits>

#include "support/tolerances.h"

namespace {

using namespace korvenrg::test;

TEST(MatrixSparse, StoresWhatIsNotZero)
{
    matrixSparse sparse(1000, 1000, 0.0);
    sparse.vbset(1000, 1, 3.0);
    sparse.setElement(4, 7, -2.0);
    sparse.vbset(5, 8, -1.0);  // the same cell, counted from 1
    sparse.vbset(1001, 1, 9.0);
    EXPECT_EQ(sparse.NonZeros(), 2U);
    EXPECT_EQ(sparse.vbget(1000), 3.0);
    EXPECT_EQ(sparse.getElement(4, 7), -1.0);
    EXPECT_EQ(sparse.vbget(2, 2), 0.0);
    EXPECT_EQ(sparse.vbget(1001, 1), -1.0);
    EXPECT_EQ(sparse.vbget(0), -1.0);
    sparse.vbset(5, 8, 0.0);
    EXPECT_EQ(sparse.NonZeros(), 1U);
    sparse.ReInit();
    EXPECT_EQ(sparse.NonZeros(), 0U);
    sparse.Redim(2, 3, 4.0);
    matrix<double> dense(2, 3);
    sparse.outputSparse(&dense);
    EXPECT_EQ(dense.vbget(2, 3), 4.0);
    EXPECT_EQ(matrixSparse(&dense).NonZeros(), 6U);
}

TEST(MatrixSparse, InverseStaysBlockDiagonal)
{
    // Blocks {1, 3} and {2, 4, 5}, the second unsymmetric and in need of a row exchange.
    matrixSparse sparse(5, 5, 0.0);
    const struct
    {
        int i, j;
        double value;
    } cells[] =
        {{1, 1, 2}, {1, 3, 1}, {3, 1, 1}, {3, 3, 4}, {2, 4, 5}, {4, 2, 3}, {4, 4, 1}, {5, 5, 7}, {2, 5, 1}};
    for (const auto& cell : cells) {
        sparse.vbset(cell.i, cell.j, cell.value);
    }
    matrixSparse inverse;
    short ok = 0;
    ASSERT_EQ(sparse.inverse1(&inverse, ok, 1e-12), 0);
    EXPECT_EQ(ok, -1);
    EXPECT_EQ(inverse.vbget(1, 2), 0.0);
    for (int i = 1; i <= 5; ++i) {
        for (int j = 1; j <= 5; ++j) {
            double product = 0.0;
            for (int k = 1; k <= 5; ++k) {
                product += sparse.vbget(i, k) * inverse.vbget(k, j);
            }
            EXPECT_NEAR(product, i == j ? 1.0 : 0.0, kRoundoff) << i << ' ' << j;
        }
    }
    matrixSparse components(3, 3, 0.0);  // a variance of 0 between two others
    components.vbset(1, 1, 4.0);
    components.vbset(3, 3, 5.0);
    EXPECT_EQ(components.inverse1(&inverse, ok, 1e-12), -1);
    EXPECT_EQ(ok, 0);
    const double kept[] = {0.25, 0.0, 0.2};
    for (int i = 1; i <= 3; ++i)
        EXPECT_EQ(inverse.vbget(i, i), kept[i - 1]);
    EXPECT_EQ(matrixSparse(2, 3, 1.0).inverse1(&inverse, ok, 1e-12), -1);
}

TEST(MatrixSparse, InverseNeedsPivotsAboveTheTolerance)
{
    for (const double tolerance : {1.75, 1.0, 0.5}) {
        matrixSparse pivots(2, 2, 0.0);
        pivots.vbset(1, 1, 3.0);
        pivots.vbset(4, -1.0);  // cell (2, 2) by its linear index
        matrixSparse inverse;
        short ok = 7;
        EXPECT_EQ(pivots.inverse1(&inverse, ok, tolerance), tolerance < 1.0 ? 0 : -1) << tolerance;
        EXPECT_EQ(ok, tolerance < 1.0 ? -1 : 0);
        EXPECT_TRUE(ok == 0 || inverse.vbget(2, 2) == -1.0);
    }
}

TEST(Matrix3DOfSparse, CountsBlocksFromOneButElementsFromZero)
{
    matrix<int> sizes(2, 1);
    sizes.vbset(1, 2);
    sizes.vbset(2, 3);
    matrix3D<matrixSparse> blocks(2, &sizes, 0.5);
    EXPECT_EQ(blocks.getElement(0), blocks.vbget(1));
    EXPECT_EQ(blocks.vbget(2)->Rows(), 3);
    blocks.vbset(2, 3, 3, 8.0);
    EXPECT_EQ(blocks.vbget(2, 9), 8.0);
    EXPECT_EQ(blocks.vbget(1, 3, 3), -1.0);

    matrix3D<matrixSparse> empty(3);
    EXPECT_EQ(empty.vbget(3), nullptr);
    empty.elements[0] = new matrixSparse(1, 1, 2.0);
    EXPECT_EQ(empty.vbget(1, 1, 1), 2.0);
    static_assert(!std::is_polymorphic_v<matrix3D<matrixSparse>>);
}

}  // namespace
