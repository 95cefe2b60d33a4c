#include "kernel/linalg/products.h"

#include <vector>

#include "core/limits.h"
#include "kernel/linalg/columns.h"
#include "kernel/linalg/cross_products.h"
#include "kernel/linalg/dense_product.h"

using korvenrg::kTrue;
using korvenrg::linalg::ColumnsOf;
using korvenrg::linalg::CrossProducts;
using korvenrg::linalg::DenseOperand;
using korvenrg::linalg::EnsureShape;
using korvenrg::linalg::MultiplyDense;
using korvenrg::linalg::ProductShape;
using korvenrg::linalg::ZeroCentres;

namespace {

constexpr int kDone = 0;
constexpr int kBadSize = -1;

using Cells = std::vector<double>;

std::size_t AreaOf(int rows, int cols)
{
    return static_cast<std::size_t>(rows) * static_cast<std::size_t>(cols);
}

// Writes rows x cols cells, by columns, into the leading block of a matrix.
void WriteBlock(const Cells& cells, int rows, int cols, matrix<double>* out)
{
    std::size_t position = 0;
    for (int j = 1; j <= cols; ++j) {
        for (int i = 1; i <= rows; ++i) {
            out->vbset(i, j, cells[position++]);
        }
    }
}

// The product of two operands, of which the second has as many rows as the first has columns.
Cells ProductOf(const DenseOperand& left, const DenseOperand& right, ProductShape shape = ProductShape::kFull)
{
    Cells product(left.Rows() * right.Cols());
    MultiplyDense(left, right, shape, product.data());
    return product;
}

// A' diag(v) A, with weights of 1 when v is null.
Cells WeightedCrossProducts(matrix<double>* A, int rows, int cols, const double* v)
{
    const ColumnsOf columns(*A, rows, cols);
    Cells products(AreaOf(cols, cols));
    CrossProducts(columns, rows, v, ZeroCentres(static_cast<std::size_t>(cols)), false, products.data());
    return products;
}

// Each column of A (rows x cols) times its cell of v.
Cells ColumnsScaled(matrix<double>* A, int rows, int cols, matrix<double>* v)
{
    Cells scaled;
    scaled.reserve(AreaOf(rows, cols));
    for (int j = 1; j <= cols; ++j) {
        for (int i = 1; i <= rows; ++i) {
            scaled.push_back(A->vbget(i, j) * v->vbget(j));
        }
    }
    return scaled;
}

}  // namespace

int M_ProductAB(matrix<double>* A, int ra, int ca, matrix<double>* B, int cb, matrix<double>*& C)
{
    if (ra < 0 || ca < 0 || cb < 0) return kBadSize;
    const Cells product = ProductOf(DenseOperand(*A, ra, ca), DenseOperand(*B, ca, cb));
    EnsureShape(C, ra, cb);
    WriteBlock(product, ra, cb, C);
    return kDone;
}

int M_ProductATrB(matrix<double>* A, int ra, int ca, matrix<double>* B, int rb, matrix<double>*& C)
{
    if (ra < 0 || ca < 0 || rb < 0) return kBadSize;
    const Cells product = ProductOf(DenseOperand(*A, ra, ca), DenseOperand(*B, rb, ca).Transposed());
    EnsureShape(C, ra, rb);
    WriteBlock(product, ra, rb, C);
    return kDone;
}

int M_ProductTrAB(matrix<double>* A, int ra, int ca, matrix<double>* B, int cb, matrix<double>*& C)
{
    if (ra < 0 || ca < 0 || cb < 0) return kBadSize;
    const Cells product = ProductOf(DenseOperand(*A, ra, ca).Transposed(), DenseOperand(*B, ra, cb));
    EnsureShape(C, ca, cb);
    WriteBlock(product, ca, cb, C);
    return kDone;
}

int M_ProductATrA(matrix<double>* A, int ra, int ca, matrix<double>*& C)
{
    if (ra < 0 || ca < 0) return kBadSize;
    const DenseOperand left(*A, ra, ca);
    const Cells product = ProductOf(left, left.Transposed(), ProductShape::kSymmetric);
    EnsureShape(C, ra, ra);
    WriteBlock(product, ra, ra, C);
    return kDone;
}

