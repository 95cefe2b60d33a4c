/** The columns, rows and factors of one model, taken from a CSV table. */
#ifndef KORVENRG_FRONTEND_MODEL_DATA_H
#define KORVENRG_FRONTEND_MODEL_DATA_H

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

#include "csv_table.h"
#include "options.h"

namespace korvenrg::frontend {

struct QuantitativeVariable
{
    std::string name;
    std::vector<double> values;
};

struct QualitativeVariable
{
    std::string name;
    std::vector<std::string> cells;
    std::vector<std::string> categories;  ///< numbers by value, text by code point
    std::vector<double> frequencies;      ///< summed weights
    bool numeric = false;                 ///< the cells are numbers, spelt one way
};

/** Rows that take no part in the fit, with the variables of the model. */
struct NewRows
{
    std::vector<std::size_t> rows;  ///< data row, from 1
    std::size_t droppedRows = 0;    ///< rows with a missing cell
    std::size_t unknownRows = 0;    ///< rows with a category that no row of the fit has
    std::vector<double> response;   ///< validation rows only, like the weights
    std::vector<double> weights;
    std::vector<std::vector<double>> quantitative;
    std::vector<std::vector<std::string>> qualitative;
};

/** The doors' factor types. */
enum class FactorType : int
{
    kQuantitative = 1,
    kQualitative = 2,
    kQuantitativeInteraction = 3,
    kQualitativeInteraction = 4,
    kMixedInteraction = 5
};

struct Factor
{
    FactorType type;
    bool active;                 ///< false: a variable that only interactions use
    std::vector<int> variables;  ///< numbers from 1: quantitative variables first, then qualitative ones
    std::string name;
};

struct ModelData
{
    std::vector<std::size_t> rows;                ///< data row, from 1, of each observation
    std::size_t droppedRows = 0;                  ///< rows with a missing cell in a column of the model
    std::vector<double> response;                 ///< numbers, or places among the categories from 0
    std::vector<std::string> responseCategories;  ///< reference first; empty when the response is a number
    std::vector<double> weights;
    std::vector<QuantitativeVariable> quantitative;
    std::vector<QualitativeVariable> qualitative;
    std::vector<Factor>
        factors;  ///< one main effect per variable, in the order of the variables, then interactions
    std::size_t interlevel = 1;  ///< most variables in one factor
    std::optional<NewRows> validation;
    std::optional<NewRows> prediction;
};

/** Whether the response has more than two categories. */
inline bool IsMultinomial(const ModelData& data)
{
    return data.responseCategories.size() > 2;
}

/** The rows of the fit and of the validation; those to predict come from another table. Throws UserError for everything
 * in the request or the data that makes no model. */
ModelData MakeModelData(const CsvTable& table, const Options& options);

}  // namespace korvenrg::frontend

#endif
