#include <algorithm>

#include "comparisons/category_tests.h"
#include "comparisons/contrast_columns.h"
#include "comparisons/contrast_tests.h"
#include "comparisons/control_test.h"
#include "comparisons/false_discovery.h"
#include "comparisons/scalar_tests.h"
#include "exports/korvenrg.h"
#include "exports/marshalling.h"
#include "kernel/linalg/letter_groups.h"

using korvenrg::comparisons::kContrastCols;
using korvenrg::comparisons::kControlCols;
using korvenrg::comparisons::kTestedContrastCols;
using korvenrg::exports::copied;
using korvenrg::exports::copiedBack;

void MCATest(int NbClasses,
             double* ni,
             double* si2,
             double iHarmoSpp,
             VARIANT_BOOL iUseHarmonic,
             double* ioContrastsStats,
             int NbContrasts,
             int TestType,
             double DFErrors,
             double alpha,
             double* newalpha,
             int* oSignif)
{
    cMCATest(NbClasses,
             copied(ni, NbClasses, 1),
             copied(si2, NbClasses, 1),
             iHarmoSpp,
             iUseHarmonic,
             copiedBack(ioContrastsStats, NbContrasts, kContrastCols),
             NbContrasts,
             TestType,
             DFErrors,
             alpha,
             newalpha,
             copiedBack(oSignif, NbContrasts, 1));
}

void MCBTest(int NbClasses,
             int ControlID,
             int nnm1,
             double* sqrni,
             double* ioContrastsStats,
             int NbContrasts,
             double DFErrors,
             double alpha,
             double* oMat,
             int* oSignif,
             int Tail)
{
    cMCBTest(NbClasses,
             ControlID,
             nnm1,
             copied(sqrni, nnm1, 1),
             copiedBack(ioContrastsStats, NbContrasts, kContrastCols),
             NbContrasts,
             DFErrors,
             alpha,
             copiedBack(oMat, nnm1, kControlCols),
             copiedBack(oSignif, nnm1, 1),
             Tail);
}

void TestContrasts(int iNbContrasts, double DFErrors, double* ioContrastsStats, double alpha, int* oSignif)
{
    cTestContrasts(iNbContrasts,
                   DFErrors,
                   copiedBack(ioContrastsStats, iNbContrasts, kTestedContrastCols),
                   alpha,
                   copiedBack(oSignif, iNbContrasts, 1));
}

void Cpp_BenjaminiHochBerg(double* ioPValues, int idx, int p, double alpha, int* oSignif)
{
    BenjaminiHochBerg(copiedBack(ioPValues, p, kContrastCols), idx, p, alpha, copiedBack(oSignif, p, 1));
}

void VB_MCATestTukey(double DFErrors,
                     double k,
                     double Diff,
                     double alpha,
                     double* oCritVal,
                     double* pVal,
                     double* oldDF,
                     double* oldk,
                     double* oldCrit)
{
    MCATestTukey(DFErrors, k, Diff, alpha, oCritVal, pVal, oldDF, oldk, oldCrit);
}

void VB_MCATestFischerLSD(double DFErrors,
                          double Diff,
                          double alpha,
                          double* oCritVal,
                          double* pVal,
                          double* oldDF,
                          double* oldCrit)
{
    MCATestFischerLSD(DFErrors, Diff, alpha, oCritVal, pVal, oldDF, oldCrit);
}

void VB_MCATestBonferroni(double DFErrors,
                          double k,
                          double Diff,
                          double alpha,
                          double* newalpha,
                          double* oCritVal,
                          double* pVal,
                          double* oldDF,
                          double* oldk,
                          double* oldCrit)
{
    MCATestBonferroni(DFErrors, k, Diff, alpha, newalpha, oCritVal, pVal, oldDF, oldk, oldCrit);
}

void VB_MCATestDunnSidak(double DFErrors,
                         double k,
                         double Diff,
                         double alpha,
                         double* newalpha,
                         double* oCritVal,
                         double* pVal)
{
    MCATestDunnSidak(DFErrors, k, Diff, alpha, newalpha, oCritVal, pVal);
}

void VB_MCATestNewmanKeuls(double DFErrors,
                           double m,
                           double k,
                           double Diff,
                           double alpha,
                           double* oCritVal,
                           double* pVal)
{
    MCATestNewmanKeuls(DFErrors, m, k, Diff, alpha, oCritVal, pVal);
}

void VB_MCATestDuncan(double DFErrors,
                      double m,
                      double k,
                      double Diff,
                      double alpha,
                      double* newalpha,
                      double* oCritVal,
                      double* pVal)
{
    MCATestDuncan(DFErrors, m, k, Diff, alpha, newalpha, oCritVal, pVal);
}

void VB_MCATestREGWQ(double DFErrors,
                     double m,
                     double k,
                     double Diff,
                     double alpha,
                     VARIANT_BOOL Quick,
                     double* newalpha,
                     double* oCritVal,
                     double* pVal)
{
    MCATestREGWQ(DFErrors, m, k, Diff, alpha, Quick, newalpha, oCritVal, pVal);
}

VARIANT_BOOL Cpp_BuildGroupingForDiffs(double* iVect,
                                       int nbcols,
                                       double* ContrastsStats,
                                       int p,
                                       int* Signif,
                                       BSTR* GTable,
                                       int* pG,
                                       double* Ranks,
                                       int ID1,
                                       int ID2,
                                       VARIANT_BOOL* iSort,
                                       VARIANT_BOOL iSortDown)
{
    const int pairs = korvenrg::linalg::CountOfPairs(p);
    return BuildGroupingForDiffs(copiedBack(iVect, p, nbcols),
                                 nbcols,
                                 copied(ContrastsStats, pairs, std::max(ID1, ID2)),
                                 p,
                                 copied(Signif, pairs, 1),
                                 copiedBack(GTable, p, korvenrg::linalg::kMostLetterGroups),
                                 pG,
                                 copiedBack(Ranks, p, 1),
                                 ID1,
                                 ID2,
                                 iSort,
                                 iSortDown);
}
