/** The tables of a logistic report. */
#ifndef KORVENRG_FRONTEND_LOGIT_TABLES_H
#define KORVENRG_FRONTEND_LOGIT_TABLES_H

#include "logit_fit.h"
#include "result_tables.h"

namespace korvenrg::frontend {

std::vector<ResultTable> LogitTables(const ModelData& data,
                                     const Design& design,
                                     const LogitFit& fit,
                                     const Options& options);

/** A line for the end of the report, or nothing. */
std::string LogitWarning(const ModelData& data, const LogitFit& fit);

/** The points of the ROC curve, a row for each threshold. */
ResultTable RocTable(const LogitFit& fit);

}  // namespace korvenrg::frontend

#endif
