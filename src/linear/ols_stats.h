/** The report of a least squares run for predictions and a swept matrix that were computed elsewhere. */
#pragma once

#include "core/matrix.h"

namespace korvenrg::linear {

/** Number of terms of a polynomial design, the constant counted: p variables to `degree`, and their products in pairs when
 * `interact2` is -1. 0 for negative sizes or when no int holds it. */
int CountTerms(int p, int degree, short interact2);

}  // namespace korvenrg::linear

/**
 * Fit, ANOVA, parameter, covariance and case tables of a polynomial or mixture design.
 *
 * Parameters, shapes, the order of the terms and the result are those of the door Cpp_OLSStats without iTolerance
 * (exports/korvenrg.h); table layouts are in linear/ols_tables.h.
 */
KORVENRG_API int OLSStats(int n,
                          int p,
                          matrix<double>* Y,
                          matrix<double>* X,
                          matrix<double>* W,
                          matrix<double>* iYPred,
                          matrix<double>* iPointType,
                          matrix<double>* iRCoeffs,
                          matrix<double>* iRMat,
                          matrix<double>* iMean,
                          matrix<double>* iStDev,
                          int iPolydegree,
                          int iMixedDesign,
                          short iInteract2,
                          short iInterceptFixed,
                          double alpha,
                          matrix<double>* oFitCoeffs,
                          matrix<double>* oANOVATable,
                          matrix<double>* oCoeffs,
                          matrix<double>* oStdevCoeffs,
                          matrix<double>* oBetaCoeffs,
                          matrix<double>* oVarCovCoef,
                          matrix<double>* oStDevYPred,
                          matrix<double>* oResiduals,
                          matrix<double>* oCooksD,
                          matrix<double>* oAdjPred);
