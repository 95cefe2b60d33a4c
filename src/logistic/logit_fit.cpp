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
// Rises below this many units in the last place of the log-likelihood cannot be seen in it.
constexpr double kHiddenUlps = 4.0;
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
    bool scoreIsGradient = true;    // the derivatives are those of the log-likelihood itself
    bool staleDerivatives = false;  // the probabilities of the last point are there, its derivatives are not
    std::vector<double> point{};    // parameters that the last derivatives are those of
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

// Notes that probabilities and derivatives are those of the parameters as they stand.
void NotePoint(Newton& newton)
{
    const matrix<double>& parameters = newton.fit.parameters;
    newton.point.assign(parameters.data, parameters.data + parameters.total);
    newton.staleDerivatives = false;
}

void RecomputeDerivatives(Newton& newton)
{
    LogitDerivatives(newton.model, DerivativesOf(newton.options), newton.fit, newton.work);
    NotePoint(newton);
}

// Whether probabilities and derivatives are those of the parameters as they stand.
bool IsAtPoint(const Newton& newton)
{
    return !newton.staleDerivatives &&
           std::equal(newton.point.begin(), newton.point.end(), newton.fit.parameters.data);
}

// Ends a search whose moves back leave nothing of a step: the parameters are what they were. False for a longer step.
bool ReturnToPoint(Newton& newton, const std::vector<double>& back)
{
    const double left = std::ldexp(1.0, -kMovesBack);
    for (std::size_t i = 0; i < back.size(); ++i) {
        if (newton.point[i] - left * back[i] != newton.point[i]) return false;
    }
    std::ranges::copy(newton.point, newton.fit.parameters.data);
    return true;
}

// Log-likelihood at the probabilities of one point of the line search.
void EvaluateMove(Newton& newton)
{
    double value = LogitLogLikelihood(newton.model, newton.work);
    newton.staleDerivatives = true;
    if (newton.options.firth) {
        RecomputeDerivatives(newton);
        value += FirthPenalty(newton.fit);
    }
    newton.LogLikelihood() = value;
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

// Half of g' step: the rise at the end of a short step, by the quadratic model.
double PromisedRise(const Newton& newton, const std::vector<double>& back)
{
    double promised = 0.0;
    for (std::size_t i = 0; i < back.size(); ++i) {
        if (back[i] != 0.0) promised -= 0.5 * newton.fit.gradient.data[i] * back[i];
    }
    return promised;
}

// Whether a rise is lost in the rounding of the log-likelihood.
bool IsHidden(const Newton& newton, double rise)
{
    return newton.scoreIsGradient && std::fabs(rise) < kHiddenUlps * kEps * std::fabs(newton.before);
}

// The rise at each point of a line search. One that the rounding of the log-likelihood hides is taken from the quadratic
// model, so that the last steps are made, and points that it rejects are not looked at but for the last. Derivatives of a
// search without success are needed only if the iteration ends there; the mortality, on which they depend beside the
// probabilities, has moved on by then, so with one to estimate they are formed at the last point.
bool SearchAlong(Newton& newton, const std::vector<double>& back)
{
    const double promised = PromisedRise(newton, back);
    const bool hidden = IsHidden(newton, promised);
    const bool looks = !hidden || promised > kSmallestRise;
    if (!looks && !newton.staleDerivatives && ReturnToPoint(newton, back)) return false;
    StepPredictors predictors(newton, back);
    return SearchBack(newton.fit.parameters, back, kMovesBack, [&](int move) {
        if (looks) {
            predictors.Evaluate(move);
        } else if (move < kMovesBack) {
            return 0.0;
        } else {
            LogitProbabilities(newton.model, newton.fit.parameters, newton.work);
        }
        EvaluateMove(newton);
        if (move == kMovesBack && newton.options.estimatesMortality) RecomputeDerivatives(newton);
        return hidden ? promised : newton.LogLikelihood() - newton.before;
    });
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
    newton.accepted = SearchAlong(newton, back);
    if (newton.accepted && newton.staleDerivatives) RecomputeDerivatives(newton);
    return true;
}

// Iterates until a stopping rule holds. False when the first step fails.
bool RunPhase(Newton& newton)
{
    int& counter = newton.fit.statistics.iterations;
    do {
        counter += 1;
        if (counter > 1 && !newton.accepted && !IsAtPoint(newton)) {
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

// Second weights of a binomial response, and the mortality of several blocks, enter the log-likelihood in another way than
// its derivatives; a mortality that is cut at 0 leaves the way of the step.
bool ScoreIsGradient(const LogitModel& model, const FitOptions& options, const LogitFit& fit)
{
    if (options.estimatesMortality) return false;
    if (model.IsMultinomial()) return std::ranges::all_of(fit.mortality, [](double c) { return c == 0.0; });
    const double* weights = model.secondWeights;
    return !model.IsBinomial() || std::all_of(weights, weights + model.n, [](double w) { return w == 1.0; });
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
    newton.scoreIsGradient = ScoreIsGradient(model, options, fit);
    fit.statistics.logLikelihood = EvaluateLogitModel(model, options, fit, work);
    NotePoint(newton);
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
