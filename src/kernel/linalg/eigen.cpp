#include "kernel/linalg/eigen.h"

#include <algorithm>
#include <cmath>
#include <numeric>
#include <vector>

#include "core/limits.h"
#include "kernel/linalg/dense_block.h"
#include "kernel/linalg/outputs.h"
#include "kernel/linalg/tridiagonal.h"

using namespace korvenrg::linalg;

namespace {

// Two coordinates whose sizes differ by less than this share count as equally large.
constexpr double kSameSize = 1E-6;

// The power of two that brings the largest cell to between 1/2 and 1.
int ScaleExponent(double largest)
{
    int exponent = 0;
    std::frexp(largest, &exponent);
    return largest > 0.0 ? -exponent : 0;
}

// By powers of two, in two halves: the factor itself may be outside the range.
void Rescale(std::vector<double>& cells, int exponent)
{
    const double first = std::ldexp(1.0, exponent / 2);
    const double second = std::ldexp(1.0, exponent - exponent / 2);
    for (double& cell : cells) {
        cell = cell * first * second;
    }
}

std::vector<std::size_t> OrderOf(const std::vector<double>& values, bool byValue)
{
    std::vector<std::size_t> order(values.size());
    std::iota(order.begin(), order.end(), std::size_t{0});
    std::ranges::stable_sort(order, [&](std::size_t a, std::size_t b) {
        return byValue ? values[a] > values[b] : std::fabs(values[a]) > std::fabs(values[b]);
    });
    return order;
}

double SignOf(const double* vector, std::size_t n)
{
    double largest = 0.0;
    for (std::size_t i = 0; i < n; ++i) {
        largest = std::max(largest, std::fabs(vector[i]));
    }
    for (std::size_t i = 0; i < n; ++i) {
        if (std::fabs(vector[i]) >= (1.0 - kSameSize) * largest) return vector[i] < 0.0 ? -1.0 : 1.0;
    }
    return 1.0;
}

DenseBlock OrderedVectors(const RowPanels& rotated, const std::vector<std::size_t>& order)
{
    const std::size_t n = order.size();
    DenseBlock vectors(n, n);
    for (std::size_t j = 0; j < n; ++j) {
        double* vector = vectors.Column(j);
        for (std::size_t i = 0; i < n; ++i) {
            vector[i] = rotated(i, order[j]);
        }
        const double sign = SignOf(vector, n);
        for (std::size_t i = 0; i < n; ++i) {
            vector[i] *= sign;
        }
    }
    return vectors;
}

}  // namespace

namespace korvenrg::linalg {

int DecomposeSymmetric(DenseBlock block, EigenOrder order, EigenPairs& pairs)
{
    pairs = {};
    if (block.cols < 1 || !AllFinite(block)) return -1;
    Symmetrize(block);
    const int exponent = ScaleExponent(LargestCell(block));
    Rescale(block.cells, exponent);
    RowPanels rotated(block.rows, block.cols);
    Tridiagonal tridiagonal = ReduceToTridiagonal(block, rotated);
    if (!DiagonalizeTridiagonal(tridiagonal, rotated)) return -2;

    Rescale(tridiagonal.diagonal, -exponent);
    const std::vector<std::size_t> places = OrderOf(tridiagonal.diagonal, order == EigenOrder::kByValue);
    for (const std::size_t place : places) {
        pairs.values.push_back(tridiagonal.diagonal[place]);
    }
    pairs.vectors = OrderedVectors(rotated, places);
    return 0;
}

}  // namespace korvenrg::linalg

int M_Eigen(matrix<double>* A, matrix<double>*& values, matrix<double>*& vectors, int n, short sort)
{
    EigenPairs pairs;
    const EigenOrder order = sort == korvenrg::kTrue ? EigenOrder::kByValue : EigenOrder::kBySize;
    const int result = DecomposeSymmetric(LeadingBlock(*A, n, n), order, pairs);
    EnsureShape(values, n, 1);
    EnsureShape(vectors, n, n);
    if (result != 0) {
        const auto size = static_cast<std::size_t>(std::max(n, 0));
        pairs = {std::vector<double>(size), DenseBlock(size, size)};
    }
    for (std::size_t j = 0; j < pairs.values.size(); ++j) {
        values->vbset(static_cast<int>(j) + 1, pairs.values[j]);
    }
    StoreBlock(pairs.vectors, *vectors);
    return result;
}

int FilterEigen(matrix<double>* values, int n, double tol, double level)
{
    const bool levelled = level > 0.0 && level < 1.0;
    const double limit = levelled ? std::max(tol, level * values->vbget(1)) : tol;
    int kept = 0;
    while (kept < n && values->vbget(kept + 1) > limit) {
        kept += 1;
    }
    return kept;
}
