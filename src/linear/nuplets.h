/** Full factorials: every combination of the levels of n factors. */
#pragma once

#include "core/matrix.h"

namespace korvenrg::linear {

/** Product of the n sizes; 1 for n below 1. A product that no int holds gives the nearest int. */
int CountNuplets(int n, matrix<int>* sizes);

/** Writes the combinations, one a row, into n columns; the first column changes slowest. Nothing is written when a size is
 * below 1 or no int holds the number of rows. */
void WriteNuplets(int n, matrix<int>* sizes, matrix<int>* nuplets);

}  // namespace korvenrg::linear
