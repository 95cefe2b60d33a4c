#include "kernel/linalg/copies.h"

#include <gtest/gtest.h>

#include <memory>

#include "kernel/linalg/block_tables.h"
#include "kernel/linalg/vectors.h"
#include "support/dense.h"

namespace {

using korvenrg::test::ByRows;

using Table = matrix<double>;
using OwnedTable = std::unique_ptr<Table>;

// Cell (i, j) is 10 i + j, but 0 where i + j is a multiple of three: a pattern that shows transposes and shifts.
Table Numbered(int rows, int cols)
{
    Table table(rows, cols);
    for (int j = 1; j <= cols; ++j) {
        for (int i = 1; i <= rows; ++i) {
            table.vbset(i, j, (i + j) % 3 == 0 ? 0.0 : 10.0 * i + j);
        }
    }
    return table;
}

void ExpectSame(const Table& actual, const Table& expected)
{
    ASSERT_EQ(actual.rows, expected.rows);
    ASSERT_EQ(actual.cols, expected.cols);
    for (int k = 1; k <= static_cast<int>(expected.total); ++k) {
        EXPECT_EQ(actual.vbget(k), expected.vbget(k)) << "element " << k;
    }
}

Table DenseOf(const matrixSparse& sparse)
{
    Table dense(sparse.Rows(), sparse.Cols());
    sparse.outputSparse(&dense);
    return dense;
}

TEST(Copies, BlocksLandWhereTheyShould)
{
    Table source = Numbered(5, 4);
    Table target(4, 4, -7.0);
    M_Duplicate(&source, 2, 3, &target, 3, 2, 4, 1);
    EXPECT_EQ(target.vbget(3, 2), 41.0);
    EXPECT_EQ(target.vbget(3, 4), 43.0);
    EXPECT_EQ(target.vbget(4, 2), 0.0);
    EXPECT_EQ(target.vbget(2, 2), -7.0);
    EXPECT_EQ(target.vbget(3, 1), -7.0);

    Table packed = Numbered(6, 1);
    Table vector(3, 1);
    M_CopyBlock(&packed, 3, 5, 1, 1, &vector);
    EXPECT_EQ(vector.vbget(2), 41.0);
    matrix<int> codes(3, 2, 8);
    Table doubles(5, 2);
    V_Duplicate(&codes, 2, 2, 3, &doubles, 2, 4);
    EXPECT_EQ(doubles.vbget(4, 2), 8.0);
    EXPECT_EQ(doubles.vbget(5, 2), 8.0);
    EXPECT_EQ(doubles.vbget(3, 2), 0.0);
    auto* column = new Table(1, 3, 9.0);
    const OwnedTable owner(column);
    CopyMatrixColToVector(&source, 4, 3, column);
    ExpectSame(*column, ByRows(4, 1, {13, 23, 0, 43}));
    CopyMatrixColToMatrixCol(&source, 3, 2, &doubles, 1);
    ExpectSame(doubles, ByRows(5, 2, {0, 0, 22, 0, 32, 0, 0, 8, 0, 8}));
    Table* created = nullptr;
    CopyMatrixColToVector(column, 4, 1, created);
    const OwnedTable second(created);
    ExpectSame(*created, *column);
    V_Duplicate2(&source, 3, created);
    ExpectSame(*created, ByRows(4, 1, {11, 0, 31, 43}));
    M_ExtractMatToMat(&source, 3, 5, 4, &source);
    EXPECT_EQ(source.vbget(2, 4), 44.0) << "rows may move up within one table";
}

// Every position of a block, also partly outside: the sparse forms leave what the dense ones leave.
TEST(Copies, SparseFormsAgreeWithDenseOnes)
{
    Table source = Numbered(5, 4);
    Table old = Numbered(6, 6);
    matrixSparse sparseSource(&source);
    for (int r = 1; r <= 6; ++r) {
        for (int rows = 0; rows <= 5; ++rows) {
            Table dense(6, old);
            matrixSparse sparse(&old);
            const int fitting = std::min(rows, 7 - r);  // the dense form would run on into the next column
            M_PasteBlock(&source, fitting, 4, &dense, r, 4);
            M_PasteBlock(&sparseSource, rows, 4, &sparse, r, 4);
            ExpectSame(DenseOf(sparse), dense);
            EXPECT_EQ(sparse.NonZeros(), matrixSparse(&dense).NonZeros()) << "and stores nothing outside";
            Table pasted(6, old);
            M_PasteBlock(&sparseSource, fitting, 4, &pasted, r, 4);
            ExpectSame(pasted, dense);
        }
    }
    matrixSparse fromDense(4, 3, 5.0);
    matrixSparse fromSparse(4, 3, 5.0);
    M_CopyBlock(&source, 2, 4, 3, 4, &fromDense);
    M_CopyBlock(&sparseSource, 2, 4, 3, 4, &fromSparse);
    ExpectSame(DenseOf(fromDense), DenseOf(fromSparse));
    EXPECT_EQ(fromDense.vbget(1, 1), 23.0);
    EXPECT_EQ(fromDense.NonZeros(), 10U) << "four of the block, cells of 0 are not stored, and six around it";
    M_Duplicate(&sparseSource, 3, 1, &fromSparse, 1, 3, 4, 1);
    ExpectSame(DenseOf(fromSparse), ByRows(4, 3, {23, 0, 41, 0, 34, 0, 43, 44, 5, 5, 5, 5}));
    M_Duplicate(&sparseSource, 2, 2, &fromSparse, 0, 1, 1, 1);
    EXPECT_EQ(fromSparse.vbget(1, 1), 23.0) << "a position outside copies nothing";
}

TEST(Copies, JoinsPadWithZeros)
{
    Table left = Numbered(3, 2);
    Table right = Numbered(2, 2);
    auto* joined = new Table(3, 3, 7.0);  // of the right shape, so that nothing but the operation clears it
    HMergeTables<double>(&left, 3, 2, &right, 2, 1, joined);
    OwnedTable owner(joined);
    ASSERT_EQ(joined->rows, 3);
    ASSERT_EQ(joined->cols, 3);
    EXPECT_EQ(joined->vbget(1, 3), 11.0);
    EXPECT_EQ(joined->vbget(3, 1), 31.0);
    EXPECT_EQ(joined->vbget(3, 3), 0.0);
    VMergeTables<double>(&left, 2, 2, &right, 1, 1, joined);
    ASSERT_EQ(joined->rows, 3) << "an output of another shape is resized";
    ASSERT_EQ(joined->cols, 2);
    EXPECT_EQ(joined->vbget(2, 2), 22.0);
    EXPECT_EQ(joined->vbget(3, 1), 11.0);
    EXPECT_EQ(joined->vbget(3, 2), 0.0);
}

TEST(Copies, RemovedColumnsAndRowsCloseUp)
{
    const Table source = Numbered(3, 4);
    Table out(3, 3);
    M_RemoveCol(const_cast<Table*>(&source), 3, 4, 2, &out);
    EXPECT_EQ(out.vbget(1, 2), 13.0);
    EXPECT_EQ(out.vbget(3, 3), 34.0);
    Table lower(2, 4);
    M_RemoveRow(const_cast<Table*>(&source), 3, 4, 1, &lower);
    EXPECT_EQ(lower.vbget(1, 2), 22.0);
    EXPECT_EQ(lower.vbget(2, 4), 34.0);

    OwnedTable owner(new Table(3, source));
    Table* table = owner.get();
    M_RemoveCols2(table, 3, 4, 2, 3);
    ASSERT_EQ(table->cols, 2);
    EXPECT_EQ(table->vbget(3, 1), 31.0);
    EXPECT_EQ(table->vbget(3, 2), 34.0);
    M_RemoveCols2(table, 3, 2, 5, 9);
    EXPECT_EQ(table->cols, 2) << "columns that do not exist";
    double cells[] = {1, 2, 3};
    Table view(1, 3, cells, true);
    Table* viewed = &view;
    M_RemoveCols2(viewed, 1, 3, 1, 1);
    EXPECT_EQ(view.cols, 3) << "the caller's memory keeps its shape";
    EXPECT_EQ(cells[0], 2.0);
    EXPECT_EQ(cells[2], 3.0);
}

TEST(Copies, TransposesOfEachShape)
{
    for (const auto& [rows, cols] : {std::pair{1, 1}, {3, 2}, {2, 5}, {17, 33}, {4, 4}}) {
        Table source = Numbered(rows, cols);
        Table expected(cols, rows);
        for (int i = 1; i <= rows; ++i) {
            for (int j = 1; j <= cols; ++j) {
                expected.vbset(j, i, source.vbget(i, j));
            }
        }
        Table* transposed = rows > 2 ? new Table(1, 1) : nullptr;
        M_Transpose(&source, rows, cols, transposed);
        const OwnedTable owner(transposed);
        ExpectSame(*transposed, expected);
        matrixSparse sparse(&source);
        matrixSparse* sparseTransposed = &sparse;
        M_Transpose(&sparse, rows, cols, sparseTransposed);
        ExpectSame(DenseOf(sparse), expected);
        M_Transpose2(&source, rows, cols);
        ExpectSame(source, expected);
    }
    Table larger = Numbered(3, 4);
    M_Transpose2(&larger, 2, 2);
    ExpectSame(larger, ByRows(3, 4, {11, 0, 13, 14, 0, 22, 23, 0, 31, 32, 0, 34}));
}

TEST(Fills, MultiplesAndSums)
{
    Table A = Numbered(2, 3);
    Table B(2, 3, 1.0);
    Table* out = &B;
    M_Sums1As2B(&A, 2, 3, &B, 2.0, -3.0, out);
    EXPECT_EQ(B.vbget(2, 2), 41.0);
    EXPECT_EQ(B.vbget(1, 2), -3.0);
    M_ScalarsA2(&B, 2, 2, 10.0);
    M_APlusVal2(&B, 1, 3, 0.5);
    EXPECT_EQ(B.vbget(2, 2), 410.0);
    EXPECT_EQ(B.vbget(1, 3), 23.5) << "the third column is not multiplied";
    Table multiple(3, 3, 5.0);
    M_ScalarsA(&A, 2, 2, -2.0, &multiple);
    ExpectSame(multiple, ByRows(3, 3, {-22, 0, 5, 0, -44, 5, 5, 5, 5}));
    EXPECT_EQ(A.vbget(2, 2), 22.0);
    Table* sum = nullptr;
    M_Sums1As2B(&A, 2, 1, &B, 1.0, 1.0, sum);
    const OwnedTable owner(sum);
    ASSERT_EQ(sum->cols, 1);
    EXPECT_EQ(sum->vbget(1), A.vbget(1, 1) + B.vbget(1, 1));
    short flags[] = {-1, 1, 7, -1};
    EXPECT_EQ(InitVectorToFalse(flags, 3), 3);
    EXPECT_EQ(flags[0] | flags[1] | flags[2], 0);
    EXPECT_EQ(flags[3], -1);
    V_Set1toN(&A, 5);
    EXPECT_EQ(A.vbget(5), 5.0);
    SetVectorToValue(&A, 2, 9.0);
    EXPECT_EQ(A.vbget(2), 9.0);
    EXPECT_EQ(A.vbget(3), 3.0);
}

TEST(BlockTables, FlatArraysGoInAndOut)
{
    double flat[] = {1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12};
    auto** blocks = new Table*[2];
    loadSuperMat(blocks, flat, 2, 3, 2);
    EXPECT_EQ(blocks[1]->vbget(2, 2), 11.0);
    blocks[0]->vbset(3, 1, -3.0);
    double back[12] = {};
    unloadSuperMat(blocks, back, 2, 3, 2);
    EXPECT_EQ(back[2], -3.0);
    EXPECT_EQ(back[1], 2.0);
    EXPECT_EQ(back[6], 7.0);
    EXPECT_EQ(back[11], 12.0);
    deletecascade(blocks, 2);
    blocks = new Table*[2];
    iniSuperMat(blocks, 2, 3, 2);
    ExpectSame(*blocks[0], Table(3, 2));
    ExpectSame(*blocks[1], Table(3, 2));
    EXPECT_NE(blocks[0], blocks[1]);
    deletecascade(blocks, 2);

    BSTR texts[] = {SysAllocString(L"one"), nullptr, SysAllocString(L"three"), SysAllocString(L"four")};
    auto** words = new matrix<std::wstring>*[2];
    loadSuperMat(words, texts, 2, 1, 2);
    EXPECT_EQ(words[0]->vbget(1, 2), L"");
    words[1]->vbset(1, 1, L"drei");
    BSTR out[4] = {};
    unloadSuperMat(words, out, 2, 1, 2);
    EXPECT_EQ(korvenrg::TextOf(out[2]), L"drei");
    EXPECT_EQ(korvenrg::TextOf(out[3]), L"four");
    deletecascade(words, 2);
    for (int k = 0; k < 4; ++k) {
        SysFreeString(texts[k]);
        SysFreeString(out[k]);
    }
}

}  // namespace
