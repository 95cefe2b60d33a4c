// Time per call of the distribution functions. Each benchmark runs over the same kArguments arguments, spread
// by a fixed rule over a regime; bench_distributions.R times R's counterparts on the same arguments.

#include <benchmark/benchmark.h>

#include <cmath>
#include <string>

#include "kernel/distributions/distributions.h"

namespace {

constexpr int kArguments = 1000;

/** A sequence that fills 0..1 evenly: the fractional parts of the multiples of an irrational number. */
double Spread(int i, double irrational)
{
    const double multiple = (i + 0.5) * irrational;
    return multiple - std::floor(multiple);
}

constexpr double kGolden = 0.6180339887498949;
constexpr double kRootTwo = 0.4142135623730951;

struct Regime
{
    const char* name;
    double df1;
    double df2;
};

constexpr Regime kRegimes[] = {
    {"df 1, 3", 1, 3},
    {"df 5, 25.5", 5, 25.5},
    {"df 60, 200.5", 60, 200.5},
    {"df 2, 1e6", 2, 1e6},
    {"df 5000, 3000", 5000, 3000},
    {"df 1e6, 1e6", 1e6, 1e6},
};

double Probability(int i)
{
    return Spread(i, kGolden);
}

/** A normal quantile between -4 and 4. */
double Deviate(int i)
{
    return 8 * Spread(i, kRootTwo) - 4;
}

double FisherArgument(int i, const Regime& regime)
{
    return std::exp(Deviate(i) * std::sqrt(2 / regime.df1 + 2 / regime.df2));
}

double ChiSquareArgument(int i, double df)
{
    return df * std::exp(Deviate(i) * std::sqrt(2 / df));
}

template <class Call>
void Run(const char* function, const Regime& regime, Call call)
{
    const std::string name = std::string(function) + " / " + regime.name;
    benchmark::RegisterBenchmark(name.c_str(), [=](benchmark::State& state) {
        for (auto _ : state) {
            double sum = 0;
            for (int i = 0; i < kArguments; i++)
                sum += call(i);
            benchmark::DoNotOptimize(sum);
        }
        state.SetItemsProcessed(state.iterations() * kArguments);
        state.counters["time/call"] =
            benchmark::Counter(static_cast<double>(state.iterations()) * kArguments,
                               benchmark::Counter::kIsRate | benchmark::Counter::kInvert);
    });
}

void RegisterAll()
{
    for (const Regime& regime : kRegimes) {
        Run("pF", regime, [=](int i) {
            return pValFisher(FisherArgument(i, regime), regime.df1, regime.df2);
        });
        Run("qF", regime, [=](int i) { return InvCDFFisher(Probability(i), regime.df1, regime.df2); });
        Run("pt", regime, [=](int i) { return pValStudent(Deviate(i), regime.df2); });
        Run("qt", regime, [=](int i) { return InvCDFStudent(Probability(i), regime.df2); });
        Run("pchisq", regime, [=](int i) { return pValChiSq(ChiSquareArgument(i, regime.df2), regime.df2); });
        Run("qchisq", regime, [=](int i) { return InvCDFChiSq(Probability(i), regime.df2); });
    }
    const Regime plain = {"", 0, 0};
    Run("pnorm", plain, [](int i) { return pValNormalStd(Deviate(i)); });
    Run("qnorm", plain, [](int i) { return InvCDFNormalStd(Probability(i)); });
    Run("lgamma", plain, [](int i) { return GammaLn(100 * Probability(i)); });
    Run("digamma", plain, [](int i) { return Digamma(100 * Probability(i)); });
    Run("trigamma", plain, [](int i) { return Trigamma(100 * Probability(i)); });
}

[[maybe_unused]] const bool kRegistered = (RegisterAll(), true);

}  // namespace
