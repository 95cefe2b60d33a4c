#include "prediction.h"

#include <fmt/format.h>

#include "korvenrg.h"

namespace korvenrg::frontend {
namespace {

struct Predictions
{
    explicit Predictions(std::size_t n) : values(n, 1), intervals(n, 6), residuals(n, 3), cooksDistance(n, 1)
    {
    }

    NumberTable values;         ///< n x 1
    NumberTable intervals;      ///< n x 6: mean's standard error, lower, upper; observation's
    NumberTable residuals;      ///< n x 3: raw, standardised, studentised; of validation rows, like the next
    NumberTable cooksDistance;  ///< n x 1
};

/** @param coded  rows x p, the rows coded like the design table */
Predictions Apply(const NewRows& rows,
                  std::vector<double> coded,
                  const ModelData& data,
                  const Design& design,
                  Fit& fit,
                  const Options& options,
                  bool isValidation)
{
    const std::size_t n = rows.rows.size();
    Predictions result(n);
    std::vector<double> response = isValidation ? rows.response : std::vector<double>(n, 0.0);
    std::vector<double> caseWeights(n, 1.0);
    std::vector<double> weights = isValidation ? ScaledWeights(data, rows.weights) : caseWeights;
    NumberTable adjusted(n, 1);
    OLSPredict(design.rows,
               static_cast<int>(n),
               design.columns,
               fit.columnsInModel,
               coded.data(),
               fit.rawCoefficients.data(),
               options.alpha,
               options.intercept ? VARIANT_TRUE : VARIANT_FALSE,
               fit.states.data(),
               result.intervals.data(),
               fit.swept.data(),
               fit.means.data(),
               fit.deviations.data(),
               caseWeights.data(),
               weights.data(),
               result.values.data(),
               isValidation ? VARIANT_TRUE : VARIANT_FALSE,
               fit.statistics.data(),
               response.data(),
               result.residuals.data(),
               result.cooksDistance.data(),
               adjusted.data());
    return result;
}

void Append(std::vector<double>& cells, const NumberTable& table, std::size_t row)
{
    const std::vector<double> part = RowOf(table, row);
    cells.insert(cells.end(), part.begin(), part.end());
}

}  // namespace

ResultTable ValidationTable(const ModelData& data, const Design& design, Fit& fit, const Options& options)
{
    const NewRows& rows = *data.validation;
    const Predictions made = Apply(rows, design.validation, data, design, fit, options, true);
    ResultTable table{"validation.csv",
                      "Validation rows",
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
    table.columns.push_back({"Cook's distance"});
    for (std::size_t r = 0; r < rows.rows.size(); ++r) {
        std::vector<double> cells{rows.weights[r], rows.response[r], made.values(r, 0)};
        Append(cells, made.residuals, r);
        Append(cells, made.intervals, r);
        Append(cells, made.cooksDistance, r);
        table.rows.push_back({fmt::format("{}", rows.rows[r]), std::move(cells), ""});
    }
    return table;
}

ResultTable PredictionTable(const ModelData& data, const Design& design, Fit& fit, const Options& options)
{
    const NewRows& rows = *data.prediction;
    const Predictions made = Apply(rows, design.prediction, data, design, fit, options, false);
    ResultTable table{"predictions.csv", "Predictions", "Data row", {{"Prediction"}}, {}};
    const std::vector<ResultTable::Column> intervals = IntervalColumns(options.alpha);
    table.columns.insert(table.columns.end(), intervals.begin(), intervals.end());
    for (std::size_t r = 0; r < rows.rows.size(); ++r) {
        std::vector<double> cells{made.values(r, 0)};
        Append(cells, made.intervals, r);
        table.rows.push_back({fmt::format("{}", rows.rows[r]), std::move(cells), ""});
    }
    return table;
}

}  // namespace korvenrg::frontend
