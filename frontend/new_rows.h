/** Rows outside the fit: those that validate it and those to predict. */
#ifndef KORVENRG_FRONTEND_NEW_ROWS_H
#define KORVENRG_FRONTEND_NEW_ROWS_H

#include <set>
#include <string>

#include "model_data.h"

namespace korvenrg::frontend {

/** Reads data row numbers such as 1-5,9 and gives them from 0; nothing for an empty text. Throws UserError for text
 * that is no such list and for rows that the table does not have. */
std::set<std::size_t> ParseRows(const std::string& text, std::size_t tableRows);

/** The category that a cell spells: 1 and 1.0 are one where the variable's cells are numbers. */
std::string CategoryOf(const std::string& cell, bool numeric);

/** The rows of the table with the variables of the model, their response and weights. Throws UserError when none is
 * usable. */
NewRows ReadValidationRows(const CsvTable& table,
                           const std::set<std::size_t>& rows,
                           const ModelData& data,
                           const Options& options);

/** The rows of a file with the columns of the model's variables. Throws UserError when none is usable or a column is
 * missing. */
NewRows ReadPredictionRows(const std::string& path, const ModelData& data);

}  // namespace korvenrg::frontend

#endif
