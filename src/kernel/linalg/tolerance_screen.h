/** The screen for columns that depend on others, run on correlations before a fit. */
#pragma once

#include "core/matrix.h"

/**
 * Screens p columns by tolerance: they are swept into the correlation matrix in natural order, each one whose
 * tolerance given the columns before it (OLSCheckIfIn, with its guards against rounding and against pushing a
 * column that is in below `tol`) is above `tol`. A column that is refused is marked.
 *
 * A column takes part when its state on entry is not above 0 and its factor is active. One that does not takes
 * no part in the tolerances of the others either, and keeps its state.
 *
 * @param R           p x p correlations, the lower triangle is read; a constant column has a diagonal of 0 and is
 *                    refused. Not changed
 * @param n           observations, which limit how many columns can enter; 0 or below sets no limit
 * @param p           columns
 * @param active      per factor, 1 when it is active; null: all are
 * @param parents     p cells, the factor of each column, from 1; null: the column's own number
 * @param tol         smallest tolerance, exclusive; below 0 counts as 0
 * @param throughZero -1: the model has no intercept, so that n columns can enter and not n - 1
 * @param restart     -1: states on entry are set to 0 first
 * @param applies    -1: `tol` is applied; otherwise a column is refused only when rounding is all that is left of
 *                    it. For designs with indicator columns, where a rare cell may have a small tolerance without
 *                    being aliased
 * @param withTables  -1: `tolerances` and `inflations` are filled
 * @param states      p cells, in and out: 1 marks a refused column; an accepted one gets 0
 * @param tolerances  p cells, out: 1 - R squared of the column on all accepted ones but itself; the missing
 *                    marker for a column that took no part. Null: not wanted
 * @param inflations  p cells, out: variance inflation, 1 / tolerance; the missing marker where that is not above
 *                    0. Null: not wanted
 */
template <typename T>
void CheckTolerance(matrix<double>* R,
                    int n,
                    int p,
                    matrix<T>* active,
                    matrix<T>* parents,
                    double tol,
                    short throughZero,
                    short restart,
                    short applies,
                    short withTables,
                    matrix<T>* states,
                    matrix<double>* tolerances,
                    matrix<double>* inflations);

extern template void CheckTolerance(matrix<double>*,
                                    int,
                                    int,
                                    matrix<double>*,
                                    matrix<double>*,
                                    double,
                                    short,
                                    short,
                                    short,
                                    short,
                                    matrix<double>*,
                                    matrix<double>*,
                                    matrix<double>*);
extern template void CheckTolerance(matrix<double>*,
                                    int,
                                    int,
                                    matrix<int>*,
                                    matrix<int>*,
                                    double,
                                    short,
                                    short,
                                    short,
                                    short,
                                    matrix<int>*,
                                    matrix<double>*,
                                    matrix<double>*);
