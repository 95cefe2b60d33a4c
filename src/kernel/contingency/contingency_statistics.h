/** Tests and measures of association on a contingency table. */
#pragma once

#include "core/matrix.h"

namespace korvenrg::contingency {

/** Rows of the table of statistics. n is the total, r and c the numbers of rows and columns that are not
    empty. */
enum Statistic : int
{
    kPearson = 1,         ///< sum of (o - e)^2 / e, e = row total * column total / n
    kLikelihoodRatio,     ///< 2 sum of o log(o / e)
    kYates,               ///< sum of max(|o - e| - 1/2, 0)^2 / e; for r = c = 2 alone
    kPhi,                 ///< sqrt(Pearson / n); for r = c = 2 with the sign of o11 o22 - o12 o21
    kContingency,         ///< contingency coefficient, sqrt(Pearson / (Pearson + n))
    kCramer,              ///< Cramer's V, sqrt(Pearson / (n min(r - 1, c - 1)))
    kTschuprow,           ///< Tschuprow's T, sqrt(Pearson / (n sqrt((r - 1)(c - 1))))
    kLambdaRows,          ///< Goodman-Kruskal lambda, rows predicted from columns
    kLambdaColumns,       ///< columns predicted from rows
    kLambdaSymmetric,     ///< both together
    kTauRows,             ///< Goodman-Kruskal tau, rows predicted from columns
    kTauColumns,          ///< columns predicted from rows
    kGamma,               ///< Goodman-Kruskal gamma, (P - Q) / (P + Q); for ordered categories
    kTauB,                ///< Kendall's tau-b; for ordered categories
    kStatistics = kTauB,  ///< number of rows
};

/** Columns of the table of statistics. */
enum StatisticColumn : int
{
    kValue = 1,
    kDegreesOfFreedom,  ///< (r - 1)(c - 1); the missing marker for measures
    kPValue,            ///< upper tail of chi-square; the missing marker for measures
    kStatisticColumns = kPValue,
};

/** Result codes of cGetContingencyStats. */
enum ContingencyCode : int
{
    kStatisticsDone = 0,
    kBadContingencyTable = -1,  ///< a cell is negative, infinite or NaN, or the total is 0
};

}  // namespace korvenrg::contingency

/**
 * All statistics of a contingency table of counts or sums of weights.
 *
 * Empty rows and columns count nowhere, not in the degrees of freedom either. What is not defined for a table
 * is the missing marker: with one row or column left, Pearson and likelihood ratio are 0 on 0 degrees of
 * freedom without a p-value, and V and T are missing; lambda and tau are when the predicted variable has one
 * category left; gamma when no pair of observations differs in both variables.
 *
 * Measures after Goodman & Kruskal 1954, "Measures of association for cross classifications"; tests as in
 * Agresti 2002, "Categorical Data Analysis".
 *
 * @param table  r x c, in; cells outside it count as 0
 * @param stats  14 x 3, out; rows Statistic, columns StatisticColumn. Null: created with new; of another
 *               size: resized
 * @return 0, or kBadContingencyTable; all cells of stats are the missing marker then
 */
int cGetContingencyStats(const matrix<double>* table, int r, int c, matrix<double>*& stats);
