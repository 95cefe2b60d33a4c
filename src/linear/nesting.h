/** Nested factors: which variables of a factor are nested in which, and the test of a nesting factor. */
#pragma once

#include "core/matrix.h"

namespace korvenrg::linear {

/** Whether a variable of factor i is nested in another one; parameters and result as in the door Cpp_GetNestedVars. */
short GetNestedVars(int i,
                    int pX,
                    int pQ,
                    int Interlevel,
                    matrix<int>* iFactListVars,
                    matrix<int>* iFactNestedMat,
                    matrix<int>* oFNested,
                    matrix<int>* oFNesting);

}  // namespace korvenrg::linear

/** Tests the nesting factor of a type table against the nested one; parameters as in the door Cpp_NestedTypeTable. */
KORVENRG_API void NestedTypeTable(matrix<double>* ioSSTable,
                                  int iNbFactors,
                                  int iInterlevel,
                                  matrix<int>* iFactActive,
                                  matrix<int>* iFactNested,
                                  matrix<int>* iFactListVars);
