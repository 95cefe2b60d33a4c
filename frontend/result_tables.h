/** The tables of a report, once for the screen and for the files. */
#ifndef KORVENRG_FRONTEND_RESULT_TABLES_H
#define KORVENRG_FRONTEND_RESULT_TABLES_H

#include <string>
#include <vector>

#include "fit.h"

namespace korvenrg::frontend {

enum class ColumnKind
{
    kNumber,
    kProbability
};

struct ResultTable
{
    struct Column
    {
        std::string head;
        ColumnKind kind = ColumnKind::kNumber;
    };
    struct Row
    {
        std::string label;
        std::vector<double> cells;  ///< as many as columns
        std::string note;
        std::string text = {};  ///< stands before the cells in a table with a textHead
    };

    std::string fileName;
    std::string title;
    std::string labelHead;
    std::vector<Column> columns;
    std::vector<Row> rows;
    bool hasNotes = false;
    bool printed = true;  ///< false: for the files only
    std::string textHead = {};
    std::string noteHead = "Note";  ///< printed when it is another one
};

/** The cells of a row. */
std::vector<double> RowOf(const NumberTable& table, std::size_t row);

/** Heads of a mean prediction's and an observation's standard error and bounds. */
std::vector<ResultTable::Column> IntervalColumns(double alpha);

std::vector<ResultTable> MakeResultTables(const ModelData& data,
                                          const Design& design,
                                          const Fit& fit,
                                          const Options& options);

}  // namespace korvenrg::frontend

#endif
