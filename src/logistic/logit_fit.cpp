#include "logistic/logit_fit.h"

#include <algorithm>
#include <cmath>

#include "kernel/linalg/newton_step.h"
#include "logistic/fit_statistics.h"
#include "logistic/logit_derivatives.h"
#include "logistic/logit_probabilities.h"
#include "logistic/newton_search.h"

namespace korvenrg::logistic {

namespace {

constexpr int kMovesBack = 15;
constexpr double kStartLogLikelihood = -1E20;
// Arguments that the family passes to the Newton step.
constexpr short kUndamped = kFalse;
constexpr double kRidge = 0.5;
// Results of the Newton step.
constexpr int kStopAtOnce = 2;
// A change of the log-likelihood counts from these iterations on.
constexpr int kSettledIterations = 5;
constexpr int kSettledIterationsWithMortality = 15;
// Several blocks: a fitted probability above this from iteration 9 on is taken as separation.
constexpr int kIterationsBeforeGuard = 8;
constexpr double kSeparated = 0.95;

// One run of the iteration.
struct Newton
{
    const LogitModel& model;
    const FitOptions& options;
    LogitFit& fit;
    LogitWork& work;
    bool accepted = false;
    bool staleDerivatives = false;  // the probabilities of the last point are there, its derivatives are not
    int stepResult = 0;
    double before = kStartLogLikelihood;

    double& LogLikelihood() const
    {
        return fit.statistics.logLikelihood;
    }
};

void PutStartValues(LogitFit& fit)
{
    for (int k = 1; k <= fit.layout.blocks; ++k) {
        fit.parameters.vbset(fit.layout.Intercept(k), fit.intercepts[static_cast<std::size_t>(k - 1)]);
        fit.parameters.vbset(fit.layout.Mortality(k), fit.mortality[static_cast<std::size_t>(k - 1)]);
    }
}

void TakeBackStartValues(LogitFit& fit)
{
    for (int k = 1; k <= fit.layout.blocks; ++k) {
        fit.intercepts[static_cast<std::size_t>(k - 1)] = fit.parameters.vbget(fit.layout.Intercept(k));
        fit.mortality[static_cast<std::size_t>(k - 1)] = fit.parameters.vbget(fit.layout.Mortality(k));
    }
}

void MarkMortality(LogitFit& fit, MaskMark mark)
{
    for (int k = 1; k <= fit.layout.blocks; ++k) {
        fit.fixedMask.vbset(fit.layout.Mortality(k), mark);
    }
}

void KeepMortalityNonNegative(LogitFit& fit)
{
    for (int k = 1; k <= fit.layout.blocks; ++k) {
        const int position = fit.layout.Mortality(k);
        if (fit.parameters.vbget(position) < 0.0) fit.parameters.vbset(position, 0.0);
    }
}

void RecomputeDerivatives(Newton& newton)
{
    LogitDerivatives(newton.model, DerivativesOf(newton.options), newton.fit, newton.work);
    newton.staleDerivatives = false;
}

// Log-likelihood at the probabilities of one point of the line search. Derivatives are formed where the penalty or the
// next step asks for them. Those of a search without success are needed only if the iteration ends there; the mortality,
// which they depend on beside the probabilities, has moved on by then, so with one to estimate they are formed at once.
double EvaluateMove(Newton& newton, int move)
{
    double value = LogitLogLikelihood(newton.model, newton.work);
    const bool accepted = value - newton.before > kSmallestRise;
    newton.staleDerivatives = true;
    if (newton.options.firth || accepted || (move == kMovesBack && newton.options.estimatesMortality)) {
        RecomputeDerivatives(newton);
    }
    if (newton.options.firth) value += FirthPenalty(newton.fit);
    newton.LogLikelihood() = value;
    return value;
}

// The predictors along a step: computed at its end, and moved by those of the step itself from there.
class StepPredictors
{
  public:
    StepPredictors(Newton& newton, const std::vector<double>& back)
        : newton_(newton), back_(newton.fit.layout.Length(), 1)
    {
        std::copy(back.begin(), back.end(), back_.data);
    }

    // Probabilities at move 1, 2, ..: the end of the step, then 2^-1, 2^-2, .. of it further back.
    void Evaluate(int move)
    {
        LogitWork& work = newton_.work;
        if (move == 1) {
            LogitProbabilities(newton_.model, newton_.fit.parameters, work);
            return;
        }
        if (moves_.empty()) {
            moves_.assign(work.predictor.size(), std::vector<double>(work.ones.size()));
            LogitPredictors(newton_.model, back_, moves_);
        }
        const double share = std::ldexp(1.0, 1 - move);
        for (std::size_t k = 0; k < moves_.size(); ++k) {
            std::vector<double>& eta = work.predictor[k];
            for (std::size_t i = 0; i < eta.size(); ++i) {
                eta[i] += share * moves_[k][i];
            }
        }
        ProbabilitiesOfPredictors(newton_.model, newton_.fit.parameters, work);
    }

