/** Type III sums of squares from estimable functions. */
#pragma once

#include "core/matrix.h"

extern "C" {

/**
 * Replaces rows of the Type III table, which holds the Type II table, by tests of estimable functions, for each active
 * factor whose first variable a later factor of the model as asked for holds too.
 *
 * For a factor f the columns are put in the order intercept, unrelated columns, f, the factors that contain f, response;
 * a g2 inverse G of the cross-products gives H = G A, whose rows at f generate the functions of f; they are made orthogonal
 * to those of the containing factors, and the quadratic form of the functions that are left is the sum of squares
 * (Goodnight 1978, "Tests of hypotheses in fixed effects linear models").
 *
 * @param crossProducts   (p+2) x (p+2), weighted cross-products of a column of ones, the p columns and the standardised
 *                        response. Not changed
 * @param p               number of columns
 * @param varY            variance of the response
 * @param dfE, MSE        of the error; an MSE of at most eps makes F and Pr missing
 * @param FactActive, FactType, FactNbVars  NbFactors
 * @param origActive      NbFactors, the model as asked for
 * @param FactListVars    NbFactors x Interlevel
 * @param FactSubParents  p
 * @param oTypeIIISSTable NbFactors x 5, rows as in the other type tables
 */
KORVENRG_API void OLSGetTypeIIIEstimable(matrix<double>* crossProducts,
                                         int p,
                                         double varY,
                                         double dfE,
                                         double MSE,
                                         int NbFactors,
                                         matrix<int>* FactActive,
                                         matrix<double>* origActive,
                                         matrix<int>* FactType,
                                         matrix<int>* FactNbVars,
                                         matrix<int>* FactListVars,
                                         matrix<int>* FactSubParents,
                                         matrix<double>* oTypeIIISSTable);
}
