#include "logit_fit.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>

#include "korvenrg.h"
#include "user_error.h"

namespace korvenrg::frontend {
namespace {

constexpr int kBinary = 0;
constexpr int kGrouped = 1;
constexpr int kTwoCategories = 2;
constexpr double kConvergence = 1e-12;
constexpr int kMostIterations = 200;
constexpr double kMortalityStart = 0.05;  // where an estimated mortality starts from

/** Positions of the door's option vector, from 0. */
enum Option : std::size_t
{
    kHasMortality = 3,
    kGivenMortality = 4,
    kProfile = 6,
    kFirth = 7,
    kDoses = 9,
    kUseTolerance = 10
};
constexpr std::size_t kLogitOptionCount = 11;

std::vector<int> OptionVector(const LogitOptions& options)
{
    std::vector<int> info(kLogitOptionCount, 0);
    info[kHasMortality] = options.mortality == Mortality::kNone ? 0 : 1;
    info[kGivenMortality] = options.mortality == Mortality::kGiven ? 1 : 0;
    info[kProfile] = options.profile ? 1 : 0;
    info[kFirth] = options.firth ? 1 : 0;
    info[kDoses] = options.doses ? 1 : 0;
    info[kUseTolerance] = 1;
    return info;
}

void CheckResponse(const ModelData& data, const Options& options)
{
    for (std::size_t i = 0; i < data.response.size(); ++i) {
        const double y = data.response[i];
        const double n = data.weights[i];
        if (options.weights.empty()) {
            if (y == 0.0 || y == 1.0) continue;
            throw UserError(fmt::format(
                "the response '{}' must be 0 or 1, or successes of --trials: data row {} holds {}",
                options.response,
                data.rows[i],
                y));
        }
        const bool whole = y == std::floor(y) && n == std::floor(n);
        if (whole && y >= 0.0 && y <= n && n > 0.0) continue;
        throw UserError(
            fmt::format("successes must be counts of up to their trials: data row {} holds {} of {}",
                        data.rows[i],
                        y,
                        n));
    }
}

/** Observed and expected counts, mortality included, against each other in groups of a tenth of the observations. */
NumberTable HosmerLemeshow(const LogitFit& fit, const ModelData& data)
{
    const std::size_t n = data.response.size();
    NumberTable values(n, 2), test(3, 1);
    std::vector<double> trials = data.weights;
    for (std::size_t i = 0; i < n; ++i) {
        values.cells[i] = data.response[i];
        const double corrected = fit.predictions(i, kExpectedShare);
        values.cells[n + i] = trials[i] * (fit.mortality + (1.0 - fit.mortality) * corrected);
    }
    Cpp_HLTest(static_cast<int>(n), values.data(), trials.data(), test.data());
    return test;
}

}  // namespace

LogitFit::LogitFit(std::size_t n, std::size_t p, std::size_t factors)
    : factorActive(factors, 1),
      statistics(10, 2),
      tests(3, 3),
      parameters(p + 1, 11),
      standardised(p, 8),
      covariance(p + 2, p + 2, 0.0),
      predictions(n, 9),
      classification(3, 4),
      roc(n + 1, 2),
      doses(13, 6),
      hosmer(3, 1)
{
}

LogitFit FitLogit(const ModelData& data, const Design& design, const Options& options)
{
    CheckResponse(data, options);
    const auto n = static_cast<std::size_t>(design.rows);
    const auto p = static_cast<std::size_t>(design.columns);
    LogitFit fit(n, p, static_cast<std::size_t>(design.factors));
    fit.states = design.states;
    fit.factorActive = design.factorActive;
    Design input = design;  // the door takes all arrays as writable
    std::vector<double> response = data.response, trials = data.weights, seconds(n, 1.0);
    std::vector<int> info = OptionVector(options.logit);
    auto active = static_cast<int>(std::count(design.factorActive.begin(), design.factorActive.end(), 1));
    const auto isQualitative = [](int type) { return type == 2 || type == 4 || type == 5; };
    const auto qualitative = std::count_if(design.parents.begin(), design.parents.end(), [&](int f) {
        return isQualitative(design.factorType[static_cast<std::size_t>(f) - 1]);
    });
    if (options.logit.mortality == Mortality::kEstimated) fit.mortality = kMortalityStart;
    if (options.logit.mortality == Mortality::kGiven) fit.mortality = options.logit.mortalityValue;

    NumberTable none(1, std::max<std::size_t>(p, 9)), noClasses(3, 4), models(1, p + 15),
        types(design.factors + 1u, 5), marginal(1, 1), curve(99, 5);
    VARIANT_BOOL separated = VARIANT_FALSE;
    // clang-format off
    const int outcome = Cpp_RunMLOG(
        design.rows, design.columns, static_cast<int>(qualitative), kTwoCategories, response.data(), input.table.data(),
        trials.data(), seconds.data(), options.alpha, 0, none.data(), none.data(), none.data(), none.data(),
        noClasses.data(), 0, none.data(), none.data(), design.factors, &active, input.factorType.data(),
        fit.factorActive.data(), input.factorNbVars.data(), input.parents.data(), input.frequencies.data(),
        input.reportedFrom.data(), info.data(), options.weights.empty() ? kBinary : kGrouped,
        static_cast<int>(options.logit.link), kConvergence, kMostIterations, options.tolerance,
        static_cast<int>(options.constraint), 0, -1, 0, 0.05, 0.1, 1, 1, options.logit.cut, &fit.mortality, models.data(),
        fit.states.data(), fit.parameters.data(), fit.standardised.data(), fit.covariance.data(),
        fit.statistics.data(), fit.tests.data(), types.data(), fit.predictions.data(), &fit.heterogeneity,
        marginal.data(), fit.classification.data(), fit.roc.data(), &fit.area, fit.doses.data(), curve.data(),
        &separated);
    // clang-format on
    if (outcome != 0)
        throw UserError(fmt::format("the fit failed: no maximum of the likelihood (code {})", outcome));
    fit.separated = separated == VARIANT_TRUE;
    fit.hosmer = HosmerLemeshow(fit, data);
    return fit;
}

}  // namespace korvenrg::frontend
