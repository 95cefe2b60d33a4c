#include "kernel/linalg/g2_sweep.h"

#include <cstddef>
#include <vector>

#include "core/limits.h"
#include "kernel/linalg/column_updates.h"
#include "kernel/linalg/dense_block.h"

namespace {

void ClearRowAndColumn(double* m, std::size_t stride, std::size_t n, std::size_t k)
{
    for (std::size_t i = 0; i < n; ++i) {
        m[k * stride + i] = 0.0;
        m[i * stride + k] = 0.0;
    }
}

// The step on the leading n x n cells of columns that are `stride` apart.
void SweepLeadingCells(double* m, std::size_t stride, std::size_t size, std::size_t pivotIndex, double tol)
{
    double* pivotColumn = m + pivotIndex * stride;
    const double pivot = pivotColumn[pivotIndex];
    if (!(pivot >= tol) || pivot <= 0.0) {
        ClearRowAndColumn(m, stride, size, pivotIndex);
        return;
    }
    const auto subtract = korvenrg::linalg::BestSubtractMultiple();
    for (std::size_t j = 0; j < size; ++j) {
        if (j == pivotIndex) continue;
        double* column = m + j * stride;
        const double multiplier = column[pivotIndex] / pivot;
        if (multiplier != 0.0) subtract(column, pivotColumn, multiplier, size);
        column[pivotIndex] = multiplier;
    }
    for (std::size_t i = 0; i < size; ++i) {
        pivotColumn[i] /= -pivot;
    }
    pivotColumn[pivotIndex] = 1.0 / pivot;
}

}  // namespace

void G2SweepStep(double* m, int n, int k, double tol)
{
    if (m == nullptr || k < 1 || k > n) return;
    const auto size = static_cast<std::size_t>(n);
    SweepLeadingCells(m, size, size, static_cast<std::size_t>(k - 1), tol);
}

void G2SweepStep(matrix<double>* m, int n, int k, double tol)
{
    if (m == nullptr || k < 1 || k > n || m->rows < n || m->cols < n) return;
    SweepLeadingCells(m->data,
                      static_cast<std::size_t>(m->rows),
                      static_cast<std::size_t>(n),
                      static_cast<std::size_t>(k - 1),
                      tol);
}

void M_InverseG2Selective(matrix<double>* A,
                          int n,
                          matrix<int>* sel,
                          double tol,
                          matrix<double>* G,
                          short flag)
{
    if (n < 1) return;
    korvenrg::linalg::DenseBlock work = korvenrg::linalg::LeadingBlock(*A, n, n);
    for (int k = 1; k <= n; ++k) {
        if (sel->vbget(k) != 1) continue;
        const double limit = flag == korvenrg::kTrue ? tol * A->vbget(k, k) : tol;
        G2SweepStep(work.cells.data(), n, k, limit);
    }
    korvenrg::linalg::StoreBlock(work, *G);
}
