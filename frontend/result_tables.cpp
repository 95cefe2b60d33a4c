#include "result_tables.h"

#include <fmt/format.h>

namespace korvenrg::frontend {
namespace {

std::vector<double> RowOf(const NumberTable& table, std::size_t row)
{
    std::vector<double> cells;
    for (std::size_t c = 0; c < table.columns; ++c)
        cells.push_back(table(row, c));
    return cells;
}

std::string ConfidenceText(double alpha)
{
    return fmt::format("{:.6g}%", 100.0 * (1.0 - alpha));
}

/** Why a column has no coefficient of its own. Only constraints of sum type give its parameter a value all
 * the same. */
std::string NoteOf(int state, Constraint constraint)
{
    switch (state) {
        case kInModel:
            return "";
        case kDroppedByConstraint:
            return constraint == Constraint::kFirst || constraint == Constraint::kLast
                       ? "reference level"
                       : "derived from the constraint";
        case kConstant:
            return "constant, left out";
        case kRefusedByTolerance:
            return "aliased with columns above, left out";
        default:
            return "not in the model";
    }
}

ResultTable FitTable(const Fit& fit)
{
    ResultTable table{"fit.csv", "Goodness of fit", "Statistic", {{"Value"}}, {}};
    const char* const names[] = {"Observations",
                                 "Sum of weights",
                                 "Error DF",
                                 "R squared",
                                 "Adjusted R squared",
                                 "Mean square error",
                                 "Root mean square error",
                                 "MAPE",
                                 "Durbin-Watson",
                                 "Mallows' Cp",
                                 "AIC",
                                 "SBC",
                                 "PC",
                                 "PRESS",
                                 "Q squared"};
    std::size_t row = 0;
    for (const char* name : names)
        table.rows.push_back({name, {fit.statistics(row++, 0)}, ""});
    return table;
}

ResultTable AnovaTable(const Fit& fit, const Options& options)
{
    ResultTable table{
        "anova.csv",
        "Analysis of variance",
        "Source",
        {{"DF"}, {"Sum of squares"}, {"Mean square"}, {"F"}, {"Pr > F", ColumnKind::kProbability}},
        {}};
    table.rows.push_back({"Model", RowOf(fit.anova, 0), ""});
    table.rows.push_back({"Error", RowOf(fit.anova, 1), ""});
    const char* const total = options.intercept ? "Total about the given intercept" : "Corrected total";
    table.rows.push_back({total, RowOf(fit.anova, 2), ""});
    return table;
}

std::vector<ResultTable::Column> ParameterColumns(double alpha)
{
    const std::string confidence = ConfidenceText(alpha);
    return {{"Value"},
            {"Standard error"},
            {"t"},
            {"Pr > |t|", ColumnKind::kProbability},
            {fmt::format("Lower {}", confidence)},
            {fmt::format("Upper {}", confidence)}};
}

ResultTable ParameterTable(const Design& design, const Fit& fit, const Options& options)
{
    ResultTable table{"parameters.csv",
                      "Model parameters",
                      "Parameter",
                      ParameterColumns(options.alpha),
                      {},
                      true};
    table.rows.push_back({"Intercept", RowOf(fit.parameters, 0), options.intercept ? "given" : ""});
    for (std::size_t c = 0; c < design.labels.size(); ++c) {
        table.rows.push_back(
            {design.labels[c], RowOf(fit.parameters, c + 1), NoteOf(fit.states[c], options.constraint)});
    }
    return table;
}

ResultTable StandardisedTable(const Design& design, const Fit& fit, const Options& options)
{
    ResultTable table{"standardised.csv",
                      "Standardised coefficients",
                      "Parameter",
                      ParameterColumns(options.alpha),
                      {},
                      true};
    for (std::size_t c = 0; c < design.labels.size(); ++c) {
        table.rows.push_back(
            {design.labels[c], RowOf(fit.standardised, c), NoteOf(fit.states[c], options.constraint)});
    }
    return table;
}

/** Intercept first, like the parameters; the door has it last. */
ResultTable CovarianceTable(const Design& design, const Fit& fit)
{
    ResultTable table{"covariance.csv", "Covariance of the parameters", "Parameter", {{"Intercept"}}, {}};
    table.printed = false;
    const std::size_t p = design.labels.size();
    const auto doorIndex = [p](std::size_t shown) { return shown == 0 ? p : shown - 1; };
    for (const std::string& label : design.labels)
        table.columns.push_back({label});
    for (std::size_t i = 0; i <= p; ++i) {
        ResultTable::Row row{i == 0 ? "Intercept" : design.labels[i - 1], {}, ""};
        for (std::size_t j = 0; j <= p; ++j)
            row.cells.push_back(fit.covariance(doorIndex(i), doorIndex(j)));
        table.rows.push_back(std::move(row));
    }
    return table;
}

ResultTable CaseTable(const ModelData& data, const Fit& fit, const Options& options)
{
    const std::string confidence = ConfidenceText(options.alpha);
    ResultTable table{"cases.csv",
                      "Predictions and residuals",
                      "Data row",
                      {{"Weight"},
                       {options.response},
                       {"Prediction"},
                       {"Residual"},
                       {"Standardised residual"},
                       {"Studentised residual"},
                       {"Standard error of mean"},
                       {fmt::format("Lower {} (mean)", confidence)},
                       {fmt::format("Upper {} (mean)", confidence)},
                       {"Standard error of observation"},
                       {fmt::format("Lower {} (observation)", confidence)},
                       {fmt::format("Upper {} (observation)", confidence)},
                       {"Leave-one-out prediction"},
                       {"Cook's distance"}},
                      {}};
    table.printed = options.showCases;
    for (std::size_t r = 0; r < data.rows.size(); ++r) {
        std::vector<double> cells{data.weights[r], data.response[r], fit.predictions(r, 0)};
        for (const NumberTable* block :
             {&fit.residuals, &fit.intervals, &fit.leaveOneOut, &fit.cooksDistance}) {
            const std::vector<double> part = RowOf(*block, r);
            cells.insert(cells.end(), part.begin(), part.end());
        }
        table.rows.push_back({fmt::format("{}", data.rows[r]), std::move(cells), ""});
    }
    return table;
}

}  // namespace

std::vector<ResultTable> MakeResultTables(const ModelData& data,
                                          const Design& design,
                                          const Fit& fit,
                                          const Options& options)
{
    return {FitTable(fit),
            AnovaTable(fit, options),
            ParameterTable(design, fit, options),
            StandardisedTable(design, fit, options),
            CovarianceTable(design, fit),
            CaseTable(data, fit, options)};
}

}  // namespace korvenrg::frontend
