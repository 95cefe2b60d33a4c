#include "kernel/linalg/cholesky.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <numeric>
#include <utility>
#include <vector>

#include "core/limits.h"
#include "kernel/linalg/column_updates.h"
#include "kernel/linalg/dense_block.h"
#include "kernel/linalg/outputs.h"
#include "kernel/linalg/sparse_blocks.h"
#include "kernel/linalg/sweep.h"

using namespace korvenrg::linalg;

namespace {

// Rounding units that a pivot may have gathered.
constexpr double kPivotRoundings = 8.0;

// A pivot above this many times its least rounding is no rounding, whatever was cancelled.
constexpr double kLargestCancellation = 1E10;

double RoundingShare(std::size_t n)
{
    return static_cast<double>(n) * korvenrg::kEps;
}

void ClearAbove(DenseBlock& factor)
{
    for (std::size_t j = 1; j < factor.cols; ++j) {
        std::fill_n(factor.Column(j), std::min(j, factor.rows), 0.0);
    }
}

void ClearColumnsFrom(DenseBlock& factor, std::size_t first)
{
    for (std::size_t j = first; j < factor.cols; ++j) {
        std::fill_n(factor.Column(j), factor.rows, 0.0);
    }
}

// Divides column k by its root pivot and takes its products out of the lower triangle of the later columns.
void EliminateColumn(DenseBlock& work, std::size_t k)
{
    double* column = work.Column(k);
    const double root = std::sqrt(column[k]);
    column[k] = root;
    for (std::size_t i = k + 1; i < work.rows; ++i) {
        column[i] /= root;
    }
    const auto subtract = BestSubtractMultiple();
    for (std::size_t j = k + 1; j < work.cols; ++j) {
        double* later = work.Column(j);
        const double multiplier = column[j];
        if (multiplier == 0.0) continue;
        subtract(later + j, column + j, multiplier, work.rows - j);
    }
}

enum class ZeroPivots
{
    kFail,
    kSkip
};

// Coefficients of row k on the rows before it: they solve L' b = row k of L. 0 for a row without a pivot.
std::vector<double> CoefficientsOnEarlierRows(const DenseBlock& work, std::size_t k)
{
    std::vector<double> coefficients(k);
    for (std::size_t j = k; j-- > 0;) {
        if (work(j, j) == 0.0) continue;
        double sum = work(k, j);
        for (std::size_t i = j + 1; i < k; ++i) {
            sum -= work(i, j) * coefficients[i];
        }
        coefficients[j] = sum / work(j, j);
    }
    return coefficients;
}

// Size up to which pivot k may be nothing but rounding. The pivot is the square of row k less its fit on the rows
// before it; each cell of that form carries rounding on the scale of its diagonal cells.
double RoundingOfPivot(const DenseBlock& work, std::size_t k, const std::vector<double>& diagonal)
{
    const double least = RoundingShare(work.cols) * diagonal[k];
    if (!(std::fabs(work(k, k)) <= kLargestCancellation * least)) return least;
    double scale = std::sqrt(diagonal[k]);
    const std::vector<double> coefficients = CoefficientsOnEarlierRows(work, k);
    for (std::size_t j = 0; j < k; ++j) {
        scale += std::fabs(coefficients[j]) * std::sqrt(diagonal[j]);
    }
    return std::max(least, kPivotRoundings * korvenrg::kEps * scale * scale);
}

// Factors the lower triangle in place. Returns the position from 1 of the first bad pivot, or 0.
std::size_t FactorInPlace(DenseBlock& work, ZeroPivots zeroPivots)
{
    const std::size_t n = work.cols;
    const bool skips = zeroPivots == ZeroPivots::kSkip;
    std::size_t bad = 0;
    std::vector<double> diagonal(n);
    for (std::size_t k = 0; k < n; ++k) {
        diagonal[k] = std::fabs(work(k, k));
    }
    for (std::size_t k = 0; k < n; ++k) {
        const double pivot = work(k, k);
        const double limit = skips ? RoundingOfPivot(work, k, diagonal) : RoundingShare(n) * diagonal[k];
        if (pivot > limit && std::isfinite(pivot)) {
            EliminateColumn(work, k);
        } else if (skips && std::fabs(pivot) <= limit) {
            std::fill_n(work.Column(k), n, 0.0);
        } else {
            bad = k + 1;
            ClearColumnsFrom(work, k);
            break;
        }
    }
    ClearAbove(work);
    return bad;
}

void ExchangeSymmetric(DenseBlock& work, std::size_t a, std::size_t b)
{
    if (a == b) return;
    std::swap_ranges(work.Column(a), work.Column(a) + work.rows, work.Column(b));
    for (std::size_t j = 0; j < work.cols; ++j) {
        std::swap(work(a, j), work(b, j));
    }
}

// Copies the lower triangle from column `first` on to the upper one, which exchanges of rows and columns need.
void MirrorFrom(DenseBlock& work, std::size_t first)
{
    for (std::size_t j = first; j < work.cols; ++j) {
        for (std::size_t i = j + 1; i < work.rows; ++i) {
            work(j, i) = work(i, j);
        }
    }
}

std::size_t LargestDiagonal(const DenseBlock& work, std::size_t first)
{
    std::size_t largest = first;
    for (std::size_t i = first + 1; i < work.cols; ++i) {
        if (work(i, i) > work(largest, largest)) largest = i;
    }
    return largest;
}

// Whether all cells from row and column `first` on are rounding.
bool IsRounding(const DenseBlock& work, std::size_t first, double limit)
{
    for (std::size_t j = first; j < work.cols; ++j) {
        for (std::size_t i = j; i < work.rows; ++i) {
            if (!(std::fabs(work(i, j)) <= limit)) return false;
        }
    }
    return true;
}

// Factors with diagonal pivoting; `order` receives the row at each place. False when not semidefinite.
bool FactorPivoted(DenseBlock& work, std::vector<std::size_t>& order)
{
    const std::size_t n = work.cols;
    order.resize(n);
    std::iota(order.begin(), order.end(), std::size_t{0});
    MirrorFrom(work, 0);
    double limit = 0.0;
    std::size_t k = 0;
    for (; k < n; ++k) {
        const std::size_t largest = LargestDiagonal(work, k);
        ExchangeSymmetric(work, k, largest);
        std::swap(order[k], order[largest]);
        if (k == 0) limit = std::max(RoundingShare(n) * work(0, 0), 0.0);
        if (!(work(k, k) > limit) || !std::isfinite(work(k, k))) break;
        EliminateColumn(work, k);
        MirrorFrom(work, k + 1);
    }
    const bool semidefinite = IsRounding(work, k, kPivotRoundings * limit);
    ClearColumnsFrom(work, k);
    ClearAbove(work);
    return semidefinite;
}

}  // namespace

