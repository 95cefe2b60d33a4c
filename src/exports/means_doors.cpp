#include "comparisons/category_means.h"
#include "comparisons/contrast_table.h"
#include "comparisons/identify_removed.h"
#include "comparisons/ls_means.h"
#include "exports/korvenrg.h"
#include "exports/marshalling.h"

using korvenrg::exports::adopted;
using korvenrg::exports::copied;
using korvenrg::exports::copiedBack;

namespace {

// K, the number of categories of the factor.
int CategoriesOf(int* FactNbSub, int NbFactors, int FactID)
{
    return korvenrg::comparisons::CategoryCountOf(adopted(FactNbSub, NbFactors, 1), FactID);
}

}  // namespace

void GetContrastsStatVar(int p,
                         int NbParams,
                         int Interlevel,
                         int FactID,
                         int* FactSubParents,
                         double* iStats,
                         double* iVarCov,
                         int iNbContrasts,
                         int* NbContrasts,
                         double* oContrastsStats)
{
    cGetContrastsStatVar(p,
                         NbParams,
                         Interlevel,
                         FactID,
                         adopted(FactSubParents, p, 1),
                         adopted(iStats, NbParams, 1),
                         adopted(iVarCov, NbParams, NbParams),
                         iNbContrasts,
                         NbContrasts,
                         adopted(oContrastsStats, iNbContrasts, 5));
}

void Cpp_GetMeansContrastsStatVar2(double* X,
                                   double* W,
                                   int n,
                                   int p,
                                   int NbContrasts,
                                   int NbFactors,
                                   int Interlevel,
                                   int FactID,
                                   int FactType,
                                   int* FactNbSub,
                                   int* FactSubParents,
                                   int* RemovedVect,
                                   double* iStats,
                                   double* iVarCov,
                                   double alpha,
                                   double DFErrors,
                                   double* oMeans,
                                   double* oContrastsStats,
                                   double* Ranks,
                                   int* NbNull)
{
    const int categories = CategoriesOf(FactNbSub, NbFactors, FactID);
    GetMeansContrastsStatVar2(copied(X, n, p),
                              copied(W, n, 1),
                              n,
                              p,
                              NbContrasts,
                              NbFactors,
                              Interlevel,
                              FactID,
                              FactType,
                              copied(FactNbSub, NbFactors, 1),
                              copied(FactSubParents, p, 1),
                              copied(RemovedVect, categories, 1),
                              copied(iStats, p + 1, 1),
                              copied(iVarCov, p + 1, p + 1),
                              alpha,
                              DFErrors,
                              copiedBack(oMeans, categories, 4),
                              copiedBack(oContrastsStats, NbContrasts, 10),
                              copiedBack(Ranks, categories, 1),
                              NbNull);
}

void GetLSMeansContrastsStatVar(double* X,
                                double* W,
                                int n,
                                int p,
                                int NbParams,
                                int NbContrasts,
                                int NbFactors,
                                int Interlevel,
                                int FactID,
                                int* FactType,
                                int* FactActive,
                                int* FactNbSubInit,
                                int* FactNbSub,
                                int* FactSubRemoved,
                                int* FactSubCleaned,
                                int* FactListVars,
                                int* FactNbVars,
                                int* FactSubParents,
                                int* RemovedVect,
                                double* iStats,
                                double* iVarCov,
                                double alpha,
                                double DFErrors,
                                double* oMeans,
                                double* oContrastsStats,
                                double* Ranks,
                                int* NbNull)
{
    const int categories = CategoriesOf(FactNbSub, NbFactors, FactID);
    cGetLSMeansContrastsStatVar(adopted(X, n, p),
                                adopted(W, n, 1),
                                n,
                                p,
                                NbParams,
                                NbContrasts,
                                NbFactors,
                                Interlevel,
                                FactID,
                                adopted(FactType, NbFactors, 1),
                                adopted(FactActive, NbFactors, 1),
                                adopted(FactNbSubInit, NbFactors, 1),
                                adopted(FactNbSub, NbFactors, 1),
                                adopted(FactSubRemoved, p, 1),
                                adopted(FactSubCleaned, p, 1),
                                adopted(FactListVars, NbFactors, Interlevel),
                                adopted(FactNbVars, NbFactors, 1),
                                adopted(FactSubParents, p, 1),
                                adopted(RemovedVect, categories, 1),
                                adopted(iStats, p + 1, 1),
                                adopted(iVarCov, p + 1, p + 1),
                                alpha,
                                DFErrors,
                                adopted(oMeans, categories, 4),
                                adopted(oContrastsStats, NbContrasts, 10),
                                adopted(Ranks, categories, 1),
                                NbNull);
}

