/** One weighted least squares run on a model design table. */
#pragma once

#include "core/matrix.h"

/**
 * Fits a weighted least squares model by sweeping its packed correlation matrix, and writes the fit, ANOVA,
 * parameter, covariance and case tables.
 *
 * Parameters are those of the door RunOLS1 (exports/korvenrg.h documents shapes, options and states) without
 * Interlevel, FactSubFreq and oTypeIVSSTable; table layouts are in linear/ols_tables.h. A matrix that is
 * smaller than its shape reads as outOfRange where it lacks cells and drops what is written there.
 *
 * Source of the method: Goodnight 1979, "A tutorial on the SWEEP operator"; Belsley, Kuh and Welsch 1980,
 * Regression Diagnostics, for the case statistics.
 *
 * @return 0, or -5 when no column can enter
 */
KORVENRG_API int cRunOLS1(int n,
                          int p,
                          matrix<double>* Y,
                          matrix<double>* X,
                          matrix<double>* Wc,
                          matrix<double>* Wr,
                          int NbFactors,
                          int NbActiveFactors,
                          matrix<int>* FactType,
                          matrix<int>* FactActive,
                          matrix<int>* FactNbVars,
                          matrix<int>* FactListVars,
                          matrix<int>* FactNbSub,
                          matrix<int>* FactSubParents,
                          matrix<double>* FactSubDesign,
                          matrix<double>* InputInfo,
                          int* pFinal,
                          matrix<double>* oModels,
                          int* oBestID,
                          matrix<int>* ioFactSubRemoved,
                          matrix<double>* oFitCoeffs,
                          matrix<double>* oANOVATable,
                          matrix<double>* oTypeISSTable,
                          matrix<double>* oTypeIISSTable,
                          matrix<double>* oTypeIIISSTable,
                          matrix<double>* oRCoeffs,
                          matrix<double>* oCoeffs,
                          matrix<double>* oStdevCoeffs,
                          matrix<double>* oBetaCoeffs,
                          matrix<double>* oVarCovCoef,
                          matrix<double>* oYPred,
                          matrix<double>* oStDevYPred,
                          matrix<double>* oResiduals,
                          matrix<double>* oCooksD,
                          matrix<double>* oAdjPred,
                          matrix<double>* oRMat,
                          matrix<double>* oMean,
                          matrix<double>* oStDev);
