#include "kernel/linalg/free_block.h"

#include <algorithm>
#include <cmath>
#include <optional>

#include "core/limits.h"
#include "kernel/linalg/elimination.h"
#include "kernel/linalg/sweep.h"

namespace korvenrg::linalg {

namespace {

constexpr double kRefusalRoundings = 8.0;

double RefusalLimit(std::size_t n)
{
    return kRefusalRoundings * static_cast<double>(n) * kEps;
}

// Square roots of the absolute diagonal; of the largest cell of the row where the diagonal is 0.
std::vector<double> Scales(const DenseBlock& block)
{
    std::vector<double> scales(block.cols, 1.0);
    for (std::size_t i = 0; i < block.cols; ++i) {
        double size = std::fabs(block(i, i));
        if (size == 0.0) {
            for (std::size_t j = 0; j < block.cols; ++j) {
                size = std::max(size, std::fabs(block(i, j)));
            }
        }
        if (size > 0.0) scales[i] = std::sqrt(size);
    }
    return scales;
}

DenseBlock Scaled(const DenseBlock& block, const std::vector<double>& scales)
{
    DenseBlock scaled(block.rows, block.cols);
    for (std::size_t j = 0; j < block.cols; ++j) {
        for (std::size_t i = 0; i < block.rows; ++i) {
            scaled(i, j) = block(i, j) / scales[i] / scales[j];
        }
    }
    return scaled;
}

std::vector<double> PackedTimes(const DenseBlock& block, double sign)
{
    std::vector<double> packed;
    packed.reserve(PackedSize(block.rows));
    for (std::size_t i = 0; i < block.rows; ++i) {
        for (std::size_t j = 0; j <= i; ++j) {
            packed.push_back(sign * block(i, j));
        }
    }
    return packed;
}

// Whether what the sweeps leave between refused pivots is rounding, as it is in a semidefinite matrix, where
// the square of a cell is at most the product of its two pivots.
bool RefusedCellsAreRounding(const std::vector<double>& packed,
                             const std::vector<std::size_t>& refused,
                             double limit)
{
    for (const std::size_t i : refused) {
        for (const std::size_t j : refused) {
            if (j <= i && std::fabs(packed[PackedSize(i) + j]) > kRefusalRoundings * limit) return false;
        }
    }
    return true;
}

// The sign of the first diagonal cell that has one.
bool LooksNegative(const DenseBlock& scaled)
{
    for (std::size_t i = 0; i < scaled.rows; ++i) {
        if (scaled(i, i) != 0.0) return scaled(i, i) < 0.0;
    }
    return false;
}

// Sweeps a definite or semidefinite block; nothing when it turns out to be neither.
std::optional<FreeInverse> SweepDefinite(const DenseBlock& scaled)
{
    const std::size_t n = scaled.rows;
    const double limit = RefusalLimit(n);
    const double sign = LooksNegative(scaled) ? -1.0 : 1.0;
    std::vector<double> packed = PackedTimes(scaled, sign);

    FreeInverse result;
    std::vector<std::size_t> refused;
    for (std::size_t k = 0; k < n; ++k) {
        const double pivot = packed[PackedSize(k + 1) - 1];
        if (pivot < -limit) return std::nullopt;
        if (pivot > limit) {
            SweepPacked(packed.data(), n, k);
            result.used.push_back(k);
        } else {
            refused.push_back(k);
        }
    }
    if (!RefusedCellsAreRounding(packed, refused, limit)) return std::nullopt;

    result.inverse = DenseBlock(result.used.size(), result.used.size());
    for (std::size_t i = 0; i < result.used.size(); ++i) {
        for (std::size_t j = 0; j <= i; ++j) {
            const std::size_t row = result.used[i];
            const double cell = -sign * packed[PackedSize(row) + result.used[j]];
            result.inverse(i, j) = cell;
            result.inverse(j, i) = cell;
        }
    }
    return result;
}

// Takes the part along each of `directions` out of a column, twice, so that rounding of the first pass goes
// too (Kahan's "twice is enough"; Parlett 1998, "The Symmetric Eigenvalue Problem", 6.9).
void Orthogonalize(std::vector<double>& column, const std::vector<std::vector<double>>& directions)
{
    for (int pass = 0; pass < 2; ++pass) {
        for (const std::vector<double>& direction : directions) {
            double along = 0.0;
            for (std::size_t i = 0; i < column.size(); ++i) {
                along += direction[i] * column[i];
            }
            for (std::size_t i = 0; i < column.size(); ++i) {
                column[i] -= along * direction[i];
            }
        }
    }
}

double LengthOf(const std::vector<double>& column)
{
    double sum = 0.0;
    for (const double cell : column) {
        sum += cell * cell;
    }
    return std::sqrt(sum);
}

// Positions of the columns that do not depend on the ones before them.
std::vector<std::size_t> IndependentColumns(const DenseBlock& scaled)
{
    std::vector<std::size_t> independent;
    std::vector<std::vector<double>> directions;
    for (std::size_t j = 0; j < scaled.cols; ++j) {
        std::vector<double> column(scaled.Column(j), scaled.Column(j) + scaled.rows);
        const double length = LengthOf(column);
        Orthogonalize(column, directions);
        const double left = LengthOf(column);
        if (!(left > RefusalLimit(scaled.rows) * length)) continue;
        for (double& cell : column) {
            cell /= left;
        }
        directions.push_back(std::move(column));
        independent.push_back(j);
    }
    return independent;
}

FreeInverse EliminateIndefinite(const DenseBlock& scaled)
{
    FreeInverse result;
    result.used = IndependentColumns(scaled);
    const LuFactors factors = FactorLu(PrincipalBlock(scaled, result.used), Pivoting::kRows, {});
    if (!factors.regular) return {};
    result.inverse = InverseOf(factors);
    Symmetrize(result.inverse);
    return result;
}

}  // namespace

FreeInverse InvertFreeBlock(const DenseBlock& block)
{
    if (!AllFinite(block)) return {.finite = false, .used = {}, .inverse = {}};
    const std::vector<double> scales = Scales(block);
    const DenseBlock scaled = Scaled(block, scales);
    std::optional<FreeInverse> swept = SweepDefinite(scaled);
    FreeInverse result = swept ? std::move(*swept) : EliminateIndefinite(scaled);
    for (std::size_t j = 0; j < result.used.size(); ++j) {
        for (std::size_t i = 0; i < result.used.size(); ++i) {
            double& cell = result.inverse(i, j);
            cell = cell / scales[result.used[i]] / scales[result.used[j]];
        }
    }
    return result;
}

}  // namespace korvenrg::linalg
