/** Multiple comparisons of categories: ten procedures on a table of pairwise differences. */
#pragma once

#include "core/matrix.h"

/**
 * Tests each pair of categories by one procedure; parameters as in the door MCATest (exports/korvenrg.h has the codes
 * and the cells that each writes), table layout in comparisons/contrast_columns.h. A row whose variance is 0 or less
 * is marked as not testable. Rows beyond those of the table are left out.
 *
 * The stepwise procedures (5, 6, 7) walk the rows as they are given: their barrier is a step-down test when the ranges
 * fall along the rows of one first rank. Sources of the procedures: comparisons/scalar_tests.h; Games and Howell 1976,
 * "Pairwise multiple comparison procedures with unequal n's and/or variances" (9); Tamhane 1979, "A comparison of
 * procedures for multiple comparisons of means with unequal variances" (10).
 */
KORVENRG_API void cMCATest(int NbClasses,
                           matrix<double>* ni,
                           matrix<double>* si2,
                           double iHarmoSpp,
                           short iUseHarmonic,
                           matrix<double>* ioContrastsStats,
                           int NbContrasts,
                           int TestType,
                           double DFErrors,
                           double alpha,
                           double* newalpha,
                           matrix<int>* oSignif);
