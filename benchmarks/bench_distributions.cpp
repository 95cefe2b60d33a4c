// Time per call of the distribution functions. Each benchmark runs over the same kArguments arguments, spread
// by a fixed rule over a regime; bench_distributions.R times R's counterparts on the same arguments.

#include <benchmark/benchmark.h>

#include <cmath>
#include <cstddef>
#include <cstdio>
#include <memory>
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
    {"df 1, 1000", 1, 1000},
    {"df 2, 2", 2, 2},
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

constexpr int kMeans[] = {3, 5, 10, 30, 100};
constexpr double kErrorDfs[] = {2, 10, 60, 10000};

/** P-values beside the 5 % critical value and critical values beside 95 %, equal group sizes. */
void RegisterComparisons(int k, double df)
{
    const Regime regime = {"", 0, 0};
    const std::string tag = ", k " + std::to_string(k) + " df " + std::to_string(static_cast<int>(df));
    const auto lambda = std::make_shared<matrix<double>>(k - 1, 1, std::sqrt(0.5));
    const auto conf = [](int i) { return 0.94 + 0.02 * Probability(i); };
    const double critical = qmcav(k, lambda.get(), df, 0.95);
    const auto beside = [=](int i) { return critical * (0.9 + 0.2 * Probability(i)); };
    Run(("range tail" + tag).c_str(), regime, beside, [=](double x) {
        return pvmcav(k, lambda.get(), df, x);
    });
    Run(("range quantile" + tag).c_str(), regime, conf, [=](double p) {
        return qmcav(k, lambda.get(), df, p);
    });
    Run(("Dunnett tail" + tag).c_str(), regime, beside, [=](double x) {
        return pvmccv(k, lambda.get(), df, x);
    });
    Run(("Dunnett quantile" + tag).c_str(), regime, conf, [=](double p) {
        matrix<double> confidence(1, 1, p);
        matrix<double> result(1, 1);
        qmccv(k, lambda.get(), df, 1.0, &confidence, &result);
        return result.vbget(1);
    });
}

/** Two-sided tail of Dunnett's law for unequal group sizes, the control's 9; bench_dunnett.R has the same. */
void RegisterUnequalDunnett(int k)
{
    const auto lambda = std::make_shared<matrix<double>>(k - 1, 1);
    for (int i = 1; i < k; ++i) {
        const double size = 5 + i % 11;
        lambda->vbset(i, std::sqrt(size / (9 + size)));
    }
    const auto same = [](int) { return 2.8; };
    Run(("Dunnett tail, unequal sizes, k " + std::to_string(k)).c_str(), {"", 0, 0}, same, [=](double x) {
        return pvmccv(k, lambda.get(), 60, x);
    });
}

/** Tails and probabilities of n trials. */
void RegisterBinomial(double n, double p)
{
    const Regime regime = {"", 0, 0};
    char tag[40];
    std::snprintf(tag, sizeof tag, ", n %g p %g", n, p);
    const double deviation = std::sqrt(n * p * (1 - p));
    const auto count = [=](int i) {
        return std::fmin(std::fmax(std::floor(n * p + Deviate(i) * deviation), 0), n);
    };
    Run((std::string("pbinom lower") + tag).c_str(), regime, count, [=](double k) {
        return CDFBinomial(k, n, p);
    });
    Run((std::string("pbinom upper") + tag).c_str(), regime, count, [=](double k) {
        return CDFBinomial(k, n, p, 0);
    });
    Run((std::string("dbinom") + tag).c_str(), regime, count, [=](double k) { return PDFBinomial(k, n, p); });
}

/** Tails of the marked among n / 4 drawn from n, a third of them marked. */
void RegisterHypergeometric(double n)
{
    const Regime regime = {"", 0, 0};
    const double marked = std::floor(n / 3);
    const double drawn = std::floor(n / 4);
    const double deviation = std::sqrt(n / 4 / 3 * (2.0 / 3) * (3.0 / 4));
    const auto count = [=](int i) { return std::floor(n / 12 + Deviate(i) * deviation); };
    Run(("hypergeometric, n " + std::to_string(static_cast<long>(n))).c_str(), regime, count, [=](double t) {
        return CDFHyperG(t, marked, n - marked, drawn);
    });
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
    for (int k : kMeans)
        for (double df : kErrorDfs)
            RegisterComparisons(k, df);
    for (int k : {10, 30})
        RegisterUnequalDunnett(k);
    for (double p : {0.3, 0.01})
        for (double n : {10.0, 100.0, 1e4, 1e6})
            RegisterBinomial(n, p);
    for (double n : {60.0, 1e4, 1e6})
        RegisterHypergeometric(n);
    return true;
}

[[maybe_unused]] const bool kRegistered = RegisterAll();

}  // namespace
