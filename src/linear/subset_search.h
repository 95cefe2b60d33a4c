/** The search for the best subset of one size. */
#pragma once

#include <vector>

#include "core/matrix.h"
#include "linear/best_subset.h"
#include "linear/packed_model.h"

namespace korvenrg::linear {

using Factors = std::vector<int>;  ///< numbers from 1, ascending

/** A column that may enter. */
struct EnteringColumn
{
    int column;
    bool followsAnother;  ///< a column of another factor stands between it and its factor's column before it
};

/** What a search needs to know. */
struct Search
{
    PackedModel model;  ///< its packed vector is the caller's, unswept
    int criterion;
    double mseFull;
    int nbFactors;
    std::vector<std::vector<EnteringColumn>> columnsOf;  ///< per factor from 0
    std::vector<bool> isActive;                          ///< per factor from 0
};

/** A subset, or the beginning of one, swept into a vector of its own. */
struct SweptSubset
{
    matrix<double> packed;
    double residualTerm = 1.0;
    int columns = 0;
    bool isClosed = false;  ///< one degree of freedom is left: no further factor enters
    Factors entered;
};

/** A candidate's statistics. */
struct CandidateRow
{
    double columns;
    double sse;
    double rSquared;
    double adjustedRSquared;
    double mse;
    double cp;
    double aic;
    double sbc;
    double pc;
};

/** The statistics of a model of q columns from a subset of so many factors. */
CandidateRow RowOf(const Search& search, double r, double q, double factors);

/** Sweeps a subset's factors, in order, into a copy of the unswept vector. */
SweptSubset SweepSubset(const Search& search, const Factors& factors);

/** The best subset of a size by the search's criterion, empty when none brings in a column. Of equal ones the first in
 * the generator's order counts; beyond the cap on subsets the search ends in silence. */
Factors BestOfSize(const Search& search, int size, SubsetWalk walk);

}  // namespace korvenrg::linear
