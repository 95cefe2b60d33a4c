/** The two-sample rank sum test of Wilcoxon, Mann and Whitney. */
#pragma once

#include "core/matrix.h"

/**
 * Mann-Whitney test of two samples, exact or asymptotic, with ties.
 *
 * U is the number of pairs in which the first sample has the larger value, a tie counting one half: the sum
 * of the first sample's mid-ranks less n1 (n1 + 1) / 2. Given the values, its mean is n1 n2 / 2 and its
 * variance n1 n2 / 12 (N + 1 - T / (N (N - 1))), with N = n1 + n2 and T the sum of t^3 - t over the groups of
 * t tied values.
 *
 * The exact p-value is that of the permutation distribution of U given the ties, by the shift algorithm on
 * doubled mid-ranks (Streitberg & Roehmel 1986, "Exact distributions for permutation and rank tests: an
 * introduction to some recently published algorithms"). Two-sided it is P(|U - mean| >= |u - mean|). The
 * asymptotic p-value is that of (u - mean - correction) / sqrt(variance) under the standard normal law; with
 * the continuity correction, 1/2 is taken off the distance from the mean in the direction of the tail.
 *
 * Cells at or below the missing marker and NaN cells are left out; n1 and n2 above are what is left. When one
 * sample is empty, U, its moments and the p-value are the missing marker. When all values are equal the
 * p-value is 1.
 *
 * @param samples        n1 + n2 cells: the first sample, then the second
 * @param n1, n2         sizes of the samples
 * @param Tail           0 two-sided; 1 upper: p is small when the first sample is larger; others lower
 * @param iExact         true (-1): exact when it can be done
 * @param iContinuity    true (-1): continuity correction of the asymptotic form
 * @param iShift         the difference first - second under the null hypothesis, taken off the first sample
 * @param iTimeStop      true (-1): the exact form is given up after iMaxSeconds
 * @param iMaxSeconds    the limit, in the units of korvenrg::text::ElapsedUnits, which are not seconds
 * @param oExact         out: true (-1) when p is exact; false when it is asymptotic, because exactness was
 *                       not asked for, the time was up, or the distribution would take more than 2^26 cells
 * @param oU             out: U
 * @param oMean, oVariance  out: the mean and the variance of U
 * @param pVal           out: the p-value
 * @param oTimeSpent     out: elapsed units
 * @param oNbTiedVal     out: number of groups of tied values
 * @param ioSeedInit, ioSeed, oSeed  the random state of the family of rank tests; nothing is drawn, all stay
 */
void WilcoxonMW2(matrix<double>& samples,
                 int n1,
                 int n2,
                 int Tail,
                 short iExact,
                 short iContinuity,
                 double iShift,
                 short iTimeStop,
                 double iMaxSeconds,
                 short& oExact,
                 double& oU,
                 double& oMean,
                 double& oVariance,
                 double& pVal,
                 double& oTimeSpent,
                 int& oNbTiedVal,
                 int& ioSeed,
                 short& ioSeedInit,
                 int& oSeed);
