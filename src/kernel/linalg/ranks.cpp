#include "kernel/linalg/ranks.h"

#include <algorithm>
#include <cmath>
#include <type_traits>
#include <vector>

#include "kernel/linalg/sorting.h"

namespace {

template <typename T>
std::vector<T> LeadingCells(const matrix<T>& vector, int n)
{
    std::vector<T> cells(static_cast<std::size_t>(std::max(n, 0)));
    for (std::size_t k = 0; k < cells.size(); ++k) {
        cells[k] = vector.vbget(static_cast<int>(k) + 1);
    }
    return cells;
}

bool SameValue(double a, double b)
{
    return a == b || (std::isnan(a) && std::isnan(b));
}

/** Cells in ascending order, with their weights. */
struct SortedCells
{
    std::vector<double> values;
    std::vector<int> order;  ///< positions from 0
    const matrix<double>* weights;

    double Value(std::size_t k) const
    {
        return values[static_cast<std::size_t>(order[k])];
    }
    double Weight(std::size_t k) const
    {
        return weights == nullptr ? 1.0 : weights->vbget(order[k] + 1);
    }
    // Where the run of cells equal to the k-th ends.
    std::size_t EndOfTies(std::size_t k) const
    {
        std::size_t end = k + 1;
        while (end < order.size() && SameValue(Value(end), Value(k))) {
            ++end;
        }
        return end;
    }
};

SortedCells Sorted(const matrix<double>& x, int n, const matrix<double>* weights)
{
    SortedCells cells{LeadingCells(x, n), {}, weights};
    cells.order = korvenrg::linalg::SortedOrder(cells.values.data(), n);
    return cells;
}

}  // namespace

void V_GetRanks(matrix<double>* x, int n, matrix<double>* ranks)
{
    const SortedCells cells = Sorted(*x, n, nullptr);
    for (std::size_t k = 0; k < cells.order.size(); ++k) {
        ranks->vbset(cells.order[k] + 1, static_cast<double>(k + 1));
    }
}

void V_GetRanksTies(matrix<double>* x,
                    int n,
                    matrix<double>* weights,
                    matrix<double>* ranks,
                    int* nTieGroups,
                    matrix<double>* tieSizes)
{
    const SortedCells cells = Sorted(*x, n, weights);
    int tied = 0;
    double below = 0.0;
    for (std::size_t k = 0, end = 0; k < cells.order.size(); k = end) {
        end = cells.EndOfTies(k);
        double group = 0.0;
        for (std::size_t m = k; m < end; ++m) {
            group += cells.Weight(m);
        }
        const double rank = below + (group + 1.0) / 2.0;
        for (std::size_t m = k; m < end; ++m) {
            ranks->vbset(cells.order[m] + 1, rank);
        }
        below += group;
        if (!(group > 1.0)) continue;
        tied += 1;
        if (tieSizes != nullptr) tieSizes->vbset(tied, group);
    }
    if (nTieGroups != nullptr) *nTieGroups = tied;
}

template <typename T>
int V_NbDistinct(matrix<T>* vector, int n)
{
    std::vector<T> cells = LeadingCells(*vector, n);
    int nanValues = 0;
    if constexpr (std::is_same_v<T, double>) {
        const auto nans = std::partition(cells.begin(), cells.end(), [](double v) { return !std::isnan(v); });
        nanValues = nans != cells.end() ? 1 : 0;
        cells.erase(nans, cells.end());
    }
    std::sort(cells.begin(), cells.end());
    return static_cast<int>(std::unique(cells.begin(), cells.end()) - cells.begin()) + nanValues;
}

template int V_NbDistinct(matrix<double>*, int);
template int V_NbDistinct(matrix<int>*, int);
template int V_NbDistinct(matrix<std::wstring>*, int);
