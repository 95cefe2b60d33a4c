/** The statistics at the end of a fit. */
#pragma once

#include <vector>

#include "logistic/logit_model.h"

namespace korvenrg::logistic {

/** The derivatives at one point. */
struct KeptDerivatives
{
    std::vector<double> parameters;
    std::vector<double> gradient;
    std::vector<double> hessian;

    explicit KeptDerivatives(const LogitFit& fit)
        : parameters(CellsOf(fit.parameters)), gradient(CellsOf(fit.gradient)), hessian(CellsOf(fit.hessian))
    {
    }

    static std::vector<double> CellsOf(const matrix<double>& source)
    {
        return {source.data, source.data + source.total};
    }
};

/** Sum of the case weights, Pearson's chi-square and, for a binary response, the residual sum of squares; the last two
 * are 0 for several blocks. */
void MeasureResiduals(const LogitModel& model, const LogitWork& work, FitStatistics& statistics);

/** The score statistic (LogitScoreStat); `start` has the derivatives at the start of the fit, which are often those that
 * it needs, or is null. */
double ScoreStat(const LogitModel& model,
                 const FitOptions& options,
                 const LogitFit& fit,
                 const KeptDerivatives* start);

}  // namespace korvenrg::logistic
