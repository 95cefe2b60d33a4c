#include "model_data.h"

#include <fmt/format.h>

#include <algorithm>
#include <map>
#include <numeric>
#include <set>
#include <utility>

#include "new_rows.h"
#include "terms.h"
#include "user_error.h"

namespace korvenrg::frontend {
namespace {

/** A variable of the model before its rows are chosen. */
struct Source
{
    std::string name;
    std::size_t column = 0;
    bool qualitative = false;
    bool mainEffect = false;
};

bool Contains(const std::vector<std::string>& names, const std::string& name)
{
    return std::find(names.begin(), names.end(), name) != names.end();
}

bool IsTextColumn(const std::vector<std::string>& cells)
{
    bool anyText = false;
    for (const std::string& cell : cells) {
        if (IsMissingCell(cell)) continue;
        if (NumberOf(cell)) return false;
        anyText = true;
    }
    return anyText;
}

bool IsNumericColumn(const std::vector<std::string>& cells)
{
    return std::all_of(cells.begin(), cells.end(), [](const std::string& cell) {
        return IsMissingCell(cell) || NumberOf(cell).has_value();
    });
}

/** A regression takes numbers as they are; in an analysis of variance they are categories unless named as
 * covariates. */
bool IsQualitative(const Options& options, const CsvTable& table, const Source& source)
{
    if (Contains(options.qualitative, source.name)) return true;
    if (options.analysis == Analysis::kAnova) return !Contains(options.covariates, source.name);
    return IsTextColumn(table.columns[source.column]);
}

void CheckRoles(const Options& options, const std::vector<Source>& sources)
{
    const auto used = [&sources](const std::string& name) {
        return std::any_of(sources.begin(), sources.end(), [&](const Source& s) { return s.name == name; });
    };
    for (const std::string& name : options.qualitative) {
        if (!used(name)) throw UserError(fmt::format("--qualitative '{}' is in no term", name));
        if (Contains(options.covariates, name)) {
            throw UserError(fmt::format("'{}' cannot be both --qualitative and --covariate", name));
        }
    }
    for (const std::string& name : options.covariates) {
        if (!used(name)) throw UserError(fmt::format("--covariate '{}' is in no term", name));
    }
    if (used(options.response))
        throw UserError(fmt::format("the response '{}' is also a term", options.response));
}

/** The variables in the order that numbers them: quantitative before qualitative, and main effects before
 * variables of interactions alone, so that the column of a quantitative main effect has the number of its
 * factor. */
std::vector<Source> CollectSources(const CsvTable& table,
                                   const Options& options,
                                   const std::vector<Term>& terms)
{
    std::vector<Source> sources;
    for (const Term& term : terms) {
        for (const std::string& name : term) {
            auto found =
                std::find_if(sources.begin(), sources.end(), [&](const Source& s) { return s.name == name; });
            if (found == sources.end()) {
                Source source{name, FindColumn(table, name), false, false};
                source.qualitative = IsQualitative(options, table, source);
                found = sources.insert(found, source);
            }
            if (term.size() == 1) found->mainEffect = true;
        }
    }
    std::stable_sort(sources.begin(), sources.end(), [](const Source& a, const Source& b) {
        return std::pair(a.qualitative, !a.mainEffect) < std::pair(b.qualitative, !b.mainEffect);
    });
    CheckRoles(options, sources);
    return sources;
}

void ReadWeights(const CsvTable& table,
                 const Options& options,
                 const std::vector<std::size_t>& rows,
                 ModelData& data)
{
    if (options.weights.empty()) {
        data.weights.assign(rows.size(), 1.0);
        return;
    }
    data.weights = NumbersOf(table, FindColumn(table, options.weights), rows);
    for (std::size_t i = 0; i < rows.size(); ++i) {
        if (data.weights[i] < 0.0) {
            throw UserError(fmt::format("weights '{}' must not be negative: data row {} holds {}",
                                        options.weights,
                                        rows[i] + 1,
                                        data.weights[i]));
        }
    }
    if (std::accumulate(data.weights.begin(), data.weights.end(), 0.0) <= 0.0) {
        throw UserError(fmt::format("all weights '{}' are zero", options.weights));
    }
}

/** Numbers by value, text by code point. */
struct CategoryOrder
{
    bool numeric;
    bool operator()(const std::string& a, const std::string& b) const
    {
        return numeric ? *NumberOf(a) < *NumberOf(b) : a < b;
    }
};

/** The cells of the rows and their categories, in order. */
QualitativeVariable ReadCategories(const CsvTable& table,
                                   const std::string& name,
                                   std::size_t column,
                                   const std::vector<std::size_t>& rows)
{
    const std::vector<std::string>& cells = table.columns[column];
    const bool numeric = IsNumericColumn(cells);
    QualitativeVariable variable{name, {}, {}, {}, numeric};
    for (std::size_t r : rows)
        variable.cells.push_back(CategoryOf(cells[r], numeric));
    variable.categories = variable.cells;
    std::sort(variable.categories.begin(), variable.categories.end(), CategoryOrder{numeric});
    variable.categories.erase(std::unique(variable.categories.begin(), variable.categories.end()),
                              variable.categories.end());
    return variable;
}

QualitativeVariable ReadQualitative(const CsvTable& table,
                                    const Source& source,
                                    const std::vector<std::size_t>& rows,
                                    const std::vector<double>& weights)
{
    QualitativeVariable variable = ReadCategories(table, source.name, source.column, rows);
    if (variable.categories.size() < 2) {
        throw UserError(fmt::format("the qualitative variable '{}' has only one category, '{}'",
                                    variable.name,
                                    variable.categories.front()));
    }

    variable.frequencies.assign(variable.categories.size(), 0.0);
    for (std::size_t i = 0; i < rows.size(); ++i) {
        const auto category = std::lower_bound(variable.categories.begin(),
                                               variable.categories.end(),
                                               variable.cells[i],
                                               CategoryOrder{variable.numeric});
        variable.frequencies[static_cast<std::size_t>(category - variable.categories.begin())] += weights[i];
    }
    return variable;
}

Factor MakeInteraction(const Term& term, const std::vector<Source>& sources)
{
    Factor factor{FactorType::kMixedInteraction, true, {}, NameOf(term)};
    std::size_t qualitative = 0;
    for (const std::string& name : term) {
        const auto source =
            std::find_if(sources.begin(), sources.end(), [&](const Source& s) { return s.name == name; });
        const int number = static_cast<int>(source - sources.begin()) + 1;
        if (source->qualitative && std::count(term.begin(), term.end(), name) > 1) {
            throw UserError(
                fmt::format("the qualitative variable '{}' stands twice in '{}'", name, factor.name));
        }
        factor.variables.push_back(number);
        qualitative += source->qualitative ? 1 : 0;
    }
    if (qualitative == 0) factor.type = FactorType::kQuantitativeInteraction;
    if (qualitative == term.size()) factor.type = FactorType::kQualitativeInteraction;
    return factor;
}

void MakeFactors(const std::vector<Source>& sources, const std::vector<Term>& terms, ModelData& data)
{
    for (std::size_t v = 0; v < sources.size(); ++v) {
        const FactorType type = sources[v].qualitative ? FactorType::kQualitative : FactorType::kQuantitative;
        data.factors.push_back({type, sources[v].mainEffect, {static_cast<int>(v) + 1}, sources[v].name});
    }
    for (const Term& term : terms) {
        if (term.size() > 1) data.factors.push_back(MakeInteraction(term, sources));
        data.interlevel = std::max(data.interlevel, term.size());
    }
}

/** A text response of a logistic regression, or one of numbers that are to be categories. */
bool HasResponseCategories(const CsvTable& table, std::size_t column, const Options& options)
{
    if (options.analysis != Analysis::kLogit) return false;
    return options.logit.categories || IsTextColumn(table.columns[column]);
}

void ReadResponseCategories(const CsvTable& table,
                            std::size_t column,
                            const Options& options,
                            const std::vector<std::size_t>& rows,
                            ModelData& data)
{
    if (!options.weights.empty())
        throw UserError("--trials takes a response of numbers, the successes, and no --multinomial");
    const QualitativeVariable variable = ReadCategories(table, options.response, column, rows);
    std::vector<std::string> categories = variable.categories;
    if (categories.size() < 2) {
        throw UserError(
            fmt::format("the response '{}' is '{}' in every row used", options.response, categories.front()));
    }
    if (options.logit.reference) {
        const std::string wanted = variable.numeric && NumberOf(*options.logit.reference)
                                       ? CategoryOf(*options.logit.reference, true)
                                       : *options.logit.reference;
        const auto found = std::find(categories.begin(), categories.end(), wanted);
        if (found == categories.end()) {
            throw UserError(fmt::format("--reference '{}' is no category of the response '{}'",
                                        *options.logit.reference,
                                        options.response));
        }
        std::rotate(categories.begin(), found, found + 1);
    }
    std::map<std::string, double> codes;
    for (const std::string& category : categories)
        codes.emplace(category, static_cast<double>(codes.size()));
    for (const std::string& cell : variable.cells)
        data.response.push_back(codes.at(cell));
    data.responseCategories = std::move(categories);
}

void ReadResponse(const CsvTable& table,
                  std::size_t column,
                  const Options& options,
                  const std::vector<std::size_t>& rows,
                  ModelData& data)
{
    if (HasResponseCategories(table, column, options)) {
        ReadResponseCategories(table, column, options, rows, data);
        return;
    }
    if (options.logit.reference)
        throw UserError("--reference belongs to a text response or to --multinomial");
    data.response = NumbersOf(table, column, rows);
}

void RefuseConstantResponse(const ModelData& data, const std::string& name)
{
    const auto [low, high] = std::minmax_element(data.response.begin(), data.response.end());
    if (*low == *high) throw UserError(fmt::format("the response '{}' is {} in every row used", name, *low));
}

}  // namespace

ModelData MakeModelData(const CsvTable& table, const Options& options)
{
    const std::vector<Term> terms = ParseTerms(options.terms);
    const std::size_t responseColumn = FindColumn(table, options.response);
    const std::vector<Source> sources = CollectSources(table, options, terms);

    std::vector<std::size_t> used{responseColumn};
    if (!options.weights.empty()) used.push_back(FindColumn(table, options.weights));
    for (const Source& source : sources)
        used.push_back(source.column);
    const std::set<std::size_t> validated = ParseRows(options.validatedRows, table.rows);
    std::vector<std::size_t> rows = CompleteRows(table, used);
    std::erase_if(rows, [&validated](std::size_t r) { return validated.contains(r); });
    if (rows.empty()) {
        throw UserError(validated.empty()
                            ? fmt::format("no rows left: all {} have a missing cell", table.rows)
                            : "no rows left: all have a missing cell or are validation rows");
    }

    ModelData data;
    for (std::size_t r : rows)
        data.rows.push_back(r + 1);
    data.droppedRows = table.rows - validated.size() - rows.size();
    ReadResponse(table, responseColumn, options, rows, data);
    ReadWeights(table, options, rows, data);
    for (const Source& source : sources) {
        if (source.qualitative) {
            data.qualitative.push_back(ReadQualitative(table, source, rows, data.weights));
        } else {
            const std::string hint = fmt::format(" (for categories say --qualitative {})", source.name);
            data.quantitative.push_back({source.name, NumbersOf(table, source.column, rows, hint)});
        }
    }
    MakeFactors(sources, terms, data);
    const bool countsSuccesses = options.analysis == Analysis::kLogit && !options.weights.empty();
    if (!countsSuccesses) RefuseConstantResponse(data, options.response);
    if (!validated.empty()) data.validation = ReadValidationRows(table, validated, data, options);
    return data;
}

}  // namespace korvenrg::frontend
