/** Type I, II and drop-one tables of sums of squares, by sweeping the packed correlations. */
#pragma once

#include "core/matrix.h"

// All tables are NbFactors x 5 (TypeTableCol in ols_tables.h) and are filled from the top without gaps: a factor that is
// active gets the next row; one that is not, but was asked for, the next row with 0 degrees of freedom, a sum of squares
// of 0 and the rest missing; one that is neither, none. Further rows stay. Each routine leaves the packed vector as it
// got it. `origActive` is the model as it was asked for, 1.0 where a factor was active.

extern "C" {

/**
 * Type I, sequential: each factor given those before it.
 *
 * @param p               number of columns
 * @param sumWc           sum of the case weights
 * @param sY, varY        standard deviation and variance of the response
 * @param dfE, MSE        degrees of freedom and mean square of the error. An MSE that is not above 0 makes F and Pr
 *                        missing
 * @param unswept         (p+1)(p+2)/2, unswept correlations
 * @param FactSubParents, ioFactSubRemoved  p, factor and state of each column; columns in state 0 are swept
 */
KORVENRG_API void OLSGetTypeITable(int p,
                                   double sumWc,
                                   double sY,
                                   double varY,
                                   double dfE,
                                   double MSE,
                                   matrix<double>* unswept,
                                   int NbFactors,
                                   matrix<int>* FactActive,
                                   matrix<double>* origActive,
                                   matrix<int>* FactSubParents,
                                   matrix<int>* ioFactSubRemoved,
                                   matrix<double>* oTypeISSTable);

/**
 * Type II: each factor given all others but those that contain it; with keepContaining given these too.
 *
 * A factor g contains f when the first variable of f is among its variables and either g is an active qualitative
 * interaction after f with more variables, or g is mixed and f quantitative. Columns that the tolerance kept out come
 * back where they bring something once others are out.
 *
 * An MSE of at most eps makes F 0 and Pr 1.
 *
 * @param swept           (p+1)(p+2)/2, correlations with the final model swept in
 * @param keepContaining  -1: containing factors stay in the model while f is tested
 */
KORVENRG_API void OLSGetTypeIITable(int p,
                                    double sumWc,
                                    double varY,
                                    double dfE,
                                    double MSE,
                                    matrix<double>* swept,
                                    short keepContaining,
                                    int NbFactors,
                                    matrix<int>* FactActive,
                                    matrix<double>* origActive,
                                    matrix<int>* FactType,
                                    matrix<int>* FactNbVars,
                                    matrix<int>* FactListVars,
                                    matrix<int>* FactSubParents,
                                    matrix<int>* ioFactSubRemoved,
                                    matrix<double>* table);

/**
 * Type III in its plain form: each factor dropped from the full model.
 *
 * An MSE of at most eps makes F and Pr missing. Only active factors get a row.
 *
 * @param S       sum of weights
 * @param MSS     sum of squares of the full model
 * @param swept   (p+1)(p+2)/2, correlations with the final model swept in
 * @param FactActive, FactSubParents, ioFactSubRemoved  as above, in doubles
 */
KORVENRG_API void OLSGetTypeIIITable(int p,
                                     double S,
                                     double sY,
                                     double varY,
                                     double MSS,
                                     double dfE,
                                     double MSE,
                                     matrix<double>* swept,
                                     int NbFactors,
                                     matrix<double>* FactActive,
                                     matrix<double>* FactSubParents,
                                     matrix<double>* ioFactSubRemoved,
                                     matrix<double>* table);
}