int M_ProductTrAA(matrix<double>* A, int ra, int ca, matrix<double>*& C)
{
    if (ra < 0 || ca < 0) return kBadSize;
    const Cells products = WeightedCrossProducts(A, ra, ca, nullptr);
    EnsureShape(C, ca, ca);
    WriteBlock(products, ca, ca, C);
    return kDone;
}

int M_ProductABC(matrix<double>* A,
                 int ra,
                 int ca,
                 matrix<double>* B,
                 int cb,
                 matrix<double>* C,
                 int cc,
                 matrix<double>* D)
{
    if (ra < 0 || ca < 0 || cb < 0 || cc < 0) return kBadSize;
    const DenseOperand left(ProductOf(DenseOperand(*A, ra, ca), DenseOperand(*B, ca, cb)), ra, cb);
    WriteBlock(ProductOf(left, DenseOperand(*C, cb, cc)), ra, cc, D);
    return kDone;
}

int M_ProductABTrA(matrix<double>* A, int ra, int ca, matrix<double>* B, short flag, matrix<double>* C)
{
    if (ra < 0 || ca < 0) return kBadSize;
    const DenseOperand map(*A, ra, ca);
    const DenseOperand left(ProductOf(map, DenseOperand(*B, ca, ca)), ra, ca);
    const ProductShape shape = flag == kTrue ? ProductShape::kSymmetric : ProductShape::kFull;
    WriteBlock(ProductOf(left, map.Transposed(), shape), ra, ra, C);
    return kDone;
}

int M_ProductTrABA(matrix<double>* A, int ra, int ca, matrix<double>* B, short flag, matrix<double>* C)
{
    if (ra < 0 || ca < 0) return kBadSize;
    const DenseOperand map(*A, ra, ca);
    const DenseOperand left(ProductOf(map.Transposed(), DenseOperand(*B, ra, ra)), ca, ra);
    const ProductShape shape = flag == kTrue ? ProductShape::kSymmetric : ProductShape::kFull;
    WriteBlock(ProductOf(left, map, shape), ca, ca, C);
    return kDone;
}

int M_ProductTrADiagVA(matrix<double>* A, int rows, int cols, matrix<double>* v, matrix<double>* C)
{
    if (rows < 0 || cols < 0) return kBadSize;
    const ColumnsOf weights(*v, rows, 1);
    WriteBlock(WeightedCrossProducts(A, rows, cols, weights[0]), cols, cols, C);
    return kDone;
}

int M_ProductADiagVTrA(matrix<double>* A, int rows, int cols, matrix<double>* v, matrix<double>* C)
{
    if (rows < 0 || cols < 0) return kBadSize;
    const DenseOperand left(ColumnsScaled(A, rows, cols, v), rows, cols);
    const Cells product =
        ProductOf(left, DenseOperand(*A, rows, cols).Transposed(), ProductShape::kSymmetric);
    WriteBlock(product, rows, rows, C);
    return kDone;
}

int M_ProductDiagVA(matrix<double>* v, int n, matrix<double>* A, int cols, matrix<double>* C)
{
    if (n < 0 || cols < 0) return kBadSize;
    Cells product;
    for (int j = 1; j <= cols; ++j) {
        for (int i = 1; i <= n; ++i) {
            product.push_back(v->vbget(i) * A->vbget(i, j));
        }
    }
    WriteBlock(product, n, cols, C);
    return kDone;
}

int M_ProductBV(matrix<double>* B, int rows, int cols, matrix<double>* v, matrix<double>* out)
{
    if (rows < 0 || cols < 0) return kBadSize;
    Cells product;
    for (int i = 1; i <= rows; ++i) {
        double sum = 0.0;
        for (int j = 1; j <= cols; ++j) {
            const double cell = B->vbget(i, j);
            if (cell != 0.0) sum += cell * v->vbget(j);
        }
        product.push_back(sum);
    }
    WriteBlock(product, rows, 1, out);
    return kDone;
}

int M_ProductVB(matrix<double>* v, matrix<double>* B, int rows, int cols, matrix<double>* out)
{
    return M_ProductTrBV(B, rows, cols, v, out);
}

