/** The network of Fisher's exact test: stages are columns, nodes are the row totals that are left. */
#pragma once

#include <vector>

namespace korvenrg::distributions {

/** Cochran's conditions under which a part of the network is replaced by chi-square. */
struct CochranRule
{
    double expected = 0.0;  ///< an expected count of at least this is a good one
    double percent = 0.0;   ///< this share of the cells, in percent, must be good
    double smallest = 0.0;  ///< no expected count may be below this
    bool active = false;    ///< false: everything is exact
};

/** A table: its totals without empty rows and columns, turned so that it has no more rows than columns. */
struct CountTable
{
    std::vector<int> rowTotals;
    std::vector<int> columnTotals;
    std::vector<int> cells;  ///< in any order
    int total = 0;
};

struct NetworkResult
{
    bool complete = false;  ///< false: the work limit was reached, and pValue says nothing
    double pValue = 0.0;
    double tableProbability = 0.0;
};

/**
 * P(a table with these margins is at most as probable as the given one), by a network of past paths.
 *
 * A node of stage k is the sorted vector of row totals that are left when k columns are taken out; it keeps
 * the different probabilities of the paths that lead to it, each with the mass of all of them. An edge takes
 * out one more column. From bounds on the most and the least probable completion of the node at its end it
 * follows for most paths that all completions count, and their mass is added as a whole, or that none does;
 * only the others go on (Mehta & Patel 1983, "A network algorithm for performing Fisher's exact test in r x c
 * contingency tables"). The same bounds are asked while the column is shared out over the rows, so that most ways to
 * share it are never formed. With an active rule, the paths of a node whose remaining table meets it take the tail
 * of chi-square instead (Mehta & Patel 1986, "A hybrid algorithm for Fisher's exact test in unordered r x c
 * contingency tables"). The whole table is expanded by its first column; only when that, or what follows,
 * takes more work than the limits allow, and the whole table meets the rule, chi-square stands for all of it.
 *
 * The work limits count steps and paths, so the outcome is the same in every run.
 */
NetworkResult FisherTail(const CountTable& table, const CochranRule& rule);

}  // namespace korvenrg::distributions
