// RunOLS1 with all case tables, beside the same arithmetic written over OpenBLAS on one thread.

#include <benchmark/benchmark.h>
#include <cblas.h>
#include <lapacke.h>
#include <sys/resource.h>

#include <cmath>
#include <random>
#include <vector>

#include "korvenrg.h"

namespace {

constexpr int kFitRows = 15;
constexpr int kOptions = 17;

// A regression on p standard normal columns with coefficients 1/j and standard normal noise.
struct Problem
{
    int n;
    int p;
    std::vector<double> x;
    std::vector<double> y;
};

Problem MakeProblem(int n, int p)
{
    std::mt19937_64 generator(20241);
    std::normal_distribution<double> normal;
    const auto rows = static_cast<std::size_t>(n);
    Problem problem{n, p, std::vector<double>(rows * static_cast<std::size_t>(p)), std::vector<double>(rows)};
    for (double& cell : problem.x) {
        cell = normal(generator) + 3.0;
    }
    for (std::size_t r = 0; r < rows; ++r) {
        problem.y[r] = 1.0 + normal(generator);
        for (int j = 0; j < p; ++j) {
            problem.y[r] += problem.x[static_cast<std::size_t>(j) * rows + r] / (j + 1.0);
        }
    }
    return problem;
}

// All arrays of one call of RunOLS1.
struct Arrays
{
    explicit Arrays(const Problem& problem)
        : x(problem.x),
          y(problem.y),
          caseWeights(y.size(), 1.0),
          regressionWeights(y.size(), 1.0),
          one(P(problem), 1),
          numbers(P(problem)),
          design(P(problem) * P(problem)),
          options{0, 0, 1E-12, 0, -1, 0, 0, 0, 0, 0, 0.05, 0, 0, 0, 0, 0, 1},
          models(2 * P(problem) * (P(problem) + 12)),
          states(P(problem)),
          fit(kFitRows * 2),
          anova(15),
          typeTable(P(problem) * 5),
          raw(P(problem) + 1),
          coefficients(P(problem) + 1),
          parameters((P(problem) + 1) * 6),
          standardised(P(problem) * 6),
          covariance((P(problem) + 1) * (P(problem) + 1)),
          prediction(y.size()),
          errors(y.size() * 6),
          residuals(y.size() * 3),
          cooks(y.size()),
          adjusted(y.size()),
          swept(covariance.size()),
          mean(raw.size()),
          deviation(raw.size())
    {
        for (std::size_t j = 0; j < numbers.size(); ++j) {
            numbers[j] = static_cast<int>(j) + 1;
            design[j * numbers.size() + j] = 1.0;
        }
    }

    static std::size_t P(const Problem& problem)
    {
        return static_cast<std::size_t>(problem.p);
    }

