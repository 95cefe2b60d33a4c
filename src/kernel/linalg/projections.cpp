#include "kernel/linalg/projections.h"

#include <algorithm>
#include <cmath>
#include <vector>

#include "core/limits.h"
#include "kernel/linalg/dense_block.h"
#include "kernel/linalg/eigen.h"
#include "kernel/linalg/outputs.h"
#include "kernel/linalg/sparse_blocks.h"

using namespace korvenrg::linalg;

namespace {

// Sum of value v v' over the pairs; values of 0 add nothing.
DenseBlock FromPairs(const EigenPairs& pairs)
{
    const std::size_t n = pairs.vectors.rows;
    DenseBlock sum(n, n);
    for (std::size_t k = 0; k < n; ++k) {
        if (pairs.values[k] == 0.0) continue;
        const double* v = pairs.vectors.Column(k);
        for (std::size_t j = 0; j < n; ++j) {
            const double multiplier = pairs.values[k] * v[j];
            double* column = sum.Column(j);
            for (std::size_t i = 0; i < n; ++i) {
                column[i] += multiplier * v[i];
            }
        }
    }
    Symmetrize(sum);
    return sum;
}

bool IsSemidefinite(const std::vector<double>& values)
{
    constexpr double kRoundings = 8.0;
    if (values.empty()) return true;
    const double largest = std::max(std::fabs(values.front()), std::fabs(values.back()));
    return values.back() >= -kRoundings * static_cast<double>(values.size()) * korvenrg::kEps * largest;
}

}  // namespace

int M_SquareRoot(matrixSparse* A, int n, matrix<double>* root)
{
    const auto size = static_cast<std::size_t>(std::max(n, 0));
    DenseBlock full(size, size);
    StoreBlock(full, *root);
    bool semidefinite = true;
    for (const LinkedBlock& block : LinkedBlocksOf(*A, n)) {
        EigenPairs pairs;
        if (DecomposeSymmetric(block.cells, EigenOrder::kByValue, pairs) != 0) return -1;
        semidefinite = semidefinite && IsSemidefinite(pairs.values);
        for (double& value : pairs.values) {
            value = value > 0.0 ? std::sqrt(value) : 0.0;
        }
        const DenseBlock part = FromPairs(pairs);
        for (std::size_t j = 0; j < part.cols; ++j) {
            for (std::size_t i = 0; i < part.rows; ++i) {
                full(static_cast<std::size_t>(block.indices[i]), static_cast<std::size_t>(block.indices[j])) =
                    part(i, j);
            }
        }
    }
    StoreBlock(full, *root);
    return semidefinite ? 0 : -1;
}

void M_SProject(matrix<double>* A, int n, matrix<double>*& projection)
{
    DenseBlock block = LeadingBlock(*A, n, n);
    EnsureShape(projection, n, n);
    EigenPairs pairs;
    if (DecomposeSymmetric(block, EigenOrder::kByValue, pairs) != 0) {
        StoreBlock(block, *projection);
        return;
    }
    if (pairs.values.back() >= 0.0) {
        Symmetrize(block);
        StoreBlock(block, *projection);
        return;
    }
    for (double& value : pairs.values) {
        value = std::max(value, 0.0);
    }
    StoreBlock(FromPairs(pairs), *projection);
}
