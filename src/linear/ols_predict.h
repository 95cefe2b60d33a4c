/** A fitted least squares model applied to new rows. */
#pragma once

#include "core/matrix.h"

/**
 * Predicts new rows with standard errors and intervals, and judges a validation sample.
 *
 * Parameters, shapes and what stays are those of the door OLSPredict (exports/korvenrg.h); table layouts are in
 * linear/ols_tables.h. A matrix that is smaller than its shape reads as outOfRange where it lacks cells and drops what
 * is written there.
 *
 * Source of the method: Belsley, Kuh and Welsch 1980, Regression Diagnostics.
 */
KORVENRG_API void cOLSPredict(int n,
                              int nPred,
                              int p,
                              int pFinal,
                              matrix<double>* XPred,
                              matrix<double>* iCoeffs,
                              double alpha,
                              short InterceptFixed,
                              matrix<int>* ioFactSubRemoved,
                              matrix<double>* oStDevYPred,
                              matrix<double>* RTilda,
                              matrix<double>* Mean,
                              matrix<double>* Stdev,
                              matrix<double>* Wc,
                              matrix<double>* Wr,
                              matrix<double>* oYPred,
                              short iIsValid,
                              matrix<double>* ioFitCoeffs,
                              matrix<double>* iYValid,
                              matrix<double>* oResiduals,
                              matrix<double>* oCooksD,
                              matrix<double>* oAdjPredValid);
