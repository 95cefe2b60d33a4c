/** Refuses numbers whose squares and quotients would leave the range of a double. */
#ifndef KORVENRG_FRONTEND_NUMBER_RANGE_H
#define KORVENRG_FRONTEND_NUMBER_RANGE_H

#include "design.h"
#include "options.h"

namespace korvenrg::frontend {

/** Throws UserError for a response, weights or a column of the model, products included, that reaches beyond 1e70 or
 * never reaches 1e-70 although it is not 0. */
void CheckNumberRange(const ModelData& data, const Design& design, const Options& options);

}  // namespace korvenrg::frontend

#endif