  private:
    Newton& newton_;
    matrix<double> back_;
    std::vector<std::vector<double>> moves_;
};

// |change of the log-likelihood| < convergence, once the iteration has settled.
bool HasConverged(const Newton& newton)
{
    const int settled =
        newton.options.estimatesMortality ? kSettledIterationsWithMortality : kSettledIterations;
    return std::fabs(newton.before - newton.LogLikelihood()) < newton.options.convergence &&
           newton.fit.statistics.iterations > settled;
}

// Several blocks: some P_k > 0.95 from iteration 9 on. One block keeps no probabilities by category, so it never is.
bool IsSeparated(const Newton& newton)
{
    if (!newton.model.IsMultinomial() || newton.fit.statistics.iterations <= kIterationsBeforeGuard)
        return false;
    return std::ranges::any_of(newton.work.probability, [](const std::vector<double>& P) {
        return std::ranges::any_of(P, [](double probability) { return probability > kSeparated; });
    });
}

// The Newton decrement is below what the convergence limit can see.
bool StepSaysStop(const Newton& newton)
{
    return newton.stepResult == kStopAtOnce;
}

// Counter above the limit; a limit of 0 still makes one iteration.
bool IsExhausted(const Newton& newton)
{
    return newton.fit.statistics.iterations > newton.options.maxIterations;
}

// What a step can bring: half of g' step, the rise of the quadratic model. Below half of the smallest rise that counts
// every point of the line search would be rejected.
bool CanRise(const Newton& newton, const std::vector<double>& back)
{
    double promised = 0.0;
    for (std::size_t i = 0; i < back.size(); ++i) {
        if (back[i] != 0.0) promised -= 0.5 * newton.fit.gradient.data[i] * back[i];
    }
    return newton.options.firth || !(std::fabs(promised) < 0.5 * kSmallestRise);
}

// One Newton step with its line search. False when no step could be made.
bool MakeStep(Newton& newton)
{
    LogitFit& fit = newton.fit;
    std::vector<double> back(fit.parameters.data, fit.parameters.data + fit.parameters.total);
    newton.stepResult = cNewtonRaphson(&fit.parameters,
                                       fit.layout.Length(),
                                       &fit.fixedMask,
                                       &fit.gradient,
                                       &fit.hessian,
                                       newton.options.convergence,
                                       &fit.variances,
                                       &fit.covariance,
                                       kUndamped,
                                       kRidge);
    KeepMortalityNonNegative(fit);
    if (newton.stepResult < 0) return false;
    for (std::size_t i = 0; i < back.size(); ++i) {
        back[i] -= fit.parameters.data[i];
    }
    newton.before = newton.LogLikelihood();
    const bool canRise = CanRise(newton, back);
    StepPredictors predictors(newton, back);
    newton.accepted = SearchBack(fit.parameters, back, kMovesBack, newton.before, [&](int move) {
        if (canRise) {
            predictors.Evaluate(move);
        } else if (move < kMovesBack) {
            return newton.before;
        } else {
            LogitProbabilities(newton.model, fit.parameters, newton.work);
        }
        return EvaluateMove(newton, move);
    });
    return true;
}

// Iterates until a stopping rule holds. False when the first step fails.
bool RunPhase(Newton& newton)
{
    int& counter = newton.fit.statistics.iterations;
    do {
        counter += 1;
        if (counter > 1 && !newton.accepted) {
            LogitProbabilities(newton.model, newton.fit.parameters, newton.work);
            RecomputeDerivatives(newton);
        }
        if (!MakeStep(newton)) return counter > 1;
    } while (!StepSaysStop(newton) && !IsSeparated(newton) && !IsExhausted(newton) && !HasConverged(newton));
    if (newton.staleDerivatives) RecomputeDerivatives(newton);
    return true;
}

// With a mortality to estimate: a fit with the mortality held, then, once that has made two iterations, one with it free.
bool RunPhases(Newton& newton)
{
    int& counter = newton.fit.statistics.iterations;
    counter = 0;
    for (bool last = false; !last;) {
        const bool heldPhase = counter < 2;
        MarkMortality(newton.fit, heldPhase ? kFixed : kFree);
        last = !heldPhase || !newton.options.estimatesMortality;
        if (!heldPhase) counter = 0;
        if (!RunPhase(newton)) return false;
    }
    return true;
}

}  // namespace

double EvaluateLogitModel(const LogitModel& model, const FitOptions& options, LogitFit& fit, LogitWork& work)
{
    LogitProbabilities(model, fit.parameters, work);
    LogitDerivatives(model, DerivativesOf(options), fit, work);
    return LogitLogLikelihood(model, work) + (options.firth ? FirthPenalty(fit) : 0.0);
}

// The fit:
//   - start values, and everything at them
//   - Newton steps with a line search, in one phase or two
//   - intercepts and mortalities back from the parameters
//   - residuals, covariance, Wald and score statistics
int OptimizeLogitModel(const LogitModel& model, const FitOptions& options, LogitFit& fit, LogitWork& work)
{
    Newton newton{.model = model, .options = options, .fit = fit, .work = work};
    PutStartValues(fit);
    fit.statistics.logLikelihood = EvaluateLogitModel(model, options, fit, work);
    const KeptDerivatives start(fit);
    if (!RunPhases(newton)) return kFitFailed;
    TakeBackStartValues(fit);
    MeasureResiduals(model, work, fit.statistics);
    InvertOverFree(fit.layout.Length(), fit.fixedMask, fit.hessian, fit.covariance);
    fit.statistics.wald = LogitWaldStat(fit);
    fit.statistics.score = ScoreStat(model, options, fit, options.estimatesMortality ? nullptr : &start);
    return kFitted;
}

}  // namespace korvenrg::logistic
