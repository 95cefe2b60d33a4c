/** Forward and backward selection of whole factors for a logit model, pure or stepwise. */
#pragma once

#include "logistic/logit_entry_statistics.h"

namespace korvenrg::logistic {

/** Results of the selections besides 0; a failed refit is kFitFailed. */
enum SelectionResult
{
    kNegativeWald = -5,   ///< of the full model that a backward selection starts from
    kNoSubsetFitted = -1  ///< best subsets
};

/**
 * The factor to remove among those looked at one after the other. Among equal degrees of freedom the smaller statistic
 * wins; one with more of them than any before wins by its p-value alone, and loses when that is 0.
 */
struct RemovalChoice
{
    int factor = 0;  ///< 0: none
    double statistic = 0.0;
    double p = 0.0;
    int largestDf = 0;

    /** Whether the candidate is now the choice. */
    bool Consider(int candidate, const FactorTest& test);
};

/**
 * Backward selection, stepwise with iSelectionType 2 (a removed factor may come back), from the fit in run.fit.
 *
 * The factor with the weakest test leaves while its p-value is above pRemove; the last factor stays. oModels gets a row
 * for the start, each removal and each return.
 *
 * @return 0, kNegativeWald, or kFitFailed with mask and slopes as before the step
 */
int Log_StepBackSelection(LogitRun& run);

/**
 * Forward selection, stepwise with iSelectionType 1 (a factor may leave after each entry).
 *
 * The factor with the strongest score test enters while its p-value is below pEnter; the model found is fitted once more.
 *
 * @return 0 or kFitFailed
 */
int Log_StepForSelection(LogitRun& run);

}  // namespace korvenrg::logistic
