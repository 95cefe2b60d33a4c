#include "kernel/linalg/constrained_inverse.h"

#include <numeric>
#include <vector>

#include "core/limits.h"
#include "kernel/linalg/dense_block.h"
#include "kernel/linalg/free_block.h"
#include "kernel/linalg/outputs.h"
#include "kernel/linalg/sweep.h"

using namespace korvenrg::linalg;

namespace {

using Positions = std::vector<std::size_t>;

// All of them when every parameter is marked: a list of marks that leaves nothing restricts nothing.
template <typename T>
Positions FreePositions(const matrix<T>* keep, int n)
{
    Positions free = UnmarkedPositions(keep, n);
    if (free.empty() && n > 0) {
        free.resize(static_cast<std::size_t>(n));
        std::iota(free.begin(), free.end(), std::size_t{0});
    }
    return free;
}

// Writes the inverse of the free block into a full matrix of zeros.
DenseBlock Expanded(const FreeInverse& result, const Positions& free, std::size_t n)
{
    DenseBlock full(n, n);
    for (std::size_t j = 0; j < result.used.size(); ++j) {
        for (std::size_t i = 0; i < result.used.size(); ++i) {
            full(free[result.used[i]], free[result.used[j]]) = result.inverse(i, j);
        }
    }
    return full;
}

int InvertSymmetric(DenseBlock full, const Positions& free, matrix<double>& inverse)
{
    Symmetrize(full);
    const FreeInverse result = InvertFreeBlock(PrincipalBlock(full, free));
    StoreBlock(Expanded(result, free, full.rows), inverse);
    return result.finite && result.used.size() == free.size() ? 0 : -1;
}

DenseBlock Unpacked(const matrix<double>& packed, std::size_t n, bool mirrored)
{
    DenseBlock full(n, n);
    for (std::size_t i = 0; i < n; ++i) {
        for (std::size_t j = 0; j <= i; ++j) {
            full(i, j) = packed.data[PackedSize(i) + j];
            if (mirrored) full(j, i) = full(i, j);
        }
    }
    return full;
}

// L = C^-T over the free parameters, column after column from the diagonal up.
int InvertRoot(const DenseBlock& root, const Positions& free, matrix<double>& inverse)
{
    DenseBlock result(root.rows, root.cols);
    const DenseBlock cleaned = PrincipalBlock(root, free);
    Positions used;
    for (std::size_t k = 0; k < free.size(); ++k) {
        if (cleaned(k, k) > 0.0) used.push_back(k);
    }
    const bool finite = AllFinite(cleaned);
    for (std::size_t a = 0; finite && a < used.size(); ++a) {
        // Column a of L is row a of C^-1: x' C = e_a'.
        const std::size_t row = used[a];
        for (std::size_t b = a + 1; b-- > 0;) {
            const std::size_t col = used[b];
            double sum = a == b ? 1.0 : 0.0;
            for (std::size_t c = b + 1; c <= a; ++c) {
                sum -= result(free[used[c]], free[row]) * cleaned(used[c], col);
            }
            result(free[col], free[row]) = sum / cleaned(col, col);
        }
    }
    StoreBlock(result, inverse);
    return finite && used.size() == free.size() ? 0 : -1;
}

}  // namespace

template <typename T>
int cCleanConstraintsAndInvert(int n, matrix<T>* keep, matrix<double>* A, matrix<double>* inverse)
{
    return InvertSymmetric(LeadingBlock(*A, n, n), FreePositions(keep, n), *inverse);
}

template int cCleanConstraintsAndInvert(int, matrix<double>*, matrix<double>*, matrix<double>*);
template int cCleanConstraintsAndInvert(int, matrix<int>*, matrix<double>*, matrix<double>*);

int cCleanConstraintsAndInvertTriang(int n,
                                     matrix<double>* keep,
                                     matrix<double>* packed,
                                     short root,
                                     matrix<double>*& inverse)
{
    const auto size = static_cast<std::size_t>(n > 0 ? n : 0);
    EnsureShape(inverse, n, n);
    StoreBlock(DenseBlock(size, size), *inverse);
    if (n < 1 || packed->total < PackedSize(size)) return -1;

    const Positions free = FreePositions(keep, n);
    const bool isRoot = root == korvenrg::kTrue;
    const DenseBlock full = Unpacked(*packed, size, !isRoot);
    return isRoot ? InvertRoot(full, free, *inverse) : InvertSymmetric(full, free, *inverse);
}
