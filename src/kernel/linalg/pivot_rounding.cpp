#include "kernel/linalg/pivot_rounding.h"

#include <cmath>
#include <utility>
#include <vector>

#include "core/limits.h"
#include "kernel/linalg/sweep.h"

namespace korvenrg::linalg {

namespace {

// Rounding units that a pivot may have gathered over the sweeps before it.
constexpr double kPivotRoundings = 8.0;

// Largest diagonal cell that is looked for.
constexpr double kLargestDiagonal = 1E10;

// A diagonal cell within this factor of 1 is one of a correlation.
constexpr double kNearOne = 2.0;

double CellOf(const double* packed, std::size_t i, std::size_t j)
{
    return i >= j ? packed[PackedSize(i) + j] : packed[PackedSize(j) + i];
}

std::vector<std::size_t> SweptColumns(const double* packed, std::size_t p)
{
    std::vector<std::size_t> swept;
    for (std::size_t j = 0; j < p; ++j) {
        if (CellOf(packed, j, j) < 0.0) swept.push_back(j);
    }
    return swept;
}

// Cholesky root of A_SS^-1, packed by rows. Empty when a pivot is not positive.
std::vector<double> RootOfSweptBlock(const double* packed, const std::vector<std::size_t>& swept)
{
    std::vector<double> root(PackedSize(swept.size()));
    for (std::size_t i = 0; i < swept.size(); ++i) {
        double* row = root.data() + PackedSize(i);
        for (std::size_t j = 0; j <= i; ++j) {
            const double* other = root.data() + PackedSize(j);
            double sum = -CellOf(packed, swept[i], swept[j]);
            for (std::size_t c = 0; c < j; ++c) {
                sum -= row[c] * other[c];
            }
            if (i == j && !(sum > 0.0)) return {};
            row[j] = i == j ? std::sqrt(sum) : sum / other[j];
        }
    }
    return root;
}

// Squared length of root^-1 v; v is 0 before `first`.
double SolvedSquare(const std::vector<double>& root, std::vector<double> v, std::size_t first)
{
    double square = 0.0;
    for (std::size_t i = first; i < v.size(); ++i) {
        const double* row = root.data() + PackedSize(i);
        for (std::size_t c = first; c < i; ++c) {
            v[i] -= row[c] * v[c];
        }
        v[i] /= row[i];
        square += v[i] * v[i];
    }
    return square;
}

// Square root of a diagonal cell, 1 where it is near 1.
double ScaleOf(double diagonal)
{
    return diagonal > 1.0 / kNearOne && diagonal < kNearOne ? 1.0 : std::sqrt(diagonal);
}

}  // namespace

double PivotRounding(const double* packed, std::size_t p, std::size_t k)
{
    double unscaled = 1.0;
    for (std::size_t j = 0; j < p; ++j) {
        if (CellOf(packed, j, j) < 0.0) unscaled += std::fabs(CellOf(packed, k, j));
    }
    const double unit = kPivotRoundings * kEps;
    const double unscaledLimit = unit * unscaled * unscaled;
    const double pivot = CellOf(packed, k, k);
    if (pivot > kLargestDiagonal * unscaledLimit) return unscaledLimit;

    const std::vector<std::size_t> swept = SweptColumns(packed, p);
    const std::vector<double> root = RootOfSweptBlock(packed, swept);
    if (root.size() < PackedSize(swept.size())) return unscaledLimit;
    std::vector<double> coefficients;
    for (const std::size_t j : swept) {
        coefficients.push_back(CellOf(packed, k, j));
    }
    double scaled = ScaleOf(pivot + SolvedSquare(root, coefficients, 0));
    for (std::size_t j = 0; j < swept.size(); ++j) {
        std::vector<double> direction(swept.size());
        direction[j] = 1.0;
        scaled += std::fabs(coefficients[j]) * ScaleOf(SolvedSquare(root, std::move(direction), j));
    }
    return unit * scaled * scaled;
}

}  // namespace korvenrg::linalg
