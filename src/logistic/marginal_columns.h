/** The columns of a design table as marginal effects see them: which are in the model, and which share a level. */
#pragma once

#include <utility>
#include <vector>

#include "linear/factor_description.h"

namespace korvenrg::logistic {

/** The factors with the bound on the order of their interactions. nbSub counts columns before cleaning. */
struct MarginalFactors
{
    linear::FactorDescription factors;
    int interlevel;
};

/** One column of the table before cleaning. */
struct TableColumn
{
    int factor = 0;
    int place = 0;  ///< within its factor, from 0
    int model = 0;  ///< its cell in the arrays of p; 0: it has none
    bool cleaned = false;
    bool removed = false;
    std::vector<std::pair<int, int>> components{};  ///< variables that compose it, with their levels

    /** Whether derivatives are taken by its coefficient. */
    bool Counts() const
    {
        return model > 0 && !cleaned && !removed;
    }
};

/** Columns of the active factors before cleaning. */
int CountInitialColumns(int nbFactors, const int* active, const int* nbSub);

/** The columns from the counts of columns of the active factors, in order. */
std::vector<TableColumn> ColumnsFromCounts(const MarginalFactors& from, int p, const matrix<int>& subCleaned);

/** States and parents of the columns before cleaning. */
struct InitialColumns
{
    int count;
    matrix<int>* subRemoved;
    matrix<int>* subParents;
};

/** The columns from their parents. */
std::vector<TableColumn> ColumnsFromParents(const MarginalFactors& from,
                                            int p,
                                            const matrix<int>& subCleaned,
                                            const InitialColumns& initial);

/**
 * Sets a column to 0, and every later column in the model that holds one of its variables at the same level.
 *
 * @param values  p, in/out
 * @param j       the column, from 0 in the table before cleaning
 */
void LogitClearInteractions(const std::vector<TableColumn>& columns,
                            std::size_t j,
                            std::vector<double>& values);

}  // namespace korvenrg::logistic
