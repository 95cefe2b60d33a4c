#include <gtest/gtest.h>

#include <memory>
#include <random>

#include "kernel/linalg/block_products.h"
#include "kernel/linalg/copies.h"
#include "kernel/linalg/products.h"
#include "kernel/linalg/sparse_products.h"
#include "kernel/linalg/vectors.h"

namespace {

using Table = matrix<double>;

// Small integers, two thirds of them 0 when `sparse`: every product and sum below is exact in any order.
Table Integers(int rows, int cols, unsigned seed, bool sparse = false)
{
    std::mt19937 generator(seed);
    Table table(rows, cols);
    for (int k = 1; k <= static_cast<int>(table.total); ++k) {
        const auto drawn = static_cast<int>(generator() % 27);
        table.vbset(k, sparse && drawn > 8 ? 0.0 : drawn - 9.0);
    }
    return table;
}

Table SymmetricIntegers(int n, unsigned seed)
{
    Table table = Integers(n, n, seed, true);
    for (int j = 1; j <= n; ++j) {
        for (int i = 1; i < j; ++i) {
            table.vbset(i, j, table.vbget(j, i));
        }
    }
    return table;
}

Table Transposed(const Table& table)
{
    Table transposed(table.cols, table.rows);
    for (int j = 1; j <= table.cols; ++j) {
        for (int i = 1; i <= table.rows; ++i) {
            transposed.vbset(j, i, table.vbget(i, j));
        }
    }
    return transposed;
}

Table DiagonalOf(const Table& vector)
{
    const int n = static_cast<int>(vector.total);
    Table diagonal(n, n);
    for (int i = 1; i <= n; ++i) {
        diagonal.vbset(i, i, vector.vbget(i));
    }
    return diagonal;
}

// The product by its definition.
Table Times(const Table& a, const Table& b)
{
    Table product(a.rows, b.cols);
    for (int i = 1; i <= a.rows; ++i) {
        for (int j = 1; j <= b.cols; ++j) {
            double sum = 0.0;
            for (int k = 1; k <= a.cols; ++k) {
                sum += a.vbget(i, k) * b.vbget(k, j);
            }
            product.vbset(i, j, sum);
        }
    }
    return product;
}

void ExpectSame(const Table& actual, const Table& expected, const char* what)
{
    ASSERT_EQ(actual.rows, expected.rows) << what;
    ASSERT_EQ(actual.cols, expected.cols) << what;
    for (int k = 1; k <= static_cast<int>(expected.total); ++k) {
        ASSERT_EQ(actual.vbget(k), expected.vbget(k))
            << what << ", element " << k << " of " << expected.rows << " x " << expected.cols;
    }
}

struct Sizes
{
    int rows, inner, cols;
};

// Around the lane count, the tile of 16 x 8 and the block of 256 inner indices; empty ones too.
constexpr Sizes kSizes[] =
    {{1, 1, 1}, {3, 0, 2}, {0, 2, 3}, {7, 5, 9}, {16, 8, 8}, {17, 257, 3}, {33, 255, 17}, {2, 600, 525}};

TEST(DenseProducts, EachExpressionAtAllEdges)
{
    for (const auto& [rows, inner, cols] : kSizes) {
        Table A = Integers(rows, inner, 1);
        Table B = Integers(inner, cols, 2);
        Table trA = Transposed(A);
        Table trB = Transposed(B);
        Table product = Times(A, B);
        auto* out = new Table(1, 1, 5.0);
        const std::unique_ptr<Table> owner(out);
        EXPECT_EQ(M_ProductAB(&A, rows, inner, &B, cols, out), 0);
        ExpectSame(*out, product, "A B");
        EXPECT_EQ(M_ProductATrB(&A, rows, inner, &trB, cols, out), 0);
        ExpectSame(*out, product, "A B'");
        M_ProductTrAB(&trA, inner, rows, &B, cols, out);
        ExpectSame(*out, product, "A' B");
        M_ProductATrA(&A, rows, inner, out);
        ExpectSame(*out, Times(A, trA), "A A'");
        M_ProductTrAA(&A, rows, inner, out);
        ExpectSame(*out, Times(trA, A), "A' A");
    }
}

TEST(DenseProducts, FormsWithADiagonalOrAMiddle)
{
    for (const auto& [rows, inner, cols] : {Sizes{3, 5, 2}, {20, 17, 9}, {9, 300, 4}}) {
        Table A = Integers(rows, inner, 3);
        Table B = Integers(inner, cols, 4);
        Table C = Integers(cols, 6, 5);
        Table left = Integers(rows, 1, 6);
        Table right = Integers(inner, 1, 7);
        Table square = Integers(inner, inner, 8);
        Table symmetric = SymmetricIntegers(rows, 9);

        Table triple(rows, 6);
        M_ProductABC(&A, rows, inner, &B, cols, &C, 6, &triple);
        ExpectSame(triple, Times(Times(A, B), C), "A B C");
        Table outer(rows, rows);
        M_ProductABTrA(&A, rows, inner, &square, 1, &outer);  // a flag is on at -1 alone
        ExpectSame(outer, Times(Times(A, square), Transposed(A)), "A B A'");
        Table middle = SymmetricIntegers(inner, 10);
        M_ProductABTrA(&A, rows, inner, &middle, -1, &outer);
        ExpectSame(outer, Times(Times(A, middle), Transposed(A)), "A B A', symmetric");
        Table form(inner, inner);
        M_ProductTrABA(&A, rows, inner, &symmetric, -1, &form);
        ExpectSame(form, Times(Times(Transposed(A), symmetric), A), "A' B A, symmetric");
        Table skew = Integers(rows, rows, 11);
        M_ProductTrABA(&A, rows, inner, &skew, 1, &form);
        ExpectSame(form, Times(Times(Transposed(A), skew), A), "A' B A");
        M_ProductTrADiagVA(&A, rows, inner, &left, &form);
        ExpectSame(form, Times(Times(Transposed(A), DiagonalOf(left)), A), "A' diag(v) A");
        M_ProductADiagVTrA(&A, rows, inner, &right, &outer);
        ExpectSame(outer, Times(Times(A, DiagonalOf(right)), Transposed(A)), "A diag(v) A'");
        Table scaled(rows, inner);
        M_ProductDiagVA(&left, rows, &A, inner, &scaled);
        ExpectSame(scaled, Times(DiagonalOf(left), A), "diag(v) A");
        Table vector(inner, 1);
        M_ProductVB(&left, &A, rows, inner, &vector);
        const Table back = Times(Transposed(A), left);
        ExpectSame(vector, back, "v' B");
        Table again(inner, 1);
        M_ProductTrBV(&A, rows, inner, &left, &again);
        ExpectSame(again, back, "B' v");
        SetVectorToValue(&again, inner, 0.5);
        M_ProductTrADiagV(&A, rows, inner, &left, &again);
        ExpectSame(again, back, "A' v");
        Table mapped(rows, 1);
        M_ProductBV(&A, rows, inner, &right, &mapped);
        ExpectSame(mapped, Times(A, right), "B v");
    }
}

TEST(DenseProducts, OfTwoVectors)
{
    for (const int n : {1, 4, 300}) {
        Table a = Integers(n, 1, 24);
        Table b = Integers(n, 1, 25);
        Table cells(n, 1);
        V_ProductV1V2(&a, n, &b, &cells);
        ExpectSame(cells, Times(DiagonalOf(a), b), "element products");
        EXPECT_EQ(V_ProductTrV1V2(&a, n, &b), Times(Transposed(a), b).vbget(1));
        Table outer(n, n);
        V_ProductV1TrV2(&a, n, &b, &outer);
        ExpectSame(outer, Times(a, Transposed(b)), "a b'");
    }
}

TEST(DenseProducts, AnOutputMayBeAFactor)
{
    Table B = Integers(3, 3, 26), V = Integers(3, 1, 27);
    Table v(V), outer(B), scaled(V), A(B), C(Times(B, Transposed(B)));
    EXPECT_EQ(M_ProductBV(&B, 3, 3, &v, &v), 0);
    ExpectSame(v, Times(B, V), "B v");
    EXPECT_EQ(M_ProductBV(&outer, -1, 3, &v, &v), -1);
    V_ProductV1TrV2(&outer, 3, &V, &outer);
    Table column(3, 1);
    for (int i = 1; i <= 3; ++i)
        column.vbset(i, B.vbget(i));
    ExpectSame(outer, Times(column, Transposed(V)), "a b'");
    M_ProductDiagVA(&scaled, 3, &V, 1, &scaled);
    ExpectSame(scaled, Times(DiagonalOf(V), V), "diag(v) A");
    Table diagonal(3, 1);
    ComputeNewVar(&A, 3, 3, &C, &diagonal, &A);
    ExpectSame(A, Times(Times(B, C), Transposed(B)), "A V A'");
}

// Leading blocks of larger matrices, an output among the factors, an operand that is too small.
TEST(DenseProducts, SizesCountAndNotTheMatrices)
{
    Table A = Integers(6, 5, 10);
    Table B = Integers(7, 8, 11);
    Table* out = &A;
    const double expected = A.vbget(2, 1) * B.vbget(1, 3) + A.vbget(2, 2) * B.vbget(2, 3);
    M_ProductAB(&A, 2, 2, &B, 5, out);
    ASSERT_EQ(A.rows, 2);
    ASSERT_EQ(A.cols, 5);
    EXPECT_EQ(A.vbget(2, 3), expected);

    Table small(1, 2, 3.0);
    auto* product = new Table(1, 1);
    const std::unique_ptr<Table> owner(product);
    M_ProductAB(&small, 1, 3, &B, 1, product);
    EXPECT_EQ(product->vbget(1), 3.0 * B.vbget(1, 1) + 3.0 * B.vbget(2, 1) - B.vbget(3, 1))
        << "a cell outside reads as -1";
    EXPECT_EQ(M_ProductAB(&small, -1, 3, &B, 1, product), -1);
    EXPECT_EQ(product->rows, 1);
}

Table DenseOf(const matrixSparse& sparse)
{
    Table dense(sparse.Rows(), sparse.Cols());
    sparse.outputSparse(&dense);
    return dense;
}

TEST(SparseProducts, AgreeWithTheDefinition)
{
    for (const auto& [rows, inner, cols] : {Sizes{1, 1, 1}, {4, 0, 3}, {7, 5, 9}, {30, 41, 12}}) {
        Table A = Integers(rows, inner, 12, true);
        Table B = Integers(inner, cols, 13, true);
        Table C = Integers(cols, 6, 14, true);
        Table square = Integers(inner, inner, 15, true);
        Table symmetric = SymmetricIntegers(rows, 16);
        Table v = Integers(inner, 1, 17);
        Table trA = Transposed(A);
        Table trB = Transposed(B);
        matrixSparse sA(&A), sB(&B), sC(&C), sTrA(&trA), sTrB(&trB), sSquare(&square), sSymmetric(&symmetric);
        matrixSparse result;
        matrixSparse* out = &result;
        M_ProductAB(&sA, rows, inner, &sB, cols, out);
        ExpectSame(DenseOf(result), Times(A, B), "A B");
        M_ProductATrB(&sA, rows, inner, &sTrB, cols, out);
        ExpectSame(DenseOf(result), Times(A, B), "A B'");
        M_ProductTrAB(&sTrA, inner, rows, &sB, cols, out);
        ExpectSame(DenseOf(result), Times(A, B), "A' B");
        M_ProductTrAA(&sA, rows, inner, out);
        ExpectSame(DenseOf(result), Times(trA, A), "A' A");
        M_ProductATrA(&sA, rows, inner, out);
        ExpectSame(DenseOf(result), Times(A, trA), "A A'");
        auto* dense = new Table(2, 1, 5.0);
        const std::unique_ptr<Table> owner(dense);
        EXPECT_EQ(M_ProductAB(&sA, rows, inner, &B, cols, dense), 0);
        ExpectSame(*dense, Times(A, B), "A B, dense B");
        M_ProductABC(&sA, rows, inner, &sB, cols, &sC, 6, out);
        ExpectSame(DenseOf(result), Times(Times(A, B), C), "A B C");
        M_ProductABTrA(&sA, rows, inner, &sSquare, 1, out);
        ExpectSame(DenseOf(result), Times(Times(A, square), trA), "A B A'");
        Table skew = Integers(rows, rows, 29, true);
        matrixSparse sSkew(&skew);
        M_ProductTrABA(&sA, rows, inner, &sSkew, 1, out);
        ExpectSame(DenseOf(result), Times(Times(trA, skew), A), "A' B A");
        M_ProductTrABA(&sA, rows, inner, &sSymmetric, -1, out);
        ExpectSame(DenseOf(result), Times(Times(trA, symmetric), A), "A' B A, symmetric");
        Table other = Integers(rows, inner, 26, true);
        Table* sum = dense;
        M_Sums1As2B(&A, rows, inner, &other, 2.0, -3.0, sum);
        matrixSparse sOther(&other);
        M_Sums1As2B(&sA, rows, inner, &sOther, 2.0, -3.0, out);
        ExpectSame(DenseOf(result), *sum, "2 A - 3 B");
        M_Sums1As2B(&sA, rows, inner, &sA, 3.0, -3.0, out);
        EXPECT_EQ(result.NonZeros(), 0U) << "cells that cancel are not stored";
        Table mapped(rows, 1);
        M_ProductBV(&sA, rows, inner, &v, &mapped);
        ExpectSame(mapped, Times(A, v), "B v");
        Table back(rows, 1);
        M_ProductTrBV(&sTrA, inner, rows, &v, &back);
        ExpectSame(back, Times(A, v), "B' v");
        EXPECT_EQ(M_ProductTrVBV(&v, inner, &sSquare), M_ProductTrVBV(&v, inner, &square));
    }
}

TEST(SparseProducts, LeadingBlocksAndMultiples)
{
    Table A = Integers(5, 4, 27, true);
    Table B = Integers(4, 6, 28, true);
    Table leadingA(3, 2);
    Table leadingB(2, 4);
    M_CopyBlock(&A, 1, 3, 1, 2, &leadingA);
    M_CopyBlock(&B, 1, 2, 1, 4, &leadingB);
    matrixSparse sA(&A), sB(&B), result(9, 9, 1.0);
    matrixSparse* out = nullptr;
    M_ProductAB(&sA, 3, 2, &sB, 4, out);
    const std::unique_ptr<matrixSparse> owner(out);
    ExpectSame(DenseOf(*out), Times(leadingA, leadingB), "leading blocks");
    EXPECT_EQ(M_ProductAB(&sA, 3, -1, &sB, 4, out), -1);
    EXPECT_EQ(out->Rows(), 3);

    M_ScalarsA(&sA, 3, 2, -2.5, &result);
    M_ScalarsA2(&leadingA, 3, 2, -2.5);
    ExpectSame(DenseOf(result), leadingA, "s A");
    M_ScalarsA2(&sA, 3, 2, -2.5);
    M_ScalarsA2(&A, 3, 2, -2.5);
    ExpectSame(DenseOf(sA), A, "s A in place, the leading block alone");
    M_ScalarsA2(&sA, 5, 4, 0.0);
    EXPECT_EQ(sA.NonZeros(), 0U);
}

// Each size in its turn negative: -1, and the output stays.
TEST(Products, NegativeSizesAreRefused)
{
    for (int k = 0; k < 3; ++k) {
        int s[] = {1, 1, 1};
        s[k] = -1;
        Table A(2, 2, 3.0);
        Table C(1, 2, 7.0);
        matrixSparse sA(&A), sC(&C);
        Table* out = &C;
        matrixSparse* sOut = &sC;
        int refused = 0;
        refused += M_ProductAB(&A, s[0], s[1], &A, s[2], out) + M_ProductAB(&sA, s[0], s[1], &sA, s[2], sOut);
        refused += M_ProductATrB(&A, s[0], s[1], &A, s[2], out) + M_ProductAB(&sA, s[0], s[1], &A, s[2], out);
        refused += M_ProductTrAB(&A, s[0], s[1], &A, s[2], out);
        refused += M_ProductATrB(&sA, s[0], s[1], &sA, s[2], sOut);
        refused += M_ProductTrAB(&sA, s[0], s[1], &sA, s[2], sOut);
        refused += M_ProductABC(&A, s[0], s[1], &A, s[2], &A, 1, &C);
        refused += M_ProductABC(&sA, s[0], s[1], &sA, s[2], &sA, 1, &sC);
        EXPECT_EQ(refused, -9) << k;
        refused = 0;
        if (k < 2) {
            refused += M_ProductATrA(&A, s[0], s[1], out) + M_ProductTrAA(&A, s[0], s[1], out);
            refused += M_ProductABTrA(&A, s[0], s[1], &A, 0, &C) + M_ProductTrABA(&A, s[0], s[1], &A, 0, &C);
            refused += M_ProductABTrA(&sA, s[0], s[1], &sA, 0, &sC);
            refused += M_ProductTrABA(&sA, s[0], s[1], &sA, 0, &sC);
            refused +=
                M_ProductTrADiagVA(&A, s[0], s[1], &A, &C) + M_ProductADiagVTrA(&A, s[0], s[1], &A, &C);
            refused += M_ProductDiagVA(&A, s[0], &A, s[1], &C) + M_ProductTrBV(&A, s[0], s[1], &A, &C);
            EXPECT_EQ(refused, -10) << k;
        }
        ExpectSame(C, Table(1, 2, 7.0), "the output");
        ExpectSame(DenseOf(sC), C, "the sparse output");
    }
}

TEST(BlockProducts, AgreeWithTheAssembledMatrix)
{
    // Blocks of 2 x 2, 3 x 1 and 1 x 2.
    const Table parts[] = {Integers(2, 2, 18), Integers(3, 1, 19), Integers(1, 2, 20)};
    matrix3D<matrixSparse> blocks(3);
    Table whole(6, 5);
    int row = 0;
    int column = 0;
    for (int b = 0; b < 3; ++b) {
        Table part(parts[b].rows, parts[b]);
        blocks.elements[b] = new matrixSparse(&part);
        for (int j = 1; j <= part.cols; ++j) {
            for (int i = 1; i <= part.rows; ++i) {
                whole.vbset(row + i, column + j, part.vbget(i, j));
            }
        }
        row += part.rows;
        column += part.cols;
    }
    Table A = Integers(5, 4, 21, true);
    matrixSparse sparseA(&A);
    Table left(6, 4, 9.0);
    M_BlockProductBckA(&blocks, &A, 4, &left);
    ExpectSame(left, Times(whole, A), "blocks times A");
    matrixSparse result;
    M_BlockProductBckA(&blocks, &sparseA, 4, &result);
    ExpectSame(DenseOf(result), left, "blocks times sparse A");
    Table B = Integers(3, 6, 22, true);
    matrixSparse sparseB(&B);
    Table right(3, 5, 9.0);
    M_BlockProductABck(&B, 3, &blocks, &right);
    ExpectSame(right, Times(B, whole), "A times blocks");
    M_BlockProductABck(&sparseB, 3, &blocks, &result);
    ExpectSame(DenseOf(result), right, "sparse A times blocks");
    Table v = Integers(5, 1, 23);
    Table out(6, 1);
    M_BlockProductBckVect(&blocks, &v, &out);
    ExpectSame(out, Times(whole, v), "blocks times v");
}

}  // namespace
