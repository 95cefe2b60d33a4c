/** Tests of single factors of a fitted logit model: Wald and likelihood ratio. */
#pragma once

#include "logistic/logit_state.h"

namespace korvenrg::logistic {

/** Chi-square test of one factor. */
struct FactorTest
{
    double statistic = 0.0;
    double p = 1.0;
    int df = 0;
};

/** The columns of a factor whose slope is free in the first block. */
std::vector<int> FreeColumnsOf(const FactorDescription& factors, const LogitFit& fit, int factor);

/** K for a factor of one column, K times its free columns for a qualitative one. */
int TestDf(const FactorDescription& factors, const LogitFit& fit, int factor);

/**
 * Wald test that the free slopes of a factor are 0 in all blocks, from the covariance of the fit.
 *
 * A quantitative factor whose slope has no variance in the last Newton step gives a missing statistic and p = 0.
 */
FactorTest GetVariableWaldStat(const FactorDescription& factors, LogitFit& fit, int factor);

/**
 * Likelihood-ratio test of the same: the model is refitted without the factor, on copies. The refit is not checked: it is
 * used as it ended.
 *
 * @param factorsInModel  number of them; without the last one the log-likelihood is that of the independent model
 * @param scratch         of the size of run.work, overwritten
 */
FactorTest GetVariableLRStat(const LogitRun& run, int factor, int factorsInModel, LogitWork& scratch);

}  // namespace korvenrg::logistic
