#include "exports/korvenrg.h"
#include "exports/marshalling.h"
#include "linear/fit_updates.h"
#include "linear/ols_predict.h"
#include "linear/ols_stats.h"

using korvenrg::exports::adopted;
using korvenrg::exports::copied;
using korvenrg::exports::copiedBack;

void OLSPredict(int n,
                int nPred,
                int p,
                int pFinal,
                double* XPred,
                double* iCoeffs,
                double alpha,
                VARIANT_BOOL InterceptFixed,
                int* ioFactSubRemoved,
                double* oStDevYPred,
                double* RTilda,
                double* Mean,
                double* Stdev,
                double* Wc,
                double* Wr,
                double* oYPred,
                VARIANT_BOOL iIsValid,
                double* ioFitCoeffs,
                double* iYValid,
                double* oResiduals,
                double* oCooksD,
                double* oAdjPredValid)
{
    cOLSPredict(n,
                nPred,
                p,
                pFinal,
                adopted(XPred, nPred, p),
                adopted(iCoeffs, p + 1, 1),
                alpha,
                InterceptFixed,
                adopted(ioFactSubRemoved, p, 1),
                adopted(oStDevYPred, nPred, 6),
                adopted(RTilda, p + 1, p + 1),
                adopted(Mean, p + 1, 1),
                adopted(Stdev, p + 1, 1),
                adopted(Wc, nPred, 1),
                adopted(Wr, nPred, 1),
                adopted(oYPred, nPred, 1),
                iIsValid,
                adopted(ioFitCoeffs, 15, 2),
                adopted(iYValid, nPred, 1),
                adopted(oResiduals, nPred, 3),
                adopted(oCooksD, nPred, 1),
                adopted(oAdjPredValid, nPred, 1));
}

int Cpp_OLSStats(int n,
                 int p,
                 double* Y,
                 double* X,
                 double* W,
                 double* iYPred,
                 double* iPointType,
                 double* iRCoeffs,
                 double* iRMat,
                 double* iMean,
                 double* iStDev,
                 int iPolydegree,
                 int iMixedDesign,
                 VARIANT_BOOL iInteract2,
                 VARIANT_BOOL iInterceptFixed,
                 [[maybe_unused]] double iTolerance,
                 double alpha,
                 double* oFitCoeffs,
                 double* oANOVATable,
                 double* oCoeffs,
                 double* oStdevCoeffs,
                 double* oBetaCoeffs,
                 double* oVarCovCoef,
                 double* oStDevYPred,
                 double* oResiduals,
                 double* oCooksD,
                 double* oAdjPred)
{
    const int terms = korvenrg::linear::CountTerms(p, iPolydegree, iInteract2);
    return OLSStats(n,
                    p,
                    copied(Y, n, 1),
                    copied(X, n, p),
                    copied(W, n, 1),
                    copied(iYPred, n, 1),
                    copied(iPointType, n, 1),
                    copied(iRCoeffs, terms, 1),
                    copied(iRMat, terms, terms),
                    copied(iMean, terms, 1),
                    copied(iStDev, terms, 1),
                    iPolydegree,
                    iMixedDesign,
                    iInteract2,
                    iInterceptFixed,
                    alpha,
                    copiedBack(oFitCoeffs, 15, 2),
                    copiedBack(oANOVATable, 3, 5),
                    copiedBack(oCoeffs, terms, 1),
                    copiedBack(oStdevCoeffs, terms, 6),
                    copiedBack(oBetaCoeffs, terms - 1, 6),
                    copiedBack(oVarCovCoef, terms, terms),
                    copiedBack(oStDevYPred, n, 6),
                    copiedBack(oResiduals, n, 3),
                    copiedBack(oCooksD, n, 1),
                    copiedBack(oAdjPred, n, 1));
}

int Cpp_UpdateGOF(double* ANOVATable, double* FitCoeffs)
{
    return UpdateGOF(copied(ANOVATable, 3, 5), copiedBack(FitCoeffs, 16, 1));
}

void Cpp_NoFixedComput(int n, int p, double* iY, double* oBetTable, double* oResMat)
{
    NoFixedComput(n, p, copied(iY, n, p), copiedBack(oBetTable, 1, 5), copiedBack(oResMat, n, p));
}

void Cpp_ModifyStdDev(int n,
                      int NbContrasts,
                      int p,
                      double* ioContrastsStat,
                      double* iX,
                      double* iY,
                      double* iW)
{
    ModifyStdDev(n,
                 NbContrasts,
                 p,
                 copiedBack(ioContrastsStat, NbContrasts, 10),
                 copied(iX, n, p),
                 copied(iY, n, 1),
                 copied(iW, n, 1));
}
