/** Plain contrast tests. */
#pragma once

#include "core/matrix.h"

/** Student's t test of each contrast; parameters as in the door TestContrasts, table layout in
    comparisons/contrast_columns.h. */
KORVENRG_API void cTestContrasts(int iNbContrasts,
                                 double DFErrors,
                                 matrix<double>* ioContrastsStats,
                                 double alpha,
                                 matrix<int>* oSignif);
