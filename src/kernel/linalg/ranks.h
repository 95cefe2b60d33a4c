/** Ranks of the cells of a vector, and counts of its distinct values. */
#pragma once

#include <string>

#include "core/matrix.h"

/** Ranks 1 to n in ascending order of x; equal cells are ranked in the order of their rows. NaN counts as the
    largest value. `ranks` is n x 1, out; it may be x. */
void V_GetRanks(matrix<double>* x, int n, matrix<double>* ranks);

/**
 * Mid-ranks: equal cells share the mean of the ranks that they fill.
 *
 * A row of weight w stands for w equal rows, so a group of equal cells with total weight g, above rows of
 * total weight b, has rank b + (g + 1) / 2. For whole weights these are the ranks of the replicated rows. NaN
 * cells form a group of their own at the top.
 *
 * @param x           n x 1; may be `ranks`
 * @param weights     n x 1, not negative; null for weights of 1
 * @param ranks       n x 1, out
 * @param nTieGroups  number of groups whose weight is above 1 (with weights of 1: of two or more equal
 *                    cells); null when not wanted
 * @param tieSizes    out: the weights of those groups in the first nTieGroups cells, in ascending order of
 *                    their value; n cells are always enough; the cells behind stay. Null when not wanted
 */
void V_GetRanksTies(matrix<double>* x,
                    int n,
                    matrix<double>* weights,
                    matrix<double>* ranks,
                    int* nTieGroups,
                    matrix<double>* tieSizes);

/** Number of different values among the first n cells (double, int, text). -0 equals +0, and all NaN are
    one value. */
template <typename T>
int V_NbDistinct(matrix<T>* vector, int n);

extern template int V_NbDistinct(matrix<double>*, int);
extern template int V_NbDistinct(matrix<int>*, int);
extern template int V_NbDistinct(matrix<std::wstring>*, int);
