/** The report as text. */
#ifndef KORVENRG_FRONTEND_REPORT_H
#define KORVENRG_FRONTEND_REPORT_H

#include <string>
#include <vector>

#include "result_tables.h"

namespace korvenrg::frontend {

/** Title lines and the printed tables. Numbers have six digits; a cell without a value is a point. */
std::string ReportText(const ModelData& data, const std::vector<ResultTable>& tables, const Options& options);

}  // namespace korvenrg::frontend

#endif
