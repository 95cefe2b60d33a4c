#include "logit_term_tables.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <algorithm>
#include <set>
#include <utility>

namespace korvenrg::frontend {
namespace {

constexpr std::size_t kScoreP = 2;  // among the statistics of a row

using TermSet = std::set<std::size_t>;  // factors, from 0

/** The factors with a column that the row's model estimates. */
TermSet TermsOf(const Design& design, const LogitFit& fit, std::size_t row)
{
    TermSet terms;
    for (std::size_t c = 0; c < design.parents.size(); ++c) {
        if (fit.models(row, kHistoryMask + c) == 0.0)
            terms.insert(static_cast<std::size_t>(design.parents[c]) - 1);
    }
    return terms;
}

std::string TermText(const ModelData& data, const TermSet& terms)
{
    std::vector<std::string> names;
    for (const std::size_t f : terms)
        names.push_back(data.factors[f].name);
    return fmt::format("{}", fmt::join(names, " "));
}

/** What entered or left between two models; the history's own number is 0 where the selection ended in a circle. */
std::string StepLabel(const ModelData& data, const TermSet& before, const TermSet& after)
{
    for (const std::size_t f : after) {
        if (!before.contains(f)) return "+ " + data.factors[f].name;
    }
    for (const std::size_t f : before) {
        if (!after.contains(f)) return "- " + data.factors[f].name;
    }
    return "";
}

/** Whether the row's columns are those of the fit. */
bool IsFinalModel(const LogitFit& fit, std::size_t row)
{
    for (std::size_t c = 0; c < fit.states.size(); ++c) {
        if ((fit.models(row, kHistoryMask + c) == 0.0) != (fit.states[c] == kInModel)) return false;
    }
    return true;
}

std::vector<double> CellsOf(const Design& design,
                            const LogitFit& fit,
                            std::size_t row,
                            const LogitOptions& options)
{
    const bool isBest = options.selection == LogitSelection::kBest;
    std::vector<double> cells{fit.models(row, kHistoryTerms)};
    if (isBest) cells.push_back(fit.models(row, kHistoryFitted));
    const std::size_t first = design.parents.size() + kHistoryStatistics;
    for (std::size_t s = 0; s < (isBest ? kSubsetStatistics : kStepStatistics); ++s)
        cells.push_back(fit.models(row, first + s));
    // with a mortality the score statistic may be negative and is then no test
    double& scoreP = cells[cells.size() - (isBest ? kSubsetStatistics : kStepStatistics) + kScoreP];
    if (options.mortality != Mortality::kNone && scoreP == 1.0) scoreP = kMissing;
    return cells;
}

std::vector<ResultTable::Column> HistoryColumns(bool isBest)
{
    const ColumnKind probability = ColumnKind::kProbability;
    std::vector<ResultTable::Column> columns{{"Terms"}};
    if (isBest) columns.push_back({"Models fitted"});
    columns.push_back({"-2 log likelihood"});
    for (const char* test : {"Pr > likelihood ratio", "Pr > score", "Pr > Wald"})
        columns.push_back({test, probability});
    columns.push_back({"AIC"});
    columns.push_back({"SBC"});
    if (isBest) return columns;
    columns.push_back({"Entry chi-square"});
    columns.push_back({"Pr > entry chi-square", probability});
    columns.push_back({"Removal chi-square"});
    columns.push_back({"Pr > removal chi-square", probability});
    return columns;
}

std::string StepNote(const LogitFit& fit, std::size_t row, const std::string& label)
{
    if (fit.models(row, kHistoryFactor) != 0.0) return "";
    return label.starts_with('+') ? "ends: would leave again" : "ends: would come back";
}

}  // namespace

ResultTable LogitSelectionTable(const ModelData& data,
                                const Design& design,
                                const LogitFit& fit,
                                const Options& options)
{
    const bool isBest = options.logit.selection == LogitSelection::kBest;
    const bool isBackward = options.logit.selection == LogitSelection::kBackward ||
                            options.logit.selection == LogitSelection::kBackwardStepwise;
    ResultTable table{"models.csv",
                      "Selection of terms",
                      isBest ? "Size" : "Step",
                      HistoryColumns(isBest),
                      {},
                      true};
    table.textHead = "Terms in the model";
    TermSet before;
    for (std::size_t r = 0; r < fit.models.rows; ++r) {
        if (IsMissing(fit.models(r, kHistoryTerms))) continue;  // no step, or no fit of the size
        const TermSet terms = TermsOf(design, fit, r);
        std::string label, note;
        if (isBest) {
            const double size = fit.models(r, kHistoryTerms);
            label = fmt::format("{} {}", size, size == 1.0 ? "term" : "terms");
            if (IsFinalModel(fit, r)) note = "best";
        } else {
            label = isBackward && r == 0 ? "all terms" : StepLabel(data, before, terms);
            note = StepNote(fit, r, label);
        }
        table.rows.push_back({std::move(label),
                              CellsOf(design, fit, r, options.logit),
                              std::move(note),
                              TermText(data, terms)});
        before = terms;
    }
    if (table.rows.empty()) table.title += ": none enters";
    if (isBest) {
        table.title +=
            fmt::format(" (AIC adds 2 (q + 1) for q parameters, SBC as much times the log of the weights{})",
                        IsMultinomial(data) ? "; q and the p-values are those of one category" : "");
    }
    return table;
}

bool WantsTypeThree(const ModelData& data)
{
    const auto terms =
        std::count_if(data.factors.begin(), data.factors.end(), [](const Factor& f) { return f.active; });
    return terms > 1 || !data.qualitative.empty();
}

ResultTable LogitTypeThreeTable(const ModelData& data, const LogitFit& fit)
{
    const ColumnKind probability = ColumnKind::kProbability;
    ResultTable table{"type3.csv",
                      "Type III tests",
                      "Term",
                      {{"DF"},
                       {"Wald chi-square"},
                       {"Pr > Wald", probability},
                       {"LR chi-square"},
                       {"Pr > LR", probability}},
                      {},
                      true};
    for (std::size_t f = 0; f < data.factors.size(); ++f) {
        if (!data.factors[f].active) continue;
        table.rows.push_back({data.factors[f].name,
                              RowOf(fit.typeThree, f),
                              fit.factorActive[f] == 1 ? "" : "not in the model"});
    }
    return table;
}

}  // namespace korvenrg::frontend
