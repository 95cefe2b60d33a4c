#include <algorithm>
#include <cmath>

#include "kernel/distributions/correlations.h"
#include "kernel/distributions/fisher.h"
#include "kernel/linalg/fit_quality.h"
#include "linear/ols_state.h"
#include "linear/ols_tables.h"

namespace korvenrg::linear {

namespace {

constexpr int kPercent = 1;
constexpr double kCpCriterion = 2.0;

double TotalSumOfSquares(const OlsRun& run)
{
    return (run.data.sumWc - 1.0) * run.varY;
}

double RSquared(const OlsRun& run)
{
    if (!run.options.fixedIntercept) return 1.0 - run.ResidualTerm();
    const double rho = V_PearsonRho(run.data.response,
                                    run.data.n,
                                    run.out.prediction,
                                    nullptr,
                                    run.data.regressionWeights,
                                    nullptr);
    return rho * rho;
}

// Sum of squared differences of successive residuals over their sum of squares.
double DurbinWatson(const OlsRun& run)
{
    double differences = 0.0;
    double squares = 0.0;
    for (std::size_t i = 0; i < run.residual.size(); ++i) {
        const double e = run.residual[i];
        squares += e * e;
        if (i > 0) differences += (e - run.residual[i - 1]) * (e - run.residual[i - 1]);
    }
    return squares < kEps ? kMissing : differences / squares;
}

double MallowsCp(const OlsRun& run)
{
    if (run.mseFull <= kEps) return run.k;
    return run.sse / run.mseFull + 2.0 * run.k - run.data.sumWc;
}

// sumWc ln(SSE / sumWc) + penalty, the form of AIC and SBC.
double InformationCriterion(const OlsRun& run, double penalty)
{
    if (run.IsPerfect()) return kMissing;
    return run.data.sumWc * std::log(run.sse / run.data.sumWc) + penalty;
}

// Amemiya's prediction criterion. The numerator counts rows where the denominator counts the sum of case
// weights; it stays: OlsOddities.PcCountsRows.
double PredictionCriterion(const OlsRun& run)
{
    if (!run.HasErrorDf() || run.options.fixedIntercept) return kMissing;
    return (run.data.n + run.k) * run.ResidualTerm() / run.dfE;
}

}  // namespace

void WriteAnovaTable(OlsRun& run)
{
    matrix<double>& table = *run.out.anova;
    const double modelDf = *run.out.pFinal;
    const double total = TotalSumOfSquares(run);
    const double modelSs = total - run.sse;
    const double modelMs = modelDf > 0.0 ? modelSs / modelDf : kMissing;
    const double mse = run.HasErrorDf() ? run.sse / run.dfE : kMissing;
    const bool isTested = modelDf > 0.0 && mse > 0.0;
    const double f = isTested ? modelMs / mse : kMissing;

    table.vbset(kAnovaModel, kAnovaDf, modelDf);
    table.vbset(kAnovaModel, kAnovaSumOfSquares, modelSs);
    table.vbset(kAnovaModel, kAnovaMeanSquare, modelMs);
    table.vbset(kAnovaModel, kAnovaF, f);
    table.vbset(kAnovaModel, kAnovaP, isTested ? pValFisher(f, modelDf, run.dfE) : kMissing);

    table.vbset(kAnovaError, kAnovaDf, run.dfE);
    table.vbset(kAnovaError, kAnovaSumOfSquares, run.sse);
    table.vbset(kAnovaError, kAnovaMeanSquare, mse);
    table.vbset(kAnovaError, kAnovaF, kMissing);
    table.vbset(kAnovaError, kAnovaP, kMissing);

    table.vbset(kAnovaTotal, kAnovaDf, modelDf + run.dfE);
    table.vbset(kAnovaTotal, kAnovaSumOfSquares, total);
    table.vbset(kAnovaTotal, kAnovaMeanSquare, kMissing);
    table.vbset(kAnovaTotal, kAnovaF, kMissing);
    table.vbset(kAnovaTotal, kAnovaP, kMissing);
}

void WriteFitStatistics(OlsRun& run)
{
    matrix<double>& fit = *run.out.fit;
    const auto write = [&fit](FitStatistic statistic, double value) {
        fit.vbset(statistic, kFitSample, value);
    };
    const double rSquared = RSquared(run);
    const double mse = run.HasErrorDf() ? run.sse / run.dfE : kMissing;
    const bool adjusts = run.HasErrorDf() && !run.options.fixedIntercept;
    matrix<double> weights(run.data.n, 1, run.data.weights.data(), true);

    write(kFitObservations, run.data.sumWc);
    write(kFitSumOfWeights, run.data.sumW);
    write(kFitDf, run.dfE);
    write(kFitRSquared, rSquared);
    write(kFitAdjustedRSquared,
          adjusts ? rSquared - *run.out.pFinal * run.ResidualTerm() / run.dfE : kMissing);
    write(kFitMse, mse);
    write(kFitRmse, run.HasErrorDf() ? std::sqrt(mse) : kMissing);
    write(kFitMape, MAPE(run.data.response, run.out.prediction, run.data.n, &weights, kPercent));
    write(kFitDurbinWatson, DurbinWatson(run));
    write(kFitCp, MallowsCp(run));
    write(kFitAic, InformationCriterion(run, 2.0 * run.k));
    write(kFitSbc, InformationCriterion(run, std::log(run.data.sumWc) * run.k));
    write(kFitPc, PredictionCriterion(run));
}

void FillCpOfModels(OlsRun& run)
{
    if (!(run.options.method > 0.0) && run.options.criterion != kCpCriterion) return;
    matrix<double>& models = *run.out.models;
    const int nf = run.factors.nbFactors;
    const int rows = std::min(nf, models.rows);
    for (int row = 1; row <= rows; ++row) {
        if (!(models.vbget(row, kModelNumber) > 0.0)) break;
        const double cp = (models.vbget(row, kModelColumns) + run.InterceptDf()) * 2.0 +
                          models.vbget(row, nf + kModelSse) / run.mseFull - run.data.sumWc;
        models.vbset(row, nf + kModelCp, std::isfinite(cp) ? cp : kMissing);
    }
}

}  // namespace korvenrg::linear
