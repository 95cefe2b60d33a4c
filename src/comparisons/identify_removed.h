/** Which columns are out of a model, and which categories of main effects their interactions stand for. */
#pragma once

#include "core/matrix.h"

/** Flags removed columns and the categories behind them; parameters as in the door Cpp_identifyRemoved. */
KORVENRG_API void identifyRemoved(matrix<int>* iFactActive,
                                  int NbFactors,
                                  int p,
                                  int Interlevel,
                                  matrix<int>* iFactSubParents,
                                  matrix<int>* iFactListVars,
                                  matrix<int>* iFactNbSub,
                                  matrix<int>* iFactSubRemoved,
                                  matrix<int>* oFactRemovedParents);

/** The same without a list of parents; parameters as in the door Cpp_identifyRemoved2. */
KORVENRG_API void identifyRemoved2(matrix<int>* iFactActive,
                                   int NbFactors,
                                   int p,
                                   int Interlevel,
                                   matrix<int>* iFactType,
                                   matrix<int>* iFactListVars,
                                   matrix<int>* iFactNbSubInit,
                                   matrix<int>* iFactSubRemoved,
                                   matrix<int>* iFactSubCleaned,
                                   matrix<int>* oFactRemovedParents);
