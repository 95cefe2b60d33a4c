#include "logistic/logit_variable_statistics.h"

#include "kernel/distributions/chi_square.h"
#include "kernel/linalg/constrained_inverse.h"
#include "kernel/linalg/products.h"
#include "logistic/logit_derivatives.h"

namespace korvenrg::logistic {

namespace {

// The log-likelihood of a copy of the fit. With Firth's penalty it is evaluated anew: the penalty is that of its mask.
double LogLikelihoodOf(const LogitRun& run, LogitFit& fit, LogitWork& scratch)
{
    return run.fitOptions.firth ? EvaluateLogitModel(run.model, run.fitOptions, fit, scratch)
                                : fit.statistics.logLikelihood;
}

double ReducedLogLikelihood(const LogitRun& run, int factor, int factorsInModel, LogitWork& scratch)
{
    if (factorsInModel == 1) return run.nullLogLikelihood;
    LogitFit reduced = run.fit;
    for (const int column : FreeColumnsOf(run.factors, run.fit, factor)) {
        reduced.RemoveColumn(column);
    }
    OptimizeLogitModel(run.model, run.fitOptions, reduced, scratch);
    return LogLikelihoodOf(run, reduced, scratch);
}

}  // namespace

std::vector<int> FreeColumnsOf(const FactorDescription& factors, const LogitFit& fit, int factor)
{
    std::vector<int> columns;
    for (int j = 1; j <= fit.layout.columns; ++j) {
        if (factors.FactorOf(j) == factor && fit.IsFree(j)) columns.push_back(j);
    }
    return columns;
}

int TestDf(const FactorDescription& factors, const LogitFit& fit, int factor)
{
    if (!factors.HoldsQualitative(factor)) return fit.layout.blocks;
    return fit.layout.blocks * static_cast<int>(FreeColumnsOf(factors, fit, factor).size());
}

FactorTest GetVariableWaldStat(const FactorDescription& factors, LogitFit& fit, int factor)
{
    const std::vector<int> columns = FreeColumnsOf(factors, fit, factor);
    const int df = TestDf(factors, fit, factor);
    const bool hasVariance = !columns.empty() && fit.variances.vbget(columns.front()) > 0.0;
    if (!factors.HoldsQualitative(factor) && !hasVariance) return {kMissing, 0.0, df};
    const int length = fit.layout.Length();
    matrix<double> slopes(length, 1);
    matrix<int> others(length, 1);
    for (int i = 1; i <= length; ++i) {
        others.vbset(i, kFixed);
    }
    for (int k = 1; k <= fit.layout.blocks; ++k) {
        for (const int column : columns) {
            const int position = fit.layout.Slope(k, column);
            others.vbset(position, kFree);
            slopes.vbset(position, fit.parameters.vbget(position));
        }
    }
    matrix<double> inverse(length, length);
    cCleanConstraintsAndInvert(length, &others, &fit.covariance, &inverse);
    const double statistic = 0.0 - M_ProductTrVBV(&slopes, length, &inverse);
    return {statistic, pValChiSq(statistic, df), df};
}

FactorTest GetVariableLRStat(const LogitRun& run, int factor, int factorsInModel, LogitWork& scratch)
{
    const int df = TestDf(run.factors, run.fit, factor);
    LogitFit full = run.fit;
    const double logLikelihood = LogLikelihoodOf(run, full, scratch);
    const double reduced = ReducedLogLikelihood(run, factor, factorsInModel, scratch);
    const double statistic = -2.0 * (reduced - logLikelihood);
    return {statistic, pValChiSq(statistic, df), df};
}

}  // namespace korvenrg::logistic