void Cpp_GetCategoryMeans2(double* X,
                           double* W,
                           int n,
                           int p,
                           int NbFactors,
                           int Interlevel,
                           int FactID,
                           int* FactType,
                           int* FactActive,
                           int* FactNbSubInit,
                           int* FactNbSub,
                           int* FactListVars,
                           int* FactNbVars,
                           int* FactSubParents,
                           int* RemovedVect,
                           double* iStats,
                           double* iVarCov,
                           double alpha,
                           double DFErrors,
                           double* oMeans,
                           double* oMeanIDs)
{
    const int categories = CategoriesOf(FactNbSub, NbFactors, FactID);
    GetCategoryMeans2(copied(X, n, p),
                      copied(W, n, 1),
                      n,
                      p,
                      NbFactors,
                      Interlevel,
                      FactID,
                      copied(FactType, NbFactors, 1),
                      copied(FactActive, NbFactors, 1),
                      copied(FactNbSubInit, NbFactors, 1),
                      copied(FactNbSub, NbFactors, 1),
                      copied(FactListVars, NbFactors, Interlevel),
                      copied(FactNbVars, NbFactors, 1),
                      copied(FactSubParents, p, 1),
                      copied(RemovedVect, categories, 1),
                      copied(iStats, p + 1, 1),
                      copied(iVarCov, p + 1, p + 1),
                      alpha,
                      DFErrors,
                      copiedBack(oMeans, categories, 4),
                      copiedBack(oMeanIDs, categories, 1));
}

void Cpp_GetCategoryLSMeans(double* X,
                            double* W,
                            int n,
                            int p,
                            int NbParams,
                            int NbFactors,
                            int Interlevel,
                            int FactID,
                            int* FactType,
                            int* FactActive,
                            int* FactNbSubInit,
                            int* FactNbSub,
                            int* FactSubRemoved,
                            int* FactSubCleaned,
                            int* FactListVars,
                            int* FactNbVars,
                            int* FactSubParents,
                            int* RemovedVect,
                            double* iStats,
                            double* iVarCov,
                            double alpha,
                            double DFErrors,
                            double* oMeans,
                            double* oMeanIDs)
{
    const int categories = CategoriesOf(FactNbSub, NbFactors, FactID);
    cGetCategoryLSMeans(copied(X, n, p),
                        copied(W, n, 1),
                        n,
                        p,
                        NbParams,
                        NbFactors,
                        Interlevel,
                        FactID,
                        copied(FactType, NbFactors, 1),
                        copied(FactActive, NbFactors, 1),
                        copied(FactNbSubInit, NbFactors, 1),
                        copied(FactNbSub, NbFactors, 1),
                        copied(FactSubRemoved, p, 1),
                        copied(FactSubCleaned, p, 1),
                        copied(FactListVars, NbFactors, Interlevel),
                        copied(FactNbVars, NbFactors, 1),
                        copied(FactSubParents, p, 1),
                        copied(RemovedVect, categories, 1),
                        copied(iStats, p + 1, 1),
                        copied(iVarCov, p + 1, p + 1),
                        alpha,
                        DFErrors,
                        copiedBack(oMeans, categories, 4),
                        copiedBack(oMeanIDs, categories, 1));
}

void Cpp_identifyRemoved(int* iFactActive,
                         int NbFactors,
                         int p,
                         int Interlevel,
                         int* iFactSubParents,
                         int* iFactListVars,
                         int* iFactNbSub,
                         int* iFactSubRemoved,
                         int* oFactRemovedParents)
{
    identifyRemoved(copied(iFactActive, NbFactors, 1),
                    NbFactors,
                    p,
                    Interlevel,
                    copied(iFactSubParents, p, 1),
                    copied(iFactListVars, NbFactors, Interlevel),
                    copied(iFactNbSub, NbFactors, 1),
                    copied(iFactSubRemoved, p, 1),
                    copiedBack(oFactRemovedParents, p, 1));
}

void Cpp_identifyRemoved2(int* iFactActive,
                          int NbFactors,
                          int p,
                          int Interlevel,
                          int* iFactType,
                          int* iFactListVars,
                          int* iFactNbSubInit,
                          int* iFactSubRemoved,
                          int* iFactSubCleaned,
                          int* oFactRemovedParents)
{
    identifyRemoved2(copied(iFactActive, NbFactors, 1),
                     NbFactors,
                     p,
                     Interlevel,
                     copied(iFactType, NbFactors, 1),
                     copied(iFactListVars, NbFactors, Interlevel),
                     copied(iFactNbSubInit, NbFactors, 1),
                     copied(iFactSubRemoved, p, 1),
                     copied(iFactSubCleaned, p, 1),
                     copiedBack(oFactRemovedParents, p, 1));
}
