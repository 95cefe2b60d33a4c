/** Best subsets: the best model of each number of factors, and the best of these. */
#pragma once

#include "core/matrix.h"

namespace korvenrg::linear {

/** What makes a model better. */
enum BestSubsetCriterion : int
{
    kByAdjustedRSquared = 0,
    kByMse = 1,
    kByCp = 2,
    kByAic = 3,
    kBySbc = 4,
    kByPc = 5
};

/** How the subsets of one size are gone through. Both give the same model to the last bit. */
enum class SubsetWalk
{
    kSharedPrefixes,  ///< depth first: subsets that begin alike share the sweeps of what they share
    kOneByOne         ///< in the generator's order, each from the unswept vector
};

/** OLSBestSelection with the walk chosen; the sizes whose subsets exceed the cap are always gone through one by one. */
void SelectBestSubset(int p,
                      double tol,
                      double c,
                      double S,
                      double sY,
                      matrix<double>* packed,
                      double Criterion,
                      double MinVars,
                      double MaxVars,
                      int NbFactors,
                      matrix<int>* FactActive,
                      matrix<int>* FactSubParents,
                      matrix<int>* ioFactSubRemoved,
                      int* pFinal,
                      double MSEfull,
                      matrix<double>* oModels,
                      int* oBestID,
                      SubsetWalk walk);

}  // namespace korvenrg::linear

extern "C" {

/**
 * Finds the best model of each number of factors by sweeping every subset, and sweeps in the best of these.
 *
 * All factors that are not wholly constant compete, whatever the forced pass made of them. A subset's factors are swept
 * in, in their order; a column enters when its tolerance passes, and one degree of freedom is always left. Of a size the
 * best row is the first in the order of the criterion (for Cp the smallest Cp); between the sizes the criterion decides
 * (for Cp the smallest |Cp - columns - c| above 1E-12), a tie going to the smaller subset. The sizes end where no subset
 * brings in all its factors.
 *
 * Of a size at most 10,000,000 / (NbFactors + 10) subsets are looked at, in the order of the generator (cKurtzberg); the
 * others are left out in silence.
 *
 * @param p, tol, c, S, sY  as in OLSForcedSelection
 * @param packed            (p+1)(p+2)/2, unswept correlations; the chosen model is swept in on return
 * @param Criterion         0 adjusted R squared, 1 MSE, 2 Cp, 3 AIC, 4 SBC, 5 PC; any other counts as 1
 * @param MinVars, MaxVars  smallest and largest number of factors; truncated, a smallest below 1 counts as 1
 * @param FactActive        NbFactors, in and out: 1 for the factors of the chosen model
 * @param FactSubParents    p, factor of each column
 * @param ioFactSubRemoved  p, states, in and out
 * @param pFinal            receives the number of columns; stays when no model was found
 * @param MSEfull           Mallows' reference
 * @param oModels           one row per size, layout in ols_tables.h; the PC of this table counts factors in its
 *                          numerator and c in its denominator
 * @param oBestID           receives the row of the chosen model; stays, with packed vector, states and FactActive as
 *                          on entry, when none was found
 *
 * Source of the search by sweeps: Garside 1965, "The best sub-set in multiple regression analysis".
 */
KORVENRG_API void OLSBestSelection(int p,
                                   double tol,
                                   double c,
                                   double S,
                                   double sY,
                                   matrix<double>* packed,
                                   double Criterion,
                                   double MinVars,
                                   double MaxVars,
                                   int NbFactors,
                                   matrix<int>* FactActive,
                                   matrix<int>* FactSubParents,
                                   matrix<int>* ioFactSubRemoved,
                                   int* pFinal,
                                   double MSEfull,
                                   matrix<double>* oModels,
                                   int* oBestID);
}
