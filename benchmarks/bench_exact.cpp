// Fisher's exact test of tables that take some work. bench_exact.R times R's on the same tables.

#include <benchmark/benchmark.h>

#include <string>
#include <vector>

#include "kernel/distributions/fisher_exact.h"

namespace {

struct Table
{
    const char* name;
    int r;
    int c;
    std::vector<double> cells;
};

// bench_exact.R reads these lines.
const Table kTables[] = {
    {"4x4 of 100", 4, 4, {9, 5, 8, 3, 10, 3, 5, 10, 8, 3, 6, 3, 4, 6, 8, 9}},
    {"4x4 of 150", 4, 4, {8, 11, 12, 8, 11, 10, 11, 7, 7, 6, 5, 12, 14, 10, 8, 10}},
    {"4x4 of 201", 4, 4, {12, 14, 10, 15, 13, 11, 14, 12, 10, 16, 13, 11, 15, 9, 12, 14}},
    {"5x5 of 60", 5, 5, {2, 0, 4, 2, 3, 1, 5, 2, 2, 4, 2, 3, 0, 2, 5, 2, 4, 3, 1, 3, 2, 3, 1, 0, 4}},
    {"5x5 of 100", 5, 5, {5, 6, 8, 2, 3, 3, 3, 2, 6, 4, 5, 1, 4, 5, 4, 1, 8, 7, 6, 1, 3, 1, 3, 3, 6}},
};

void Fisher(benchmark::State& state, const Table& table, double expect)
{
    double p = 0.0;
    for (auto _ : state) {
        cfexact(table.r, table.c, table.cells.data(), table.r, expect, 80.0, 1.0, &p);
        benchmark::DoNotOptimize(p);
    }
    state.counters["p"] = p;
}

const bool kRegistered = [] {
    for (const Table& table : kTables) {
        for (const bool hybrid : {false, true}) {
            const std::string name = std::string(table.name) + (hybrid ? " hybrid" : " exact");
            benchmark::RegisterBenchmark(name.c_str(), Fisher, table, hybrid ? 5.0 : 0.0)
                ->Unit(benchmark::kMillisecond);
        }
    }
    return true;
}();

}  // namespace
