/** The description of factors and columns that every model shares. */
#pragma once

#include "core/matrix.h"
#include "kernel/linalg/qualitative.h"

namespace korvenrg::linear {

/** Types of a factor. */
enum FactorType
{
    kQuantitative = 1,             ///< one column
    kQualitative = 2,              ///< one column per category
    kQuantitativeInteraction = 3,  ///< one column, the product of the variables
    kQualitativeInteraction = 4,   ///< one column per combination of categories
    kMixedInteraction = 5          ///< the same over its qualitative variables
};

/** States of a column. Other positive values: excluded by the caller. */
enum ColumnState
{
    kCandidate = -1,
    kInModel = 0,
    kDroppedLevel = 40000,  ///< dropped by a constraint
    kConstant = 50000,      ///< its standard deviation is exactly 0
    kAliased = 60000        ///< refused by tolerance, or no degree of freedom left
};

/** How the levels of a qualitative main effect are tied. Any other code leaves all columns in. */
enum Constraint
{
    kFirstLevel = 0,
    kLastLevel = 1,
    kSumOfEffects = 2,
    kWeightedSum = 3
};

/** The arrays that describe factors (NbFactors of them) and coded columns (p of them), counted from 1. */
struct FactorDescription
{
    int nbFactors;
    matrix<int>* type;          ///< NbFactors, FactorType
    matrix<int>* active;        ///< NbFactors, 1 when in the model
    matrix<int>* nbVars;        ///< NbFactors, number of variables
    matrix<int>* listVars;      ///< NbFactors x Interlevel, variable numbers
    matrix<int>* nbSub;         ///< NbFactors, number of columns
    matrix<int>* subParents;    ///< p, factor of each column
    matrix<double>* subDesign;  ///< p x p, map from fitted columns to reported parameters
    matrix<int>* subRemoved;    ///< p, ColumnState

    bool IsActive(int factor) const
    {
        return active->vbget(factor) == 1;
    }

    int FactorOf(int column) const
    {
        return subParents->vbget(column);
    }

    bool InModel(int column) const
    {
        return subRemoved->vbget(column) == kInModel;
    }

    bool HoldsQualitative(int factor) const
    {
        return isQuali(type->vbget(factor)) == -1;
    }
};

}  // namespace korvenrg::linear
