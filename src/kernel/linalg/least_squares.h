/** Plain weighted least squares without selection, for inner fits. */
#pragma once

#include "core/matrix.h"

/**
 * Regresses Y on the columns of X, their powers and their products.
 *
 * The terms stand degree by degree: the columns to the power 1, then to the power 2, and so on, each time in the order
 * of the columns; then the products of pairs (1, 2), (1, 3), ... when asked for; the constant last. The terms are
 * scaled to unit spread about their weighted means (about 0 without a constant), swept in one after the other from
 * their correlations, and the coefficients get two steps of iterative refinement from the residuals (Björck 1967,
 * "Iterative refinement of linear least squares solutions I"). A term whose tolerance, 1 - R squared on the terms
 * before it, is not above `tol` stays out with a coefficient of 0; so does one without spread.
 *
 * @param X             n x p
 * @param Y             n x 1; a row whose Y is missing needs a weight of 0: with another one the coefficients are NaN
 * @param W             n weights, or null for weights of 1; a row of weight 0 is not looked at, but it is fitted
 * @param degree        highest power; 1 is the linear model, 0 leaves the constant alone
 * @param products      -1: with the products of pairs of columns
 * @param interceptFixed  -1: no constant
 * @param tol           tolerance limit
 * @param coefficients  p * degree (+ p(p-1)/2) + 1 cells; the constant last, 0 without one
 * @param fitted        n fitted values
 */
void OLSBasic(int n,
              int p,
              matrix<double>* X,
              matrix<double>* Y,
              matrix<double>* W,
              int degree,
              int products,
              short interceptFixed,
              double tol,
              matrix<double>* coefficients,
              matrix<double>* fitted);

/**
 * The same fit with the standard errors of the coefficients.
 *
 * @param standardErrors  as many cells as coefficients: sqrt(MSE) times the root of the diagonal of the inverse
 *                        cross-products; 0 for a term that stays out, the missing marker when no degree of freedom is
 *                        left
 * @param mse             receives the sum of squared errors over the sum of weights minus the number of coefficients,
 *                        or the missing marker; may be null
 */
void OLSBasic2(int n,
               int p,
               matrix<double>* X,
               matrix<double>* Y,
               matrix<double>* W,
               int degree,
               int products,
               short interceptFixed,
               double tol,
               matrix<double>* coefficients,
               matrix<double>* standardErrors,
               matrix<double>* fitted,
               double* mse);
