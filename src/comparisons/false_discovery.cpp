#include "comparisons/false_discovery.h"

#include <algorithm>

#include "comparisons/contrast_columns.h"
#include "core/limits.h"
#include "kernel/linalg/sorting.h"
#include "kernel/linalg/vectors.h"
#include "kernel/scalars/scalars.h"

namespace korvenrg::comparisons {

namespace {

// The textbook rejects up to the largest i with p_(i) <= i alpha / p; here the first failure ends the walk.
// Pinned by BenjaminiHochberg.FirstFailureEndsTheWalk.
int CountRejections(const matrix<double>& sorted, int p, double alpha)
{
    for (int i = 1; i <= p; ++i) {
        if (i * (alpha / p) < sorted.vbget(i)) return i - 1;
    }
    return p;
}

void Adjust(matrix<double>& sorted, int p)
{
    double running = 1;
    for (int i = p; i >= 1; --i) {
        const double adjusted = Min(p * sorted.vbget(i) / i, running);
        sorted.vbset(i, adjusted);
        if (adjusted < running) running = adjusted;
    }
}

}  // namespace

}  // namespace korvenrg::comparisons

using namespace korvenrg::comparisons;

void BenjaminiHochBerg(matrix<double>* ioPValues, int idx, int p, double alpha, matrix<int>* oSignif)
{
    p = std::max(p, 0);
    matrix<double> sorted(p, 1);
    matrix<double> order(p, 1);
    for (int i = 1; i <= p; ++i) {
        sorted.vbset(i, ioPValues->vbget(i, idx));
    }
    V_Set1toN(&order, p);
    SortQ<double>(&order, p, 1, 1, p, &sorted, nullptr, 0, korvenrg::kFalse, korvenrg::kTrue);
    const int rejections = CountRejections(sorted, p, alpha);
    Adjust(sorted, p);
    for (int i = 1; i <= p; ++i) {
        const int row = static_cast<int>(order.vbget(i));
        ioPValues->vbset(row, idx, sorted.vbget(i));
        oSignif->vbset(row, i <= rejections ? kSignificant : kNotSignificant);
    }
}
