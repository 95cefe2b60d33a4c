#include "term_tables.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <algorithm>

namespace korvenrg::frontend {
namespace {

/** The search looks at no more subsets of one size than this over (factors + 10). */
constexpr double kSubsetWork = 1e7;

constexpr std::size_t kCpCell = 5;  // of a row of the printed models

std::string TermsOf(const ModelData& data, const Fit& fit, std::size_t row)
{
    std::vector<std::string> terms;
    for (std::size_t f = 0; f < data.factors.size(); ++f) {
        if (fit.models(row, kFirstIndicator + f) == 1.0) terms.push_back(data.factors[f].name);
    }
    return fmt::format("{}", fmt::join(terms, " "));
}

std::size_t CountTerms(const ModelData& data)
{
    return static_cast<std::size_t>(std::count_if(data.factors.begin(),
                                                  data.factors.end(),
                                                  [](const Factor& factor) { return factor.active; }));
}

double SubsetsOfSize(std::size_t terms, std::size_t size)
{
    double count = 1.0;
    for (std::size_t i = 1; i <= size; ++i)
        count = count * static_cast<double>(terms - size + i) / static_cast<double>(i);
    return count;
}

std::string StepLabel(const ModelData& data, const Fit& fit, std::size_t row, Selection selection)
{
    const double number = fit.models(row, kStepNumber);
    if (selection == Selection::kBest) return fmt::format("{} {}", number, number == 1.0 ? "term" : "terms");
    if (selection == Selection::kBackward && row == 0) return "all terms";
    const auto factor = static_cast<std::size_t>(fit.models(row, kStepFactor)) - 1;
    return fmt::format("{} {}", fit.models(row, kStepMove) > 0.0 ? "+" : "-", data.factors[factor].name);
}

std::string SubsetNote(const ModelData& data, const Fit& fit, std::size_t row)
{
    const auto size = static_cast<std::size_t>(fit.models(row, kStepNumber));
    const double cap = kSubsetWork / static_cast<double>(data.factors.size() + 10);
    std::string note = static_cast<int>(row) + 1 == fit.bestModel ? "best" : "";
    if (SubsetsOfSize(CountTerms(data), size) > cap)
        note += note.empty() ? "not all subsets compared" : ", not all subsets compared";
    return note;
}

bool Holds(const Factor& factor, int variable)
{
    return std::find(factor.variables.begin(), factor.variables.end(), variable) != factor.variables.end();
}

/** Whether every variable of the inner term is one of the outer term's. */
bool Contains(const Factor& outer, const Factor& inner)
{
    return outer.variables.size() > inner.variables.size() &&
           std::all_of(inner.variables.begin(), inner.variables.end(), [&outer](int variable) {
               return Holds(outer, variable);
           });
}

/** Whether the door's Type II test of the inner term leaves the outer one, which stands later, out of the model. */
bool IsLeftOutOfTest(const Factor& outer, const Factor& inner)
{
    if (!Holds(outer, inner.variables.front())) return false;
    if (outer.type == FactorType::kMixedInteraction) return inner.type == FactorType::kQuantitative;
    return outer.type == FactorType::kQualitativeInteraction &&
           outer.variables.size() > inner.variables.size();
}

/** Says where a Type II test is not that of the term given all terms that do not contain it. */
std::string TypeTwoNote(const ModelData& data, const Fit& fit, std::size_t term)
{
    std::vector<std::string> given;
    std::vector<std::string> without;
    for (std::size_t g = 0; g < data.factors.size(); ++g) {
        if (g == term || fit.factorActive[g] != 1) continue;
        const Factor& outer = data.factors[g];
        const bool isLeftOut = g > term && IsLeftOutOfTest(outer, data.factors[term]);
        const bool contains = Contains(outer, data.factors[term]);
        if (contains && !isLeftOut) given.push_back(outer.name);
        if (!contains && isLeftOut) without.push_back(outer.name);
    }
    if (!given.empty()) return fmt::format("given {} too", fmt::join(given, ", "));
    if (!without.empty()) return fmt::format("without {}", fmt::join(without, ", "));
    return "";
}

ResultTable TypeTable(const ModelData& data, const Fit& fit, SumsType type)
{
    constexpr const char* kNumerals[] = {"I", "II", "III"};
    const int number = static_cast<int>(type);
    ResultTable table{
        fmt::format("type{}.csv", number),
        fmt::format("Type {} sums of squares", kNumerals[number - 1]),
        "Term",
        {{"DF"}, {"Sum of squares"}, {"Mean square"}, {"F"}, {"Pr > F", ColumnKind::kProbability}},
        {},
        true};
    const NumberTable& sums = type == SumsType::kSequential     ? fit.typeOne
                              : type == SumsType::kHierarchical ? fit.typeTwo
                                                                : fit.typeThree;
    for (std::size_t f = 0; f < data.factors.size(); ++f) {
        if (!data.factors[f].active) continue;
        std::vector<double> cells = RowOf(sums, table.rows.size());
        std::string note;
        if (fit.factorActive[f] != 1) {
            note = "not in the model";
        } else if (IsMissing(cells[0])) {
            note = "not defined: without its main effects the model depends on the constraint";
        } else if (type == SumsType::kHierarchical) {
            note = TypeTwoNote(data, fit, f);
        }
        table.rows.push_back({data.factors[f].name, std::move(cells), std::move(note)});
    }
    return table;
}

}  // namespace

ResultTable SelectionTable(const ModelData& data, const Fit& fit, const Options& options)
{
    const bool isBest = options.selection == Selection::kBest;
    ResultTable table{"models.csv",
                      "Selection of variables",
                      isBest ? "Size" : "Step",
                      {{"Columns"},
                       {"SSE"},
                       {"MSE"},
                       {"R squared"},
                       {"Adjusted R squared"},
                       {"Cp"},
                       {"AIC"},
                       {"SBC"},
                       {"PC"}},
                      {},
                      isBest};
    table.textHead = "Terms in the model";
    const std::size_t statistics = kFirstIndicator + data.factors.size();
    for (std::size_t r = 0; r < fit.models.rows; ++r) {
        if (fit.models(r, kStepColumns) <= 0.0) continue;  // a row that no step or size used
        std::vector<double> cells{fit.models(r, kStepColumns)};
        for (std::size_t s = 0; s < kModelStatistics; ++s)
            cells.push_back(fit.models(r, statistics + s));
        // the door fills the Cp of as many steps as there are factors, and a removal takes one more
        if (!isBest && r >= data.factors.size()) cells[kCpCell] = kMissing;
        table.rows.push_back({StepLabel(data, fit, r, options.selection),
                              std::move(cells),
                              isBest ? SubsetNote(data, fit, r) : "",
                              TermsOf(data, fit, r)});
    }
    if (table.rows.empty()) table.title += ": none enters";
    return table;
}

std::vector<ResultTable> TypeTables(const ModelData& data, const Fit& fit, const Options& options)
{
    std::vector<ResultTable> tables;
    for (const SumsType type : options.types.value_or(std::set<SumsType>{}))
        tables.push_back(TypeTable(data, fit, type));
    return tables;
}

std::set<SumsType> DefaultTypes(const ModelData& data, const Options& options)
{
    if (options.analysis != Analysis::kAnova || options.intercept || CountTerms(data) < 2) return {};
    return {SumsType::kEstimable};
}

}  // namespace korvenrg::frontend
