// Global tests, goodness of fit and heterogeneity.
#include <cmath>

#include "kernel/distributions/chi_square.h"
#include "logistic/logit_state.h"
#include "logistic/logit_tables.h"

namespace korvenrg::logistic {

namespace {

// exp of less than this counts as 0.
constexpr double kSmallestExponent = -700.0;
// Heterogeneity is looked at when the Pearson test is significant at this level.
constexpr double kHeterogeneityLevel = 0.1;
constexpr double kNoHeterogeneity = 1.0;

void WriteTest(LogitRun& run, GlobalTest test, double statistic)
{
    const double columns = run.parameters - run.InterceptDf();
    const double df = columns * run.Blocks();
    run.out.tests->vbset(test, kTestDf, df);
    run.out.tests->vbset(test, kTestStatistic, statistic);
    run.out.tests->vbset(test, kTestP, columns < 1.0 ? kMissing : pValChiSq(statistic, df));
}

void WriteFitRow(LogitRun& run, FitRow row, double independent, double fitted)
{
    run.out.fit->vbset(row, kIndependentModel, independent);
    run.out.fit->vbset(row, kFittedModel, fitted);
}

// 1 - exp(x), with exp of very negative numbers as 0.
double OneLessExp(double x)
{
    return x < kSmallestExponent ? 1.0 : -std::expm1(x);
}

}  // namespace

void WriteTestStatistics(LogitRun& run)
{
    const FitStatistics& fit = run.fit.statistics;
    WriteTest(run, kLikelihoodRatioTest, 2.0 * (fit.logLikelihood - run.nullLogLikelihood));
    WriteTest(run, kScoreTest, fit.score);
    WriteTest(run, kWaldTest, fit.wald);
}

// An intercept counts among the parameters of AIC and Schwarz's criterion even when it is fixed.
void WriteFitStatistics(LogitRun& run)
{
    const double W = run.data.sumWc;
    const double K = run.Blocks();
    const double L0 = run.nullLogLikelihood;
    const double L = run.fit.statistics.logLikelihood;
    const double counted = run.parameters - run.InterceptDf() + 1.0;
    const double coxSnell = OneLessExp(2.0 * (L0 - L) / W);
    WriteFitRow(run, kRowObservations, W, W);
    WriteFitRow(run, kRowSumOfWeights, run.data.sumWcWr, run.data.sumWcWr);
    WriteFitRow(run, kRowDf, W - 1.0, W - K * run.parameters);
    WriteFitRow(run, kRowMinus2LogLikelihood, -2.0 * L0, -2.0 * L);
    WriteFitRow(run, kRowMcFadden, 0.0, 1.0 - L / L0);
    WriteFitRow(run, kRowCoxSnell, 0.0, coxSnell);
    WriteFitRow(run, kRowNagelkerke, 0.0, coxSnell / OneLessExp(2.0 * L0 / W));
    WriteFitRow(run, kRowAic, 2.0 * K - 2.0 * L0, 2.0 * counted * K - 2.0 * L);
    WriteFitRow(run, kRowSchwarz, K * std::log(W) - 2.0 * L0, counted * K * std::log(W) - 2.0 * L);
    run.out.fit->vbset(kRowIterations, kFittedModel, run.fit.statistics.iterations);
}

void ComputeHeterogeneity(LogitRun& run)
{
    const double df = run.data.sumWc - run.Blocks() * run.parameters;
    const double pearson = run.fit.statistics.pearson;
    const bool none = run.parameters < 2.0 || !(df > 0.0) || pValChiSq(pearson, df) > kHeterogeneityLevel;
    *run.out.heterogeneity = none ? kNoHeterogeneity : pearson / df;
}

}  // namespace korvenrg::logistic
