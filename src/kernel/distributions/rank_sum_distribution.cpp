#include "kernel/distributions/rank_sum_distribution.h"

#include <algorithm>
#include <cstddef>
#include <numeric>

#include "kernel/text/clock.h"

namespace korvenrg::distributions {

namespace {

constexpr std::int64_t kMostCells = std::int64_t{1} << 26;

// Lets the i-th object enter row k: `row` is that of k, `shorter` that of k - 1, both for sums 0 to `reach`.
void EnterObject(double* row, const double* shorter, double k, double i, std::size_t score, std::size_t reach)
{
    const double without = (i - k) / i;
    const double with = k / i;
    const std::size_t unreached = std::min(score, reach + 1);
    for (std::size_t s = 0; s < unreached; ++s) {
        row[s] *= without;
    }
    for (std::size_t s = score; s <= reach; ++s) {
        row[s] = without * row[s] + with * shorter[s - score];
    }
}

}  // namespace

bool TimeLimit::Passed() const
{
    return active && text::ElapsedUnits(start, COleDateTimeGetCurrentTime()) > units;
}

std::optional<double> LowerTailOfSum(const std::vector<int>& scores,
                                     int m,
                                     std::int64_t limit,
                                     const TimeLimit& timeLimit)
{
    const std::int64_t largest = std::accumulate(scores.begin(), scores.end(), std::int64_t{0});
    if (limit < 0) return 0.0;
    if (limit >= largest) return 1.0;
    if (limit >= kMostCells / (m + 1)) return std::nullopt;
    const auto width = static_cast<std::size_t>(limit) + 1;
    std::vector<double> table((static_cast<std::size_t>(m) + 1) * width);
    table[0] = 1.0;
    std::int64_t sum = 0;
    const auto n = static_cast<int>(scores.size());
    for (int i = 1; i <= n; ++i) {
        if (timeLimit.Passed()) return std::nullopt;
        const int score = scores[static_cast<std::size_t>(i - 1)];
        sum += score;
        const auto reach = static_cast<std::size_t>(std::min(sum, limit));
        // Sets too small to be filled up by the objects to come are of no use.
        for (int k = std::min(i, m); k >= std::max(1, m - (n - i)); --k) {
            double* row = table.data() + static_cast<std::size_t>(k) * width;
            EnterObject(row, row - width, k, i, static_cast<std::size_t>(score), reach);
        }
    }
    const auto first = table.end() - static_cast<std::ptrdiff_t>(width);
    return std::min(std::accumulate(first, table.end(), 0.0), 1.0);
}

}  // namespace korvenrg::distributions
