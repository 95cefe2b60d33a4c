/** A fit applied to rows outside it, through OLSPredict. */
#ifndef KORVENRG_FRONTEND_PREDICTION_H
#define KORVENRG_FRONTEND_PREDICTION_H

#include "result_tables.h"

namespace korvenrg::frontend {

/** Judges the validation rows: their table, and the second column of the fit's statistics. */
ResultTable ValidationTable(const ModelData& data, const Design& design, Fit& fit, const Options& options);

/** Predicts the prediction rows. */
ResultTable PredictionTable(const ModelData& data, const Design& design, Fit& fit, const Options& options);

}  // namespace korvenrg::frontend

#endif
