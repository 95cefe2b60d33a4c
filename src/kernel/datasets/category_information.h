/** Categories of the qualitative variables of a sample. */
#pragma once

#include <string>

#include "core/matrix.h"
#include "kernel/datasets/data_set.h"

/**
 * Counts the categories of each text column, so that the caller can make room for them.
 *
 * @param texts  the columns
 * @param n      rows to read
 * @param info   may be null; receives the number of variables, the count of each (the array grows) and the largest,
 *               smallest and total count
 * @return the largest number of categories of a column; 0 without a column or row
 */
KORVENRG_API int Cpp_GetMaxCat_ST(ST_MVectStr* texts, int n, ST_QualiInfo* info);

/**
 * Finds the categories of text columns, sorted by the codes of their characters, with their weighted frequencies. Rows
 * that the filter leaves out and rows without a positive weight give no category.
 *
 * @param texts      the columns; every text is a category, the empty one too
 * @param n          rows to read
 * @param weights    n weights; null or empty for weights of 1
 * @param rowFilter  n flags, any value but 0 leaves the row out; null or empty for none
 * @param info       out; arrays that are too short grow, cells behind the last category become empty texts and 0. A
 *                   variable without a column for its categories keeps its count
 * @param formats    receives the shape of the frequency table of the model's categories
 */
void GetQualiDataInfo_ST(cST_MVect<std::wstring>* texts,
                         int n,
                         matrix<double>* weights,
                         matrix<short>* rowFilter,
                         cST_QualiInfo* info,
                         cST_TableFormats* formats);

/**
 * Holds a validation or prediction sample against the categories of the model.
 *
 * @param texts, n, weights, rowFilter  the sample, as in GetQualiDataInfo_ST
 * @param model    categories of the model
 * @param sample   may be null; receives the model's categories with their frequencies in this sample, in arrays as in
 *                 GetQualiDataInfo_ST
 * @param formats  receives the shape of the sample's frequency table
 * @param unknown  receives -1 when a row that counts has a category that the model does not know, else 0
 */
void GetQualiDataInfoValid_ST(cST_MVect<std::wstring>* texts,
                              int n,
                              matrix<double>* weights,
                              matrix<short>* rowFilter,
                              cST_QualiInfo* model,
                              cST_QualiInfo* sample,
                              cST_TableFormats* formats,
                              short* unknown);

/**
 * Records a failure when a variable has no category at all, because no row of it counts.
 *
 * @param title, message, code  texts of the failure
 * @param error                 receives status -789, style 48 and the position as first number of the detail; untouched
 *                              when all variables have a category
 * @return position of the first such variable, else 0
 */
int VerifyQuali(cST_QualiInfo* info,
                const std::wstring& title,
                const std::wstring& message,
                const std::wstring& code,
                ErrorInfo& error);
