#include "design.h"

#include <fmt/format.h>

#include <algorithm>
#include <limits>
#include <optional>

#include "korvenrg.h"
#include "platform_text.h"
#include "user_error.h"

namespace korvenrg::frontend {
namespace {

/** The categories of all qualitative variables in the shapes of the door. */
struct Categories
{
    explicit Categories(const ModelData& data);

    std::vector<int> counts;  ///< pQ
    int largest = 1;
    int total = 0;
    TextArray names;                  ///< pQ x largest
    std::vector<double> frequencies;  ///< pQ x largest
};

int LargestCount(const ModelData& data)
{
    std::size_t largest = 1;
    for (const QualitativeVariable& variable : data.qualitative) {
        largest = std::max(largest, variable.categories.size());
    }
    return static_cast<int>(largest);
}

Categories::Categories(const ModelData& data)
    : largest(LargestCount(data)), names(data.qualitative.size() * static_cast<std::size_t>(largest))
{
    const std::size_t variables = data.qualitative.size();
    frequencies.assign(std::max<std::size_t>(1, variables * static_cast<std::size_t>(largest)), 0.0);
    for (std::size_t v = 0; v < variables; ++v) {
        const QualitativeVariable& variable = data.qualitative[v];
        counts.push_back(static_cast<int>(variable.categories.size()));
        total += counts.back();
        for (std::size_t c = 0; c < variable.categories.size(); ++c) {
            names.Set(c * variables + v, variable.categories[c]);
            frequencies[c * variables + v] = variable.frequencies[c];
        }
    }
    if (counts.empty()) counts.push_back(0);
}

std::size_t RowCount(const std::optional<NewRows>& rows)
{
    return rows ? rows->rows.size() : 0;
}

/** Columns of a factor in floating point, where no product of category counts overflows. */
double CountCells(const ModelData& data, const Factor& factor)
{
    double product = 1.0;
    for (int variable : factor.variables) {
        const std::size_t index = static_cast<std::size_t>(variable) - 1;
        if (index < data.quantitative.size()) continue;
        product *= static_cast<double>(data.qualitative[index - data.quantitative.size()].categories.size());
    }
    return product;
}

double CountColumns(const ModelData& data)
{
    double columns = 0.0;
    for (const Factor& factor : data.factors) {
        if (factor.active) columns += CountCells(data, factor);
    }
    return columns;
}

/** No array of a run may have more elements than an int counts. */
void CheckSizes(const ModelData& data)
{
    const double n = static_cast<double>(
        std::max({data.rows.size(), RowCount(data.validation), RowCount(data.prediction)}));
    const double p = CountColumns(data);
    const double factors = static_cast<double>(data.factors.size());
    const double variables = static_cast<double>(data.quantitative.size() + data.qualitative.size());
    const double largest = std::max({n * std::max({p + 1.0, variables, 6.0}),
                                     (p + 1.0) * (p + 2.0),
                                     2.0 * p * (factors + 12.0),
                                     factors * factors,
                                     factors * static_cast<double>(data.interlevel),
                                     variables * LargestCount(data)});
    if (largest > std::numeric_limits<int>::max()) {
        throw UserError(fmt::format("the model is too large: {} rows and {} columns", n, p));
    }
}

void DescribeFactors(const ModelData& data, Design& design)
{
    const std::size_t factors = data.factors.size();
    design.factors = static_cast<int>(factors);
    design.interlevel = static_cast<int>(data.interlevel);
    design.factorVariables.assign(factors * data.interlevel, 0);
    design.factorNbColumns.assign(factors, 0);
    for (std::size_t f = 0; f < factors; ++f) {
        const Factor& factor = data.factors[f];
        design.factorType.push_back(static_cast<int>(factor.type));
        design.factorActive.push_back(factor.active ? 1 : 0);
        design.factorNbVars.push_back(static_cast<int>(factor.variables.size()));
        design.factorNbCells.push_back(static_cast<int>(CountCells(data, factor)));
        for (std::size_t j = 0; j < factor.variables.size(); ++j) {
            design.factorVariables[j * factors + f] = factor.variables[j];
        }
    }
}

/** RunOLS1 switches off the factor whose number is that of a constant quantitative column. That is the
 * column's own factor for main effects, which stand first; for a product it may be another one, which would
 * then be lost. */
void RefuseConstantProducts(const ModelData& data, const Design& design, const std::vector<int>& cleaned)
{
    for (std::size_t c = 0; c < cleaned.size(); ++c) {
        const Factor& factor = data.factors[static_cast<std::size_t>(design.parents[c]) - 1];
        const bool ownNumber = design.parents[c] == static_cast<int>(c) + 1;
        if (cleaned[c] >= kConstant && factor.type == FactorType::kQuantitativeInteraction && !ownNumber) {
            throw UserError(fmt::format("the interaction '{}' has the same value in every row", factor.name));
        }
    }
}

/** Under a constraint on sums the columns of an interaction must be products of the effects' coded columns,
 * or the derived effects would not add up to the fitted cells. The older form of the builder makes them. */
bool MultipliesEffects(const ModelData& data, Constraint constraint)
{
    if (constraint == Constraint::kFirst || constraint == Constraint::kLast) return false;
    return std::any_of(data.factors.begin(), data.factors.end(), [](const Factor& factor) {
        return factor.type == FactorType::kQualitativeInteraction ||
               factor.type == FactorType::kMixedInteraction;
    });
}

void CountColumnsByFactor(Design& design)
{
    for (const int parent : design.parents) {
        design.factorNbColumns[static_cast<std::size_t>(parent) - 1] += 1;
    }
}

/** Variables of rows outside the fit, in the shapes of the doors. */
struct NewRowArrays
{
    NewRowArrays(const std::optional<NewRows>& rows, const ModelData& data);

