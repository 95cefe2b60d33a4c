#include "kernel/linalg/quantiles.h"

#include <algorithm>
#include <cmath>
#include <vector>

#include "core/limits.h"
#include "kernel/linalg/sorting.h"

namespace {

/** Running sums of weights this close to p W, relative to W, count as equal to it. */
constexpr double kSameShare = 1E-12;

/** The cells with a positive weight. */
struct WeightedCells
{
    std::vector<double> values;
    std::vector<double> weights;
    double total = 0.0;
};

WeightedCells CellsThatCount(const matrix<double>& x, int n, const matrix<double>* W)
{
    WeightedCells cells;
    for (int r = 1; r <= n; ++r) {
        const double weight = W == nullptr ? 1.0 : W->vbget(r);
        if (!(weight > 0.0)) continue;
        cells.values.push_back(x.vbget(r));
        cells.weights.push_back(weight);
        cells.total += weight;
    }
    return cells;
}

double Quantile(const WeightedCells& cells, double p)
{
    if (cells.values.empty() || std::isnan(p)) return korvenrg::kMissing;
    const std::vector<int> order =
        korvenrg::linalg::SortedOrder(cells.values.data(), static_cast<int>(cells.values.size()));
    const double target = std::clamp(p, 0.0, 1.0) * cells.total;
    const double tolerance = kSameShare * cells.total;
    double running = 0.0;
    for (std::size_t k = 0; k + 1 < order.size(); ++k) {
        const auto here = static_cast<std::size_t>(order[k]);
        running += cells.weights[here];
        if (running < target - tolerance) continue;
        const double value = cells.values[here];
        if (running > target + tolerance) return value;
        const double next = cells.values[static_cast<std::size_t>(order[k + 1])];
        return value == next ? value : 0.5 * value + 0.5 * next;
    }
    return cells.values[static_cast<std::size_t>(order.back())];
}

}  // namespace

double V_Quantile(matrix<double>* x, int n, double p)
{
    return V_QuantileW(x, n, nullptr, p);
}

double V_QuantileW(matrix<double>* x, int n, matrix<double>* W, double p)
{
    return Quantile(CellsThatCount(*x, n, W), p);
}
