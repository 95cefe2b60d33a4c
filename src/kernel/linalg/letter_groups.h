/** Letter groups of means that do not differ. */
#pragma once

#include <string>

#include "core/matrix.h"

/**
 * Groups of categories such that two categories share a group exactly when their difference is not
 * significant.
 *
 * The groups are all those to which no category can be added, as insert and absorb makes them (Piepho 2004, "An
 * algorithm for a letter-based representation of all-pairwise comparisons"). They are listed in their order, those
 * that hold the first row first (Johnson, Yannakakis and Papadimitriou 1988, "On generating all maximal independent
 * sets"), so that no table of verdicts takes long, and called A, B, ..., Z, AA, AB, ...
 *
 * @param iVect           p x nbcols, in/out: the table of categories, means in column 1; sorted when asked
 *                        for
 * @param ContrastsStats  p (p - 1) / 2 rows, columns ID1 and ID2: the identifiers of the two categories of a
 *                        contrast
 * @param p               number of categories
 * @param Signif          one verdict per contrast: 1 significant, 0 not, -1 not tested
 * @param GTable          p x 256 (or fewer columns), out: cell (i, g) is the letter of group g when row i
 *                        belongs to it and empty otherwise
 * @param pG              out: number of groups, 0 when there is no grouping
 * @param Ranks           p x 1, in/out: identifier of the category in each row; moves with iVect
 * @param iSort           true (-1): the rows of iVect and Ranks are sorted by mean first; false or null: they
 *                        stay
 * @param iSortDown       true (-1): descending means, otherwise ascending
 * @return true (-1); false (0) when no grouping could be made: a pair was not tested (a verdict of -1, or no
 * contrast of it), or there would be more than 256 groups. GTable is empty then.
 */
short BuildGroupingForDiffs(matrix<double>* iVect,
                            int nbcols,
                            matrix<double>* ContrastsStats,
                            int p,
                            matrix<int>* Signif,
                            matrix<std::wstring>* GTable,
                            int* pG,
                            matrix<double>* Ranks,
                            int ID1,
                            int ID2,
                            const short* iSort,
                            short iSortDown);

namespace korvenrg::linalg {

/** Number of pairs of p categories: p (p - 1) / 2; 0 for a negative p, and for one whose pairs no int counts. */
int CountOfPairs(int p);

/** Columns of the table of letters. */
inline constexpr int kMostLetterGroups = 256;

/** The name of the number-th group, from 1: A to Z, AA to ZZ, ... */
std::wstring GroupLetters(int number);

}  // namespace korvenrg::linalg
