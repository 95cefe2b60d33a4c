#include "kernel/linalg/generalized_inverse.h"

#include <algorithm>
#include <cmath>
#include <numeric>
#include <optional>
#include <utility>
#include <vector>

#include "core/limits.h"
#include "kernel/linalg/dense_block.h"
#include "kernel/linalg/elimination.h"
#include "kernel/linalg/sparse_blocks.h"
#include "kernel/linalg/sweep.h"

using namespace korvenrg::linalg;

namespace {

struct Generalized
{
    DenseBlock inverse;
    int rank = 0;
};

using Positions = std::vector<std::size_t>;

// Rounding units that a cell may have gathered.
constexpr double kRoundings = 8.0;

double LimitOf(double tol, std::size_t n)
{
    return tol > 0.0 ? tol : static_cast<double>(n) * korvenrg::kEps;
}

// Whether mirrored cells differ by no more than the rounding of the product that made them.
bool IsSymmetric(const DenseBlock& block)
{
    const double rounding = kRoundings * static_cast<double>(block.rows) * korvenrg::kEps;
    for (std::size_t j = 0; j < block.cols; ++j) {
        for (std::size_t i = 0; i < j; ++i) {
            const double pivots = std::sqrt(std::fabs(block(i, i))) * std::sqrt(std::fabs(block(j, j)));
            const double size = std::max(pivots, std::fabs(block(i, j)));
            if (!(std::fabs(block(i, j) - block(j, i)) <= rounding * size)) return false;
        }
    }
    return true;
}

// Whether a cell between two refused pivots is no larger than a semidefinite matrix lets it be.
bool IsBoundByPivots(double cell, double limit, double diagonalA, double diagonalB)
{
    return std::fabs(cell) <= kRoundings * limit * std::sqrt(diagonalA) * std::sqrt(diagonalB);
}

// Sweeps a semidefinite block; nothing when it turns out not to be semidefinite.
std::optional<Generalized> SweepSemidefinite(const DenseBlock& block, double limit)
{
    const std::size_t n = block.rows;
    std::vector<double> packed;
    packed.reserve(PackedSize(n));
    for (std::size_t i = 0; i < n; ++i) {
        packed.insert(packed.end(), block.Column(i), block.Column(i) + i + 1);
    }
    Positions used;
    Positions refused;
    for (std::size_t k = 0; k < n; ++k) {
        const double pivot = packed[PackedSize(k + 1) - 1];
        const double bound = limit * block(k, k);
        if (pivot < -bound || block(k, k) < 0.0) return std::nullopt;
        if (pivot > bound) {
            SweepPacked(packed.data(), n, k);
            used.push_back(k);
        } else {
            refused.push_back(k);
        }
    }
    for (const std::size_t i : refused) {
        for (const std::size_t j : refused) {
            if (j > i) break;
            if (!IsBoundByPivots(packed[PackedSize(i) + j], limit, block(i, i), block(j, j))) {
                return std::nullopt;
            }
        }
    }

    Generalized result{DenseBlock(n, n), static_cast<int>(used.size())};
    for (const std::size_t i : used) {
        for (const std::size_t j : used) {
            if (j > i) break;
            result.inverse(i, j) = -packed[PackedSize(i) + j];
            result.inverse(j, i) = result.inverse(i, j);
        }
    }
    return result;
}

// Divides each column by its largest cell.
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
    }
}

