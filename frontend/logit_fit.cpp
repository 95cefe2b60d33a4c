#include "logit_fit.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <optional>
#include <utility>

#include "korvenrg.h"
#include "user_error.h"

namespace korvenrg::frontend {
namespace {

constexpr int kBinary = 0;
constexpr int kGrouped = 1;
constexpr int kCategories = 2;
constexpr int kEmptyLevel = -10;
constexpr double kConvergence = 1e-12;
constexpr int kMostIterations = 200;
constexpr double kMostSubsets = 1e5;      // each takes a fit
constexpr double kMortalityStart = 0.05;  // where an estimated mortality starts from

/** Positions of the door's option vector, from 0. */
enum Option : std::size_t
{
    kHasMortality = 3,
    kGivenMortality = 4,
    kProfile = 6,
    kFirth = 7,
    kTypeThree = 8,
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
    info[kTypeThree] = 1;
    info[kDoses] = options.doses ? 1 : 0;
    info[kUseTolerance] = 1;
    return info;
}

void CheckResponse(const ModelData& data, const Options& options)
{
    if (!data.responseCategories.empty()) return;
    for (std::size_t i = 0; i < data.response.size(); ++i) {
        const double y = data.response[i];
        const double n = data.weights[i];
        if (options.weights.empty()) {
            if (y == 0.0 || y == 1.0) continue;
            throw UserError(
                fmt::format("the response '{}' must be 0 or 1, successes of --trials, or categories "
                            "(--multinomial): data row {} holds {}",
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

/** What needs a response of two categories. */
void CheckMultinomial(const ModelData& data, const Design& design, const LogitOptions& options)
{
    const std::pair<bool, const char*> refusals[] = {{options.profile, "--profile"},
                                                     {options.firth, "--firth"},
                                                     {!options.rocPath.empty(), "--roc"},
                                                     {!options.plotPath.empty(), "--plot"},
                                                     {options.doses, "--dose"},
                                                     {options.cut.has_value(), "--classify"},
                                                     {options.link != Link::kLogit, "--link"},
                                                     {options.mortality != Mortality::kNone, "--mortality"}};
    for (const auto& [given, name] : refusals) {
        if (!given) continue;
        throw UserError(fmt::format("{} takes a response of two categories: this one has {}",
                                    name,
                                    data.responseCategories.size()));
    }
    const double blocks = static_cast<double>(data.responseCategories.size()) - 1.0;
    const double block = static_cast<double>(design.columns) + 2.0;
    const double largest =
        std::max(9.0 * blocks * static_cast<double>(design.rows), blocks * block * blocks * block);
    if (largest > std::numeric_limits<int>::max())
        throw UserError(
            fmt::format("the response has too many categories: {}", data.responseCategories.size()));
}

void CheckSubsetCount(int terms, int smallest, int largest)
{
    double subsets = 0.0, ofSize = 1.0;
    for (int size = 0; size <= largest; ++size) {
        if (size > 0) ofSize = ofSize * (terms - size + 1) / size;
        if (size >= smallest) subsets += ofSize;
    }
    if (subsets <= kMostSubsets) return;
    throw UserError(
        fmt::format("--selection best would fit {:.6g} models, more than {:.6g}: narrow --min-vars and "
                    "--max-vars, or take steps",
                    subsets,
                    kMostSubsets));
}

/** What the door is told about a selection, and its history. */
struct SelectionRun
{
    SelectionRun(const LogitOptions& options,
                 int minTerms,
                 std::optional<int> maxTerms,
                 int terms,
                 std::size_t p);

    int code;
    int criterion = 0;
    int smallest = 1;
    int largest = 1;
    NumberTable models{1, 1};
};

SelectionRun::SelectionRun(const LogitOptions& options,
                           int minTerms,
                           std::optional<int> maxTerms,
                           int terms,
                           std::size_t p)
    : code(static_cast<int>(options.selection))
{
    if (options.selection != LogitSelection::kBest) {
        criterion = options.criterion == LogitCriterion::kWald ? 1 : 0;
        const bool isNone = options.selection == LogitSelection::kNone;
        models = NumberTable(isNone ? 1 : 2 * static_cast<std::size_t>(terms),
                             p + kHistoryStatistics + kStepStatistics);
        return;
    }
    if (minTerms > terms)
        throw UserError(
            fmt::format("--min-vars {} is more than the terms of the model, {}", minTerms, terms));
    criterion = static_cast<int>(options.criterion.value_or(LogitCriterion::kAic));
    smallest = minTerms;
    largest = std::min(maxTerms.value_or(terms), terms);
    CheckSubsetCount(terms, smallest, largest);
    models = NumberTable(static_cast<std::size_t>(largest - smallest) + 1,
                         p + kHistoryStatistics + kSubsetStatistics);
}

/** The door's rows, those of the factors in the model from the top, as a row for each factor. */
NumberTable FactorRows(const NumberTable& table, const std::vector<int>& active)
{
    NumberTable rows(active.size(), table.columns);
    std::size_t doorRow = 0;
    for (std::size_t f = 0; f < active.size(); ++f) {
        if (active[f] != 1) continue;
        for (std::size_t c = 0; c < table.columns; ++c)
            rows.cells[c * rows.rows + f] = table(doorRow, c);
        ++doorRow;
    }
    return rows;
}

[[noreturn]] void ThrowFailure(int outcome, const Options& options)
{
    if (outcome == kEmptyLevel)
        throw UserError("a category of a term has no row in one of the categories of the response");
    if (options.logit.selection == LogitSelection::kBest)
        throw UserError(
            fmt::format("no subset of --min-vars to --max-vars terms can be fitted (code {})", outcome));
    throw UserError(fmt::format("the fit failed: no maximum of the likelihood (code {})", outcome));
}

int VariableType(const ModelData& data, const Options& options)
{
    if (IsMultinomial(data)) return kCategories;
    return options.weights.empty() ? kBinary : kGrouped;
}

}  // namespace

LogitFit::LogitFit(std::size_t n, std::size_t p, std::size_t factors, std::size_t categories)
    : factorActive(factors, 1),
      statistics(10, 2),
      tests(3, 3),
      parameters((p + 1) * (categories - 1), 11),
      standardised(p * (categories - 1), 8),
      covariance(p + 2, p + 2, 0.0),
      predictions(n, 9 * (categories - 1)),
      classification(categories + 1, categories + 2),
      roc(n + 1, 2),
      doses(13, 6),
      hosmer(3, 1),
      typeThree(factors, kLogitTypeThreeColumns),
      models(1, 1)
{
}

LogitFit FitLogit(const ModelData& data, const Design& design, const Options& options)
{
    CheckResponse(data, options);
    if (IsMultinomial(data)) CheckMultinomial(data, design, options.logit);
    const auto n = static_cast<std::size_t>(design.rows);
    const auto p = static_cast<std::size_t>(design.columns);
    const std::size_t categories = std::max<std::size_t>(2, data.responseCategories.size());
    const std::size_t blocks = categories - 1;
    LogitFit fit(n, p, static_cast<std::size_t>(design.factors), categories);
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
    std::vector<double> mortality(blocks, 0.0);
    if (options.logit.mortality == Mortality::kEstimated) mortality[0] = kMortalityStart;
    if (options.logit.mortality == Mortality::kGiven) mortality[0] = options.logit.mortalityValue;

    SelectionRun selection(options.logit, options.minTerms, options.maxTerms, active, p);
    NumberTable none(1, std::max(p, 9 * blocks)), noClasses(categories + 1, categories + 2),
        types(static_cast<std::size_t>(active) + 1, kLogitTypeThreeColumns), marginal(blocks, 1),
        curve(99, 5);
    VARIANT_BOOL separated = VARIANT_FALSE;
    // clang-format off
    const int outcome = Cpp_RunMLOG(
        design.rows, design.columns, static_cast<int>(qualitative), static_cast<int>(categories), response.data(), input.table.data(),
        trials.data(), seconds.data(), options.alpha, 0, none.data(), none.data(), none.data(), none.data(),
        noClasses.data(), 0, none.data(), none.data(), design.factors, &active, input.factorType.data(),
        fit.factorActive.data(), input.factorNbVars.data(), input.parents.data(), input.frequencies.data(),
        input.reportedFrom.data(), info.data(), VariableType(data, options),
        static_cast<int>(options.logit.link), kConvergence, kMostIterations, options.tolerance,
        static_cast<int>(options.constraint), 0, selection.code, selection.criterion, options.enter, options.remove,
        selection.smallest, selection.largest, options.logit.cut.value_or(kDefaultCut), mortality.data(), selection.models.data(),
        fit.states.data(), fit.parameters.data(), fit.standardised.data(), fit.covariance.data(),
        fit.statistics.data(), fit.tests.data(), types.data(), fit.predictions.data(), &fit.heterogeneity,
        marginal.data(), fit.classification.data(), fit.roc.data(), &fit.area, fit.doses.data(), curve.data(),
        &separated);
    // clang-format on
    if (outcome != 0) ThrowFailure(outcome, options);
    fit.separated = separated == VARIANT_TRUE;
    fit.mortality = mortality[0];
    fit.typeThree = FactorRows(types, fit.factorActive);
    fit.models = std::move(selection.models);
    if (!IsMultinomial(data)) fit.hosmer = HosmerLemeshow(fit, data);
    return fit;
}

}  // namespace korvenrg::frontend