int M_CholDecomp(matrix<double>* A, int n, matrix<double>*& L)
{
    DenseBlock work = LeadingBlock(*A, n, n);
    const std::size_t bad = FactorInPlace(work, ZeroPivots::kFail);
    EnsureShape(L, n, n);
    StoreBlock(work, *L);
    return -static_cast<int>(bad);
}

int M_CholDecomp(matrixSparse* A, int n, matrixSparse* L)
{
    const std::vector<LinkedBlock> blocks = LinkedBlocksOf(*A, n);
    L->Redim(n, n, 0.0);
    int first = std::numeric_limits<int>::max();
    for (LinkedBlock block : blocks) {
        const std::size_t bad = FactorInPlace(block.cells, ZeroPivots::kFail);
        if (bad > 0) first = std::min(first, block.indices[bad - 1] + 1);
        StoreLinked(block, *L);
    }
    return first == std::numeric_limits<int>::max() ? 0 : -first;
}

int M_CholDecompCleaned(matrix<double>* A, int n, matrix<double>* keep, matrix<double>*& L)
{
    const DenseBlock full = LeadingBlock(*A, n, n);
    const std::vector<std::size_t> free = UnmarkedPositions(keep, n);
    DenseBlock work = PrincipalBlock(full, free);
    const std::size_t bad = FactorInPlace(work, ZeroPivots::kSkip);

    std::vector<double> packed(PackedSize(full.cols), 0.0);
    for (std::size_t i = 0; i < free.size(); ++i) {
        for (std::size_t j = 0; j <= i; ++j) {
            packed[PackedSize(free[i]) + free[j]] = work(i, j);
        }
    }
    EnsureShape(L, static_cast<int>(packed.size()), 1);
    for (std::size_t i = 0; i < packed.size(); ++i) {
        L->vbset(static_cast<int>(i) + 1, packed[i]);
    }
    return bad == 0 ? 0 : -static_cast<int>(free[bad - 1] + 1);
}

int M_CholDecompPrinc(matrixSparse* A, int n, matrixSparse* L, matrix<double>* pivots, short restore)
{
    const auto size = static_cast<std::size_t>(std::max(n, 0));
    DenseBlock work(size, size);
    for (std::size_t j = 0; j < size; ++j) {
        for (std::size_t i = j; i < size; ++i) {
            work(i, j) = A->getElement(static_cast<int>(i), static_cast<int>(j));
        }
    }
    std::vector<std::size_t> order;
    const bool semidefinite = FactorPivoted(work, order);

    L->Redim(n, n, 0.0);
    for (std::size_t j = 0; j < size; ++j) {
        if (pivots != nullptr) pivots->vbset(static_cast<int>(j) + 1, static_cast<double>(order[j] + 1));
        for (std::size_t i = j; i < size; ++i) {
            const bool first = restore == korvenrg::kTrue;
            const std::size_t row = first ? order[i] : i;
            const std::size_t col = first ? order[j] : j;
            L->setElement(static_cast<int>(row), static_cast<int>(col), work(i, j));
        }
    }
    return semidefinite ? 0 : -1;
}
