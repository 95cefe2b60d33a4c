/** Means of the fitted values within the categories of one factor. */
#pragma once

#include "core/matrix.h"

/** Ranked means of a factor's categories and their contrasts; parameters and cells as in the door Cpp_GetMeansContrastsStatVar2. */
KORVENRG_API void GetMeansContrastsStatVar2(matrix<double>* X,
                                            matrix<double>* W,
                                            int n,
                                            int p,
                                            int NbContrasts,
                                            int NbFactors,
                                            int Interlevel,
                                            int FactID,
                                            int FactType,
                                            matrix<int>* FactNbSub,
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

/** The ranked means alone; parameters and cells as in the door Cpp_GetCategoryMeans2. */
KORVENRG_API void GetCategoryMeans2(matrix<double>* X,
                                    matrix<double>* W,
                                    int n,
                                    int p,
                                    int NbFactors,
                                    int Interlevel,
                                    int FactID,
                                    matrix<int>* FactType,
                                    matrix<int>* FactActive,
                                    matrix<int>* FactNbSubInit,
                                    matrix<int>* FactNbSub,
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
