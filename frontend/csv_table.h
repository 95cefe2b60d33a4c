/** A CSV file as text columns, read strictly: one header, rows of one length, UTF-8. */
#ifndef KORVENRG_FRONTEND_CSV_TABLE_H
#define KORVENRG_FRONTEND_CSV_TABLE_H

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

namespace korvenrg::frontend {

struct CsvTable
{
    std::vector<std::string> names;                 ///< header cells; an empty one cannot be asked for
    std::vector<std::vector<std::string>> columns;  ///< cells of each column, header excluded
    std::size_t rows = 0;                           ///< data rows
};

/** Reads the file. Throws UserError for a file that cannot be read, an empty one, a header without rows,
 * names used twice, rows of another length, misplaced quotes and text that is not UTF-8. A byte order mark is
 * skipped. */
CsvTable ReadCsvTable(const std::string& path);

/** Position of the named column. Throws UserError when there is none. */
std::size_t FindColumn(const CsvTable& table, const std::string& name);

/** True for the ways in which files write "no value": empty, NA, NaN (any case) and a lone point. */
bool IsMissingCell(const std::string& cell);

/** The finite decimal number that the whole cell spells, if it does. */
std::optional<double> NumberOf(const std::string& cell);

/** Rows (from 0) without a missing cell in the columns. */
std::vector<std::size_t> CompleteRows(const CsvTable& table, const std::vector<std::size_t>& columns);

/** The numbers of the column in the rows (from 0). Throws UserError, with the hint at its end, when any cell of the
 * column is neither a number nor missing. */
std::vector<double> NumbersOf(const CsvTable& table,
                              std::size_t column,
                              const std::vector<std::size_t>& rows,
                              const std::string& hint = "");

}  // namespace korvenrg::frontend

#endif
