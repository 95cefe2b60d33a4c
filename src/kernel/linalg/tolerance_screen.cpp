#include "kernel/linalg/tolerance_screen.h"

#include <algorithm>
#include <limits>
#include <vector>

#include "core/limits.h"
#include "kernel/linalg/sweep.h"

using namespace korvenrg;
using namespace korvenrg::linalg;

namespace {

// The lower triangle of p columns and a response of zeros.
matrix<double> PackedWithEmptyResponse(const matrix<double>& R, int p)
{
    matrix<double> packed(static_cast<int>(PackedSize(static_cast<std::size_t>(p) + 1)), 1);
    for (int i = 1; i <= p; ++i) {
        for (int j = 1; j <= i; ++j) {
            packed.vbset(static_cast<int>(PackedPosition(i, j)), R.vbget(i, j));
        }
    }
    return packed;
}

template <typename T>
bool IsActive(const matrix<T>* active, const matrix<T>* parents, int column)
{
    if (active == nullptr) return true;
    const int factor = parents == nullptr ? column : static_cast<int>(parents->vbget(column));
    return active->vbget(factor) == T{1};
}

int MostColumns(int n, short throughZero)
{
    if (n <= 0) return std::numeric_limits<int>::max();
    return throughZero == kTrue ? n : n - 1;
}

// The tolerance of a swept column, or of one that was refused.
double ToleranceOf(matrix<double>& packed, int p, int column)
{
    const double pivot = packed.vbget(static_cast<int>(PackedPosition(column, column)));
    if (pivot < 0.0) return -1.0 / pivot;
    return OLSCheckIfIn(&packed, p, column, 0.0);
}

}  // namespace

template <typename T>
void CheckTolerance(matrix<double>* R,
                    int n,
                    int p,
                    matrix<T>* active,
                    matrix<T>* parents,
                    double tol,
                    short throughZero,
                    short restart,
                    short applies,
                    short withTables,
                    matrix<T>* states,
                    matrix<double>* tolerances,
                    matrix<double>* inflations)
{
    if (p < 1) return;
    matrix<double> packed = PackedWithEmptyResponse(*R, p);
    const double limit = applies == kTrue ? std::max(tol, 0.0) : 0.0;
    const int most = MostColumns(n, throughZero);
    int entered = 0;
    std::vector<int> screened;
    for (int j = 1; j <= p; ++j) {
        if (restart == kTrue) states->vbset(j, T{});
        if (states->vbget(j) > T{} || !IsActive(active, parents, j)) continue;
        screened.push_back(j);
        const bool enters = entered < most && OLSCheckIfIn(&packed, p, j, limit) > limit;
        states->vbset(j, enters ? T{} : T{1});
        if (!enters) continue;
        entered += 1;
        M_Sweep(&packed, p + 1, j);
    }
    if (withTables != kTrue) return;

    std::vector<double> table(static_cast<std::size_t>(p), kMissing);
    for (const int j : screened) {
        table[static_cast<std::size_t>(j - 1)] = ToleranceOf(packed, p, j);
    }
    for (int j = 1; j <= p; ++j) {
        const double tolerance = table[static_cast<std::size_t>(j - 1)];
        if (tolerances != nullptr) tolerances->vbset(j, tolerance);
        if (inflations != nullptr) inflations->vbset(j, tolerance > 0.0 ? 1.0 / tolerance : kMissing);
    }
}

template void CheckTolerance(matrix<double>*,
                             int,
                             int,
                             matrix<double>*,
                             matrix<double>*,
                             double,
                             short,
                             short,
                             short,
                             short,
                             matrix<double>*,
                             matrix<double>*,
                             matrix<double>*);
template void CheckTolerance(matrix<double>*,
                             int,
                             int,
                             matrix<int>*,
                             matrix<int>*,
                             double,
                             short,
                             short,
                             short,
                             short,
                             matrix<int>*,
                             matrix<double>*,
                             matrix<double>*);
