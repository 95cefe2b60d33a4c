/** Contrasts between the parameters, or the ranked category means, of one factor: the first columns of the contrast table. */
#pragma once

#include "comparisons/category_means_table.h"
#include "core/matrix.h"

/**
 * Differences between the parameters of one factor and their variances; parameters and cells as in the door
 * GetContrastsStatVar.
 */
KORVENRG_API void cGetContrastsStatVar(int p,
                                       int NbParams,
                                       int Interlevel,
                                       int FactID,
                                       matrix<int>* FactSubParents,
                                       matrix<double>* iStats,
                                       matrix<double>* iVarCov,
                                       int iNbContrasts,
                                       int* NbContrasts,
                                       matrix<double>* oContrastsStats);

namespace korvenrg::comparisons {

/** The contrast table to be written; layout in contrast_columns.h. */
struct ContrastTable
{
    matrix<double>* cells;  ///< rows x 10
    int rows;               ///< further contrasts are left out
};

/**
 * The contrasts of ranked means: each pair of ranks i < j with its difference, the lower mean less the higher one, the variance
 * and their ratio. The pairs of the first `leading` ranks come first, second rank rising, then those with a later rank. A pair
 * with a category that has no mean gets markers instead.
 *
 * @param identifiers  categories by rank
 */
void WriteRankedContrasts(const FittedModel& fit,
                          const FactorCategories& categories,
                          const matrix<double>& combinations,
                          const matrix<double>& identifiers,
                          int leading,
                          const ContrastTable& table);

}  // namespace korvenrg::comparisons
