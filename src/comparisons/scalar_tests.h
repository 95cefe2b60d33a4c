/**
 * One comparison by each of the procedures: critical value and p-value of a standardised difference.
 *
 * Common to all. Diff is the absolute difference over its standard error, DFErrors the degrees of freedom of that
 * error, k the number of categories, m the number of means that the pair spans, alpha the level. The critical value
 * stands on the scale of Diff.
 *
 * Memo: oldDF, oldk and oldCrit are a one-entry cache that the caller owns and starts at 0. When oldDF (and oldk)
 * equal the arguments, oldCrit is the critical value; after each call they hold the arguments and the value. alpha is
 * no part of it: a caller who changes alpha starts anew.
 *
 * Nothing fails: what has no value comes out as NaN, or as -1 / sqrt(2) where the search for a studentized range ended
 * without one.
 */
#pragma once

#include "core/matrix.h"

/** Tukey's honestly significant difference (Tukey 1953, "The problem of multiple comparisons"; Kramer 1956 for unequal
    sizes): Student's t for k = 2, otherwise the studentized range of comparisons/studentized_range.h. */
KORVENRG_API void MCATestTukey(double DFErrors,
                               double k,
                               double Diff,
                               double alpha,
                               double* oCritVal,
                               double* pVal,
                               double* oldDF,
                               double* oldk,
                               double* oldCrit);

/** Fisher's least significant difference (Fisher 1935, "The Design of Experiments"): Student's t at alpha. */
KORVENRG_API void MCATestFischerLSD(double DFErrors,
                                    double Diff,
                                    double alpha,
                                    double* oCritVal,
                                    double* pVal,
                                    double* oldDF,
                                    double* oldCrit);

/** Bonferroni (Dunn 1961, "Multiple comparisons among means"): Student's t at newalpha = 2 alpha / (k (k - 1)). The
    p-value is that of the single comparison. */
KORVENRG_API void MCATestBonferroni(double DFErrors,
                                    double k,
                                    double Diff,
                                    double alpha,
                                    double* newalpha,
                                    double* oCritVal,
                                    double* pVal,
                                    double* oldDF,
                                    double* oldk,
                                    double* oldCrit);

/** Dunn and Sidak (Sidak 1967, "Rectangular confidence regions for the means of multivariate normal distributions"):
    Student's t at newalpha = 1 - (1 - alpha)^(2 / (k (k - 1))). The p-value is that of the single comparison. */
KORVENRG_API void MCATestDunnSidak(double DFErrors,
                                   double k,
                                   double Diff,
                                   double alpha,
                                   double* newalpha,
                                   double* oCritVal,
                                   double* pVal);

/** Newman and Keuls (Keuls 1952, "The use of the studentized range in connection with an analysis of variance"): the
    range of m means at alpha. NaN when m is below 2 or above k. */
KORVENRG_API void MCATestNewmanKeuls(double DFErrors,
                                     double m,
                                     double k,
                                     double Diff,
                                     double alpha,
                                     double* oCritVal,
                                     double* pVal);

/** Duncan (1955, "Multiple range and multiple F tests"): the range of m means at newalpha = 1 - (1 - alpha)^(m - 1). */
KORVENRG_API void MCATestDuncan(double DFErrors,
                                double m,
                                double k,
                                double Diff,
                                double alpha,
                                double* newalpha,
                                double* oCritVal,
                                double* pVal);

/** Ryan, Einot, Gabriel and Welsch (Welsch 1977, "Stepwise multiple comparison procedures"): the range of m means at
    newalpha = alpha for m >= k - 1, otherwise 1 - (1 - alpha)^(m / k). Quick true (-1): level and critical value alone;
    otherwise the p-value alone. What is not computed stays. */
KORVENRG_API void MCATestREGWQ(double DFErrors,
                               double m,
                               double k,
                               double Diff,
                               double alpha,
                               short Quick,
                               double* newalpha,
                               double* oCritVal,
                               double* pVal);

/** Dunnett (1980, "Pairwise multiple comparisons in the unequal variance case", procedure C): the studentized ranges of
    the two groups' degrees of freedom, weighted by the variances of the two means. There is no p-value: pVal is the
    missing marker.

    @param ni, nj  group sizes
    @param vi, vj  variances of the two means, group variance / group size */
KORVENRG_API void MCATestDunnettC(double ni,
                                  double nj,
                                  double vi,
                                  double vj,
                                  double k,
                                  double Diff,
                                  double alpha,
                                  double* oCritVal,
                                  double* pVal);

namespace korvenrg::comparisons {

/** 1 - (1 - p)^exponent, also for a small p. */
double ChanceOfAny(double p, double exponent);

/** A number of means as an int: rounded down, and 0 for what no int holds. */
int MeansOf(double count);

/** Upper p-value of the range of m among k means on the scale of t; NaN when m is below 2 or above k. */
double RangeP(double m, double k, double df, double diff);

/** Critical value of that range at a level. */
double RangeCritical(double m, double k, double df, double level);

/** Level at which Duncan judges a range of m means. */
double DuncanLevel(double m, double alpha);

/** Level at which REGWQ judges a range of m among k means. */
double RegwqLevel(double m, double k, double alpha);

/** Critical value of procedure C for one group of n, on the scale of t. */
double DunnettCCritical(double n, double k, double alpha);

/** Mean of two groups' critical values, weighted by the variances of their means. */
double DunnettCMean(double ci, double cj, double vi, double vj);

}  // namespace korvenrg::comparisons
