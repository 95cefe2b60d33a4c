/** The report's tables of category means, their comparisons and letter groups. */
#ifndef KORVENRG_FRONTEND_MEANS_TABLES_H
#define KORVENRG_FRONTEND_MEANS_TABLES_H

#include <vector>

#include "result_tables.h"

namespace korvenrg::frontend {

/** Those of --means, then those of --lsmeans. Throws UserError for a term or a control that there is none of. */
std::vector<ResultTable> MeansTables(const ModelData& data,
                                     const Design& design,
                                     const Fit& fit,
                                     const Options& options);

}  // namespace korvenrg::frontend

#endif
