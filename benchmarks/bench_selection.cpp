// Best subsets over twenty factors, and the Type III table of a three-way design.

#include <benchmark/benchmark.h>

#include <random>
#include <vector>

#include "kernel/linalg/moments.h"
#include "kernel/linalg/products.h"
#include "kernel/linalg/sweep.h"
#include "linear/best_subset.h"
#include "linear/type_iii_estimable.h"

namespace {

using korvenrg::linalg::PackedSize;

constexpr int kFactors = 20;
constexpr int kRows = 200;

matrix<double> PackedCorrelations()
{
    std::mt19937_64 generator(20245);
    std::normal_distribution<double> normal;
    std::vector<std::vector<double>> columns(kFactors + 1, std::vector<double>(kRows));
    for (auto& column : columns) {
        for (double& cell : column) {
            cell = normal(generator);
        }
    }
    for (std::size_t i = 0; i < kRows; ++i) {
        for (std::size_t j = 0; j < kFactors; ++j) {
            columns[kFactors][i] += columns[j][i] / static_cast<double>(j + 1);
        }
    }
    std::vector<const double*> pointers;
    for (const auto& column : columns) {
        pointers.push_back(column.data());
    }
    const auto moments = korvenrg::linalg::CorrelationMoments(pointers, kRows, nullptr);
    matrix<double> packed(static_cast<int>(PackedSize(kFactors + 1)), 1);
    int at = 0;
    for (std::size_t i = 0; i <= kFactors; ++i) {
        for (std::size_t j = 0; j <= i; ++j) {
            packed.vbset(++at, moments.correlation[j * (kFactors + 1) + i]);
        }
    }
    return packed;
}

// All sizes: 2^20 - 1 models. The argument is the criterion.
void BestSubsets(benchmark::State& state)
{
    const matrix<double> unswept = PackedCorrelations();
    for (auto _ : state) {
        matrix<double> packed(unswept);
        matrix<int> active(kFactors, 1, 1);
        matrix<int> parents(kFactors, 1);
        for (int j = 1; j <= kFactors; ++j) {
            parents.vbset(j, j);
        }
        matrix<int> states(kFactors, 1);
        matrix<double> models(2 * kFactors, kFactors + 12);
        int pFinal = 0;
        int best = 0;
        OLSBestSelection(kFactors,
                         1e-10,
                         1.0,
                         kRows,
                         1.0,
                         &packed,
                         static_cast<double>(state.range(0)),
                         1,
                         kFactors,
                         kFactors,
                         &active,
                         &parents,
                         &states,
                         &pFinal,
                         1.0,
                         &models,
                         &best);
        benchmark::DoNotOptimize(best);
    }
    state.counters["models"] =
        benchmark::Counter(static_cast<double>(state.iterations()) * ((1 << kFactors) - 1),
                           benchmark::Counter::kIsRate);
}
BENCHMARK(BestSubsets)->Arg(0)->Arg(1)->Arg(3)->Unit(benchmark::kMillisecond);

// Three factors of two levels with their two-way interactions in plain indicators: 6 + 12 columns, all seven tests but the
// three-way one.
void EstimableTypeIii(benchmark::State& state)
{
    constexpr int kColumns = 18;
    constexpr int kTerms = 6;
    const int variables[kTerms][2] = {{1, 0}, {2, 0}, {3, 0}, {1, 2}, {1, 3}, {2, 3}};
    std::mt19937 generator(3);
    matrix<double> design(kRows, kColumns + 2);
    matrix<int> parents(kColumns, 1), types(kTerms, 1), counts(kTerms, 1), lists(kTerms, 2),
        active(kTerms, 1, 1);
    matrix<double> asked(kTerms, 1, 1.0), weights(kRows, 1, 1.0), products(kColumns + 2, kColumns + 2),
        table(kTerms, 5);
    for (int r = 1; r <= kRows; ++r) {
        const unsigned cell = generator() % 11;
        design.vbset(r, 1, 1.0);
        design.vbset(r, kColumns + 2, static_cast<double>(generator() % 1000) / 300.0);
        int column = 1;
        for (const auto& term : variables) {
            const int levels = term[1] == 0 ? 2 : 4;
            for (int level = 0; level < levels; ++level) {
                const int first = static_cast<int>(cell >> (term[0] - 1) & 1U);
                const int second = term[1] == 0 ? 0 : static_cast<int>(cell >> (term[1] - 1) & 1U);
                const int own = term[1] == 0 ? first : 2 * first + second;
                design.vbset(r, ++column, own == level ? 1.0 : 0.0);
            }
        }
    }
    int column = 0;
    for (int t = 1; t <= kTerms; ++t) {
        const int* term = variables[t - 1];
        types.vbset(t, term[1] == 0 ? 2 : 4);
        counts.vbset(t, term[1] == 0 ? 1 : 2);
        lists.vbset(t, 1, term[0]);
        lists.vbset(t, 2, term[1]);
        for (int level = 0; level < (term[1] == 0 ? 2 : 4); ++level) {
            parents.vbset(++column, t);
        }
    }
    M_ProductTrADiagVA(&design, kRows, kColumns + 2, &weights, &products);
    for (auto _ : state) {
        OLSGetTypeIIIEstimable(&products,
                               kColumns,
                               1.0,
                               180.0,
                               1.0,
                               kTerms,
                               &active,
                               &asked,
                               &types,
                               &counts,
                               &lists,
                               &parents,
                               &table);
        benchmark::DoNotOptimize(table.data);
    }
}
BENCHMARK(EstimableTypeIii)->Unit(benchmark::kMicrosecond);

}  // namespace
