/** Comparisons of all categories with a control. */
#pragma once

#include "core/matrix.h"

/**
 * Dunnett's test of each category against the control, two-sided or one-sided; parameters as in the door MCBTest,
 * table layouts in comparisons/contrast_columns.h. Contrasts of the control beyond the rows of oMat are left out.
 *
 * Source: Dunnett 1955, "A multiple comparison procedure for comparing several treatments with a control".
 */
KORVENRG_API void cMCBTest(int NbClasses,
                           int ControlID,
                           int nnm1,
                           matrix<double>* sqrni,
                           matrix<double>* ioContrastsStats,
                           int NbContrasts,
                           double DFErrors,
                           double alpha,
                           matrix<double>* oMat,
                           matrix<int>* oSignif,
                           int Tail);
