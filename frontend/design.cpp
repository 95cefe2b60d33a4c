#include "design.h"

#include <fmt/format.h>

#include <algorithm>
#include <limits>

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

/** Columns of the model in floating point, where no product of category counts overflows. */
double CountColumns(const ModelData& data)
{
    double columns = 0.0;
    for (const Factor& factor : data.factors) {
        if (!factor.active) continue;
        double product = 1.0;
        for (int variable : factor.variables) {
            const std::size_t index = static_cast<std::size_t>(variable) - 1;
            if (index < data.quantitative.size()) continue;
            product *=
                static_cast<double>(data.qualitative[index - data.quantitative.size()].categories.size());
        }
        columns += product;
    }
    return columns;
}

/** No array of a run may have more elements than an int counts. */
void CheckSizes(const ModelData& data)
{
    const double n = static_cast<double>(data.rows.size());
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

void CallBuilder(const ModelData& data, Constraint constraint, Design& design)
{
    const std::size_t n = data.rows.size();
    const std::size_t pX = data.quantitative.size();
    const std::size_t pQ = data.qualitative.size();
    const std::size_t factors = data.factors.size();

    std::vector<double> quantitative;
    for (const QuantitativeVariable& variable : data.quantitative) {
        quantitative.insert(quantitative.end(), variable.values.begin(), variable.values.end());
    }
    quantitative.resize(std::max<std::size_t>(1, n * pX));
    TextArray qualitative(n * pQ);
    TextArray qualitativeNames(pQ);
    for (std::size_t v = 0; v < pQ; ++v) {
        qualitativeNames.Set(v, data.qualitative[v].name);
        for (std::size_t r = 0; r < n; ++r)
            qualitative.Set(v * n + r, data.qualitative[v].cells[r]);
    }
    Categories categories(data);
    TextArray quantitativeNames(pX + static_cast<std::size_t>(categories.total));
    for (std::size_t v = 0; v < pX; ++v)
        quantitativeNames.Set(v, data.quantitative[v].name);

    design.columns = GetXModelSize(design.factors,
                                   static_cast<int>(pX),
                                   static_cast<int>(pQ),
                                   design.interlevel,
                                   categories.counts.data(),
                                   design.factorType.data(),
                                   design.factorVariables.data(),
                                   design.factorNbVars.data(),
                                   design.factorActive.data());
    const auto p = static_cast<std::size_t>(design.columns);
    design.table.assign(n * p, 0.0);
    design.parents.assign(p, 0);
    design.frequencies.assign(p, 0.0);
    design.states.assign(p, 0);
    design.reportedFrom.assign(p * p, 0.0);
    TextArray labels(p);
    TextArray simpleLabels(p);
    std::vector<int> columnsByFactor(factors * p, 0);
    std::vector<int> cleaned(p, 0);
    std::vector<double> weights = data.weights;
    std::vector<int> nestedPair(2, 0);
    std::vector<int> nesting(factors * factors, 0);
    std::vector<double> noNumbers(std::max<std::size_t>(1, p), 0.0);
    TextArray noText(1);
    int columnsMade = design.columns;
    int columnsLeft = 0;

    if (MultipliesEffects(data, constraint)) {
        BuildModelTable(quantitative.data(),
                        design.rows,
                        static_cast<int>(pX),
                        qualitative.data(),
                        static_cast<int>(pQ),
                        weights.data(),
                        quantitativeNames.data(),
                        qualitativeNames.data(),
                        design.interlevel,
                        static_cast<int>(constraint),
                        VARIANT_TRUE,
                        design.factors,
                        labels.data(),
                        design.parents.data(),
                        design.frequencies.data(),
                        design.states.data(),
                        design.factorType.data(),
                        design.factorVariables.data(),
                        design.factorNbVars.data(),
                        design.factorActive.data(),
                        design.reportedFrom.data(),
                        VARIANT_FALSE,
                        nestedPair.data(),
                        categories.largest,
                        categories.total,
                        categories.counts.data(),
                        categories.names.data(),
                        categories.frequencies.data(),
                        VARIANT_FALSE,
                        noNumbers.data(),
                        noText.data(),
                        0,
                        VARIANT_FALSE,
                        noNumbers.data(),
                        noText.data(),
                        0,
                        design.table.data(),
                        noNumbers.data(),
                        noNumbers.data(),
                        &columnsMade);
        CountColumnsByFactor(design);
    } else {
        BuildModelTable2(quantitative.data(),
                         design.rows,
                         static_cast<int>(pX),
                         qualitative.data(),
                         static_cast<int>(pQ),
                         weights.data(),
                         quantitativeNames.data(),
                         qualitativeNames.data(),
                         design.interlevel,
                         static_cast<int>(constraint),
                         design.factors,
                         labels.data(),
                         simpleLabels.data(),
                         design.parents.data(),
                         columnsByFactor.data(),
                         design.factorNbColumns.data(),
                         design.frequencies.data(),
                         design.states.data(),
                         cleaned.data(),
                         design.factorType.data(),
                         design.factorVariables.data(),
                         design.factorNbVars.data(),
                         design.factorActive.data(),
                         design.reportedFrom.data(),
                         nestedPair.data(),
                         nesting.data(),
                         categories.largest,
                         categories.total,
                         categories.counts.data(),
                         categories.names.data(),
                         categories.frequencies.data(),
                         VARIANT_FALSE,
                         noNumbers.data(),
                         noText.data(),
                         0,
                         VARIANT_FALSE,
                         noNumbers.data(),
                         noText.data(),
                         0,
                         design.table.data(),
                         noNumbers.data(),
                         noNumbers.data(),
                         &columnsMade,
                         &columnsLeft);
    }
    if (columnsMade != design.columns) {
        throw UserError(fmt::format("internal: {} columns made, {} expected", columnsMade, design.columns));
    }
    for (std::size_t c = 0; c < p; ++c)
        design.labels.push_back(labels.Get(c));
    RefuseConstantProducts(data, design, cleaned);
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