// Rows and columns of the pivots that complete pivoting accepts, in pivot order.
std::pair<Positions, Positions> CompletePivots(DenseBlock work, double limit)
{
    ScaleColumns(work);
    const std::size_t n = work.rows;
    Positions rows(n);
    Positions cols(n);
    std::iota(rows.begin(), rows.end(), std::size_t{0});
    std::iota(cols.begin(), cols.end(), std::size_t{0});
    std::size_t k = 0;
    for (; k < n; ++k) {
        std::size_t bestRow = k;
        std::size_t bestCol = k;
        for (std::size_t j = k; j < n; ++j) {
            for (std::size_t i = k; i < n; ++i) {
                if (std::fabs(work(rows[i], cols[j])) > std::fabs(work(rows[bestRow], cols[bestCol]))) {
                    bestRow = i;
                    bestCol = j;
                }
            }
        }
        std::swap(rows[k], rows[bestRow]);
        std::swap(cols[k], cols[bestCol]);
        const double pivot = work(rows[k], cols[k]);
        if (!(std::fabs(pivot) > limit)) break;
        for (std::size_t j = k + 1; j < n; ++j) {
            const double multiplier = work(rows[k], cols[j]) / pivot;
            if (multiplier == 0.0) continue;
            for (std::size_t i = k + 1; i < n; ++i) {
                work(rows[i], cols[j]) -= multiplier * work(rows[i], cols[k]);
            }
        }
    }
    rows.resize(k);
    cols.resize(k);
    return {rows, cols};
}

Generalized EliminateCompletely(const DenseBlock& block, double limit)
{
    auto [rows, cols] = CompletePivots(block, limit);
    std::ranges::sort(rows);
    std::ranges::sort(cols);
    DenseBlock chosen(rows.size(), cols.size());
    for (std::size_t j = 0; j < cols.size(); ++j) {
        for (std::size_t i = 0; i < rows.size(); ++i) {
            chosen(i, j) = block(rows[i], cols[j]);
        }
    }
    const LuFactors factors = FactorLu(std::move(chosen), Pivoting::kRows, {});
    Generalized result{DenseBlock(block.rows, block.cols), 0};
    if (!factors.regular) return result;

    const DenseBlock inverse = InverseOf(factors);
    for (std::size_t j = 0; j < rows.size(); ++j) {
        for (std::size_t i = 0; i < cols.size(); ++i) {
            result.inverse(cols[i], rows[j]) = inverse(i, j);
        }
    }
    result.rank = static_cast<int>(rows.size());
    return result;
}

Generalized InvertGeneralized(const DenseBlock& block, double limit)
{
    if (IsSymmetric(block)) {
        DenseBlock symmetric = block;
        Symmetrize(symmetric);
        if (std::optional<Generalized> swept = SweepSemidefinite(symmetric, limit)) return std::move(*swept);
    }
    return EliminateCompletely(block, limit);
}

int Store(const DenseBlock& block, double limit, bool symmetric, matrix<double>& G, int& rank)
{
    Generalized result{DenseBlock(block.rows, block.cols), 0};
    const bool finite = AllFinite(block);
    if (finite) result = InvertGeneralized(block, limit);
    if (symmetric) Symmetrize(result.inverse);
    StoreBlock(result.inverse, G);
    rank = result.rank;
    return finite ? 0 : -1;
}

}  // namespace

int M_InvGeneralized(matrix<double>* A, int n, matrix<double>* G, double tol, int& rank)
{
    const DenseBlock block = LeadingBlock(*A, n, n);
    return Store(block, LimitOf(tol, block.rows), false, *G, rank);
}

int M_InvGeneralized(matrixSparse* A, int n, matrixSparse* G, double tol, int& rank)
{
    rank = 0;
    G->Redim(n, n, 0.0);
    const double limit = LimitOf(tol, static_cast<std::size_t>(std::max(n, 0)));
    for (LinkedBlock block : LinkedBlocksOf(*A, n)) {
        if (!AllFinite(block.cells)) {
            G->ReInit();
            rank = 0;
            return -1;
        }
        Generalized result = InvertGeneralized(block.cells, limit);
        rank += result.rank;
        block.cells = std::move(result.inverse);
        StoreLinked(block, *G);
    }
    return 0;
}

int M_InvGeneralizedSym(matrix<double>* A, int n, matrix<double>* G, double tol, int& rank)
{
    DenseBlock block = LeadingBlock(*A, n, n);
    for (std::size_t j = 0; j < block.cols; ++j) {
        for (std::size_t i = j + 1; i < block.rows; ++i) {
            block(j, i) = block(i, j);
        }
    }
    return Store(block, LimitOf(tol, block.rows), true, *G, rank);
}
