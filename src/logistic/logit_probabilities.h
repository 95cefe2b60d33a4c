/** Probabilities and log-likelihood of a logit model. */
#pragma once

#include "core/limits.h"
#include "logistic/logit_model.h"

namespace korvenrg::logistic {

/** Probabilities are kept within these: 2^-52 and 1 - 2^-52. */
inline constexpr double kSmallestProbability = kEps;
inline constexpr double kLargestProbability = 1.0 - kEps;

/** The nearest of these to a probability; NaN stays. */
constexpr double Clamped(double probability)
{
    if (probability > kLargestProbability) return kLargestProbability;
    return probability < kSmallestProbability ? kSmallestProbability : probability;
}

/**
 * Predictors and probabilities at the given parameters.
 *
 * One block: P = c + (1 - c) F(eta), clamped. Several: P_k = c_k + (1 - c_k) exp(eta_k) / (1 + sum of exp), the reference
 * 1 / (1 + sum). A predictor beyond 709 counts as 709 in its own term and is left out of the sum.
 *
 * Columns whose slope is exactly 0 are not read, so that a column outside the model may hold anything.
 *
 * @param parameters  as laid out by model.layout
 * @param work        out: predictor, probability, reference and natural
 */
void LogitProbabilities(const LogitModel& model, const matrix<double>& parameters, LogitWork& work);

/** eta of each block at a vector laid out like the parameters: the predictors, or the way that a step moves them. */
void LogitPredictors(const LogitModel& model,
                     const matrix<double>& parameters,
                     std::vector<std::vector<double>>& predictors);

/** The second half of LogitProbabilities: from the predictors in `work`, and the mortality, to the rest of it. */
void ProbabilitiesOfPredictors(const LogitModel& model, const matrix<double>& parameters, LogitWork& work);

/**
 * Log-likelihood at the probabilities of `work`, without binomial coefficients:
 * sum of Wr Wc [(1 - y) log(1 - P) + y log P], of Wr [(Wc - y) log(1 - P) + y log P] for a binomial response, of
 * Wc Wr log P_y for several blocks. The penalty of Firth is not in it (FirthPenalty).
 */
double LogitLogLikelihood(const LogitModel& model, const LogitWork& work);

}  // namespace korvenrg::logistic
