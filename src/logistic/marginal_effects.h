/** Marginal effects of the columns of a logistic model at the means. */
#pragma once

#include "core/matrix.h"

namespace korvenrg::logistic {

/** Columns of oMarginalEffects. */
enum MarginalCol
{
    kMarginalEffect = 1,
    kMarginalStdError = 2,
    kMarginalZ = 3,
    kMarginalPValue = 4,
    kMarginalLower = 5,
    kMarginalUpper = 6
};

}  // namespace korvenrg::logistic

/**
 * Marginal effects at the means with standard errors by the delta method. Parameters are those of the door
 * Cpp_GetLogMarginalEffects (exports/korvenrg.h documents shapes and states).
 *
 * Source of the method: Greene 2012, "Econometric Analysis", chapter 17.
 */
KORVENRG_API void GetLogMarginalEffects(matrix<double>* iCoefficients,
                                        int p,
                                        matrix<double>* iVarCov,
                                        matrix<double>* iMeans,
                                        int iInterlevel,
                                        int iNbFactors,
                                        double iMortality,
                                        int iModelType,
                                        double alpha,
                                        matrix<int>* iFactActive,
                                        matrix<int>* iFactType,
                                        matrix<int>* iFactNbVars,
                                        matrix<int>* iFactListVars,
                                        matrix<int>* iFactNbSubInit,
                                        matrix<int>* iFactSubRemoved,
                                        matrix<int>* iFactSubCleaned,
                                        matrix<double>* oMarginalEffects);

/**
 * The marginal effect of one column and its derivatives by the coefficients. Parameters are those of the door
 * Cpp_GetLogDerivX.
 *
 * @return the effect; 0, with derivatives of 0, when idx is not a column of p or jdx none of pInit
 */
KORVENRG_API double GetLogDerivX(int idx,
                                 int idxclean,
                                 int jdx,
                                 matrix<double>* iCoefficients,
                                 int p,
                                 int pInit,
                                 matrix<double>* iMeans,
                                 int iInterlevel,
                                 double iMortality,
                                 int iModelType,
                                 int iNbFactors,
                                 matrix<int>* iFactActive,
                                 matrix<int>* iFactType,
                                 matrix<int>* iFactNbVars,
                                 matrix<int>* iFactListVars,
                                 matrix<int>* iFactNbSubInit,
                                 matrix<int>* iFactSubRemoved,
                                 matrix<int>* iFactSubCleaned,
                                 matrix<int>* iFactSubRemovedInit,
                                 matrix<int>* iFactSubParentsInit,
                                 matrix<double>* oVectDxDy);
