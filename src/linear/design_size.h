/** How many columns a factor has in the design table. */
#pragma once

#include <cstdint>

#include "core/matrix.h"

namespace korvenrg::linear {

/** Columns of factor f: the product of the category counts of its qualitative variables, 1 when it has none. At most the
 * largest int. Parameters as in cGetXModelSize. */
std::int64_t ColumnsOfFactor(int f,
                             int pX,
                             const matrix<int>& nbCat,
                             const matrix<int>& type,
                             const matrix<int>& listVars,
                             const matrix<int>& nbVars);

}  // namespace korvenrg::linear
