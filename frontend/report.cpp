#include "report.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <algorithm>
#include <filesystem>
#include <sstream>

#include "platform_text.h"

namespace korvenrg::frontend {
namespace {

constexpr double kSmallestPrintedProbability = 0.0001;

std::string CellText(double value, ColumnKind kind)
{
    if (IsMissing(value)) return ".";
    if (kind == ColumnKind::kNumber) return fmt::format("{:.6g}", value);
    if (value < kSmallestPrintedProbability) return "< 0.0001";
    return fmt::format("{:.4f}", value);
}

std::string Padding(const std::string& text, std::size_t width)
{
    return std::string(width - CodePointCount(text), ' ');
}

/** Breaks a column head at spaces so that the lines stay near the width of a number. */
std::vector<std::string> WrappedHead(const std::string& head)
{
    constexpr std::size_t kHeadWidth = 14;
    std::vector<std::string> lines{""};
    std::istringstream words(head);
    for (std::string word; words >> word;) {
        if (!lines.back().empty() && CodePointCount(lines.back() + " " + word) > kHeadWidth)
            lines.emplace_back();
        lines.back() += (lines.back().empty() ? "" : " ") + word;
    }
    return lines;
}

using PrintedLine = std::vector<std::string>;

std::vector<PrintedLine> HeadLines(const ResultTable& table)
{
    std::vector<std::vector<std::string>> heads{{table.labelHead}};
    if (!table.textHead.empty()) heads.push_back({table.textHead});
    for (const ResultTable::Column& column : table.columns)
        heads.push_back(WrappedHead(column.head));
    std::size_t height = 1;
    for (const auto& head : heads)
        height = std::max(height, head.size());

    std::vector<PrintedLine> lines(height, PrintedLine(heads.size()));
    for (std::size_t c = 0; c < heads.size(); ++c) {
        for (std::size_t i = 0; i < heads[c].size(); ++i)
            lines[height - heads[c].size() + i][c] = heads[c][i];
    }
    return lines;
}

std::string TableText(const ResultTable& table)
{
    std::vector<PrintedLine> lines = HeadLines(table);
    const std::size_t headLines = lines.size();
    for (const ResultTable::Row& row : table.rows) {
        lines.push_back({OneLine(row.label)});
        if (!table.textHead.empty()) lines.back().push_back(OneLine(row.text));
        for (std::size_t c = 0; c < row.cells.size(); ++c) {
            lines.back().push_back(CellText(row.cells[c], table.columns[c].kind));
        }
    }
    std::vector<std::size_t> widths(lines[0].size(), 0);
    for (const PrintedLine& line : lines) {
        for (std::size_t c = 0; c < line.size(); ++c)
            widths[c] = std::max(widths[c], CodePointCount(line[c]));
    }

    const std::size_t textColumns = table.textHead.empty() ? 1 : 2;
    std::string text = fmt::format("\n{}\n", OneLine(table.title));
    for (std::size_t l = 0; l < lines.size(); ++l) {
        const PrintedLine& line = lines[l];
        std::string printed;
        for (std::size_t c = 0; c < line.size(); ++c) {
            const std::string padding = Padding(line[c], widths[c]);
            printed += "  " + (c < textColumns ? line[c] + padding : padding + line[c]);
        }
        if (l + 1 == headLines && table.noteHead != "Note") printed += "  " + table.noteHead;
        if (l >= headLines && !table.rows[l - headLines].note.empty()) {
            printed += "  " + OneLine(table.rows[l - headLines].note);
        }
        printed.erase(printed.find_last_not_of(' ') + 1);
        text += printed + "\n";
    }
    return text;
}

std::string Counted(std::size_t count, const char* one, const char* many)
{
    return fmt::format("{} {}", count, count == 1 ? one : many);
}

std::string ConstraintText(Constraint constraint)
{
    switch (constraint) {
        case Constraint::kFirst:
            return "the first category has effect 0";
        case Constraint::kLast:
            return "the last category has effect 0";
        case Constraint::kSum:
            return "the effects of a variable sum to 0";
        default:
            return "the weighted effects of a variable sum to 0";
    }
}

std::string SelectionText(const Options& options)
{
    constexpr const char* kCriteria[] = {"adjusted R squared", "MSE", "Cp", "AIC", "SBC", "PC"};
    switch (options.selection) {
        case Selection::kBest:
            return fmt::format("best subsets by {}", kCriteria[static_cast<int>(options.criterion)]);
        case Selection::kStepwise:
            return fmt::format(
                "stepwise, to enter {:.6g} but for the first term, to remove {:.6g} but for the last",
                options.enter,
                options.remove);
        case Selection::kForward:
            return fmt::format("forward, to enter {:.6g} but for the first term", options.enter);
        default:
            return fmt::format("backward, to remove {:.6g} but for the last term", options.remove);
    }
}

std::string NewRowsText(const char* use, const NewRows& rows)
{
    return fmt::format("{}: {} used, {} dropped for missing cells, {} for unknown categories\n",
                       use,
                       Counted(rows.rows.size(), "row", "rows"),
                       rows.droppedRows,
                       rows.unknownRows);
}

const char* AnalysisText(Analysis analysis)
{
    switch (analysis) {
        case Analysis::kAnova:
            return "Analysis of variance";
        case Analysis::kLogit:
            return "Logistic regression";
        default:
            return "Linear regression";
    }
}

std::string LogitText(const LogitOptions& options)
{
    constexpr const char* kLinks[] = {"logit", "probit", "complementary log-log", "log-log"};
    return fmt::format("Link: {}{}\n",
                       kLinks[static_cast<int>(options.link)],
                       options.firth ? ", Firth's penalised likelihood" : "");
}

/** What is compared with what; nothing of a response of numbers. */
std::string ResponseText(const ModelData& data)
{
    const std::vector<std::string>& names = data.responseCategories;
    if (names.empty()) return "";
    return fmt::format("Response: {} {} against {}\n",
                       names.size() > 2 ? "categories" : "category",
                       OneLine(fmt::format("{}", fmt::join(names.begin() + 1, names.end(), ", "))),
                       OneLine(names.front()));
}

/** Where the engine's entry tests are not the plain score test of the term. */
const char* EntryTestText(const ModelData& data, const Options& options)
{
    if (IsMultinomial(data)) return " (of a numeric term that of the whole model, on 1 DF)";
    return options.weights.empty() ? "" : " (whose variance leaves out the trials)";
}

std::string LogitSelectionText(const ModelData& data, const Options& options)
{
    constexpr const char* kCriteria[] =
        {"-2 log likelihood", "the likelihood-ratio test", "the score test", "the Wald test", "AIC", "SBC"};
    const LogitOptions& logit = options.logit;
    const std::string enter =
        fmt::format(", to enter {:.6g} by the score test{}", options.enter, EntryTestText(data, options));
    const std::string remove =
        fmt::format(", to remove {:.6g} by {}",
                    options.remove,
                    kCriteria[static_cast<int>(logit.criterion.value_or(LogitCriterion::kLikelihoodRatio))]);
    switch (logit.selection) {
        case LogitSelection::kBest:
            return fmt::format("best subsets by {}",
                               kCriteria[static_cast<int>(logit.criterion.value_or(LogitCriterion::kAic))]);
        case LogitSelection::kStepwise:
            return "stepwise" + enter + remove;
        case LogitSelection::kBackwardStepwise:
            return "backward stepwise" + remove + enter;
        case LogitSelection::kForward:
            return "forward" + enter;
        default:
            return "backward" + remove;
    }
}

std::string TitleText(const ModelData& data, const Options& options)
{
    std::vector<std::string> terms;
    for (const Factor& factor : data.factors) {
        if (factor.active) terms.push_back(factor.name);
    }
    std::string text = fmt::format("{} of {} on {}\n",
                                   AnalysisText(options.analysis),
                                   OneLine(options.response),
                                   OneLine(fmt::format("{}", fmt::join(terms, ", "))));
    text += fmt::format("{}: {} used, {} dropped for missing cells\n",
                        std::filesystem::path(options.dataPath).filename().string(),
                        Counted(data.rows.size(), "observation", "observations"),
                        Counted(data.droppedRows, "row", "rows"));
    const bool isLogit = options.analysis == Analysis::kLogit;
    if (isLogit) text += ResponseText(data) + LogitText(options.logit);
    if (isLogit && !options.weights.empty()) text += fmt::format("Trials: {}\n", OneLine(options.weights));
    if (!isLogit && !options.weights.empty()) {
        text += fmt::format("Weights: {}, scaled to mean 1", OneLine(options.weights));
        const auto zero = std::count(data.weights.begin(), data.weights.end(), 0.0);
        if (zero > 0) text += fmt::format(" ({} of weight 0, counted in the degrees of freedom)", zero);
        text += "\n";
    }
    if (!data.qualitative.empty())
        text += fmt::format("Constraint: {}\n", ConstraintText(options.constraint));
    if (options.selection != Selection::kNone) text += fmt::format("Selection: {}\n", SelectionText(options));
    if (options.logit.selection != LogitSelection::kNone)
        text += fmt::format("Selection: {}\n", LogitSelectionText(data, options));
    if (data.validation) text += NewRowsText("Validation", *data.validation);
    if (data.prediction) text += NewRowsText("Prediction", *data.prediction);
    if (options.intercept) {
        text += fmt::format(
            "Intercept: given as {:.6g} (but PRESS, Q squared, studentised residuals, Cook's "
            "distances and leave-one-out predictions have the leverages of an estimated one)\n",
            *options.intercept);
    }
    return text;
}

}  // namespace

std::string ReportText(const ModelData& data, const std::vector<ResultTable>& tables, const Options& options)
{
    std::string text = TitleText(data, options);
    for (const ResultTable& table : tables) {
        if (table.printed) text += TableText(table);
    }
    return text;
}

}  // namespace korvenrg::frontend
