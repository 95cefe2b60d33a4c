// Cpp_RunMLOG to convergence with all tables: binary logit, and a multinomial one of five categories. bench_logit.R makes
// the same kind of data.

#include <benchmark/benchmark.h>

#include <algorithm>
#include <cmath>
#include <random>
#include <vector>

#include "korvenrg.h"

namespace {

// n standard normal rows, a response drawn from the model with slopes of alternating sign, and all arrays of one call.
struct Call
{
    Call(int rows, int cols, int categoryCount)
        : n(rows),
          p(cols),
          categories(categoryCount),
          y(N()),
          x(N() * P()),
          ones(N(), 1.0),
          wr(N(), 1.0),
          types(P(), 1),
          active(P(), 1),
          parents(P()),
          design(P() * P()),
          info(11),
          mortality(K()),
          models(P() + 15),
          removed(P()),
          coefficients((P() + 1) * K() * 11),
          beta(P() * K() * 8),
          covariance((P() + 2) * (P() + 2)),
          fit(20),
          tests(9),
          anova((P() + 1) * 5),
          predictions(N() * 9 * K()),
          marginal(K()),
          classes((K() + 2) * (K() + 3)),
          roc((N() + 1) * 2),
          doses(78),
          curve(495),
          valid(9 * K() + P() + 4)
    {
        std::mt19937_64 generator(20243);
        std::normal_distribution<double> normal;
        std::uniform_real_distribution<double> uniform;
        for (double& cell : x)
            cell = normal(generator);
        for (std::size_t j = 0; j < P(); ++j) {
            parents[j] = static_cast<int>(j) + 1;
            design[j * P() + j] = 1.0;
        }
        for (std::size_t i = 0; i < N(); ++i) {
            double eta = 0.0;
            for (std::size_t j = 0; j < P(); ++j)
                eta += x[j * N() + i] * (j % 2 == 0 ? 0.2 : -0.2);
            double total = 1.0;
            for (std::size_t k = 1; k <= K(); ++k)
                total += std::exp(eta * static_cast<double>(k) / static_cast<double>(K()));
            double left = uniform(generator) * total - 1.0;
            for (std::size_t k = 1; k <= K() && left > 0.0; ++k) {
                y[i] = static_cast<double>(k);
                left -= std::exp(eta * static_cast<double>(k) / static_cast<double>(K()));
            }
        }
    }

    std::size_t N() const
    {
        return static_cast<std::size_t>(n);
    }
    std::size_t P() const
    {
        return static_cast<std::size_t>(p);
    }
    std::size_t K() const
    {
        return static_cast<std::size_t>(categories - 1);
    }

    int Run()
    {
        int nbActive = p;
        double hetero = 0.0, area = 0.0;
        VARIANT_BOOL separate = 0;
        std::fill(mortality.begin(), mortality.end(), 0.0);
        // clang-format off
        return Cpp_RunMLOG(n, p, 0, categories, y.data(), x.data(), ones.data(), wr.data(), 0.05, 0, valid.data(),
            valid.data(), valid.data(), valid.data(), classes.data(), 0, valid.data(), valid.data(), p, &nbActive,
            types.data(), active.data(), nullptr, parents.data(), nullptr, design.data(), info.data(),
            categories > 2 ? 2 : 0, 0, 1E-8, 100, 1E-4, 0, 0, -1, 0, 0.05, 0.1, 1, 1, 0.5, mortality.data(),
            models.data(), removed.data(), coefficients.data(), beta.data(), covariance.data(), fit.data(),
            tests.data(), anova.data(), predictions.data(), &hetero, marginal.data(), classes.data(), roc.data(),
            &area, doses.data(), curve.data(), &separate);
        // clang-format on
    }

    int n, p, categories;
    std::vector<double> y, x, ones, wr;
    std::vector<int> types, active, parents;
    std::vector<double> design;
    std::vector<int> info;
    std::vector<double> mortality, models;
    std::vector<int> removed;
    std::vector<double> coefficients, beta, covariance, fit, tests, anova, predictions, marginal, classes,
        roc, doses, curve, valid;
};

void BM_RunMLOG(benchmark::State& state)
{
    Call call(static_cast<int>(state.range(0)),
              static_cast<int>(state.range(1)),
              static_cast<int>(state.range(2)));
    int result = 0;
    for (auto _ : state) {
        result += call.Run();
        benchmark::ClobberMemory();
    }
    state.counters["result"] = result;
    state.counters["iterations"] = call.fit[19];
}

BENCHMARK(BM_RunMLOG)
    ->ArgNames({"rows", "columns", "categories"})
    ->Args({100000, 20, 2})
    ->Args({400000, 20, 2})
    ->Args({100000, 50, 2})
    ->Args({100000, 20, 5})
    ->Unit(benchmark::kMillisecond);

}  // namespace
