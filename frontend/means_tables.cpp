#include "means_tables.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <algorithm>
#include <cmath>
#include <optional>
#include <utility>

#include "category_means.h"
#include "comparison.h"
#include "user_error.h"

namespace korvenrg::frontend {
namespace {

/** One table of means that the command line asks for. */
struct Request
{
    MeansKind kind;
    std::size_t term;
    std::size_t number;  ///< among those of its kind, from 1
};

const char* OptionOf(MeansKind kind)
{
    return kind == MeansKind::kFitted ? "--means" : "--lsmeans";
}

std::string FileName(const Request& request, const char* part)
{
    const std::string number = request.number > 1 ? fmt::format("{}", request.number) : "";
    return fmt::format("{}{}{}.csv", request.kind == MeansKind::kFitted ? "means" : "lsmeans", number, part);
}

const char* NameOf(Procedure procedure)
{
    switch (procedure) {
        case Procedure::kTukey:
            return "Tukey";
        case Procedure::kLsd:
            return "Fisher's LSD";
        case Procedure::kBonferroni:
            return "Bonferroni";
        case Procedure::kSidak:
            return "Sidak";
        case Procedure::kNewmanKeuls:
            return "Newman-Keuls";
        case Procedure::kDuncan:
            return "Duncan";
        case Procedure::kRegwq:
            return "REGWQ";
        case Procedure::kGamesHowell:
            return "Games-Howell";
        case Procedure::kTamhane:
            return "Tamhane T2";
        case Procedure::kDunnettC:
            return "Dunnett C";
        default:
            return "Benjamini-Hochberg";
    }
}

std::string TitleOf(const ModelData& data, const Request& request)
{
    return fmt::format("{} of {}",
                       request.kind == MeansKind::kFitted ? "Means" : "Least-squares means",
                       data.factors[request.term].name);
}

/** What a reader of LS means has to know about the model. */
std::string Reservation(const ModelData& data, const Fit& fit, const Request& request)
{
    if (request.kind == MeansKind::kFitted) return "";
    std::string text;
    const std::vector<std::string> empty = TermsWithEmptyCells(data, fit, request.term);
    if (!empty.empty())
        text += fmt::format("; with empty cells of {} their level depends on the constraint",
                            fmt::join(empty, ", "));
    for (std::size_t f = 0; f < data.factors.size(); ++f) {
        if (fit.factorActive[f] == 1 && data.factors[f].type == FactorType::kMixedInteraction)
            text += fmt::format("; slopes of {} at the means of their own columns", data.factors[f].name);
    }
    return text;
}

std::vector<ResultTable::Column> MeanColumns(double alpha)
{
    const double confidence = 100.0 * (1.0 - alpha);
    return {{"Mean"},
            {"Standard error"},
            {fmt::format("Lower {:.6g}%", confidence)},
            {fmt::format("Upper {:.6g}%", confidence)}};
}

/** From the largest mean down; categories without a mean last. */
ResultTable MeansTable(const std::string& title,
                       const Request& request,
                       const CategoryMeans& means,
                       const std::optional<Comparison>& comparison,
                       double alpha)
{
    ResultTable table{FileName(request, ""), title, "Category", MeanColumns(alpha), {}};
    table.hasNotes = !means.removed.empty();
    const bool grouped = comparison && !comparison->groups.empty();
    if (grouped) table.textHead = "Groups";
    for (std::size_t rank = means.ranked.size(); rank-- > 0;) {
        const auto id = static_cast<std::size_t>(means.ranked[rank]) - 1;
        table.rows.push_back({means.categories[id].label,
                              RowOf(means.means, rank),
                              "",
                              grouped ? comparison->groups[id] : ""});
    }
    for (const std::string& label : means.removed) {
        const char* const note =
            request.kind == MeansKind::kFitted ? "no rows" : "not estimable: an empty cell";
        table.rows.push_back({label, std::vector<double>(table.columns.size(), kMissing), note});
    }
    return table;
}

const char* TextOf(int verdict)
{
    if (verdict == kSignificant) return "significant";
    return verdict == kNotTested ? "not tested" : "";
}

/** The standard error that the test used. */
double ErrorOf(double difference, double t)
{
    return IsMissing(t) || t == 0.0 ? kMissing : std::fabs(difference / t);
}

ResultTable ContrastTable(const std::string& title,
                          const Request& request,
                          const CategoryMeans& means,
                          const Comparison& comparison)
{
    ResultTable table{FileName(request, "_contrasts"),
                      title,
                      "Contrast",
                      {{"Difference"},
                       {"Standard error"},
                       {"t"},
                       {"Critical value"},
                       {"Pr > |t|", ColumnKind::kProbability},
                       {"Level"}},
                      {},
                      true};
    const auto labelOf = [&means](double id) {
        return means.categories[static_cast<std::size_t>(id) - 1].label;
    };
    const NumberTable& cells = comparison.contrasts;
    for (std::size_t r = 0; r < cells.rows; ++r) {
        const double difference = cells(r, kDifference);
        const double t = cells(r, kStandardised);
        table.rows.push_back(
            {fmt::format("{} - {}", labelOf(cells(r, kFirstId)), labelOf(cells(r, kSecondId))),
             {difference,
              ErrorOf(difference, t),
              t,
              cells(r, kCritical),
              cells(r, kProbability),
              comparison.levels[r]},
             TextOf(comparison.verdicts[r])});
    }
    return table;
}

ResultTable ControlTable(const std::string& title,
                         const Request& request,
                         const CategoryMeans& means,
                         const ControlComparison& comparison)
{
    ResultTable table{FileName(request, "_control"),
                      title,
                      "Contrast",
                      {{"Difference"},
                       {"Standard error"},
                       {"t"},
                       {"Critical value"},
                       {"Critical difference"},
                       {"p-value", ColumnKind::kProbability}},
                      {},
                      true};
    const NumberTable& cells = comparison.rows;
    for (std::size_t r = 0; r < cells.rows; ++r) {
        const auto labelOf = [&](ControlColumn column) {
            return means.categories[static_cast<std::size_t>(cells(r, column)) - 1].label;
        };
        table.rows.push_back({fmt::format("{} - {}", labelOf(kControlId), labelOf(kOtherId)),
                              {cells(r, kControlDifference),
                               ErrorOf(cells(r, kControlDifference), cells(r, kControlT)),
                               cells(r, kControlT),
                               cells(r, kControlCritical),
                               cells(r, kControlCriticalDifference),
                               cells(r, kControlProbability)},
                              TextOf(comparison.verdicts[r])});
    }
    return table;
}

int IdOf(const CategoryMeans& means, const std::string& label, const Request& request, const ModelData& data)
{
    const auto found = std::find_if(means.categories.begin(),
                                    means.categories.end(),
                                    [&label](const Category& c) { return c.label == label; });
    if (found != means.categories.end()) return static_cast<int>(found - means.categories.begin()) + 1;
    throw UserError(fmt::format("--control: '{}' is no category with a mean of '{}'",
                                label,
                                data.factors[request.term].name));
}

std::string TailText(Tail tail)
{
    if (tail == Tail::kTwo) return "two-sided";
    return tail == Tail::kLower ? "one-sided, control below" : "one-sided, control above";
}

void AddTables(const ModelData& data,
               const Design& design,
               const Fit& fit,
               const Options& options,
               const Request& request,
               std::vector<ResultTable>& tables)
{
    const std::string title = TitleOf(data, request) + Reservation(data, fit, request);
    if (fit.factorActive[request.term] != 1) {
        tables.push_back({FileName(request, ""),
                          title + ": not in the model",
                          "Category",
                          MeanColumns(options.alpha),
                          {}});
        return;
    }
    const CategoryMeans means = ComputeMeans(data, design, fit, options, request.kind, request.term);
    const bool comparable = means.ranked.size() > 1;
    std::optional<Comparison> comparison;
    if (options.procedure && comparable)
        comparison = CompareAll(means, fit, *options.procedure, options.alpha);
    std::string groups;
    if (comparison)
        groups = comparison->groups.empty() ? "; no letter groups fit the comparisons"
                                            : "; a letter in common: no significant difference";
    tables.push_back(MeansTable(title + groups, request, means, comparison, options.alpha));
    if (comparison) {
        const char* const variance =
            comparison->usesHarmonicMean ? ", one variance from the harmonic mean of the sizes" : "";
        const std::string heading = fmt::format("Comparisons of {} ({}, alpha {:.6g}{})",
                                                data.factors[request.term].name,
                                                NameOf(*options.procedure),
                                                options.alpha,
                                                variance);
        tables.push_back(ContrastTable(heading, request, means, *comparison));
    }
    if (options.control) {
        const int control = IdOf(means, *options.control, request, data);
        if (!comparable) return;
        const std::string heading = fmt::format("Comparisons of {} with {} (Dunnett, {}, alpha {:.6g})",
                                                data.factors[request.term].name,
                                                *options.control,
                                                TailText(options.tail),
                                                options.alpha);
        tables.push_back(ControlTable(heading,
                                      request,
                                      means,
                                      CompareWithControl(means, fit, control, options.tail, options.alpha)));
    }
}

}  // namespace

std::vector<ResultTable> MeansTables(const ModelData& data,
                                     const Design& design,
                                     const Fit& fit,
                                     const Options& options)
{
    std::vector<ResultTable> tables;
    for (const MeansKind kind : {MeansKind::kFitted, MeansKind::kLeastSquares}) {
        std::size_t number = 0;
        for (const std::string& name : kind == MeansKind::kFitted ? options.means : options.lsMeans) {
            const Request request{kind, FindTerm(data, name, OptionOf(kind)), ++number};
            AddTables(data, design, fit, options, request, tables);
        }
    }
    return tables;
}

}  // namespace korvenrg::frontend
