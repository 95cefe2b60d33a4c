/** Qualitative variables: factor types and indicator columns. */
#pragma once

#include <string>
#include <vector>

#include "core/matrix.h"

/** Whether factors of this type hold a qualitative variable (2, 4, 5), as a 16-bit boolean: -1 or 0. */
int isQuali(int FactType);

/** Whether factors of this type hold nothing but qualitative variables (2, 4), as a 16-bit boolean: -1 or 0.
 */
int isQualiPure(int FactType);

/**
 * Indicator columns of q qualitative variables, variable after variable, one column per category.
 *
 * The cell of a row is 1.0 in the column of its category and 0.0 elsewhere. Under constraint 2 or 3 the last category is folded into the others: its
 * rows get -1.0 (2), or -freq(j) / freq(last) (3), in the column of each other category j, and keep 1.0 in
 * their own.
 *
 * @param Q           n x q, texts
 * @param maxCat      columns of `cats` and `freq`
 * @param nbCat       q, number of categories of each variable
 * @param cats        q x maxCat, categories in the order of the columns; of two equal ones the first counts
 * @param freq        q x maxCat, weighted frequencies, read under constraint 3 alone
 * @param out         n x (total number of categories), overwritten; columns it does not have are dropped
 * @param constraint  constraint code
 * @param mode        what a text gets that is none of the categories: 0 zeros; 1 the missing marker in all columns
 * of its variable. Any other value counts as 0.
 */
void BuildDisjunctiveTable(matrix<std::wstring>& Q,
                           int n,
                           int q,
                           int maxCat,
                           matrix<int>& nbCat,
                           matrix<std::wstring>& cats,
                           matrix<double>& freq,
                           matrix<double>& out,
                           int constraint,
                           int mode);

/**
 * Categories of q text columns: sorted by the codes of their characters, with their weighted frequencies.
 *
 * Outputs are created or resized; cells behind the last category of a variable are empty texts and 0.
 *
 * @param Q            n x q
 * @param labels       q x maxCat, categories of each variable
 * @param freq         q x maxCat, sum of the weights of each category
 * @param counts       q, number of categories of each variable
 * @param allLabels    categories of all variables, variable after variable, as one column
 * @param allFreq      their frequencies
 * @param W            n weights, or null for weights of 1
 * @param maxCat       receives the largest number of categories; 0 without a row
 * @param weightedOnly -1: a row whose weight is 0 or less gives no category
 */
void M_InfoQuali(matrix<std::wstring>* Q,
                 int n,
                 int q,
                 matrix<std::wstring>*& labels,
                 matrix<double>*& freq,
                 matrix<int>*& counts,
                 matrix<std::wstring>*& allLabels,
                 matrix<double>*& allFreq,
                 matrix<double>* W,
                 int* maxCat,
                 short weightedOnly);

/**
 * Replaces category texts by their number.
 *
 * @param Q       n x q
 * @param labels  q x maxCat or wider, categories of each variable as M_InfoQuali gives them
 * @param counts  q, number of categories of each variable
 * @param codes   created or resized to n x q: numbers from 1, 0 for a text that is none of the categories
 */
void M_ReplaceCatByCodes(matrix<std::wstring>* Q,
                         int n,
                         int q,
                         matrix<std::wstring>* labels,
                         matrix<int>* counts,
                         matrix<int>*& codes);

namespace korvenrg::linalg {

/** Category number, from 1, of each of the n rows of variable `variable`; 0 for a text that is none of its
 * first `count` categories. */
std::vector<int> CategoryCodes(const matrix<std::wstring>& Q,
                               int n,
                               int variable,
                               const matrix<std::wstring>& cats,
                               int count);

}  // namespace korvenrg::linalg
