/** The Hosmer-Lemeshow test of fit. */
#pragma once

#include "core/matrix.h"

namespace korvenrg::logistic {

/** Elements of oTestTable. */
enum HosmerLemeshowCell
{
    kHosmerStatistic = 1,
    kHosmerDf = 2,
    kHosmerPValue = 3
};

/** Columns of iProba. */
enum HosmerLemeshowInput
{
    kHosmerObserved = 1,
    kHosmerExpected = 2
};

}  // namespace korvenrg::logistic

/**
 * Hosmer-Lemeshow test: observations in the order of their expected values are gathered in about ten groups of equal
 * weight, equal expected values together, and observed sums are compared with expected ones. Groups after the eleventh
 * are not kept.
 *
 * Source of the method: Hosmer and Lemeshow 1980, "Goodness of fit tests for the multiple logistic regression model".
 *
 * @param n           observations; below 1 there is no group
 * @param iProba      n x 2, observed and expected value (counts for binomial responses). Not changed
 * @param iWc         n, case weights or trials; weight i counts for the i-th sorted row
 * @param oTestTable  3, HosmerLemeshowCell: chi-square, groups - 2, p-value; chi-square and p-value are missing when the
 *                    chi-square is at most 1e-12 or not a number
 */
KORVENRG_API void HLTest(int n, matrix<double>* iProba, matrix<double>* iWc, matrix<double>* oTestTable);
