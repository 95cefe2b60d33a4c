/** Coefficients of a logistic model re-expressed through linear combinations of its columns. */
#pragma once

#include "core/matrix.h"

namespace korvenrg::logistic {

/** Columns of NewCoefStats (row 1 the intercept, then the combinations) and BetaCoefficients (the combinations). */
enum CombinationCol
{
    kCombinedValue = 1,
    kCombinedStdError = 2,
    kCombinedWald = 3,
    kCombinedPValue = 4,
    kCombinedLower = 5,
    kCombinedUpper = 6
};

}  // namespace korvenrg::logistic

/**
 * Coefficients c = L b of new variables, such as those behind principal components, with the intercept that belongs to
 * variables that are not centred, and standardised ones.
 *
 * @param LCombines         nVar x p, the combinations L
 * @param nVar              number of combinations
 * @param p                 number of slopes
 * @param Coefficients      p + 1 or more: the slopes b, then the intercept
 * @param Mean              nVar, means of the new variables; the intercept becomes a - sum of mean * c
 * @param Stdev             nVar, their standard deviations; one of 0 gives cells that are not finite under Normed
 * @param StdevY            standard deviation of the response, divisor of the standardised coefficients
 * @param Normed            -1: the combinations are of scaled variables, c is divided by Stdev
 * @param VarCov            p + 1 x p + 1 or more, covariance of Coefficients
 * @param alpha             1 less the level of the intervals
 * @param NewCoefStats      nVar + 1 x 6, CombinationCol; columns 3 to 6 are missing without a standard error
 * @param BetaCoefficients  nVar x 6, CombinationCol; the same for a standard error of at most eps. A variance that is not
 *                          positive counts as 0
 */
KORVENRG_API void cComputeCoeffStatsLog(matrix<double>* LCombines,
                                        int nVar,
                                        int p,
                                        matrix<double>* Coefficients,
                                        matrix<double>* Mean,
                                        matrix<double>* Stdev,
                                        double StdevY,
                                        short Normed,
                                        matrix<double>* VarCov,
                                        double alpha,
                                        matrix<double>* NewCoefStats,
                                        matrix<double>* BetaCoefficients);
