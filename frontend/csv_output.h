/** The result tables as CSV files. */
#ifndef KORVENRG_FRONTEND_CSV_OUTPUT_H
#define KORVENRG_FRONTEND_CSV_OUTPUT_H

#include <string>
#include <vector>

#include "result_tables.h"

namespace korvenrg::frontend {

/** Writes each table into the folder, which is made if there is none. Numbers have 17 digits, cells without a
 * value are empty. No file gets its name before all of them are complete. Throws UserError when that fails,
 * and then leaves no unfinished file behind. */
void WriteCsvFiles(const std::vector<ResultTable>& tables, const std::string& folder);

/** One table as CSV text. */
std::string CsvText(const ResultTable& table);

/** Writes a text file. Throws UserError when that fails. */
void WriteTextFile(const std::string& text, const std::string& path);

}  // namespace korvenrg::frontend

#endif
