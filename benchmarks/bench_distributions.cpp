// Time per call of the distribution functions. Each benchmark runs over the same kArguments arguments, spread
// by a fixed rule over a regime; bench_distributions.R times R's counterparts on the same arguments.

#include <benchmark/benchmark.h>

#include <cmath>
#include <cstddef>
#include <string>
#include <vector>

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

/** Times call(argument(i)), i = 0 .. kArguments - 1, without the forming of the arguments. */
template <class Argument, class Call>
void Run(const char* function, const Regime& regime, Argument argument, Call call)
{
    const std::string name = std::string(function) + " / " + regime.name;
    benchmark::RegisterBenchmark(name.c_str(), [=](benchmark::State& state) {
        std::vector<double> arguments(kArguments);
        for (int i = 0; i < kArguments; i++)
            arguments[static_cast<std::size_t>(i)] = argument(i);
        for (auto _ : state) {
            double sum = 0;
            for (double x : arguments)
                sum += call(x);
            benchmark::DoNotOptimize(sum);
        }
        state.counters["time/call"] =
            benchmark::Counter(static_cast<double>(state.iterations()) * kArguments,
                               benchmark::Counter::kIsRate | benchmark::Counter::kInvert);
    });
}

void RegisterRegime(const Regime& regime)
{
    const double df1 = regime.df1;
    const double df2 = regime.df2;
    const auto fisher = [=](int i) { return FisherArgument(i, regime); };
    const auto chiSquare = [=](int i) { return ChiSquareArgument(i, df2); };
    Run("pF", regime, fisher, [=](double F) { return pValFisher(F, df1, df2); });
    Run("qF", regime, Probability, [=](double p) { return InvCDFFisher(p, df1, df2); });
    Run("pt", regime, Deviate, [=](double t) { return pValStudent(t, df2); });
    Run("qt", regime, Probability, [=](double p) { return InvCDFStudent(p, df2); });
    Run("pchisq", regime, chiSquare, [=](double x) { return pValChiSq(x, df2); });
    Run("qchisq", regime, Probability, [=](double p) { return InvCDFChiSq(p, df2); });
}

bool RegisterAll()
{
    for (const Regime& regime : kRegimes)
        RegisterRegime(regime);
    const Regime plain = {"", 0, 0};
    const auto upTo100 = [](int i) { return 100 * Probability(i); };
    Run("pnorm", plain, Deviate, pValNormalStd);
    Run("qnorm", plain, Probability, InvCDFNormalStd);
    Run("lgamma", plain, upTo100, GammaLn);
    Run("digamma", plain, upTo100, Digamma);
    Run("trigamma", plain, upTo100, Trigamma);
    return true;
}

[[maybe_unused]] const bool kRegistered = RegisterAll();

}  // namespace
