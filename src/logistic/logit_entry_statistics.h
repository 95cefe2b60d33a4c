/** Score tests that choose the factor to enter a logit model, from the current fit alone. */
#pragma once

#include "logistic/logit_variable_statistics.h"

namespace korvenrg::logistic {

/** Whether each factor is in the model; cell 0 is the first factor. */
using FactorFlags = std::vector<bool>;

/** A column of this state or above is not in the reach of a selection. */
inline constexpr int kExcluded = 1;

/** The columns that a factor enters with: those not excluded, of a quantitative factor the first. */
std::vector<int> ColumnsToEnter(const FactorDescription& factors, int p, int factor);

/**
 * The factor to enter among those looked at one after the other. Among equal degrees of freedom the larger statistic
 * wins; one with more of them than any before wins by its p-value alone.
 */
struct EntryChoice
{
    int factor = 0;  ///< 0: none
    double statistic = 0.0;
    double p = 1.0;
    int largestDf = 0;

    void Consider(int candidate, const FactorTest& test);
};

/**
 * Score statistic of a factor that is not in a model of one block (Rao 1948, "Large sample tests of statistical
 * hypotheses concerning several parameters"): g' A^-1 g, with g the gradient at the current fit and
 * A = Z'FZ - Z'FX (X'FX)^-1 X'FZ for the columns Z of the factor, X of the model and F = diag(dP / d eta).
 *
 * The columns of a factor are those that are not excluded. 0 when A has no inverse.
 */
FactorTest GetVariableScoreStat(const LogitRun& run, int factor);

/** The best entry of one block: active factors that are not in the model, in order. */
EntryChoice GetBestScore(const LogitRun& run, const FactorFlags& inModel);

/**
 * The best entry of several blocks. The statistic is the score statistic of a whole multinomial logit: of the columns of
 * a qualitative factor alone, or of a quantitative one together with the columns in the model.
 */
EntryChoice GetVariableScoreMulti(const LogitRun& run, const FactorFlags& inModel);

}  // namespace korvenrg::logistic
