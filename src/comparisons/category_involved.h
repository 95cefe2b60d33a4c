/** Which categories a coded column stands for. */
#pragma once

#include <vector>

#include "core/matrix.h"
#include "linear/factor_description.h"

/**
 * Whether two coded columns stand for the same categories of the variables that their factors share.
 *
 * A column's position in its factor's block is read as a number whose digits are the categories of the factor's variables,
 * the first variable changing slowest: the order of the columns of a design table, in which levels dropped by a constraint
 * keep their place. A quantitative variable has one category.
 *
 * @param column1         number of the first column, from 1
 * @param factor1         its factor, from 1
 * @param column2         number of the second column
 * @param factor2         its factor
 * @param p               number of columns
 * @param FactType        NbFactors, type of each factor; a main effect has the number of its variable
 * @param FactNbSubInit   NbFactors, columns of each factor in the full table, inactive main effects included: the number of
 *                        categories of each variable
 * @param FactListVars    NbFactors x Interlevel, variables of each factor
 * @param FactNbVars      NbFactors, number of variables of each factor
 * @param FactSubParents  p, factor of each column
 * @return -1 when the digits of all shared variables are equal; 0 when two differ, or no variable is shared
 */
KORVENRG_API short CategoryInvolved(int column1,
                                    int factor1,
                                    int column2,
                                    int factor2,
                                    int p,
                                    int NbFactors,
                                    int Interlevel,
                                    matrix<int>* FactType,
                                    matrix<int>* FactNbSubInit,
                                    matrix<int>* FactListVars,
                                    matrix<int>* FactNbVars,
                                    matrix<int>* FactSubParents);

namespace korvenrg::comparisons {

/** The columns of a factor, which are contiguous. Without any, last is below first. */
struct ColumnBlock
{
    int first = 1;
    int last = 0;

    bool Holds(int column) const
    {
        return column >= first && column <= last;
    }
};

/** Columns first..last of the factor in the list of parents. */
ColumnBlock BlockOf(int factor, const matrix<int>& subParents, int p);

/** A variable and its category, from 0. */
struct CategoryDigit
{
    int variable;
    int digit;
};

/** The variables behind the columns. */
struct FactorVariables
{
    int nbFactors;
    int interlevel;
    matrix<int>* type;            ///< NbFactors
    matrix<int>* categoryCounts;  ///< NbFactors, columns of each variable's main effect
    matrix<int>* listVars;        ///< NbFactors x Interlevel
    matrix<int>* nbVars;          ///< NbFactors; null: a 0 ends the list of variables

    std::vector<int> VariablesOf(int factor) const;

    /** Categories of the column at a position, from 0, of a factor's block. */
    std::vector<CategoryDigit> DigitsOf(int factor, int position) const;

    bool ShareVariable(int factor1, int factor2) const;

    /** Whether two columns, by factor and position in its block, have equal digits in the variables shared, of which there is
     * at least one. */
    bool ShareCategories(int factor1, int position1, int factor2, int position2) const;
};

}  // namespace korvenrg::comparisons
