/** The forced pass: sweeps all active factors into the packed correlations, in their order. */
#pragma once

#include "core/matrix.h"

extern "C" {

/**
 * Sweeps the columns of every active factor into the packed vector, factor after factor, and writes one row
 * of oModels for each factor of which a column entered.
 *
 * A column enters when its tolerance (OLSCheckIfIn) is above `tol` and its state is not positive; it is then
 * in state 0. A candidate (-1) that fails gets 60000; a positive state stays. Once no degree of freedom is
 * left, every later candidate gets 60000 and the pass ends with that factor.
 *
 * @param p                 number of columns
 * @param tol               tolerance that a column must exceed
 * @param c                 1.0 with an estimated intercept, 0.0 with a fixed one
 * @param S                 sum of weights
 * @param sY                standard deviation of the response
 * @param packed            (p+1)(p+2)/2, correlations by rows, the response last; swept on return
 * @param NbFactors         number of factors
 * @param FactActive        NbFactors
 * @param FactType          NbFactors; not used by the pass
 * @param FactSubParents    p, factor of each column
 * @param ioFactSubRemoved  p, states, in and out
 * @param pFinal            columns in the model; 0 on entry
 * @param MSEfull           receives the MSE of the row with the smallest SSE; the missing marker when its
 * degrees of freedom are used up
 * @param bestFactor        receives the factor of that row
 * @param oModels           2p x (NbFactors + 12), layout in ols_tables.h
 */
KORVENRG_API void OLSForcedSelection(int p,
                                     double tol,
                                     double c,
                                     double S,
                                     double sY,
                                     matrix<double>* packed,
                                     int NbFactors,
                                     matrix<int>* FactActive,
                                     matrix<int>* FactType,
                                     matrix<int>* FactSubParents,
                                     matrix<int>* ioFactSubRemoved,
                                     int* pFinal,
                                     double* MSEfull,
                                     int* bestFactor,
                                     matrix<double>* oModels);
}
