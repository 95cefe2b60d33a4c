#include "logit_tables.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <utility>

#include "logit_term_tables.h"

namespace korvenrg::frontend {
namespace {

using Column = ResultTable::Column;

constexpr std::size_t kCommonColumns = 6;  // of the coefficient tables: value to upper bound
constexpr std::size_t kOddsColumns = 3;
constexpr std::size_t kIterations = 9;  // row of the statistics

// from here on the door ends a search with several categories once a probability is so large
constexpr double kGuardedIterations = 9.0;
constexpr double kGuardedProbability = 0.95;

// a slope of 0 has no dose: the door gives the missing marker, scaled
constexpr double kLargestDose = 1e200;

std::string Bound(const char* side, double alpha)
{
    return fmt::format("{} {:.6g}%", side, 100.0 * (1.0 - alpha));
}

std::vector<Column> CoefficientColumns(const Options& options, bool withOdds)
{
    std::vector<Column> columns{{"Value"},
                                {"Standard error"},
                                {"Wald chi-square"},
                                {"Pr > chi-square", ColumnKind::kProbability},
                                {Bound("Lower", options.alpha)},
                                {Bound("Upper", options.alpha)}};
    if (options.logit.profile) {
        columns.push_back({Bound("Profile lower", options.alpha)});
        columns.push_back({Bound("Profile upper", options.alpha)});
    }
    if (withOdds) {
        columns.push_back({"Odds ratio"});
        columns.push_back({Bound("Odds lower", options.alpha)});
        columns.push_back({Bound("Odds upper", options.alpha)});
    }
    return columns;
}

std::string NoteOf(const Design& design, const LogitFit& fit, std::size_t column, Constraint constraint)
{
    if (fit.states[column] == kInModel) return "";
    if (fit.factorActive[static_cast<std::size_t>(design.parents[column]) - 1] != 1)
        return "not in the model";
    if (design.states[column] != kDroppedByConstraint) return "constant or aliased, left out";
    const bool hasReference = constraint == Constraint::kFirst || constraint == Constraint::kLast;
    return hasReference ? "reference level" : "derived from the constraint";
}

ResultTable FitTable(const LogitFit& fit)
{
    ResultTable table{"fit.csv", "Goodness of fit", "Statistic", {{"Independent"}, {"Fitted"}}, {}};
    const char* const names[] = {"Observations or trials",
                                 "Sum of weights",
                                 "DF",
                                 "-2 log likelihood",
                                 "R squared (McFadden)",
                                 "R squared (Cox and Snell)",
                                 "R squared (Nagelkerke)",
                                 "AIC",
                                 "SBC",
                                 "Iterations"};
    std::size_t row = 0;
    for (const char* name : names)
        table.rows.push_back({name, RowOf(fit.statistics, row++), ""});
    return table;
}

ResultTable TestTable(const ModelData& data, const LogitFit& fit)
{
    ResultTable table{"tests.csv",
                      "Tests of the model and of its fit",
                      "Test",
                      {{"DF"}, {"Chi-square"}, {"Pr > chi-square", ColumnKind::kProbability}},
                      {}};
    std::size_t row = 0;
    for (const char* name : {"Likelihood ratio", "Score", "Wald"}) {
        std::vector<double> cells = RowOf(fit.tests, row++);
        // with a mortality the information at the null model need not be positive, and the score is then no test
        if (cells[1] < 0.0) cells = {cells[0], kMissing, kMissing};
        table.rows.push_back({name, std::move(cells), ""});
    }
    if (IsMultinomial(data)) return table;
    table.rows.push_back(
        {"Fit (Hosmer-Lemeshow)", {fit.hosmer(1, 0), fit.hosmer(0, 0), fit.hosmer(2, 0)}, ""});
    return table;
}

/** The blocks of a coefficient table; a response of several categories names its category before each row. */
std::vector<std::string> BlockNames(const ModelData& data)
{
    if (!IsMultinomial(data)) return {""};
    return {data.responseCategories.begin() + 1, data.responseCategories.end()};
}

ResultTable::Row CoefficientRow(const std::string& block,
                                const std::string& name,
                                std::vector<double> cells,
                                std::string note)
{
    if (block.empty()) return {name, std::move(cells), std::move(note)};
    return {block, std::move(cells), std::move(note), name};
}

ResultTable CoefficientTable(const ModelData& data,
                             const char* file,
                             const char* title,
                             std::vector<Column> columns)
{
    ResultTable table{file, title, "Parameter", std::move(columns), {}, true};
    if (!IsMultinomial(data)) return table;
    table.labelHead = "Category";
    table.textHead = "Parameter";
    table.title += fmt::format(" against {}", data.responseCategories.front());
    return table;
}

ResultTable ParameterTable(const ModelData& data,
                           const Design& design,
                           const LogitFit& fit,
                           const Options& options)
{
    const bool withOdds = options.logit.link == Link::kLogit;
    ResultTable table =
        CoefficientTable(data, "parameters.csv", "Model parameters", CoefficientColumns(options, withOdds));
    const auto row = [&](std::size_t r) {
        std::vector<double> cells = RowOf(fit.parameters, r);
        cells.resize(kCommonColumns + (options.logit.profile ? 2 : 0) + (withOdds ? kOddsColumns : 0));
        return cells;
    };
    std::size_t next = 0;
    for (const std::string& block : BlockNames(data)) {
        table.rows.push_back(CoefficientRow(block, "Intercept", row(next++), ""));
        for (std::size_t c = 0; c < design.labels.size(); ++c)
            table.rows.push_back(CoefficientRow(block,
                                                design.labels[c],
                                                row(next++),
                                                NoteOf(design, fit, c, options.constraint)));
    }
    if (options.logit.mortality == Mortality::kNone) return table;
    std::vector<double> cells(table.columns.size(), kMissing);
    cells[0] = fit.mortality;
    const std::size_t last = fit.covariance.rows - 1;
    const bool estimated = options.logit.mortality == Mortality::kEstimated;
    if (estimated && fit.covariance(last, last) > 0.0) cells[1] = std::sqrt(fit.covariance(last, last));
    table.rows.push_back({"Mortality", std::move(cells), estimated ? "" : "given"});
    return table;
}

ResultTable StandardisedTable(const ModelData& data,
                              const Design& design,
                              const LogitFit& fit,
                              const Options& options)
{
    ResultTable table = CoefficientTable(data,
                                         "standardised.csv",
                                         "Standardised coefficients",
                                         CoefficientColumns(options, false));
    std::size_t next = 0;
    for (const std::string& block : BlockNames(data)) {
        for (std::size_t c = 0; c < design.labels.size(); ++c) {
            std::vector<double> cells = RowOf(fit.standardised, next++);
            cells.resize(table.columns.size());
            table.rows.push_back(CoefficientRow(block,
                                                design.labels[c],
                                                std::move(cells),
                                                NoteOf(design, fit, c, options.constraint)));
        }
    }
    return table;
}

ResultTable ClassificationTable(const ModelData& data, const LogitFit& fit, const Options& options)
{
    std::string title =
        fmt::format("Classification at {:.6g} (area under the ROC curve {:.6g}, tied rows one by one)",
                    options.logit.cut.value_or(kDefaultCut),
                    fit.area);
    if (IsMultinomial(data))
        title = "Classification as the most probable category (last share: mean of those above)";
    ResultTable table{"classification.csv", std::move(title), "Observed", {}, {}};
    std::vector<std::string> names = data.responseCategories;
    if (names.empty()) names = {"0", "1"};
    for (const std::string& name : names)
        table.columns.push_back({"Predicted " + name});
    table.columns.push_back({"Total"});
    table.columns.push_back({"Share correct"});
    names.push_back("Total");
    std::size_t row = 0;
    for (const std::string& name : names)
        table.rows.push_back({name, RowOf(fit.classification, row++), ""});
    return table;
}

ResultTable DoseTable(const LogitFit& fit, const Options& options)
{
    ResultTable table{"doses.csv",
                      "Doses at given probabilities (Fieller's bounds)",
                      "Probability",
                      {{"Dose"}, {Bound("Lower", options.alpha)}, {Bound("Upper", options.alpha)}},
                      {}};
    const bool isHeterogeneous = fit.heterogeneity != 1.0;
    if (isHeterogeneous) {
        table.columns.push_back({Bound("Heterogeneity lower", options.alpha)});
        table.columns.push_back({Bound("Heterogeneity upper", options.alpha)});
    }
    for (std::size_t r = 0; r < fit.doses.rows; ++r) {
        std::vector<double> cells = RowOf(fit.doses, r);
        if (IsMissing(cells.front())) continue;  // of a term that is not in the model
        const std::string label = fmt::format("{:.6g}", cells.front());
        cells.erase(cells.begin());
        if (std::fabs(cells.front()) > kLargestDose) cells.front() = kMissing;
        cells.resize(table.columns.size());
        table.rows.push_back({label, std::move(cells), ""});
    }
    if (table.rows.empty()) table.title += ": the term is not in the model";
    return table;
}

/** The observed category before the probabilities of all, the predicted one behind them. */
ResultTable CategoryCaseTable(const ModelData& data, const LogitFit& fit, const Options& options)
{
    ResultTable table{"cases.csv",
                      "Predictions",
                      "Data row",
                      {},
                      {},
                      true,
                      options.showCases,
                      "Observed",
                      "Predicted"};
    const std::vector<std::string>& names = data.responseCategories;
    for (const std::string& name : names)
        table.columns.push_back({"Probability " + name});
    for (std::size_t i = 0; i < data.rows.size(); ++i) {
        std::vector<double> cells;
        for (std::size_t c = 0; c < names.size(); ++c)
            cells.push_back(fit.predictions(i, kCategoryProbabilities + c));
        const auto predicted = static_cast<std::size_t>(fit.predictions(i, kPredictedCategory)) - 1;
        const auto observed = static_cast<std::size_t>(data.response[i]);
        table.rows.push_back(
            {fmt::format("{}", data.rows[i]), std::move(cells), names[predicted], names[observed]});
    }
    return table;
}

ResultTable CaseTable(const ModelData& data, const LogitFit& fit, const Options& options)
{
    if (IsMultinomial(data)) return CategoryCaseTable(data, fit, options);
    const bool isNumber = data.responseCategories.empty();
    ResultTable table{
        "cases.csv",
        "Predictions",
        "Data row",
        {{isNumber ? options.response : options.response + " = " + data.responseCategories.back()},
         {"Prediction"},
         {"Observed share"},
         {"Predicted share"},
         {"Pearson residual"},
         {Bound("Lower", options.alpha)},
         {Bound("Upper", options.alpha)}},
        {}};
    table.printed = options.showCases;
    for (std::size_t i = 0; i < data.rows.size(); ++i) {
        std::vector<double> cells{data.response[i]};
        for (const std::size_t c : {kExpectedValue,
                                    kObservedShare,
                                    kExpectedShare,
                                    kPearsonResidual,
                                    kExpectedLower,
                                    kExpectedUpper})
            cells.push_back(fit.predictions(i, c));
        table.rows.push_back({fmt::format("{}", data.rows[i]), std::move(cells), ""});
    }
    return table;
}

}  // namespace

std::string LogitWarning(const ModelData& data, const LogitFit& fit)
{
    if (fit.separated)
        return "\nA category has no row of one of the responses: the fit is Firth's penalised likelihood.\n";
    const double iterations = fit.statistics(kIterations, 1);
    if (!IsMultinomial(data) || iterations < kGuardedIterations) return "";
    const auto probabilities = fit.predictions.cells.begin() +
                               static_cast<std::ptrdiff_t>(kCategoryProbabilities * data.rows.size());
    const auto end =
        probabilities + static_cast<std::ptrdiff_t>(data.responseCategories.size() * data.rows.size());
    if (*std::max_element(probabilities, end) <= kGuardedProbability) return "";
    return fmt::format(
        "\nThe search ended after {} iterations with a probability above {}: the categories may be "
        "separated, and the coefficients are no maximum then.\n",
        iterations,
        kGuardedProbability);
}

ResultTable RocTable(const LogitFit& fit)
{
    ResultTable table{"roc.csv", "ROC curve", "Point", {{"False-positive rate"}, {"Sensitivity"}}, {}};
    table.printed = false;
    for (std::size_t r = 0; r < fit.roc.rows; ++r)
        table.rows.push_back({fmt::format("{}", r + 1), RowOf(fit.roc, r), ""});
    return table;
}

std::vector<ResultTable> LogitTables(const ModelData& data,
                                     const Design& design,
                                     const LogitFit& fit,
                                     const Options& options)
{
    std::vector<ResultTable> tables;
    if (options.logit.selection != LogitSelection::kNone)
        tables.push_back(LogitSelectionTable(data, design, fit, options));
    tables.push_back(FitTable(fit));
    tables.push_back(TestTable(data, fit));
    if (WantsTypeThree(data)) tables.push_back(LogitTypeThreeTable(data, fit));
    tables.push_back(ParameterTable(data, design, fit, options));
    tables.push_back(StandardisedTable(data, design, fit, options));
    tables.push_back(ClassificationTable(data, fit, options));
    if (options.logit.doses) tables.push_back(DoseTable(fit, options));
    tables.push_back(CaseTable(data, fit, options));
    return tables;
}

}  // namespace korvenrg::frontend
