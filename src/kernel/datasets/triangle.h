/** Symmetric matrices that are held column by column. */
#pragma once

#include "kernel/datasets/owned_columns.h"

/**
 * Copies the lower triangle of a symmetric matrix: cells i >= j of column j. The cells above the diagonal and beyond n stay.
 *
 * @param source  n columns of n cells
 * @param n       size; columns that either side does not have are dropped
 * @param target  n columns of n cells; may be the source
 */
void M_DuplicateMVDblTriang_ST(cST_MVect<double>* source, int n, cST_MVect<double>* target);
