#include "core/matrix3d.h"

#include <gtest/gtest.h>

namespace {

// A block of the other kind: no references, reads and writes by element, as the sparse matrix has them.
struct CountedBlock
{
    static int alive;
    matrix<double> cells;

    CountedBlock(int rows, int cols, double fill) : cells(rows, cols, fill)
    {
        ++alive;
    }
    ~CountedBlock()
    {
        --alive;
    }
    double vbget(int i, int j) const
    {
        return cells.vbget(i, j);
    }
    void vbset(int i, int j, double value)
    {
        cells.vbset(i, j, value);
    }
};
int CountedBlock::alive = 0;

TEST(Matrix3D, BlocksHoldTheirOwnShapes)
{
    matrix<int> sizes(3, 1);
    sizes.vbset(1, 2);
    sizes.vbset(2, 0);
    sizes.vbset(3, 4);
    matrix3D<matrix<double>> blocks(3, &sizes, 1.5);
    EXPECT_EQ(blocks.count, 3);
    EXPECT_EQ(blocks.vbget(1)->total, 4U);
    EXPECT_EQ(blocks.vbget(2)->total, 0U);
    EXPECT_EQ(blocks.vbget(3)->rows, 4);
    EXPECT_EQ(blocks.vbget(3)->cols, 4);
    EXPECT_EQ(blocks.vbget(3, 4, 4), 1.5);
    EXPECT_EQ(blocks.elements[2], blocks.vbget(3));

    EXPECT_EQ(sizeof(blocks), 16U);
    EXPECT_EQ(static_cast<void*>(&blocks.count), static_cast<void*>(&blocks));
}

TEST(Matrix3D, ElementsFollowTheRulesOfTheirBlock)
{
    matrix3D<matrix<double>> blocks(2, 2, 3, 0.0);
    blocks.vbset(2, 1, 3, 7.0);
    blocks.vbset(2, 2, 8.0);
    blocks(1, 2, 1) = 9.0;
    EXPECT_EQ(blocks.vbget(2, 5), 7.0);
    EXPECT_EQ(blocks(2, 2, 1), 8.0);
    EXPECT_EQ(blocks.vbget(1, 2), 9.0);
    EXPECT_EQ(blocks.vbget(1, 1, 3), 0.0);

    EXPECT_EQ(blocks.vbget(1, 7), -1.0);
    blocks.vbset(1, 3, 3, 5.0);
    EXPECT_EQ(blocks.vbget(1, 7), -1.0);
    blocks(1, 3, 3) = 5.0;
    EXPECT_EQ(blocks.vbget(1, 7), 5.0);
    EXPECT_EQ(blocks.vbget(2, 7), -1.0);
}

// Pinned: assignment shares the blocks and forgets the target's own.
TEST(Matrix3D, AssignmentIsShallow)
{
    matrix3D<matrix<double>> source(2, 1, 1, 1.0);
    matrix3D<matrix<double>> target(1, 1, 1, 2.0);
    matrix<double>** const forgotten = target.elements;
    target = source;
    EXPECT_EQ(target.count, 2);
    EXPECT_EQ(target.elements, source.elements);
    EXPECT_EQ(forgotten[0]->vbget(1), 2.0);
    delete forgotten[0];
    delete[] forgotten;
    source.count = 0;
    source.elements = nullptr;
}

TEST(Matrix3D, DeletesTheBlocksThatAreThere)
{
    {
        matrix3D<CountedBlock> empty(3);
        EXPECT_EQ(empty.vbget(1), nullptr);
        EXPECT_EQ(empty.getElement(2), nullptr);
        empty.elements[1] = new CountedBlock(1, 1, 4.0);
        matrix3D<CountedBlock> full(2, 2, 2, 3.0);
        EXPECT_EQ(CountedBlock::alive, 3);
        EXPECT_EQ(full.getElement(0), full.vbget(1));
        full.vbset(1, 2, 2, 5.0);
        EXPECT_EQ(full.getElement(0)->vbget(2, 2), 5.0);
        EXPECT_EQ(full.vbget(2, 2, 2), 3.0);
    }
    EXPECT_EQ(CountedBlock::alive, 0);
}

}  // namespace
