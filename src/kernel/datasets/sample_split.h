/** Parting of a sample into the rows of the model and those of the validation. */
#pragma once

#include "core/matrix.h"
#include "kernel/datasets/data_set.h"

/**
 * Moves the marked observations to the validation data set; the others close up in their order.
 *
 * What moves: responses, quantitative and qualitative blocks with their filters, both weight vectors and the row filter.
 * The indicators, the other columns and the output table belong to the sample as it was given and stay. The columns of
 * the validation grow where they are too short; columns that it does not have lose their moved cells. Cells of the
 * model behind its last row are left as they are.
 *
 * @param model       the sample; comes back with n less the number of moved rows
 * @param validation  receives the moved rows from its first row on; comes back with their number
 * @param indicator   n cells: exactly 1.0 marks a row
 * @param n           observations of the sample
 * @return number of moved rows
 */
int ExtractModelAndValidSamples_ST(cST_DataSet* model,
                                   cST_DataSet* validation,
                                   matrix<double>* indicator,
                                   int n);