int M_ProductTrBV(matrix<double>* B, int rows, int cols, matrix<double>* v, matrix<double>* out)
{
    if (rows < 0 || cols < 0) return kBadSize;
    Cells products;
    for (int j = 1; j <= cols; ++j) {
        double sum = 0.0;
        for (int i = 1; i <= rows; ++i) {
            sum += B->vbget(i, j) * v->vbget(i);
        }
        products.push_back(sum);
    }
    WriteBlock(products, cols, 1, out);
    return kDone;
}

int M_ProductTrADiagV(matrix<double>* A, int rows, int cols, matrix<double>* v, matrix<double>* out)
{
    return M_ProductTrBV(A, rows, cols, v, out);
}

void V_ProductV1V2(matrix<double>* a, int n, matrix<double>* b, matrix<double>* out)
{
    for (int i = 1; i <= n; ++i) {
        out->vbset(i, a->vbget(i) * b->vbget(i));
    }
}

double V_ProductTrV1V2(matrix<double>* a, int n, matrix<double>* b)
{
    double sum = 0.0;
    for (int i = 1; i <= n; ++i) {
        sum += a->vbget(i) * b->vbget(i);
    }
    return sum;
}

void V_ProductV1TrV2(matrix<double>* a, int n, matrix<double>* b, matrix<double>* out)
{
    Cells product;
    for (int j = 1; j <= n; ++j) {
        for (int i = 1; i <= n; ++i) {
            product.push_back(a->vbget(i) * b->vbget(j));
        }
    }
    WriteBlock(product, n, n, out);
}

double M_ProductTrVBV(matrix<double>* v, int n, matrix<double>* B)
{
    double form = 0.0;
    for (int j = 1; j <= n; ++j) {
        double product = 0.0;
        for (int i = 1; i <= n; ++i) {
            product += v->vbget(i) * B->vbget(i, j);
        }
        form += product * v->vbget(j);
    }
    return form;
}

void ComputeNewVar(matrix<double>* A,
                   int rows,
                   int cols,
                   matrix<double>* V,
                   matrix<double>* outDiag,
                   matrix<double>* outMat)
{
    matrix<double> mapped(cols, rows);  // V A'
    for (int i = 1; i <= rows; ++i) {
        for (int k = 1; k <= cols; ++k) {
            const double multiplier = A->vbget(i, k);
            if (multiplier == 0.0) continue;
            for (int j = 1; j <= cols; ++j) {
                mapped.vbset(j, i, mapped.vbget(j, i) + multiplier * V->vbget(j, k));
            }
        }
    }
    matrix<double> product(rows, rows);
    for (int i = 1; i <= rows; ++i) {
        for (int k = 1; k <= cols; ++k) {
            const double multiplier = A->vbget(i, k);
            if (multiplier == 0.0) continue;
            for (int j = 1; j <= rows; ++j) {
                product.vbset(i, j, product.vbget(i, j) + multiplier * mapped.vbget(k, j));
            }
        }
    }
    for (int j = 1; j <= rows; ++j) {
        for (int i = 1; i <= rows; ++i) {
            outMat->vbset(i, j, product.vbget(i, j));
        }
    }
    for (int i = 1; i <= rows; ++i) {
        outDiag->vbset(i, product.vbget(i, i));
    }
}

void M_ProductDesignAB2(matrix<double>* A,
                        int rows,
                        int* colsA,
                        matrix<double>* B,
                        int colsB,
                        int capacity,
                        matrix<double>* work,
                        matrix<int>* states)
{
    const int old = *colsA;
    if (colsB < 1 || old < 1 || old > capacity / colsB) return;

    std::vector<int> statesB;
    for (int b = 1; b <= colsB; ++b) {
        statesB.push_back(states->vbget(old + b));
    }
    // From the last column down: a product never overwrites a column that is still to be read.
    for (int a = old; a >= 1; --a) {
        const int stateA = states->vbget(a);
        for (int r = 1; r <= rows; ++r) {
            work->vbset(r, A->vbget(r, a));
        }
        for (int b = 1; b <= colsB; ++b) {
            const int target = (a - 1) * colsB + b;
            for (int r = 1; r <= rows; ++r) {
                A->vbset(r, target, work->vbget(r) * B->vbget(r, b));
            }
            states->vbset(target, stateA != 0 ? stateA : statesB[static_cast<std::size_t>(b - 1)]);
        }
    }
    *colsA = old * colsB;
}
