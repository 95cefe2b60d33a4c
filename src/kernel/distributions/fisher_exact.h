/** Fisher's exact test of a contingency table. */
#pragma once

namespace korvenrg::distributions {

/** Result codes of cfexact. */
enum FisherCode : int
{
    kFisherDone = 0,
    kFisherBadSize = -1,   ///< no row, no column, a leading dimension below r, or a null array
    kFisherBadTable = -2,  ///< a cell is negative, NaN or no whole number, or the total is 0
    kFisherWorkLimit =
        -3,  ///< the table needs more work or memory than the limits allow, or its total is above 1e7
};

}  // namespace korvenrg::distributions

/**
 * Fisher's exact test of an r x c table (Freeman & Halton 1951, "Note on an exact treatment of contingency,
 * goodness of fit and other problems of significance"): the probability, given the margins, of all tables
 * that are at most as probable as this one. Probabilities within 1e-7 of each other, relatively, count as
 * equal.
 *
 * The network algorithm is that of Mehta & Patel; see kernel/distributions/fisher_network.h. With `expect`
 * above 0 and a table larger than 2 x 2 it is their hybrid: once at least one column is taken out, a
 * remaining table for which chi-square is good enough is not looked through; its tail is chi-square. Good
 * enough means Cochran's conditions: no expected count below `emin`, and at least `percent` percent of the
 * expected counts at least `expect`. The usual values are 5, 80 and 1. Seen in tables of
 * 50 to 2000 counts, the p-value is then off by 1 percent of itself at p = 0.6, by 17 percent at 0.003 and by
 * 44 percent at 6e-7. A table that meets the conditions as a whole and is too
 * large for the work limits takes chi-square for all of it. With `expect` of 0 or less every table is exact,
 * to about 1e-11 relatively for totals in the thousands.
 *
 * Rows and columns without counts are left out. What then has one row or one column is the only table with
 * its margins: p is 1.
 *
 * @param r, c              rows and columns
 * @param table             counts by columns; cells within 1e-9 of a whole number are rounded to it
 * @param leadingDimension  distance between the starts of two columns, at least r
 * @param expect, percent, emin  Cochran's conditions, see above
 * @param pValue            out: the p-value, the missing marker with a negative result code
 * @param tableProbability  out: the probability of the given table itself, or the marker; null when not
 *                          wanted
 * @return 0, or a FisherCode below 0. The limits are 1e9 steps (about a minute) and 1e7 paths (about 0.6
 * gigabytes); whether they are reached depends on the table alone.
 */
int cfexact(int r,
            int c,
            const double* table,
            int leadingDimension,
            double expect,
            double percent,
            double emin,
            double* pValue,
            double* tableProbability = nullptr);
