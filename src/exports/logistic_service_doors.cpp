#include "exports/korvenrg.h"
#include "exports/marshalling.h"
#include "logistic/coefficient_combinations.h"
#include "logistic/hosmer_lemeshow.h"
#include "logistic/marginal_columns.h"
#include "logistic/marginal_effects.h"
#include "logistic/roc_curve.h"

using korvenrg::exports::adopted;
using korvenrg::exports::copied;
using korvenrg::exports::copiedBack;

void VB_ROCCurve(double* iProb,
                 double* iClassCode,
                 double* W,
                 int n,
                 [[maybe_unused]] int p,
                 [[maybe_unused]] double iCutPoint,
                 int iNbClass,
                 double Total1,
                 double Total2,
                 VARIANT_BOOL iCodeIsBinary,
                 double* oROCTable,
                 double* oAOC)
{
    ROCCurve(adopted(iProb, n, iNbClass),
             adopted(iClassCode, n, 1),
             adopted(W, n, 1),
             n,
             Total1,
             Total2,
             iCodeIsBinary,
             adopted(oROCTable, n + 1, 2),
             *oAOC);
}

void Cpp_HLTest(int n, double* iProba, double* iWc, double* oTestTable)
{
    HLTest(n, copied(iProba, n, 2), copied(iWc, n, 1), copiedBack(oTestTable, 3, 1));
}

void Cpp_GetLogMarginalEffects(double* iCoefficients,
                               int p,
                               double* iVarCov,
                               double* iMeans,
                               int iInterlevel,
                               int iNbFactors,
                               double iMortality,
                               int iModelType,
                               double alpha,
                               int* iFactActive,
                               int* iFactType,
                               int* iFactNbVars,
                               int* iFactListVars,
                               int* iFactNbSubInit,
                               int* iFactSubRemoved,
                               int* iFactSubCleaned,
                               double* oMarginalEffects)
{
    const int pInit = korvenrg::logistic::CountInitialColumns(iNbFactors, iFactActive, iFactNbSubInit);
    GetLogMarginalEffects(copied(iCoefficients, p + 1, 1),
                          p,
                          copied(iVarCov, p + 1, p + 1),
                          copied(iMeans, p, 1),
                          iInterlevel,
                          iNbFactors,
                          iMortality,
                          iModelType,
                          alpha,
                          copied(iFactActive, iNbFactors, 1),
                          copied(iFactType, iNbFactors, 1),
                          copied(iFactNbVars, iNbFactors, 1),
                          copied(iFactListVars, iNbFactors, iInterlevel),
                          copied(iFactNbSubInit, iNbFactors, 1),
                          copied(iFactSubRemoved, p, 1),
                          copied(iFactSubCleaned, pInit, 1),
                          copiedBack(oMarginalEffects, p, 6));
}

double Cpp_GetLogDerivX(int idx,
                        int idxclean,
                        int jdx,
                        double* iCoefficients,
                        int p,
                        int pInit,
                        double* iMeans,
                        int iInterlevel,
                        double iMortality,
                        int iModelType,
                        int iNbFactors,
                        int* iFactActive,
                        int* iFactType,
                        int* iFactNbVars,
                        int* iFactListVars,
                        int* iFactNbSubInit,
                        int* iFactSubRemoved,
                        int* iFactSubCleaned,
                        int* iFactSubRemovedInit,
                        int* iFactSubParentsInit,
                        double* oVectDxDy)
{
    return GetLogDerivX(idx,
                        idxclean,
                        jdx,
                        copied(iCoefficients, p + 1, 1),
                        p,
                        pInit,
                        copied(iMeans, p, 1),
                        iInterlevel,
                        iMortality,
                        iModelType,
                        iNbFactors,
                        copied(iFactActive, iNbFactors, 1),
                        copied(iFactType, iNbFactors, 1),
                        copied(iFactNbVars, iNbFactors, 1),
                        copied(iFactListVars, iNbFactors, iInterlevel),
                        copied(iFactNbSubInit, iNbFactors, 1),
                        copied(iFactSubRemoved, p, 1),
                        copied(iFactSubCleaned, p, 1),
                        copied(iFactSubRemovedInit, pInit, 1),
                        copied(iFactSubParentsInit, pInit, 1),
                        copiedBack(oVectDxDy, p + 1, 1));
}

void ComputeCoeffStatsLog(double* LCombines,
                          int nVar,
                          int p,
                          double* Coefficients,
                          double* Mean,
                          double* Stdev,
                          double StdevY,
                          VARIANT_BOOL Normed,
                          double* VarCov,
                          double alpha,
                          double* NewCoefStats,
                          double* BetaCoefficients)
{
    cComputeCoeffStatsLog(copied(LCombines, nVar, p),
                          nVar,
                          p,
                          copied(Coefficients, p + 2, 1),
                          copied(Mean, nVar, 1),
                          copied(Stdev, nVar, 1),
                          StdevY,
                          Normed,
                          copied(VarCov, p + 2, p + 2),
                          alpha,
                          copiedBack(NewCoefStats, nVar + 1, 6),
                          copiedBack(BetaCoefficients, nVar, 6));
}
