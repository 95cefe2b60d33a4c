#include "result_tables.h"

#include <fmt/format.h>

#include <utility>

#include "means_tables.h"
#include "term_tables.h"

namespace korvenrg::frontend {

std::vector<double> RowOf(const NumberTable& table, std::size_t row)
{
    std::vector<double> cells;
    for (std::size_t c = 0; c < table.columns; ++c)
        cells.push_back(table(row, c));
    return cells;
}

namespace {

std::string ConfidenceText(double alpha)
{
    return fmt::format("{:.6g}%", 100.0 * (1.0 - alpha));
}

/** Why a column has no coefficient of its own. Only constraints of sum type give its parameter a value all
 * the same. */
std::string NoteOf(const Design& design, const Fit& fit, std::size_t column, Constraint constraint)
{
    const bool isTermOut = fit.factorActive[static_cast<std::size_t>(design.parents[column]) - 1] != 1;
    if (isTermOut && fit.states[column] == kDroppedByConstraint) return "not in the model";
    switch (fit.states[column]) {
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

/** The second column is that of the validation rows. */
ResultTable FitTable(const ModelData& data, const Fit& fit)
{
    ResultTable table{"fit.csv", "Goodness of fit", "Statistic", {{"Value"}}, {}};
    if (data.validation) {
        table.columns.push_back({"Validation"});
        table.hasNotes = true;
    }
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
    constexpr std::size_t kRSquared = 3;
    std::size_t row = 0;
    for (const char* name : names) {
        table.rows.push_back({name, {fit.statistics(row, 0)}, ""});
        if (data.validation) {
            table.rows.back().cells.push_back(fit.statistics(row, 1));
            if (row == kRSquared) table.rows.back().note = "validation: of the ranks";
        }
        ++row;
    }
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
            {design.labels[c], RowOf(fit.parameters, c + 1), NoteOf(design, fit, c, options.constraint)});
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
            {design.labels[c], RowOf(fit.standardised, c), NoteOf(design, fit, c, options.constraint)});
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
    ResultTable table{"cases.csv",
                      "Predictions and residuals",
                      "Data row",
                      {{"Weight"},
                       {options.response},
                       {"Prediction"},
                       {"Residual"},
                       {"Standardised residual"},
                       {"Studentised residual"}},
                      {}};
    const std::vector<ResultTable::Column> intervals = IntervalColumns(options.alpha);
    table.columns.insert(table.columns.end(), intervals.begin(), intervals.end());
    table.columns.push_back({"Leave-one-out prediction"});
    table.columns.push_back({"Cook's distance"});
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

std::vector<ResultTable::Column> IntervalColumns(double alpha)
{
    const std::string confidence = ConfidenceText(alpha);
    return {{"Standard error of mean"},
            {fmt::format("Lower {} (mean)", confidence)},
            {fmt::format("Upper {} (mean)", confidence)},
            {"Standard error of observation"},
            {fmt::format("Lower {} (observation)", confidence)},
            {fmt::format("Upper {} (observation)", confidence)}};
}

std::vector<ResultTable> MakeResultTables(const ModelData& data,
                                          const Design& design,
                                          const Fit& fit,
                                          const Options& options)
{
    std::vector<ResultTable> tables;
    if (options.selection != Selection::kNone) tables.push_back(SelectionTable(data, fit, options));
    tables.push_back(FitTable(data, fit));
    tables.push_back(AnovaTable(fit, options));
    for (ResultTable& table : TypeTables(data, fit, options))
        tables.push_back(std::move(table));
    tables.push_back(ParameterTable(design, fit, options));
    tables.push_back(StandardisedTable(design, fit, options));
    tables.push_back(CovarianceTable(design, fit));
    for (ResultTable& table : MeansTables(data, design, fit, options))
        tables.push_back(std::move(table));
    tables.push_back(CaseTable(data, fit, options));
    return tables;
}

}  // namespace korvenrg::frontend
