/** Control of the false discovery rate. */
#pragma once

#include "core/matrix.h"

/**
 * Rejects and adjusts p-values after Benjamini and Hochberg 1995, "Controlling the false discovery rate"; parameters
 * as in the door Cpp_BenjaminiHochBerg. The walk over the sorted p-values stops at the first that fails.
 */
KORVENRG_API void BenjaminiHochBerg(matrix<double>* ioPValues,
                                    int idx,
                                    int p,
                                    double alpha,
                                    matrix<int>* oSignif);
