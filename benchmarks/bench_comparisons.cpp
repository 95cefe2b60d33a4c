// MCATest on 30 categories (435 contrasts), by procedure. bench_comparisons.R times the same values in R.

#include <benchmark/benchmark.h>

#include <cmath>
#include <cstddef>
#include <vector>

#include "korvenrg.h"

namespace {

constexpr int kCategories = 30;
constexpr int kPairs = kCategories * (kCategories - 1) / 2;
constexpr double kDf = 262.0;

// Means 1, 2, ... of groups of 6 to 13 observations, variances 1 to 3.4, error mean square 2; the rows with the ranges
// falling along each first rank.
struct Layout
{
    Layout()
        : sizes(kCategories), variances(kCategories), contrasts(std::size_t{kPairs} * 10), verdicts(kPairs)
    {
        for (int i = 0; i < kCategories; ++i) {
            sizes[At(i)] = 6 + i * 5 % 8;
            variances[At(i)] = 1 + i * 7 % 13 * 0.2;
        }
        int row = 0;
        for (int i = 0; i < kCategories; ++i)
            for (int j = kCategories - 1; j > i; --j, ++row) {
                const double cells[] = {0.8 * (i - j), 2 / sizes[At(i)] + 2 / sizes[At(j)], i + 1.0, j + 1.0};
                for (int c = 0; c < 4; ++c)
                    contrasts[At(row + c * kPairs)] = cells[c];
                contrasts[At(row + 8 * kPairs)] = i + 1.0;
                contrasts[At(row + 9 * kPairs)] = j + 1.0;
            }
    }
    static std::size_t At(int i)
    {
        return static_cast<std::size_t>(i);
    }
    std::vector<double> sizes, variances, contrasts;
    std::vector<int> verdicts;
};

void BM_MCATest(benchmark::State& state)
{
    Layout layout;
    double level = 0;
    for (auto _ : state) {
        MCATest(kCategories,
                layout.sizes.data(),
                layout.variances.data(),
                0,
                0,
                layout.contrasts.data(),
                kPairs,
                static_cast<int>(state.range(0)),
                kDf,
                0.05,
                &level,
                layout.verdicts.data());
        benchmark::DoNotOptimize(layout.contrasts.data());
        benchmark::ClobberMemory();
    }
    double checksum = 0, tested = 0;  // to compare with R: the p-values and the critical values
    for (int row = 0; row < kPairs; ++row) {
        const double p = layout.contrasts[Layout::At(row + 6 * kPairs)];
        tested += p >= 0;
        checksum += p >= 0 ? p : 0;
        checksum += std::fmax(layout.contrasts[Layout::At(row + 5 * kPairs)], 0.0);
    }
    state.counters["tested"] = tested;
    state.counters["sum"] = checksum;
}

BENCHMARK(BM_MCATest)->DenseRange(1, 7)->DenseRange(9, 11)->Unit(benchmark::kMillisecond);

}  // namespace
