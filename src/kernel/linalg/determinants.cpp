#include "kernel/linalg/determinants.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <vector>

#include "core/limits.h"
#include "kernel/linalg/cholesky.h"
#include "kernel/linalg/dense_block.h"
#include "kernel/linalg/elimination.h"
#include "kernel/linalg/sweep.h"

using namespace korvenrg::linalg;

namespace {

// A product whose exponent is kept apart.
struct Product
{
    double mantissa = 1.0;
    long exponent = 0;

    void Multiply(double factor)
    {
        int shift = 0;
        mantissa = std::frexp(mantissa * factor, &shift);
        exponent += shift;
    }

    double Value() const
    {
        constexpr long kBeyondRange = 5000;
        return std::ldexp(mantissa, static_cast<int>(std::clamp(exponent, -kBeyondRange, kBeyondRange)));
    }
};

// Product of the pivots; NaN when a cell is not finite, 0 when a pivot is.
Product PivotProduct(const matrix<double>& A, int n)
{
    Product product;
    DenseBlock block = LeadingBlock(A, n, n);
    if (!AllFinite(block)) {
        product.mantissa = std::numeric_limits<double>::quiet_NaN();
        return product;
    }
    const LuFactors factors = FactorLu(std::move(block), Pivoting::kRows, {});
    if (!factors.regular) {
        product.mantissa = 0.0;
        return product;
    }
    product.mantissa = factors.oddExchanges ? -1.0 : 1.0;
    for (std::size_t k = 0; k < factors.cells.cols; ++k) {
        product.Multiply(factors.cells(k, k));
    }
    return product;
}

double LengthFrom(const double* column, std::size_t first, std::size_t rows)
{
    double sum = 0.0;
    for (std::size_t i = first; i < rows; ++i) {
        sum += column[i] * column[i];
    }
    return std::sqrt(sum);
}

// Scales each column to length 1, by way of its largest cell so that no square leaves the range.
void ScaleColumns(DenseBlock& block)
{
    for (std::size_t j = 0; j < block.cols; ++j) {
        double* column = block.Column(j);
        double largest = 0.0;
        for (std::size_t i = 0; i < block.rows; ++i) {
            largest = std::max(largest, std::fabs(column[i]));
        }
        if (largest == 0.0) continue;
        for (std::size_t i = 0; i < block.rows; ++i) {
            column[i] /= largest;
        }
        const double length = LengthFrom(column, 0, block.rows);
        for (std::size_t i = 0; i < block.rows; ++i) {
            column[i] /= length;
        }
    }
}

// Reflects column k onto its leading cell and the later columns with it.
void Reflect(DenseBlock& block, std::size_t k, double length)
{
    double* mirror = block.Column(k);
    const double leading = mirror[k] > 0.0 ? -length : length;
    mirror[k] -= leading;
    const double half = -mirror[k] * leading;  // half the squared length of the mirror vector
    for (std::size_t j = k + 1; j < block.cols; ++j) {
        double* column = block.Column(j);
        double product = 0.0;
        for (std::size_t i = k; i < block.rows; ++i) {
            product += mirror[i] * column[i];
        }
        const double multiplier = product / half;
        for (std::size_t i = k; i < block.rows; ++i) {
            column[i] -= multiplier * mirror[i];
        }
    }
}

}  // namespace

namespace korvenrg::linalg {

LogDeterminant LogDeterminantOf(const matrix<double>& A, int n)
{
    const Product product = PivotProduct(A, n);
    const double ln2 = 0.69314718055994530942;
    LogDeterminant result;
    result.logAbsolute = std::log(std::fabs(product.mantissa)) + static_cast<double>(product.exponent) * ln2;
    result.sign = product.mantissa > 0.0 ? 1 : product.mantissa < 0.0 ? -1 : 0;
    return result;
}

}  // namespace korvenrg::linalg

double M_Determinant(matrix<double>* A, int n)
{
    return PivotProduct(*A, n).Value();
}

double M_DeterminantCleaned(matrix<double>* A, int n, matrix<double>* keep, short* ok)
{
    matrix<double>* factor = nullptr;
    const int result = M_CholDecompCleaned(A, n, keep, factor);
    Product product;
    bool any = false;
    for (std::size_t k = 1; result == 0 && k <= static_cast<std::size_t>(std::max(n, 0)); ++k) {
        const double root = factor->data[PackedSize(k) - 1];
        if (root == 0.0) continue;
        any = true;
        product.Multiply(root);
        product.Multiply(root);
    }
    delete factor;
    if (ok != nullptr) *ok = korvenrg::AsFlag(any);
    return any ? product.Value() : 0.0;
}

int M_Rank(matrix<double>* A, int rows, int cols, double tol)
{
    DenseBlock block = LeadingBlock(*A, rows, cols);
    if (!AllFinite(block)) return 0;
    ScaleColumns(block);
    const double limit = tol > 0.0 ? tol : static_cast<double>(std::max(rows, cols)) * korvenrg::kEps;
    const std::size_t most = std::min(block.rows, block.cols);
    for (std::size_t k = 0; k < most; ++k) {
        std::size_t longest = k;
        double length = LengthFrom(block.Column(k), k, block.rows);
        for (std::size_t j = k + 1; j < block.cols; ++j) {
            const double other = LengthFrom(block.Column(j), k, block.rows);
            if (other > length) {
                length = other;
                longest = j;
            }
        }
        if (!(length > limit)) return static_cast<int>(k);
        std::swap_ranges(block.Column(k), block.Column(k) + block.rows, block.Column(longest));
        Reflect(block, k, length);
    }
    return static_cast<int>(most);
}

int M_Rank(matrix<double>* A, int n, double tol)
{
    return M_Rank(A, n, n, tol);
}

double M_Trace(matrix<double>* A, int n)
{
    double sum = 0.0;
    for (int i = 1; i <= n; ++i) {
        sum += A->vbget(i, i);
    }
    return sum;
}

double M_RowSumNorm(matrix<double>* A, int rows, int cols)
{
    double norm = 0.0;
    for (int i = 1; i <= rows; ++i) {
        double sum = 0.0;
        for (int j = 1; j <= cols; ++j) {
            sum += std::fabs(A->vbget(i, j));
        }
        if (sum > norm || std::isnan(sum)) norm = sum;
    }
    return norm;
}