    std::vector<double> x, y, caseWeights, regressionWeights;
    std::vector<int> one, numbers;
    std::vector<double> design, options, models;
    std::vector<int> states;
    std::vector<double> fit, anova, typeTable, raw, coefficients, parameters, standardised, covariance,
        prediction, errors, residuals, cooks, adjusted, swept, mean, deviation;
};

int Run(const Problem& problem, Arrays& a)
{
    int pFinal = 0;
    int best = 0;
    std::vector<int> active = a.one;
    std::vector<int> type = a.one;
    std::fill(a.states.begin(), a.states.end(), 0);
    return RunOLS1(problem.n,
                   problem.p,
                   a.y.data(),
                   a.x.data(),
                   a.caseWeights.data(),
                   a.regressionWeights.data(),
                   problem.p,
                   1,
                   problem.p,
                   type.data(),
                   active.data(),
                   a.one.data(),
                   a.numbers.data(),
                   a.one.data(),
                   a.numbers.data(),
                   nullptr,
                   a.design.data(),
                   a.options.data(),
                   &pFinal,
                   a.models.data(),
                   &best,
                   a.states.data(),
                   a.fit.data(),
                   a.anova.data(),
                   a.typeTable.data(),
                   a.typeTable.data(),
                   a.typeTable.data(),
                   nullptr,
                   a.raw.data(),
                   a.coefficients.data(),
                   a.parameters.data(),
                   a.standardised.data(),
                   a.covariance.data(),
                   a.prediction.data(),
                   a.errors.data(),
                   a.residuals.data(),
                   a.cooks.data(),
                   a.adjusted.data(),
                   a.swept.data(),
                   a.mean.data(),
                   a.deviation.data());
}

void BM_RunOLS1(benchmark::State& state)
{
    const Problem problem = MakeProblem(static_cast<int>(state.range(0)), static_cast<int>(state.range(1)));
    Arrays arrays(problem);
    for (auto _ : state) {
        if (Run(problem, arrays) != 0) state.SkipWithError("no model");
        benchmark::DoNotOptimize(arrays.cooks.data());
    }
}

// Extra memory of one run: the growth of the peak resident set over the caller's arrays, in tables of X.
void BM_RunOLS1Memory(benchmark::State& state)
{
    const Problem problem = MakeProblem(static_cast<int>(state.range(0)), static_cast<int>(state.range(1)));
    Arrays arrays(problem);
    rusage before{};
    rusage after{};
    for (auto _ : state) {
        getrusage(RUSAGE_SELF, &before);
        Run(problem, arrays);
        getrusage(RUSAGE_SELF, &after);
    }
    const double tableBytes = static_cast<double>(problem.x.size()) * sizeof(double);
    state.counters["extra_tables"] =
        static_cast<double>(after.ru_maxrss - before.ru_maxrss) * 1024.0 / tableBytes;
}

// The same results over OpenBLAS: centred copy (its memory is allocated beforehand), dsyrk, dpotrf, solve,
// dgemv, dtrsm for the leverages, case tables.
void BM_OpenBlas(benchmark::State& state)
{
    openblas_set_num_threads(1);
    const Problem problem = MakeProblem(static_cast<int>(state.range(0)), static_cast<int>(state.range(1)));
    Arrays a(problem);
    const int n = problem.n;
    const int p = problem.p;
    const auto rows = static_cast<std::size_t>(n);
    const auto cols = static_cast<std::size_t>(p);
    std::vector<double> centred(rows * cols);
    for (auto _ : state) {
        double meanY = 0.0;
        for (std::size_t j = 0; j <= cols; ++j) {
            const double* source = j < cols ? a.x.data() + j * rows : a.y.data();
            double sum = 0.0;
            for (std::size_t r = 0; r < rows; ++r)
                sum += source[r];
            a.mean[j] = sum / n;
            if (j == cols) break;
            for (std::size_t r = 0; r < rows; ++r)
                centred[j * rows + r] = source[r] - a.mean[j];
        }
        meanY = a.mean[cols];
        std::vector<double> factor(cols * cols);
        cblas_dsyrk(CblasColMajor,
                    CblasLower,
                    CblasTrans,
                    p,
                    n,
                    1.0,
                    centred.data(),
                    n,
                    0.0,
                    factor.data(),
                    p);
        std::vector<double> beta(cols);
        cblas_dgemv(CblasColMajor,
                    CblasTrans,
                    n,
                    p,
                    1.0,
                    centred.data(),
                    n,
                    a.y.data(),
                    1,
                    0.0,
                    beta.data(),
                    1);
        LAPACKE_dpotrf(LAPACK_COL_MAJOR, 'L', p, factor.data(), p);
        LAPACKE_dpotrs(LAPACK_COL_MAJOR, 'L', p, 1, factor.data(), p, beta.data(), p);
        std::fill(a.prediction.begin(), a.prediction.end(), meanY);
        cblas_dgemv(CblasColMajor,
                    CblasNoTrans,
                    n,
                    p,
                    1.0,
                    centred.data(),
                    n,
                    beta.data(),
                    1,
                    1.0,
                    a.prediction.data(),
                    1);
        cblas_dtrsm(CblasColMajor,
                    CblasRight,
                    CblasLower,
                    CblasTrans,
                    CblasNonUnit,
                    n,
                    p,
                    1.0,
                    factor.data(),
                    p,
                    centred.data(),
                    n);
        std::vector<double> leverage(rows, 1.0 / n);
        for (std::size_t j = 0; j < cols; ++j) {
            for (std::size_t r = 0; r < rows; ++r)
                leverage[r] += centred[j * rows + r] * centred[j * rows + r];
        }
        double sse = 0.0;
        for (std::size_t r = 0; r < rows; ++r) {
            a.residuals[r] = a.y[r] - a.prediction[r];
            sse += a.residuals[r] * a.residuals[r];
        }
        const double mse = sse / (n - p - 1);
        const double rmse = std::sqrt(mse);
        for (std::size_t r = 0; r < rows; ++r) {
            const double h = leverage[r];
            const double e = a.residuals[r];
            const double deleted = e / (1.0 - h);
            a.residuals[rows + r] = e / rmse;
            a.residuals[2 * rows + r] = e / std::sqrt(mse * (1.0 - h));
            a.cooks[r] = h * deleted * deleted / ((p + 1) * mse);
            a.adjusted[r] = a.y[r] - deleted;
            const double mean = std::sqrt(mse * h);
            const double observation = std::sqrt(mse + mse * h);
            a.errors[r] = mean;
            a.errors[rows + r] = a.prediction[r] - 1.96 * mean;
            a.errors[2 * rows + r] = a.prediction[r] + 1.96 * mean;
            a.errors[3 * rows + r] = observation;
            a.errors[4 * rows + r] = a.prediction[r] - 1.96 * observation;
            a.errors[5 * rows + r] = a.prediction[r] + 1.96 * observation;
        }
        benchmark::DoNotOptimize(a.cooks.data());
    }
}

BENCHMARK(BM_RunOLS1Memory)->Args({100000, 50})->Iterations(1);
BENCHMARK(BM_RunOLS1)
    ->Args({100000, 50})
    ->Args({200000, 50})
    ->Args({400000, 50})
    ->Args({100000, 100})
    ->Args({100000, 200})
    ->Unit(benchmark::kMillisecond);
BENCHMARK(BM_OpenBlas)
    ->Args({100000, 50})
    ->Args({100000, 100})
    ->Args({100000, 200})
    ->Unit(benchmark::kMillisecond);

}  // namespace
