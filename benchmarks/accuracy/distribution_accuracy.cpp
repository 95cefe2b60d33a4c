// Sweeps the distribution functions over random arguments and prints, as Markdown, the largest relative error
// of each in each regime against the 70-digit oracle. Needs Boost (headers only).
//
// The command that builds and runs it stands in docs/accuracy.md.
//
// An argument prints a part alone: "distribution_accuracy binomial" (AllGroups has the names).
// The arguments come from a fixed generator, so a rerun prints the same table. A figure is the largest over
// the tails of at least 1e-300; a quantile is judged by the probability that the oracle gives for it, less
// what half an ulp of the quantile itself changes.

#include <cmath>
#include <cstdint>
#include <cstdio>
#include <functional>
#include <string>
#include <vector>

#include "../../tools/comparison_reference.h"
#include "../../tools/distribution_reference.h"
#include "accuracy_rows.h"
#include "kernel/distributions/distributions.h"
#include "kernel/distributions/studentized_tail.h"
#include "kernel/scalars/scalars.h"

namespace {

using accuracy::Draws;
using accuracy::kSmallest;
using accuracy::Named;
using accuracy::Worst;
using korvenrg::distributions::GammaFunction;
using korvenrg::distributions::IncompleteBeta;
using korvenrg::distributions::IncompleteBetaComplement;
using korvenrg::distributions::IncompleteGamma;
using korvenrg::distributions::IncompleteGammaComplement;
using reference::Real;
using reference::Tails;

constexpr int kDraws = 4000;               // arguments of a tail in one regime
constexpr int kQuantileDraws = 1500;       // and of a quantile
constexpr double kLeastArgument = 1e-290;  // smaller ones have lost digits themselves

struct Regime
{
    const char* name;
    double low;
    double high;
};

constexpr Regime kFewDf = {"df 0.001..0.1", 0.001, 0.1};
constexpr Regime kOneDf = {"df 1", 1, 1};  // closed forms
constexpr Regime kTwoDf = {"df 2", 2, 2};
constexpr Regime kRegimes[] = {{"df 0.1..2", 0.1, 2},
                               {"df 2..60", 2, 60},
                               {"df 60..2000", 60, 2000},
                               {"df 2000..1e6", 2000, 1e6}};
constexpr Regime kHugeRegime = {"df 1e6..1e15", 1e6, 1e15};

void SweepStudent(Draws& draws, const Regime& regime)
{
    Worst lower, upper;
    for (int i = 0; i < kDraws; i++) {
        const double df = draws.LogUniform(regime.low, regime.high);
        const double t = i % 4 == 0 ? draws.LogUniform(1e-8, 1e8) : draws.Deviate();
        const Tails tails = reference::Student(t, df);
        lower.Compare(CDFStudent(t, df), tails.lower, Named({{"t", t}, {"df", df}}));
        upper.Compare(CDFStudent(t, df, 0), tails.upper, Named({{"t", t}, {"df", df}}));
    }
    lower.Print("CDFStudent, lower", regime.name);
    upper.Print("CDFStudent, upper; pValStudent", regime.name);
}

void SweepChiSquare(Draws& draws, const Regime& regime)
{
    Worst lower, upper;
    for (int i = 0; i < kDraws; i++) {
        const double df = draws.LogUniform(regime.low, regime.high);
        const double x = i % 4 == 0 ? df * draws.LogUniform(1e-6, 1e3)
                                    : df * std::exp(draws.Deviate() * std::sqrt(2 / df));
        if (x < kLeastArgument || x > 2000 + 10 * df) continue;
        const Tails tails = reference::ChiSquare(x, df);
        lower.Compare(CDFChiSq(x, df), tails.lower, Named({{"x", x}, {"df", df}}));
        upper.Compare(CDFChiSq(x, df, 0), tails.upper, Named({{"x", x}, {"df", df}}));
    }
    lower.Print("CDFChiSq, lower", regime.name);
    upper.Print("CDFChiSq, upper; pValChiSq", regime.name);
}

void SweepFisher(Draws& draws, const Regime& first, const Regime& second)
{
    Worst lower, upper;
    for (int i = 0; i < kDraws; i++) {
        const double df1 = draws.LogUniform(first.low, first.high);
        const double df2 = draws.LogUniform(second.low, second.high);
        const double F = i % 4 == 0 ? draws.LogUniform(1e-6, 1e6)
                                    : std::exp(draws.Deviate() * std::sqrt(2 / df1 + 2 / df2));
        if (F < kLeastArgument || F > 1 / kLeastArgument) continue;
        const Tails tails = reference::Fisher(F, df1, df2);
        const std::string where = Named({{"F", F}, {"df1", df1}, {"df2", df2}});
        lower.Compare(CDFFisher(F, df1, df2, 1), tails.lower, where);
        upper.Compare(CDFFisher(F, df1, df2, 0), tails.upper, where);
    }
    const std::string regime = std::string(first.name) + " and " + second.name;
    lower.Print("CDFFisher, lower", regime);
    upper.Print("CDFFisher, upper; pValFisher", regime);
}

void SweepIncompleteFunctions(Draws& draws)
{
    Worst p, q, below, above;
    for (int i = 0; i < kDraws; i++) {
        const double a = draws.LogUniform(0.05, 5e5);
        const double b = draws.LogUniform(0.05, 5e5);
        const double x = a * std::exp(draws.Deviate() / std::sqrt(a));
        const double odds = a / b * std::exp(draws.Deviate() * std::sqrt(1 / a + 1 / b));
        if (x < 1000 + 10 * a) {
            const Tails gamma = reference::Gamma(a, x);
            p.Compare(IncompleteGamma(a, x), gamma.lower, Named({{"a", a}, {"x", x}}));
            q.Compare(IncompleteGammaComplement(a, x), gamma.upper, Named({{"a", a}, {"x", x}}));
        }
        // the smaller of x and y is the exact one
        const double small = odds < 1 ? odds / (1 + odds) : 1 / (1 + odds);
        if (small < 1e-270) continue;
        const Real exactX = odds < 1 ? Real(small) : 1 - Real(small);
        const Real exactY = 1 - exactX;
        const double u = odds < 1 ? small : 1 - small;
        const double v = odds < 1 ? 1 - small : small;
        const Tails beta = reference::Beta(a, b, exactX, odds < 1 ? exactY : Real(small));
        below.Compare(IncompleteBeta(a, b, u, v), beta.lower, Named({{"a", a}, {"b", b}, {"x", u}}));
        above.Compare(IncompleteBetaComplement(a, b, u, v),
                      beta.upper,
                      Named({{"a", a}, {"b", b}, {"x", u}}));
    }
    p.Print("IncompleteGamma", "a 0.05..5e5");
    q.Print("IncompleteGammaComplement", "a 0.05..5e5");
    below.Print("IncompleteBeta", "a, b 0.05..5e5");
    above.Print("IncompleteBetaComplement", "a, b 0.05..5e5");
}

/** The error of a quantile in its probability, less what half an ulp of the quantile changes. */
void NoteQuantile(Worst& worst,
                  double p,
                  double quantile,
                  const std::function<Tails(Real)>& tailsAt,
                  const std::string& where)
{
    const auto tail = [&](const Real& x) { return p <= 0.5 ? tailsAt(x).lower : tailsAt(x).upper; };
    const Real target = p <= 0.5 ? Real(p) : 1 - Real(p);
    if (std::isinf(quantile) || std::fabs(quantile) < kSmallest) {  // outside the doubles, or wrong
        const double end = std::isinf(quantile) ? std::copysign(1 / kSmallest, quantile) : kSmallest;
        const Tails atEnd = tailsAt(end);
        const bool isAbove = std::isinf(quantile) && quantile > 0;
        if ((isAbove ? atEnd.upper - (1 - Real(p)) : atEnd.lower - p) < -1e-12) worst.Note(HUGE_VAL, where);
        return;
    }
    const Real reached = tail(quantile);
    const Real neighbour = tail(std::nextafter(quantile, HUGE_VAL));
    const Real error = abs(reached - target) / target - abs(neighbour - reached) / (2 * target);
    worst.Note(static_cast<double>(error), where);
}

void SweepQuantiles(Draws& draws, const Regime& regime)
{
    Worst student, chiSquare, fisher;
    for (int i = 0; i < kQuantileDraws; i++) {
        const double p = draws.Probability();
        const double df = draws.LogUniform(regime.low, regime.high);
        const double df2 = draws.LogUniform(0.1, 1e6);
        if (p != 0.5)
            NoteQuantile(
                student,
                p,
                InvCDFStudent(p, df),
                [=](Real x) { return reference::Student(x, df); },
                Named({{"p", p}, {"df", df}}));
        NoteQuantile(
            chiSquare,
            p,
            InvCDFChiSq(p, df),
            [=](Real x) { return reference::ChiSquare(x, df); },
            Named({{"p", p}, {"df", df}}));
        NoteQuantile(
            fisher,
            p,
            InvCDFFisher(p, df, df2),
            [=](Real x) { return reference::Fisher(x, df, df2); },
            Named({{"p", p}, {"df1", df}, {"df2", df2}}));
    }
    student.Print("InvCDFStudent", regime.name);
    chiSquare.Print("InvCDFChiSq", regime.name);
    fisher.Print("InvCDFFisher", std::string(regime.name) + " and 0.1..1e6");
}

void SweepNormal(Draws& draws)
{
    Worst lower, upper, density, quantile;
    const Real pi = boost::math::constants::pi<Real>();
    for (int i = 0; i < kDraws; i++) {
        const double z = i % 4 == 0 ? draws.LogUniform(1e-10, 1) : draws.Deviate();
        const Tails tails = reference::Normal(z);
        lower.Compare(CDFNormalStd(z), tails.lower, Named({{"z", z}}));
        upper.Compare(pValNormalStd(z), tails.upper, Named({{"z", z}}));
        density.Compare(PDFNormalStd(z), exp(-Real(z) * z / 2) / sqrt(2 * pi), Named({{"z", z}}));
        const double p = draws.Probability();
        NoteQuantile(quantile, p, InvCDFNormalStd(p), reference::Normal, Named({{"p", p}}));
    }
    lower.Print("CDFNormalStd, lower", "z -38..38");
    upper.Print("CDFNormalStd, upper; pValNormalStd", "z -38..38");
    density.Print("PDFNormalStd", "z -38..38");
    quantile.Print("InvCDFNormalStd", "p 1e-290..1 - 1e-15");
}

Real GammaOf(Real x)
{
    if (x > 0) return exp(reference::LogGamma(x));
    const Real pi = boost::math::constants::pi<Real>();
    return pi / (sin(pi * x) * exp(reference::LogGamma(1 - x)));
}

void SweepFunction(const char* name,
                   const char* regime,
                   int count,
                   const std::function<double()>& draw,
                   const std::function<double(double)>& function,
                   const std::function<Real(Real)>& exact)
{
    Worst worst;
    for (int i = 0; i < count; i++) {
        const double x = draw();
        worst.Compare(function(x), exact(x), Named({{"x", x}}));
    }
    worst.Print(name, regime);
}

void SweepGammaFunctions(Draws& draws)
{
    const auto logGamma = [](Real x) { return x > 0 ? reference::LogGamma(x) : Real(log(abs(GammaOf(x)))); };
    const auto range = [&](double low, double high) {
        return [&draws, low, high] { return draws.Uniform(low, high); };
    };
    const auto logRange = [&](double low, double high) {
        return [&draws, low, high] { return draws.LogUniform(low, high); };
    };
    const auto digamma = [](Real x) { return boost::math::digamma(x); };
    const auto trigamma = [](Real x) { return boost::math::trigamma(x); };
    const int slow = kDraws / 4;

    SweepFunction("GammaLn", "0..5", kDraws, range(0, 5), GammaLn, logGamma);
    SweepFunction("GammaLn", "1e-10..1e15", kDraws, logRange(1e-10, 1e15), GammaLn, logGamma);
    SweepFunction("GammaLn", "-170..-4", kDraws, range(-170, -4), GammaLn, logGamma);
    SweepFunction("GammaFunction", "0..171", kDraws, range(0, 171), GammaFunction, GammaOf);
    SweepFunction("GammaFunction", "-160..0", kDraws, range(-160, 0), GammaFunction, GammaOf);
    SweepFunction("Digamma", "0..12", slow, range(0, 12), Digamma, digamma);
    SweepFunction("Digamma", "1e-10..1e15", slow, logRange(1e-10, 1e15), Digamma, digamma);
    SweepFunction("Trigamma", "1e-10..1e15", slow, logRange(1e-10, 1e15), Trigamma, trigamma);
    SweepFunction("Trigamma", "-50..0", slow, range(-50, 0), Trigamma, trigamma);
    const auto erf = [](Real x) { return boost::math::erf(x); };
    const auto erfc = [](Real x) { return boost::math::erfc(x); };
    SweepFunction("derf", "-7..7", kDraws, range(-7, 7), derf, erf);
    SweepFunction("derf", "1e-12..1", kDraws, logRange(1e-12, 1), derf, erf);
    SweepFunction("derfc", "-7..26", kDraws, range(-7, 26), derfc, erfc);

    Worst binomial;
    for (int i = 0; i < kDraws; i++) {
        const double n = draws.LogUniform(2, 1e12);
        const double k = i % 2 == 0 ? draws.Uniform(0, 1) * n : draws.LogUniform(0.01, n);
        if (k > n) continue;
        const Real exact = reference::LogGamma(Real(n) + 1) - reference::LogGamma(Real(k) + 1) -
                           reference::LogGamma(Real(n) - Real(k) + 1);
        binomial.Compare(cLogCnk(n, k), exact, Named({{"n", n}, {"k", k}}));
    }
    binomial.Print("cLogCnk", "n 2..1e12, k 0.01..n");

    Worst coefficient;
    for (int i = 0; i < kDraws; i++) {
        const int n = static_cast<int>(i % 2 == 0 ? draws.Uniform(1, 1030) : draws.LogUniform(1, 2e9));
        const int k = static_cast<int>(std::fmin(draws.LogUniform(1, 600), n));
        const Real exact = exp(reference::LogGamma(Real(n) + 1) - reference::LogGamma(Real(k) + 1) -
                               reference::LogGamma(Real(n) - Real(k) + 1));
        if (exact < 1e308) coefficient.Compare(Cnk(n, k), exact, Named({{"n", 1.0 * n}, {"k", 1.0 * k}}));
    }
    coefficient.Print("Cnk", "n 1..2e9, results to 1e308");
}

void SweepHypergeometric(Draws& draws, double most, int count, const char* regime)
{
    Worst lower, upper;
    for (int i = 0; i < count; i++) {
        const double n = std::floor(draws.LogUniform(4, most));
        const double marked = std::floor(i % 2 == 0 ? draws.Uniform(1, n) : draws.LogUniform(1, n));
        const double drawn = std::floor(i % 3 == 0 ? draws.Uniform(1, n) : draws.LogUniform(1, n));
        const double mean = drawn * marked / n;
        const double deviation = std::sqrt(mean * (1 - marked / n) * (1 - drawn / n));
        const double t = std::floor(mean + draws.Deviate() * deviation);
        if (t < std::fmax(0.0, drawn + marked - n) || t >= std::fmin(marked, drawn)) continue;
        const Tails tails = reference::Hypergeometric(t, marked, n - marked, drawn);
        const std::string where =
            Named({{"t", t}, {"marked", marked}, {"unmarked", n - marked}, {"drawn", drawn}});
        lower.Compare(CDFHyperG(t, marked, n - marked, drawn), tails.lower, where);
        upper.Compare(CDFHyperG(t, marked, n - marked, drawn, 0), tails.upper, where);
    }
    lower.Print("CDFHyperG, lower", regime);
    upper.Print("CDFHyperG, upper", regime);
}

void SweepBinomial(Draws& draws, double most, int count, const char* regime)
{
    Worst lower, upper, point;
    for (int i = 0; i < count; i++) {
        const double n = std::floor(draws.LogUniform(1, most + 1));
        const double chance = i % 2 == 0 ? draws.Uniform(0, 1) : draws.LogUniform(1 / most, 0.5);
        const double p = i % 4 == 3 ? 1 - chance : chance;
        const double k = i % 5 == 0 ? std::floor(draws.LogUniform(1, n + 1))
                                    : std::floor(n * p + draws.Deviate() * std::sqrt(n * p * (1 - p)));
        if (k < 0 || k > n) continue;
        const std::string where = Named({{"k", k}, {"n", n}, {"p", p}});
        point.Compare(PDFBinomial(k, n, p), reference::BinomialPoint(k, n, p), where);
        if (k == n) continue;
        const Tails tails = reference::Binomial(k, n, p);
        lower.Compare(CDFBinomial(k, n, p), tails.lower, where);
        upper.Compare(CDFBinomial(k, n, p, 0), tails.upper, where);
    }
    lower.Print("CDFBinomial, lower", regime);
    upper.Print("CDFBinomial, upper", regime);
    point.Print("PDFBinomial", regime);
}

/** Upper tails and critical values of one multiple-comparison law; the critical values relative to themselves. */
void SweepComparisons(const char* name, korvenrg::distributions::ComparisonKind kind, bool isEqual)
{
    using namespace korvenrg::distributions;
    const int count = isEqual ? 20 : 8;  // the oracle is slow
    Draws draws;
    Worst tail, quantile;
    for (int i = 0; i < count; i++) {
        const int k = static_cast<int>(draws.LogUniform(2, isEqual ? 101 : 6));
        const double df = i % 10 == 0 ? HUGE_VAL : draws.LogUniform(1, 1e6);
        const double root = std::sqrt(0.5);
        const bool isFree = !isEqual || kind != ComparisonKind::kRange;
        const double first = isFree ? draws.Uniform(isEqual ? 0.05 : 0.3, isEqual ? 0.99 : 0.9) : root;
        const double last = isEqual ? first : draws.Uniform(0.3, 0.9);
        std::vector<double> lambda;
        std::vector<long double> exact;
        for (int j = 0; j < k - 1; j++) {
            lambda.push_back(first + (last - first) / std::fmax(1, k - 2) * j);
            exact.push_back(first == root && isEqual ? sqrtl(0.5L) : static_cast<long double>(lambda.back()));
        }
        const ComparisonLaw law = MakeComparisonLaw(kind, lambda);
        const reference::ComparisonOracle<long double> oracle(static_cast<reference::Comparison>(kind),
                                                              exact);
        const double p = i % 3 == 0 ? draws.LogUniform(1e-100, 1e-10) : draws.LogUniform(1e-10, 1);
        const std::string where =
            Named({{"k", 1.0 * k}, {"df", df}, {"first factor", first}, {"last factor", last}});
        const double t = -InvCDFStudent(0.5 * p / k, df);
        const std::string whereT = where + ", " + Named({{"t", t}});
        tail.Compare(StudentizedTail(law, df, t, Side::kUpper), Real(oracle.Upper(df, t)), whereT);

        const double conf = i % 2 == 0 ? draws.Uniform(0.5, 0.9999) : 1 - draws.LogUniform(1e-14, 0.1);
        const double critical = StudentizedQuantile(law, df, conf);
        const long double step = 1e-4L;
        const long double reached = oracle.Upper(df, critical);
        const long double slope = (oracle.Upper(df, critical * (1 + step)) - reached) / step;
        quantile.Note(
            static_cast<double>(std::fabs((reached - (1 - static_cast<long double>(conf))) / slope)),
            where + ", " + Named({{"conf", conf}}));
    }
    const std::string regime = isEqual
                                   ? (kind == ComparisonKind::kRange ? "k 2..100, equal factors"
                                                                     : "k 2..100, equal factors 0.05..0.99")
                                   : "k 2..5, factors 0.3..0.9";
    tail.Print(std::string(name) + ", p 1e-100..1", regime);
    quantile.Print(std::string(name) + ", critical value", regime);
}

void SweepFewDf(Draws& draws)
{
    for (const Regime& regime : {kFewDf, kOneDf, kTwoDf}) {
        SweepStudent(draws, regime);
        SweepChiSquare(draws, regime);
        for (const Regime& second : {kRegimes[0], kRegimes[1], kRegimes[3]}) {
            SweepFisher(draws, regime, second);
            SweepFisher(draws, second, regime);
        }
        SweepQuantiles(draws, regime);
    }
}

/** Rows that can be printed alone. firstDraw: how many numbers the shared generator has given before them in a
    whole run, so that they get the same ones alone; kOwnDraws for those with a generator of their own. */
struct Group
{
    const char* name;
    std::uint64_t firstDraw;
    std::function<void(Draws&)> sweep;
};

constexpr std::uint64_t kOwnDraws = ~std::uint64_t{0};

std::vector<Group> AllGroups()
{
    using korvenrg::distributions::ComparisonKind;
    const auto student = [](Draws& draws) {
        for (const Regime& regime : kRegimes)
            SweepStudent(draws, regime);
        SweepStudent(draws, kHugeRegime);
    };
    const auto chiSquare = [](Draws& draws) {
        for (const Regime& regime : kRegimes)
            SweepChiSquare(draws, regime);
    };
    const auto fisher = [](Draws& draws) {
        for (const Regime& first : kRegimes)
            for (const Regime& second : kRegimes)
                SweepFisher(draws, first, second);
    };
    const auto quantiles = [](Draws& draws) {
        for (const Regime& regime : kRegimes)
            SweepQuantiles(draws, regime);
    };
    const auto hypergeometric = [](Draws& draws) {
        SweepHypergeometric(draws, 1e4, 1500, "population 4..1e4");
        SweepHypergeometric(draws, 1e9, 300, "population 4..1e9");
    };
    std::vector<Group> groups = {{"student", 0, student},
                                 {"chi-square", 55000, chiSquare},
                                 {"fisher", 99000, fisher},
                                 {"few-df", 339000, SweepFewDf},
                                 {"normal", 693000, SweepNormal},
                                 {"incomplete", 708000, SweepIncompleteFunctions},
                                 {"quantiles", 732000, quantiles},
                                 {"gamma", 756000, SweepGammaFunctions},
                                 {"hypergeometric", 808000, hypergeometric}};
    groups.push_back({"binomial", kOwnDraws, [](Draws&) {
                          Draws draws;
                          SweepBinomial(draws, 1e4, 1500, "n 1..1e4");
                          SweepBinomial(draws, 1e9, 300, "n 1..1e9");
                      }});
    const auto addComparisons = [&](const char* group, const char* name, ComparisonKind kind, bool isEqual) {
        groups.push_back({group, kOwnDraws, [=](Draws&) { SweepComparisons(name, kind, isEqual); }});
    };
    addComparisons("comparisons-range-equal", "pvmcav, qmcav", ComparisonKind::kRange, true);
    addComparisons("comparisons-one-sided-equal", "pvmcbv, qmcbv", ComparisonKind::kOneSided, true);
    addComparisons("comparisons-two-sided-equal", "pvmccv, qmccv", ComparisonKind::kTwoSided, true);
    addComparisons("comparisons-range", "pvmcav, qmcav", ComparisonKind::kRange, false);
    addComparisons("comparisons-one-sided", "pvmcbv, qmcbv", ComparisonKind::kOneSided, false);
    addComparisons("comparisons-two-sided", "pvmccv, qmccv", ComparisonKind::kTwoSided, false);
    return groups;
}

}  // namespace

/** Without an argument all rows, else those of the groups whose names begin with it. */
int main(int argc, char** argv)
{
    const std::string wanted = argc > 1 ? argv[1] : "";
    bool isFound = false;
    Draws draws;
    std::printf("| function | regime | largest relative error | at |\n|---|---|---|---|\n");
    for (const Group& group : AllGroups()) {
        if (!std::string(group.name).starts_with(wanted)) continue;
        isFound = true;
        if (group.firstDraw != kOwnDraws) {
            if (wanted.empty() && draws.Given() != group.firstDraw)
                std::fprintf(stderr,
                             "%s: after %llu draws, not where it starts alone\n",
                             group.name,
                             static_cast<unsigned long long>(draws.Given()));
            draws.SkipTo(group.firstDraw);
        }
        group.sweep(draws);
    }
    if (!isFound) std::fprintf(stderr, "no group begins with %s\n", wanted.c_str());
    return isFound ? 0 : 1;
}
