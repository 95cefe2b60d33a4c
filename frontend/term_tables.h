/** The tables about terms: how a selection chose among them, and their sums of squares. */
#ifndef KORVENRG_FRONTEND_TERM_TABLES_H
#define KORVENRG_FRONTEND_TERM_TABLES_H

#include <vector>

#include "result_tables.h"

namespace korvenrg::frontend {

/** One row for each step, or for the best subset of each size. */
ResultTable SelectionTable(const ModelData& data, const Fit& fit, const Options& options);

/** The tables of the types asked for, a row for each term. */
std::vector<ResultTable> TypeTables(const ModelData& data, const Fit& fit, const Options& options);

/** The types that an analysis shows when none are asked for: Type III in an analysis of variance of several terms. */
std::set<SumsType> DefaultTypes(const ModelData& data, const Options& options);

}  // namespace korvenrg::frontend

#endif
