/** The tables of a logistic report that have a row for each term or each model. */
#ifndef KORVENRG_FRONTEND_LOGIT_TERM_TABLES_H
#define KORVENRG_FRONTEND_LOGIT_TERM_TABLES_H

#include "logit_fit.h"
#include "result_tables.h"

namespace korvenrg::frontend {

/** The steps of a selection, or the best subset of each size. */
ResultTable LogitSelectionTable(const ModelData& data,
                                const Design& design,
                                const LogitFit& fit,
                                const Options& options);

/** Whether the tests of the parameters are not those of the terms, or there are several terms. */
bool WantsTypeThree(const ModelData& data);

/** Each term given all others. */
ResultTable LogitTypeThreeTable(const ModelData& data, const LogitFit& fit);

}  // namespace korvenrg::frontend

#endif
