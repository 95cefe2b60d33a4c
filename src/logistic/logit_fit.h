/** The Newton iteration of a logit model and the statistics at its end. */
#pragma once

#include "logistic/logit_model.h"

namespace korvenrg::logistic {

/** Results of OptimizeLogitModel. */
enum FitResult
{
    kFitted = 0,
    kFitFailed = -4  ///< no Newton step could be made from the start values
};

/**
 * Fits the free parameters of `fit` by Newton steps with a line search, and fills its statistics.
 *
 * A mortality that is to be estimated is held in a first phase and free in a second one, which starts from the first.
 * Reaching the limit of iterations, or a Hessian that becomes singular on the way, is no failure: the iterate stands.
 *
 * @param fit   in: mask, slopes, start values in intercepts and mortality; out: everything. With estimatesMortality the
 *              mask of the mortalities is 0 on return
 * @param work  out: probabilities and density of the last point evaluated
 * @return FitResult
 */
int OptimizeLogitModel(const LogitModel& model, const FitOptions& options, LogitFit& fit, LogitWork& work);

/** The log-likelihood that OptimizeLogitModel maximises, at fit.parameters: with Firth's penalty when that is on. Fills
 * `work` and the derivatives of `fit`. */
double EvaluateLogitModel(const LogitModel& model, const FitOptions& options, LogitFit& fit, LogitWork& work);

/** Wald statistic of all free slopes; 0 when none is free. */
double LogitWaldStat(LogitFit& fit);

/** Score statistic of the free parameters at slopes of 0, the given mortality and the logits of the category means; 0
 * when the Hessian there has no inverse. */
double LogitScoreStat(const LogitModel& model, const FitOptions& options, const LogitFit& fit);

}  // namespace korvenrg::logistic
