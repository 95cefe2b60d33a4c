#include "fit.h"

#include <fmt/format.h>

#include <algorithm>
#include <numeric>

#include "korvenrg.h"
#include "user_error.h"

namespace korvenrg::frontend {
namespace {

constexpr int kNoColumnEntered = -5;

constexpr std::size_t kOptions = 17;
constexpr double kNoSelection = -1.0;

/** Positions of the door's option vector, from 1. */
enum Option : std::size_t
{
    kFixedIntercept = 1,
    kInterceptValue = 2,
    kTolerance = 3,
    kMethod = 5,
    kAlpha = 11,
    kConstraintType = 15,
    kReportedCovariance = 17
};

std::vector<double> OptionVector(const Options& options)
{
    std::vector<double> info(kOptions, 0.0);
    const auto set = [&info](Option option, double value) { info[option - 1] = value; };
    set(kFixedIntercept, options.intercept ? 1.0 : 0.0);
    set(kInterceptValue, options.intercept.value_or(0.0));
    set(kTolerance, options.tolerance);
    set(kMethod, kNoSelection);
    set(kAlpha, options.alpha);
    set(kConstraintType, static_cast<double>(options.constraint));
    set(kReportedCovariance, 1.0);
    return info;
}

/** Weights of mean 1. Coefficients do not depend on the scale, but the door's standard error of the intercept
 * and its errors of predictions do: they hold when the weights sum to the number of observations. */
std::vector<double> ScaledWeights(std::vector<double> weights)
{
    const double mean =
        std::accumulate(weights.begin(), weights.end(), 0.0) / static_cast<double>(weights.size());
    for (double& weight : weights)
        weight /= mean;
    return weights;
}

}  // namespace

Fit::Fit(std::size_t n, std::size_t p)
    : statistics(15, 2),
      anova(3, 5),
      parameters(p + 1, 6),
      standardised(p, 6),
      covariance(p + 1, p + 1, 0.0),
      predictions(n, 1),
      intervals(n, 6),
      residuals(n, 3),
      cooksDistance(n, 1),
      leaveOneOut(n, 1)
{
}

Fit FitModel(const ModelData& data, const Design& design, const Options& options)
{
    const auto n = static_cast<std::size_t>(design.rows);
    const auto p = static_cast<std::size_t>(design.columns);
    const auto factors = static_cast<std::size_t>(design.factors);

    Fit fit(n, p);
    fit.states = design.states;
    Design input = design;  // the door takes all arrays as writable
    std::vector<double> response = data.response;
    std::vector<double> caseWeights(n, 1.0);
    std::vector<double> regressionWeights = ScaledWeights(data.weights);
    std::vector<double> info = OptionVector(options);
    const auto active = std::count(design.factorActive.begin(), design.factorActive.end(), 1);

    int columnsInModel = 0;
    int bestModel = 0;
    NumberTable models(2 * p, factors + 12, 0.0);
    NumberTable typeOne(factors, 5);
    NumberTable typeTwo(factors, 5);
    NumberTable typeThree(factors, 5);
    NumberTable typeFour(factors, 5);
    NumberTable rawCoefficients(p + 1, 1);
    NumberTable coefficients(p + 1, 1);
    NumberTable swept(p + 1, p + 1);
    NumberTable means(p + 1, 1);
    NumberTable deviations(p + 1, 1);

    const int outcome = RunOLS1(design.rows,
                                design.columns,
                                response.data(),
                                input.table.data(),
                                caseWeights.data(),
                                regressionWeights.data(),
                                design.factors,
                                design.interlevel,
                                static_cast<int>(active),
                                input.factorType.data(),
                                input.factorActive.data(),
                                input.factorNbVars.data(),
                                input.factorVariables.data(),
                                input.factorNbColumns.data(),
                                input.parents.data(),
                                input.frequencies.data(),
                                input.reportedFrom.data(),
                                info.data(),
                                &columnsInModel,
                                models.data(),
                                &bestModel,
                                fit.states.data(),
                                fit.statistics.data(),
                                fit.anova.data(),
                                typeOne.data(),
                                typeTwo.data(),
                                typeThree.data(),
                                typeFour.data(),
                                rawCoefficients.data(),
                                coefficients.data(),
                                fit.parameters.data(),
                                fit.standardised.data(),
                                fit.covariance.data(),
                                fit.predictions.data(),
                                fit.intervals.data(),
                                fit.residuals.data(),
                                fit.cooksDistance.data(),
                                fit.leaveOneOut.data(),
                                swept.data(),
                                means.data(),
                                deviations.data());
    if (outcome == kNoColumnEntered) {
        throw UserError("no column can enter the model: all are constant or refused by --tolerance");
    }
    if (outcome != 0) throw UserError(fmt::format("the fit stopped with code {}", outcome));
    return fit;
}

}  // namespace korvenrg::frontend
