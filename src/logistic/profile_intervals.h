/** Intervals from the profile of the likelihood. */
#pragma once

#include <vector>

#include "logistic/logit_model.h"

namespace korvenrg::logistic {

/** Bounds of the slopes and, last, of the intercept; the missing marker where there is none. */
struct ProfileBounds
{
    std::vector<double> lower;
    std::vector<double> upper;
};

/**
 * Bounds at which the log-likelihood, maximised over the other parameters, has fallen by half of the chi-square quantile
 * with one degree of freedom (Venzon and Moolgavkar 1988, "A method for computing profile-likelihood-based confidence
 * intervals", in the Newton form that holds the parameter's direction). One block.
 *
 * A bound is found when the log-likelihood expected after the next step is within 1E-5 of its critical value. Otherwise,
 * after 21 passes, where the likelihood does not fall far enough or where a Hessian is singular, it is missing.
 *
 * @param model  columns on the scale of the parameters
 * @param fit    parameters and mask of a fit on these columns; slopes that are not free count as 0
 * @param alpha  1 less the level
 */
ProfileBounds LogitProfileIntervals(const LogitModel& model,
                                    const FitOptions& options,
                                    const LogitFit& fit,
                                    double alpha);

}  // namespace korvenrg::logistic
