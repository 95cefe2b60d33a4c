/** Stepwise, forward and backward selection by F tests. */
#pragma once

#include "core/matrix.h"

extern "C" {

/**
 * Takes factors into the model and out of it, one at a time, by the probability of their F test. A qualitative factor
 * moves as a block of adjacent columns.
 *
 *  - Method 1, stepwise: after each entry, once there are two rows and two factors, one removal is tried.
 *  - Method 2, forward: entries alone.
 *  - Method 3, backward: removals alone, while two factors are left.
 *
 * The factor with the smallest probability enters when that is not above PEnter; into an empty model it enters whatever
 * its probability. The factor with the largest probability leaves when that is at least PRemove. The routine ends when
 * there is no candidate, when the test ends it, when all p columns are in (methods 1 and 2; stepwise still tries one removal),
 * or when stepwise is about to repeat itself, having reached a model from which it set out before.
 *
 * @param p, tol, c, S, sY  as in OLSForcedSelection
 * @param packed            (p+1)(p+2)/2: unswept for methods 1 and 2, the full model swept in for method 3. The final
 *                          model is swept in on return
 * @param FactType          NbFactors, types of the factors
 * @param FactSubParents    p, factor of each column
 * @param ioFactSubRemoved  p, states, in and out: 0 in the model, -1 out of it; others take no part
 * @param pFinal            columns in the model, in and out. It counts the columns whose state changed: one of an entering
 *                          block that the tolerance test refused counts too
 * @param oModels           2p x (NbFactors + 12), layout in ols_tables.h; for method 3 its first row is the full model's.
 *                          Steps beyond its rows are taken and not written
 *
 * Source: Efroymson 1960, "Multiple regression analysis", in Mathematical Methods for Digital Computers.
 */
KORVENRG_API void OLSStepSelection(int p,
                                   double tol,
                                   double c,
                                   double S,
                                   double sY,
                                   matrix<double>* packed,
                                   int Method,
                                   double PEnter,
                                   double PRemove,
                                   int NbFactors,
                                   matrix<int>* FactType,
                                   matrix<int>* FactSubParents,
                                   matrix<int>* ioFactSubRemoved,
                                   int* pFinal,
                                   matrix<double>* oModels);
}
