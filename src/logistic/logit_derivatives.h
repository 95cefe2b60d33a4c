/** Gradient and Hessian of the log-likelihood of a logit model, and Firth's correction. */
#pragma once

#include "logistic/logit_model.h"

namespace korvenrg::logistic {

/** What of the derivatives is wanted. */
struct DerivativeOptions
{
    bool intercept;  ///< rows of the intercept, otherwise 0
    bool mortality;  ///< rows of the mortality, otherwise 0; of one block alone
    bool firth;      ///< the gradient is that of the penalised likelihood; of one block alone
};

/** The derivatives that a fit needs. */
DerivativeOptions DerivativesOf(const FitOptions& options);

/**
 * Gradient and Hessian at the probabilities of `work` (LogitProbabilities at fit.parameters), which also receives the
 * density dP / d eta.
 *
 * With w = Wc Wr and m = 1, or w = 1 and m = Wc for a binomial response; f, g, h the first three derivatives of P by eta,
 * d = y / P - m, s = y / P^2 + (m - y) / (1 - P)^2:
 *   gradient   sum of w d f x / (1 - P), of the mortality w (y / P - (m - y) / (1 - P))(1 - F)
 *   Hessian    sum of w x x' [d g / (1 - P) - s f^2], of mortality and slope w x [-f d / ((1 - c)(1 - P)) - s f (1 - F)],
 *              of the mortality itself -w s (1 - F)^2
 * Several blocks: sum of w (Y_k - P_k) x, and of -w P_k (1 - P_k) x x' or w P_k P_l x x'.
 *
 * The gradient has every slope, also of columns outside the model, since a test for entry reads it. The Hessian has the
 * rows and columns of free slopes; those of fixed ones are 0.
 *
 * Firth's correction (Firth 1993, "Bias reduction of maximum likelihood estimates") adds 0.5 trace(H^-1 dH / d beta_r) to
 * the gradient of each slope and of the intercept r: half the sum of t x_r (x' H^-1 x), t the third derivative of an
 * observation's log-likelihood by eta. Without an inverse the gradient stays uncorrected.
 *
 * @param fit  parameters and fixedMask in; gradient and hessian out
 */
void LogitDerivatives(const LogitModel& model,
                      const DerivativeOptions& options,
                      LogitFit& fit,
                      LogitWork& work);

/** 0.5 log |det H| over the free parameters; 0 when none is free. */
double FirthPenalty(const LogitFit& fit);

/**
 * H^-1 over the free parameters into `inverse` (cCleanConstraintsAndInvert); all 0 when none is free.
 * @return whether every free parameter has a pivot; false when none is free
 */
bool InvertOverFree(int length, matrix<int>& fixedMask, matrix<double>& hessian, matrix<double>& inverse);

}  // namespace korvenrg::logistic
