// A million keys with an index vector: SortQ beside std::sort and std::stable_sort on pairs of key and index.

#include <benchmark/benchmark.h>

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <functional>
#include <numeric>
#include <random>
#include <utility>
#include <vector>

#include "core/limits.h"
#include "kernel/linalg/sorting.h"

namespace {

enum Input
{
    kScattered,  // normal deviates
    kTied,       // about a hundred different keys
    kAscending,
    kDescending,
};

std::vector<double> Keys(const benchmark::State& state)
{
    const auto n = static_cast<int>(state.range(0));
    std::mt19937_64 generator(1);
    std::normal_distribution<double> normal;
    std::vector<double> keys;
    for (int i = 0; i < n; ++i) {
        keys.push_back(normal(generator));
    }
    switch (state.range(1)) {
        case kTied:
            std::transform(keys.begin(), keys.end(), keys.begin(), [](double x) {
                return std::floor(16 * x);
            });
            break;
        case kAscending:
            std::sort(keys.begin(), keys.end());
            break;
        case kDescending:
            std::sort(keys.begin(), keys.end(), std::greater<>());
            break;
        default:
            break;
    }
    return keys;
}

void SortQWithIndex(benchmark::State& state)
{
    const std::vector<double> keys = Keys(state);
    const auto n = static_cast<int>(keys.size());
    matrix<double> key(n, 1);
    matrix<double> index(n, 1);
    for (auto _ : state) {
        state.PauseTiming();
        std::copy(keys.begin(), keys.end(), key.data);
        std::iota(index.data, index.data + n, 1.0);
        state.ResumeTiming();
        SortQ<double>(&index, n, 1, 1, n, &key, nullptr, 0, korvenrg::kFalse, korvenrg::kTrue);
        benchmark::DoNotOptimize(index.data[0]);
    }
}

using Pair = std::pair<double, int>;

template <typename Sort>
void SortPairs(benchmark::State& state, const Sort& sort)
{
    const std::vector<double> keys = Keys(state);
    std::vector<Pair> pairs(keys.size());
    for (auto _ : state) {
        state.PauseTiming();
        for (std::size_t i = 0; i < keys.size(); ++i) {
            pairs[i] = {keys[i], static_cast<int>(i)};
        }
        state.ResumeTiming();
        sort(pairs);
        benchmark::DoNotOptimize(pairs.data());
    }
}

void StdSortPairs(benchmark::State& state)
{
    SortPairs(state, [](std::vector<Pair>& pairs) { std::sort(pairs.begin(), pairs.end()); });
}

void StdStableSortPairs(benchmark::State& state)
{
    SortPairs(state, [](std::vector<Pair>& pairs) {
        std::stable_sort(pairs.begin(), pairs.end(), [](const Pair& a, const Pair& b) {
            return a.first < b.first;
        });
    });
}

void Inputs(benchmark::internal::Benchmark* benchmark)
{
    for (const int n : {1000, 1000000}) {
        for (const Input input : {kScattered, kTied, kAscending, kDescending}) {
            benchmark->Args({n, input});
        }
    }
    benchmark->Unit(benchmark::kMicrosecond);
}

BENCHMARK(SortQWithIndex)->Apply(Inputs);
BENCHMARK(StdSortPairs)->Apply(Inputs);
BENCHMARK(StdStableSortPairs)->Apply(Inputs);

}  // namespace
