/** Contingency tables of two coded variables. */
#pragma once

#include "core/matrix.h"

/**
 * Weighted contingency table: cell (i, j) is the sum of the weights of the rows whose first code is i and
 * whose second code is j.
 *
 * @param rowCodes     n x 1, codes 1 to r of the first variable (double or int)
 * @param r            number of its categories
 * @param columnCodes  n x 1, codes 1 to c of the second variable
 * @param c            number of its categories
 * @param n            number of rows
 * @param W            n x 1, weights; null for weights of 1
 * @param table        r x c, out. Null: created with new; of another size: resized; negative sizes count as 0
 * @return sum of the weights in the table. Rows with a code outside 1..r or 1..c, or no whole number, and
 * rows whose weight is not above 0 are left out
 */
template <typename T>
double BuildContTableW(matrix<T>* rowCodes,
                       int r,
                       matrix<T>* columnCodes,
                       int c,
                       int n,
                       matrix<double>* W,
                       matrix<double>*& table);

extern template double
BuildContTableW(matrix<double>*, int, matrix<double>*, int, int, matrix<double>*, matrix<double>*&);
extern template double
BuildContTableW(matrix<int>*, int, matrix<int>*, int, int, matrix<double>*, matrix<double>*&);