    VARIANT_BOOL wanted;
    int count;
    std::vector<double> quantitative;  ///< count x pX
    TextArray qualitative;             ///< count x pQ
};

NewRowArrays::NewRowArrays(const std::optional<NewRows>& rows, const ModelData& data)
    : wanted(rows ? VARIANT_TRUE : VARIANT_FALSE),
      count(static_cast<int>(RowCount(rows))),
      qualitative(RowCount(rows) * data.qualitative.size())
{
    if (rows) {
        for (const std::vector<double>& column : rows->quantitative)
            quantitative.insert(quantitative.end(), column.begin(), column.end());
        std::size_t cell = 0;
        for (const std::vector<std::string>& column : rows->qualitative) {
            for (const std::string& category : column)
                qualitative.Set(cell++, category);
        }
    }
    quantitative.resize(std::max<std::size_t>(1, quantitative.size()));
}

/** What the builders read and write besides the design, in the shapes of the doors. */
struct BuilderArrays
{
    explicit BuilderArrays(const ModelData& data);

    /** Makes room for the columns of the design. */
    void Reserve(const Design& design);

    int pX;
    int pQ;
    std::vector<double> quantitative;  ///< n x pX
    TextArray qualitative;             ///< n x pQ
    Categories categories;
    TextArray quantitativeNames;            ///< pX + the number of categories
    TextArray qualitativeNames;             ///< pQ
    std::vector<double> weights;            ///< n
    std::optional<TextArray> labels;        ///< p
    std::optional<TextArray> simpleLabels;  ///< p
    std::vector<int> columnsByFactor;       ///< factors x p
    std::vector<int> cleaned;               ///< p
    std::vector<int> nestedPair;            ///< 2
    std::vector<int> nesting;               ///< factors x factors
    NewRowArrays validation;
    NewRowArrays prediction;
    int columnsMade = 0;
    int columnsLeft = 0;
};

BuilderArrays::BuilderArrays(const ModelData& data)
    : pX(static_cast<int>(data.quantitative.size())),
      pQ(static_cast<int>(data.qualitative.size())),
      qualitative(data.rows.size() * data.qualitative.size()),
      categories(data),
      quantitativeNames(data.quantitative.size() + static_cast<std::size_t>(categories.total)),
      qualitativeNames(data.qualitative.size()),
      weights(data.weights),
      validation(data.validation, data),
      prediction(data.prediction, data)
{
    const std::size_t n = data.rows.size();
    for (std::size_t v = 0; v < data.quantitative.size(); ++v) {
        const QuantitativeVariable& variable = data.quantitative[v];
        quantitative.insert(quantitative.end(), variable.values.begin(), variable.values.end());
        quantitativeNames.Set(v, variable.name);
    }
    quantitative.resize(std::max<std::size_t>(1, quantitative.size()));
    for (std::size_t v = 0; v < data.qualitative.size(); ++v) {
        qualitativeNames.Set(v, data.qualitative[v].name);
        for (std::size_t r = 0; r < n; ++r)
            qualitative.Set(v * n + r, data.qualitative[v].cells[r]);
    }
}

void BuilderArrays::Reserve(const Design& design)
{
    const auto p = static_cast<std::size_t>(design.columns);
    const auto factors = static_cast<std::size_t>(design.factors);
    labels.emplace(p);
    simpleLabels.emplace(p);
    columnsByFactor.assign(factors * p, 0);
    cleaned.assign(p, 0);
    nestedPair.assign(2, 0);
    nesting.assign(factors * factors, 0);
    columnsMade = design.columns;
}

int CountDesignColumns(BuilderArrays& a, Design& design)
{
    return GetXModelSize(design.factors,
                         a.pX,
                         a.pQ,
                         design.interlevel,
                         a.categories.counts.data(),
                         design.factorType.data(),
                         design.factorVariables.data(),
                         design.factorNbVars.data(),
                         design.factorActive.data());
}

void MultiplyCodedEffects(BuilderArrays& a, Constraint constraint, Design& design)
{
    BuildModelTable(a.quantitative.data(),
                    design.rows,
                    a.pX,
                    a.qualitative.data(),
                    a.pQ,
                    a.weights.data(),
                    a.quantitativeNames.data(),
                    a.qualitativeNames.data(),
                    design.interlevel,
                    static_cast<int>(constraint),
                    VARIANT_TRUE,
                    design.factors,
                    a.labels->data(),
                    design.parents.data(),
                    design.frequencies.data(),
                    design.states.data(),
                    design.factorType.data(),
                    design.factorVariables.data(),
                    design.factorNbVars.data(),
                    design.factorActive.data(),
                    design.reportedFrom.data(),
                    VARIANT_FALSE,
                    a.nestedPair.data(),
                    a.categories.largest,
                    a.categories.total,
                    a.categories.counts.data(),
                    a.categories.names.data(),
                    a.categories.frequencies.data(),
                    a.validation.wanted,
                    a.validation.quantitative.data(),
                    a.validation.qualitative.data(),
                    a.validation.count,
                    a.prediction.wanted,
                    a.prediction.quantitative.data(),
                    a.prediction.qualitative.data(),
                    a.prediction.count,
                    design.table.data(),
                    design.validation.data(),
                    design.prediction.data(),
                    &a.columnsMade);
    CountColumnsByFactor(design);
}

void MultiplyIndicators(BuilderArrays& a, Constraint constraint, Design& design)
{
    BuildModelTable2(a.quantitative.data(),
                     design.rows,
                     a.pX,
                     a.qualitative.data(),
                     a.pQ,
                     a.weights.data(),
                     a.quantitativeNames.data(),
                     a.qualitativeNames.data(),
                     design.interlevel,
                     static_cast<int>(constraint),
                     design.factors,
                     a.labels->data(),
                     a.simpleLabels->data(),
                     design.parents.data(),
                     a.columnsByFactor.data(),
                     design.factorNbColumns.data(),
                     design.frequencies.data(),
                     design.states.data(),
                     a.cleaned.data(),
                     design.factorType.data(),
                     design.factorVariables.data(),
                     design.factorNbVars.data(),
                     design.factorActive.data(),
                     design.reportedFrom.data(),
                     a.nestedPair.data(),
                     a.nesting.data(),
                     a.categories.largest,
                     a.categories.total,
                     a.categories.counts.data(),
                     a.categories.names.data(),
                     a.categories.frequencies.data(),
                     a.validation.wanted,
                     a.validation.quantitative.data(),
                     a.validation.qualitative.data(),
                     a.validation.count,
                     a.prediction.wanted,
                     a.prediction.quantitative.data(),
                     a.prediction.qualitative.data(),
                     a.prediction.count,
                     design.table.data(),
                     design.validation.data(),
                     design.prediction.data(),
                     &a.columnsMade,
                     &a.columnsLeft);
}

void CallBuilder(const ModelData& data, Constraint constraint, Design& design)
{
    BuilderArrays arrays(data);
    design.columns = CountDesignColumns(arrays, design);
    const auto p = static_cast<std::size_t>(design.columns);
    design.table.assign(data.rows.size() * p, 0.0);
    design.validation.assign(std::max<std::size_t>(1, RowCount(data.validation) * p), 0.0);
    design.prediction.assign(std::max<std::size_t>(1, RowCount(data.prediction) * p), 0.0);
    design.parents.assign(p, 0);
    design.frequencies.assign(p, 0.0);
    design.states.assign(p, 0);
    design.reportedFrom.assign(p * p, 0.0);
    arrays.Reserve(design);
    if (MultipliesEffects(data, constraint)) {
        MultiplyCodedEffects(arrays, constraint, design);
    } else {
        MultiplyIndicators(arrays, constraint, design);
    }
    if (arrays.columnsMade != design.columns) {
        throw UserError(
            fmt::format("internal: {} columns made, {} expected", arrays.columnsMade, design.columns));
    }
    for (std::size_t c = 0; c < p; ++c)
        design.labels.push_back(arrays.labels->Get(c));
    RefuseConstantProducts(data, design, arrays.cleaned);
}

}  // namespace

Design BuildDesign(const ModelData& data, Constraint constraint)
{
    CheckSizes(data);
    Design design;
    design.rows = static_cast<int>(data.rows.size());
    DescribeFactors(data, design);
    CallBuilder(data, constraint, design);
    return design;
}

}  // namespace korvenrg::frontend
