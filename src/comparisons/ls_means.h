/** Least-squares means: a factor's categories with the other factors balanced and the covariates at their means. */
#pragma once

#include "core/matrix.h"

/**
 * Ranked LS means of a factor's categories and their contrasts; parameters and cells as in the door GetLSMeansContrastsStatVar.
 *
 * Source of the method: Searle, Speed and Milliken 1980, "Population marginal means in the linear model: an alternative to
 * least squares means".
 */
KORVENRG_API void cGetLSMeansContrastsStatVar(matrix<double>* X,
                                              matrix<double>* W,
                                              int n,
                                              int p,
                                              int NbParams,
                                              int NbContrasts,
                                              int NbFactors,
                                              int Interlevel,
                                              int FactID,
                                              matrix<int>* FactType,
                                              matrix<int>* FactActive,
                                              matrix<int>* FactNbSubInit,
                                              matrix<int>* FactNbSub,
                                              matrix<int>* FactSubRemoved,
                                              matrix<int>* FactSubCleaned,
                                              matrix<int>* FactListVars,
                                              matrix<int>* FactNbVars,
                                              matrix<int>* FactSubParents,
                                              matrix<int>* RemovedVect,
                                              matrix<double>* iStats,
                                              matrix<double>* iVarCov,
                                              double alpha,
                                              double DFErrors,
                                              matrix<double>* oMeans,
                                              matrix<double>* oContrastsStats,
                                              matrix<double>* Ranks,
                                              int* NbNull);

/** The ranked LS means alone; parameters and cells as in the door Cpp_GetCategoryLSMeans. */
KORVENRG_API void cGetCategoryLSMeans(matrix<double>* X,
                                      matrix<double>* W,
                                      int n,
                                      int p,
                                      int NbParams,
                                      int NbFactors,
                                      int Interlevel,
                                      int FactID,
                                      matrix<int>* FactType,
                                      matrix<int>* FactActive,
                                      matrix<int>* FactNbSubInit,
                                      matrix<int>* FactNbSub,
                                      matrix<int>* FactSubRemoved,
                                      matrix<int>* FactSubCleaned,
                                      matrix<int>* FactListVars,
                                      matrix<int>* FactNbVars,
                                      matrix<int>* FactSubParents,
                                      matrix<int>* RemovedVect,
                                      matrix<double>* iStats,
                                      matrix<double>* iVarCov,
                                      double alpha,
                                      double DFErrors,
                                      matrix<double>* oMeans,
                                      matrix<double>* oMeanIDs);
