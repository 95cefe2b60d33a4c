/** Repairs of finished tables: PRESS statistics, models without a fixed effect, variances of contrasts. */
#pragma once

#include "core/matrix.h"

/** Completes the PRESS statistics of a fit table of 16 cells; parameters and result as in the door Cpp_UpdateGOF. */
int UpdateGOF(matrix<double>* ANOVATable, matrix<double>* FitCoeffs);

/** Total line and residuals of a model without fixed effects; parameters as in the door Cpp_NoFixedComput. */
KORVENRG_API void NoFixedComput(int n,
                                int p,
                                matrix<double>* iY,
                                matrix<double>* oBetTable,
                                matrix<double>* oResMat);

/** Variances of contrasts from their two groups alone; parameters as in the door Cpp_ModifyStdDev. */
KORVENRG_API void ModifyStdDev(int n,
                               int NbContrasts,
                               int p,
                               matrix<double>* ioContrastsStat,
                               matrix<double>* iX,
                               matrix<double>* iY,
                               matrix<double>* iW);
