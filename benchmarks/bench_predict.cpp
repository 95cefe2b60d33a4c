// OLSPredict with both intervals, and with the statistics of a validation sample.

#include <benchmark/benchmark.h>

#include <random>
#include <vector>

#include "korvenrg.h"

namespace {

constexpr std::size_t kFitRows = 15;

// n standard normal rows about 3, a fit of 200 observations in which the columns have nothing in common, and all arrays of
// one call. The time does not depend on the numbers.
struct Call
{
    Call(int rows, int cols)
        : n(rows),
          p(cols),
          x(N() * P()),
          coefficients(P() + 1, 1.0),
          states(P(), 0),
          errors(N() * 6),
          swept((P() + 1) * (P() + 1)),
          mean(P() + 1, 3.0),
          deviation(P() + 1, 1.0),
          weights(N(), 1.0),
          prediction(N()),
          fit(kFitRows * 2),
          response(N(), 3.0),
          residuals(N() * 3),
          cooks(N()),
          adjusted(N())
    {
        std::mt19937_64 generator(20242);
        std::normal_distribution<double> normal;
        for (double& cell : x)
            cell = normal(generator) + 3.0;
        for (std::size_t j = 0; j < P(); ++j)
            swept[j * (P() + 1) + j] = -1.0;
        fit[0] = fit[1] = 200.0;
        fit[2] = 199.0 - p;
        fit[5] = fit[6] = 1.0;
    }

    std::size_t N() const
    {
        return static_cast<std::size_t>(n);
    }
    std::size_t P() const
    {
        return static_cast<std::size_t>(p);
    }

    int n, p;
    std::vector<double> x, coefficients;
    std::vector<int> states;
    std::vector<double> errors, swept, mean, deviation, weights, prediction, fit, response, residuals, cooks,
        adjusted;
};

void Predict(benchmark::State& state, VARIANT_BOOL isValidation)
{
    Call c(static_cast<int>(state.range(0)), static_cast<int>(state.range(1)));
    for (auto _ : state) {
        OLSPredict(200,
                   c.n,
                   c.p,
                   c.p,
                   c.x.data(),
                   c.coefficients.data(),
                   0.05,
                   0,
                   c.states.data(),
                   c.errors.data(),
                   c.swept.data(),
                   c.mean.data(),
                   c.deviation.data(),
                   c.weights.data(),
                   c.weights.data(),
                   c.prediction.data(),
                   isValidation,
                   c.fit.data(),
                   c.response.data(),
                   c.residuals.data(),
                   c.cooks.data(),
                   c.adjusted.data());
        benchmark::DoNotOptimize(c.errors.data());
        benchmark::ClobberMemory();
    }
}

void BM_OLSPredict(benchmark::State& state)
{
    Predict(state, 0);
}

void BM_OLSPredictValidation(benchmark::State& state)
{
    Predict(state, -1);
}

BENCHMARK(BM_OLSPredict)
    ->Args({100000, 50})
    ->Args({400000, 50})
    ->Args({100000, 200})
    ->Unit(benchmark::kMillisecond);
BENCHMARK(BM_OLSPredictValidation)->Args({100000, 50})->Unit(benchmark::kMillisecond);

}  // namespace
