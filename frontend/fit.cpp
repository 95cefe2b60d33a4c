#include "fit.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <numeric>
#include <set>
#include <utility>

#include "korvenrg.h"
#include "user_error.h"

namespace korvenrg::frontend {
namespace {

constexpr int kNoColumnEntered = -5;

constexpr std::size_t kCpStatistic = 9;  // row of the statistics, from 0

constexpr std::size_t kOptions = 17;
constexpr double kAllTerms = 1e6;  // an upper end of subset sizes above every number of terms

/** Positions of the door's option vector, from 1. */
enum Option : std::size_t
{
    kFixedIntercept = 1,
    kInterceptValue = 2,
    kTolerance = 3,
    kMethod = 5,
    kSubsetCriterion = 6,
    kEnter = 7,
    kRemove = 8,
    kMinTerms = 9,
    kMaxTerms = 10,
    kAlpha = 11,
    kTypeOne = 12,
    kTypeTwo = 13,
    kTypeThree = 14,
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
    set(kMethod, static_cast<double>(options.selection));
    // stepwise methods use no criterion, and this one fills their Cp column
    const Criterion criterion = options.selection == Selection::kBest ? options.criterion : Criterion::kCp;
    set(kSubsetCriterion, static_cast<double>(criterion));
    set(kEnter, options.enter);
    set(kRemove, options.remove);
    set(kMinTerms, options.minTerms);
    set(kMaxTerms, options.maxTerms ? *options.maxTerms : kAllTerms);
    set(kAlpha, options.alpha);
    set(kConstraintType, static_cast<double>(options.constraint));
    set(kReportedCovariance, 1.0);
    return info;
}

/** A row for each term of the data. The door has rows for the active terms only, from the top; the others get what it
 * gives to a term that a selection left out. */
NumberTable TermRows(const NumberTable& table, const ModelData& data, const std::vector<int>& active)
{
    const auto terms = std::count_if(data.factors.begin(), data.factors.end(), [](const Factor& factor) {
        return factor.active;
    });
    NumberTable rows(static_cast<std::size_t>(terms), table.columns);
    std::size_t term = 0;
    std::size_t doorRow = 0;
    for (std::size_t f = 0; f < data.factors.size(); ++f) {
        if (!data.factors[f].active) continue;
        for (std::size_t c = 0; c < table.columns; ++c) {
            const double leftOut = c < 2 ? 0.0 : kMissing;
            rows.cells[c * rows.rows + term] = active[f] == 1 ? table(doorRow, c) : leftOut;
        }
        ++term;
        if (active[f] == 1) ++doorRow;
    }
    return rows;
}

Fit RunFit(const ModelData& data, const Design& design, std::vector<double> info);

/** The terms that the fit kept, as a model of their own. */
ModelData KeptTerms(const ModelData& data, const Fit& fit)
{
    ModelData kept = data;
    kept.validation.reset();
    kept.prediction.reset();
    for (std::size_t f = 0; f < kept.factors.size(); ++f)
        kept.factors[f].active = kept.factors[f].active && fit.factorActive[f] == 1;
    return kept;
}

/** Whether two codings of the same terms span the same columns, which they may not where an interaction stands
 * without its main effects. */
bool IsSameModel(const Fit& a, const Fit& b)
{
    constexpr double kRoundoff = 1e-8;
    const std::size_t error = 1;
    const std::size_t total = 2;
    return a.anova(error, 0) == b.anova(error, 0) &&
           std::fabs(a.anova(error, 1) - b.anova(error, 1)) <= kRoundoff * a.anova(total, 1);
}

/** Type III sums of squares of the model that was fitted. The run gives them by estimable functions, whatever the
 * constraint, when it has no selection and the constraint is that on the first category. All cells are missing when
 * that constraint makes another model of the terms. */
NumberTable TypeThreeTable(const ModelData& data, const Fit& fit, const Options& options)
{
    Options plain = options;
    plain.selection = Selection::kNone;
    plain.constraint = Constraint::kFirst;
    const ModelData kept = KeptTerms(data, fit);
    if (std::none_of(kept.factors.begin(), kept.factors.end(), [](const Factor& f) { return f.active; }))
        return TermRows(fit.typeThree, data, fit.factorActive);
    std::vector<double> info = OptionVector(plain);
    info[kTypeThree - 1] = 1.0;
    const Fit refit = RunFit(kept, BuildDesign(kept, plain.constraint), std::move(info));

    if (!IsSameModel(fit, refit)) return NumberTable(data.factors.size(), fit.typeThree.columns);
    return TermRows(refit.typeThree, data, fit.factorActive);
}

}  // namespace

Fit::Fit(std::size_t n, std::size_t p, std::size_t factors)
    : models(2 * p, factors + 12, 0.0),
      typeOne(factors, 5),
      typeTwo(factors, 5),
      typeThree(factors, 5),
      statistics(15, 2),
      anova(3, 5),
      parameters(p + 1, 6),
      standardised(p, 6),
      covariance(p + 1, p + 1, 0.0),
      reported(p + 1, 1),
      rawCovariance(p + 1, p + 1, 0.0),
      predictions(n, 1),
      intervals(n, 6),
      residuals(n, 3),
      cooksDistance(n, 1),
      leaveOneOut(n, 1),
      rawCoefficients(p + 1, 1),
      swept(p + 1, p + 1),
      means(p + 1, 1),
      deviations(p + 1, 1)
{
}

/** Coefficients do not depend on the scale, but the door's standard error of the intercept and its errors of
 * predictions do: they hold when the weights sum to the number of observations. */
std::vector<double> ScaledWeights(const ModelData& data, std::vector<double> weights)
{
    const double mean = std::accumulate(data.weights.begin(), data.weights.end(), 0.0) /
                        static_cast<double>(data.weights.size());
    for (double& weight : weights)
        weight /= mean;
    return weights;
}

namespace {

Fit RunFit(const ModelData& data, const Design& design, std::vector<double> info)
{
    const auto n = static_cast<std::size_t>(design.rows);
    const auto p = static_cast<std::size_t>(design.columns);
    const auto factors = static_cast<std::size_t>(design.factors);

    Fit fit(n, p, factors);
    fit.states = design.states;
    fit.factorActive = design.factorActive;
    Design input = design;  // the door takes all arrays as writable
    std::vector<double> response = data.response;
    std::vector<double> caseWeights(n, 1.0);
    std::vector<double> regressionWeights = ScaledWeights(data, data.weights);
    const auto active = std::count(design.factorActive.begin(), design.factorActive.end(), 1);

    NumberTable typeFour(factors, 5);

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
                                fit.factorActive.data(),
                                input.factorNbVars.data(),
                                input.factorVariables.data(),
                                input.factorNbColumns.data(),
                                input.parents.data(),
                                input.frequencies.data(),
                                input.reportedFrom.data(),
                                info.data(),
                                &fit.columnsInModel,
                                fit.models.data(),
                                &fit.bestModel,
                                fit.states.data(),
                                fit.statistics.data(),
                                fit.anova.data(),
                                fit.typeOne.data(),
                                fit.typeTwo.data(),
                                fit.typeThree.data(),
                                typeFour.data(),
                                fit.rawCoefficients.data(),
                                fit.reported.data(),
                                fit.parameters.data(),
                                fit.standardised.data(),
                                fit.covariance.data(),
                                fit.predictions.data(),
                                fit.intervals.data(),
                                fit.residuals.data(),
                                fit.cooksDistance.data(),
                                fit.leaveOneOut.data(),
                                fit.swept.data(),
                                fit.means.data(),
                                fit.deviations.data());
    if (outcome == kNoColumnEntered) {
        throw UserError("no column can enter the model: all are constant or refused by --tolerance");
    }
    if (outcome != 0) throw UserError(fmt::format("the fit stopped with code {}", outcome));
    return fit;
}

/** The design without the columns of dropped levels, which the search of subsets would set free again. */
Design FittedColumns(const Design& design)
{
    const auto n = static_cast<std::size_t>(design.rows);
    Design fitted = design;
    fitted.table.clear();
    fitted.parents.clear();
    fitted.frequencies.clear();
    std::fill(fitted.factorNbColumns.begin(), fitted.factorNbColumns.end(), 0);
    for (std::size_t c = 0; c < design.states.size(); ++c) {
        if (design.states[c] == kDroppedByConstraint) continue;
        const auto column = design.table.begin() + static_cast<std::ptrdiff_t>(c * n);
        fitted.table.insert(fitted.table.end(), column, column + design.rows);
        fitted.parents.push_back(design.parents[c]);
        fitted.frequencies.push_back(design.frequencies[c]);
        fitted.factorNbColumns[static_cast<std::size_t>(design.parents[c]) - 1] += 1;
    }
    const std::size_t p = fitted.parents.size();
    fitted.columns = static_cast<int>(p);
    fitted.states.assign(p, 0);
    fitted.reportedFrom.assign(p * p, 0.0);
    for (std::size_t c = 0; c < p; ++c)
        fitted.reportedFrom[c * p + c] = 1.0;
    return fitted;
}

/** The design with the terms of the best subset alone. */
Design SubsetOf(const Design& design, const Fit& search)
{
    const std::size_t best = static_cast<std::size_t>(search.bestModel) - 1;
    Design subset = design;
    for (std::size_t f = 0; f < subset.factorActive.size(); ++f)
        subset.factorActive[f] = search.models(best, kFirstIndicator + f) == 1.0 ? 1 : 0;
    for (std::size_t c = 0; c < subset.states.size(); ++c) {
        const bool isOut = subset.factorActive[static_cast<std::size_t>(subset.parents[c]) - 1] == 0;
        if (isOut && subset.states[c] == kInModel) subset.states[c] = kExcluded;
    }
    return subset;
}

/** A fit, and where category means are wanted the covariance of the fitted columns, which takes a run of its own. */
Fit RunFitForMeans(const ModelData& data, const Design& design, std::vector<double> info, bool forMeans)
{
    Fit fit = RunFit(data, design, info);
    if (!forMeans) return fit;
    info[kReportedCovariance - 1] = 0.0;
    fit.rawCovariance = RunFit(data, design, std::move(info)).covariance;
    return fit;
}

/** Searches on the fitted columns, then fits what was found under the constraint. */
Fit FitBestSubset(const ModelData& data, const Design& design, std::vector<double> info, bool forMeans)
{
    const Fit search = RunFit(data, FittedColumns(design), info);
    if (search.bestModel == 0) {
        throw UserError(
            "no subset of --min-vars to --max-vars terms can be chosen (Cp never chooses all terms)");
    }
    const Design subset = SubsetOf(design, search);
    info[kMethod - 1] = static_cast<double>(Selection::kNone);
    Fit fit = RunFitForMeans(data, subset, std::move(info), forMeans);
    fit.models = search.models;
    fit.bestModel = search.bestModel;
    fit.statistics.cells[kCpStatistic] = search.statistics.cells[kCpStatistic];  // against all terms
    for (NumberTable* table : {&fit.typeOne, &fit.typeTwo})
        *table = TermRows(*table, data, subset.factorActive);
    return fit;
}

}  // namespace

Fit FitModel(const ModelData& data, const Design& design, const Options& options)
{
    const auto terms = std::count(design.factorActive.begin(), design.factorActive.end(), 1);
    if (options.selection == Selection::kBest && options.minTerms > terms) {
        throw UserError(
            fmt::format("--min-vars {} is more than the terms of the model, {}", options.minTerms, terms));
    }
    const std::set<SumsType> types = options.types.value_or(std::set<SumsType>{});
    std::vector<double> info = OptionVector(options);
    info[kTypeOne - 1] = types.contains(SumsType::kSequential) ? 1.0 : 0.0;
    info[kTypeTwo - 1] = types.contains(SumsType::kHierarchical) ? 1.0 : 0.0;
    const bool forMeans = !options.means.empty();
    Fit fit = options.selection == Selection::kBest ? FitBestSubset(data, design, std::move(info), forMeans)
                                                    : RunFitForMeans(data, design, std::move(info), forMeans);
    if (types.contains(SumsType::kEstimable)) fit.typeThree = TypeThreeTable(data, fit, options);
    return fit;
}

}  // namespace korvenrg::frontend
