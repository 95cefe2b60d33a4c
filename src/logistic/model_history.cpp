#include "logistic/model_history.h"

#include <cmath>

#include "core/limits.h"
#include "kernel/distributions/chi_square.h"

namespace korvenrg::logistic {

ModelStatistics StatisticsOf(const FitStatistics& fit, double nullLogLikelihood, const ModelPenalty& penalty)
{
    const double minus2L = -2.0 * fit.logLikelihood;
    const auto pValue = [&](double statistic) {
        return penalty.df > 0.0 ? pValChiSq(statistic, penalty.df) : kMissing;
    };
    return {minus2L,
            pValue(2.0 * (fit.logLikelihood - nullLogLikelihood)),
            pValue(fit.score),
            pValue(fit.wald),
            penalty.aic + minus2L,
            penalty.schwarz * std::log(fit.sumOfCaseWeights) + minus2L};
}

// A row past the last would be the next column of the table.
void ModelHistory::SetCell(int row, int column, double value)
{
    if (row >= 1 && row <= table_.rows) table_.vbset(row, column, value);
}

void ModelHistory::Set(int row, ModelsCol column, double value)
{
    SetCell(row, column, value);
}

void ModelHistory::Set(int row, ModelsOffset offset, double value)
{
    SetCell(row, p_ + offset, value);
}

void ModelHistory::SetMask(int row, const LogitFit& fit)
{
    for (int i = 1; i <= p_ + 2; ++i) {
        SetCell(row, kModelsMask + i - 1, fit.fixedMask.vbget(i));
    }
}

void ModelHistory::SetStatistics(int row, const ModelStatistics& statistics)
{
    int column = p_ + kModelsMinus2LogLikelihood;
    for (const double value : statistics) {
        SetCell(row, column, value);
        column += 1;
    }
}

}  // namespace korvenrg::logistic
