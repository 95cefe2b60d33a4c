/**
 * korven: reads a CSV file, fits a linear or logistic model through the doors of the shared library, prints the report.
 *
 * Exit codes: 0 done, 1 the request or the data make no model (one line on stderr), 2 the command line is
 * wrong.
 */
#include <fmt/format.h>
#include <CLI/CLI.hpp>

#include <cmath>
#include <cstdio>
#include <exception>
#include <map>
#include <new>
#include <optional>
#include <set>
#include <utility>

#include "csv_output.h"
#include "logit_options.h"
#include "logit_tables.h"
#include "new_rows.h"
#include "number_range.h"
#include "platform_text.h"
#include "prediction.h"
#include "report.h"
#include "roc_plot.h"
#include "term_tables.h"
#include "user_error.h"

namespace korvenrg::frontend {
namespace {

constexpr int kExitBadData = 1;
constexpr int kExitBadUsage = 2;

std::string CheckIntercept(const std::string& text)
{
    constexpr double kLargest = 1e70;
    const auto value = NumberOf(text);
    if (!value) return fmt::format("{} is not a number", text);
    return std::fabs(*value) <= kLargest ? "" : fmt::format("{} is too large to compute with", text);
}

std::string CheckTolerance(const std::string& text)
{
    const auto value = NumberOf(text);
    return value && *value >= 0.0 && *value <= 1.0 ? "" : fmt::format("{} is not between 0 and 1", text);
}

/** 1,2,3 or any of them; none for other text. */
std::optional<std::set<SumsType>> ParseTypes(const std::string& text)
{
    std::set<SumsType> types;
    for (std::size_t i = 0; i < text.size(); ++i) {
        const bool isDigit = text[i] >= '1' && text[i] <= '3';
        if (i % 2 == 0 ? !isDigit : text[i] != ',') return std::nullopt;
        if (i % 2 == 0) types.insert(static_cast<SumsType>(text[i] - '0'));
    }
    if (text.size() % 2 == 0) return std::nullopt;
    return types;
}

std::string CheckTypes(const std::string& text)
{
    return ParseTypes(text) ? "" : fmt::format("{} is none of 1, 2, 3 nor a list of them", text);
}

void AddSelectionOptions(CLI::App& command, Options& options)
{
    static const std::map<std::string, Selection> kSelections{{"best", Selection::kBest},
                                                              {"stepwise", Selection::kStepwise},
                                                              {"forward", Selection::kForward},
                                                              {"backward", Selection::kBackward}};
    static const std::map<std::string, Criterion> kCriteria{{"adjr2", Criterion::kAdjustedRSquared},
                                                            {"mse", Criterion::kMse},
                                                            {"cp", Criterion::kCp},
                                                            {"aic", Criterion::kAic},
                                                            {"sbc", Criterion::kSbc},
                                                            {"pc", Criterion::kPc}};
    command
        .add_option_function<std::string>(
            "--selection",
            [&options](const std::string& name) { options.selection = kSelections.at(name); },
            "chooses among the terms: the best subset, or steps by F tests (a term with many columns moves "
            "as a whole, "
            "and interactions may stay without their main effects)")
        ->check(CLI::IsMember({"best", "stepwise", "forward", "backward"}));
    command
        .add_option_function<std::string>(
            "--criterion",
            [&options](const std::string& name) { options.criterion = kCriteria.at(name); },
            "of the best subset [adjr2]")
        ->check(CLI::IsMember({"adjr2", "mse", "cp", "aic", "sbc", "pc"}));
    command.add_option("--min-vars", options.minTerms, "fewest terms of the best subset [1]")
        ->check(CLI::Range(1, 100000).description(""));
    command.add_option("--max-vars", options.maxTerms, "most terms of the best subset [all]")
        ->check(CLI::Range(1, 100000).description(""));
    command
        .add_option("--enter",
                    options.enter,
                    "largest Pr > F to enter, stepwise and forward; the first term enters in any case [0.05]")
        ->check(CLI::Validator(CheckProbability, "", ""));
    command
        .add_option("--remove",
                    options.remove,
                    "smallest Pr > F to leave, stepwise and backward; the last term stays in any case [0.1]")
        ->check(CLI::Validator(CheckProbability, "", ""));
}

void AddMeansOptions(CLI::App& command, Options& options)
{
    static const std::map<std::string, Procedure> kProcedures{{"tukey", Procedure::kTukey},
                                                              {"lsd", Procedure::kLsd},
                                                              {"bonferroni", Procedure::kBonferroni},
                                                              {"sidak", Procedure::kSidak},
                                                              {"snk", Procedure::kNewmanKeuls},
                                                              {"duncan", Procedure::kDuncan},
                                                              {"regwq", Procedure::kRegwq},
                                                              {"games-howell", Procedure::kGamesHowell},
                                                              {"tamhane", Procedure::kTamhane},
                                                              {"dunnett-c", Procedure::kDunnettC},
                                                              {"bh", Procedure::kFalseDiscoveryRate}};
    static const std::map<std::string, Tail> kTails{{"two", Tail::kTwo},
                                                    {"lower", Tail::kLower},
                                                    {"upper", Tail::kUpper}};
    command
        .add_option("--means", options.means, "a term of categories whose means are wanted; may be repeated")
        ->allow_extra_args(false);
    command
        .add_option(
            "--lsmeans",
            options.lsMeans,
            "a term whose least-squares means are wanted: the other terms balanced, covariates at their "
            "means; may be repeated")
        ->allow_extra_args(false);
    command
        .add_option_function<std::string>(
            "--compare",
            [&options](const std::string& name) { options.procedure = kProcedures.at(name); },
            "compares all pairs of the means and groups them by letters")
        ->check(CLI::IsMember({"tukey",
                               "lsd",
                               "bonferroni",
                               "sidak",
                               "snk",
                               "duncan",
                               "regwq",
                               "games-howell",
                               "tamhane",
                               "dunnett-c",
                               "bh"}));
    command.add_option(
        "--control",
        options.control,
        "the category with which Dunnett's test compares the others; a cell of an interaction as a*b");
    command
        .add_option_function<std::string>(
            "--tail",
            [&options](const std::string& name) { options.tail = kTails.at(name); },
            "of Dunnett's test: lower asks whether the control is below the others, upper whether it is "
            "above [two]")
        ->check(CLI::IsMember({"two", "lower", "upper"}));
}

void CheckMeansOptions(const CLI::App& command, const Options& options)
{
    const bool wantsMeans = !options.means.empty() || !options.lsMeans.empty();
    for (const char* option : {"--compare", "--control"}) {
        if (command.get_option(option)->count() > 0 && !wantsMeans)
            throw CLI::ValidationError(option, "belongs to --means or --lsmeans");
    }
    if (command.get_option("--tail")->count() > 0 && !options.control)
        throw CLI::ValidationError("--tail", "belongs to --control");
    if (!options.procedure || !UsesGroupVariances(*options.procedure)) return;
    if (!options.lsMeans.empty())
        throw CLI::ValidationError("--compare", "games-howell, tamhane and dunnett-c compare --means alone");
    if (!options.weights.empty())
        throw CLI::ValidationError("--compare", "games-howell, tamhane and dunnett-c know no --weights");
}

/** An empty name, such as a shell leaves of a variable that is not set, must not pass for an option not given. */
void RefuseEmptyTexts(const CLI::App& command)
{
    for (const CLI::Option* option : command.get_options()) {
        for (const std::string& text : option->results()) {
            if (text.empty()) throw CLI::ValidationError(option->get_name(), "is empty");
        }
    }
}

/** Refuses options that do not go together. */
void CheckCombinations(const CLI::App& command, const Options& options)
{
    struct Use
    {
        const char* option;
        std::set<Selection> selections;
        const char* owners;
    };
    const Use uses[] = {{"--criterion", {Selection::kBest}, "best"},
                        {"--min-vars", {Selection::kBest}, "best"},
                        {"--max-vars", {Selection::kBest}, "best"},
                        {"--enter", {Selection::kStepwise, Selection::kForward}, "stepwise or forward"},
                        {"--remove", {Selection::kStepwise, Selection::kBackward}, "stepwise or backward"}};
    for (const Use& use : uses) {
        if (command.get_option(use.option)->count() > 0 && !use.selections.contains(options.selection))
            throw CLI::ValidationError(use.option, fmt::format("belongs to --selection {}", use.owners));
    }
    if (options.intercept && options.types && *options.types->rbegin() != SumsType::kSequential)
        throw CLI::ValidationError("--type", "2 and 3 need an intercept that is estimated");
    if (options.maxTerms && *options.maxTerms < options.minTerms)
        throw CLI::ValidationError("--max-vars", "is below --min-vars");
}

void AddModelOptions(CLI::App& command, Options& options)
{
    command.add_option("data", options.dataPath, "CSV file: UTF-8, commas, one header line")->required();
    command
        .add_option("--response", options.response, "column to explain: numbers, or in logit categories too")
        ->required();
    command
        .add_option("--terms",
                    options.terms,
                    "columns of the model, separated by spaces; a*b is the interaction of a and b alone "
                    "(name the main effects as well); a name with spaces goes in double quotes")
        ->required();
    command
        .add_option("--qualitative",
                    options.qualitative,
                    "a column whose values are categories; may be repeated")
        ->allow_extra_args(false);
    static const std::map<std::string, Constraint> kConstraints{{"first", Constraint::kFirst},
                                                                {"last", Constraint::kLast},
                                                                {"sum", Constraint::kSum},
                                                                {"weighted", Constraint::kWeighted}};
    command
        .add_option_function<std::string>(
            "--constraint",
            [&options](const std::string& name) { options.constraint = kConstraints.at(name); },
            "what makes the effects of categories unique: first or last has effect 0, or the "
            "(weighted) sum of effects is 0 [first]")
        ->check(CLI::IsMember({"first", "last", "sum", "weighted"}));
    command.add_option("--alpha", options.alpha, "1 - confidence of the intervals [0.05]")
        ->check(CLI::Validator(CheckProbability, "", ""));
    command
        .add_option(
            "--tolerance",
            options.tolerance,
            "smallest tolerance (1 - R squared on the columns before it) at which a column still enters; the "
            "default keeps out what is a linear combination but for rounding [1e-12]")
        ->check(CLI::Validator(CheckTolerance, "", ""));
    command.add_flag("--cases", options.showCases, "prints predictions, residuals and influence of each row");
}

void AddLinearOptions(CLI::App& command, Options& options)
{
    command.add_option("--weights",
                       options.weights,
                       "column of regression weights, 0 or more; scaled to mean 1");
    command.add_option("--intercept", options.intercept, "fixes the intercept at this value")
        ->check(CLI::Validator(CheckIntercept, "", ""));
    AddSelectionOptions(command, options);
    command
        .add_option_function<std::string>(
            "--type",
            [&options](const std::string& text) { options.types = ParseTypes(text); },
            "sums of squares of each term: 1 given those before it in the table (numeric columns, then "
            "categories, then "
            "interactions), 2 given all that do not contain it, 3 given all; one or several, as 1,3 [3 for "
            "anova with "
            "several terms]")
        ->check(CLI::Validator(CheckTypes, "", ""));
    command.add_option("--validate",
                       options.validatedRows,
                       "data rows, as 1-5,9, that are kept out of the fit and judged by it");
    command.add_option("--predict",
                       options.predictionPath,
                       "CSV file with the columns of the terms; its rows are predicted");
    command.add_option(
        "--out",
        options.outFolder,
        "folder for the tables: fit.csv, anova.csv, parameters.csv, standardised.csv, "
        "covariance.csv, cases.csv, and when "
        "asked for models.csv, type1.csv to type3.csv, validation.csv, predictions.csv; of the "
        "means (of the second term means2.csv, ...) means.csv, means_contrasts.csv, "
        "means_control.csv, lsmeans.csv, ...");
}

void PrintReport(const std::string& report)
{
    const bool written = std::fwrite(report.data(), 1, report.size(), stdout) == report.size();
    if (!written || std::fflush(stdout) != 0) throw UserError("cannot write the report");
}

void RunLogitCommand(const Options& options)
{
    const CsvTable table = ReadCsvTable(options.dataPath);
    const ModelData data = MakeModelData(table, options);
    const Design design = BuildDesign(data, options.constraint);
    CheckNumberRange(data, design, options);
    if (options.logit.doses && design.columns != 1)
        throw UserError("--dose takes a model of one numeric term");
    const LogitFit fit = FitLogit(data, design, options);
    const std::vector<ResultTable> tables = LogitTables(data, design, fit, options);
    if (!options.outFolder.empty()) WriteCsvFiles(tables, options.outFolder);
    if (!options.logit.rocPath.empty()) WriteTextFile(CsvText(RocTable(fit)), options.logit.rocPath);
    if (!options.logit.plotPath.empty()) WriteTextFile(RocDrawing(fit, options), options.logit.plotPath);
    PrintReport(ReportText(data, tables, options) + LogitWarning(data, fit));
}

void RunCommand(Options options)
{
    const CsvTable table = ReadCsvTable(options.dataPath);
    ModelData data = MakeModelData(table, options);
    if (!options.predictionPath.empty()) data.prediction = ReadPredictionRows(options.predictionPath, data);
    if (!options.types) options.types = DefaultTypes(data, options);
    const Design design = BuildDesign(data, options.constraint);
    CheckNumberRange(data, design, options);
    Fit fit = FitModel(data, design, options);

    std::vector<ResultTable> newRows;
    if (data.validation) newRows.push_back(ValidationTable(data, design, fit, options));
    if (data.prediction) newRows.push_back(PredictionTable(data, design, fit, options));
    std::vector<ResultTable> tables = MakeResultTables(data, design, fit, options);
    for (ResultTable& rows : newRows)
        tables.push_back(std::move(rows));
    if (!options.outFolder.empty()) WriteCsvFiles(tables, options.outFolder);

    PrintReport(ReportText(data, tables, options));
}

int Main(int argc, char** argv)
{
    Options options;
    CLI::App app{
        "Linear and logistic models from CSV files. Rows with a missing cell (empty, NA, NaN or a point) in "
        "a "
        "column of the model are left out and counted."};
    app.require_subcommand(1);
    CLI::App* regress =
        app.add_subcommand("regress", "linear regression; text columns are categories, numbers are not");
    CLI::App* anova =
        app.add_subcommand("anova", "analysis of variance; all columns are categories but --covariate");
    CLI::App* logit = app.add_subcommand(
        "logit",
        "logistic regression of a 0/1 response, of successes or of categories; text columns are categories");
    for (CLI::App* command : {regress, anova, logit})
        AddModelOptions(*command, options);
    AddLinearOptions(*regress, options);
    AddLinearOptions(*anova, options);
    AddLogitOptions(*logit, options);
    AddMeansOptions(*anova, options);
    anova->add_option("--covariate", options.covariates, "a numeric column taken as it is; may be repeated")
        ->allow_extra_args(false);

    try {
        app.parse(argc, argv);
        RefuseEmptyTexts(*app.get_subcommands().front());
        if (logit->parsed()) CheckLogitOptions(*logit, options);
        if (!logit->parsed()) CheckCombinations(anova->parsed() ? *anova : *regress, options);
        if (anova->parsed()) CheckMeansOptions(*anova, options);
    } catch (const CLI::Success& request) {
        return app.exit(request);
    } catch (const CLI::ParseError& error) {
        fmt::print(stderr, "korven: {} (korven --help shows the options)\n", OneLine(error.what()));
        return kExitBadUsage;
    }
    options.analysis = anova->parsed()   ? Analysis::kAnova
                       : logit->parsed() ? Analysis::kLogit
                                         : Analysis::kRegression;

    try {
        if (logit->parsed()) {
            RunLogitCommand(options);
        } else {
            RunCommand(options);
        }
    } catch (const std::bad_alloc&) {
        fmt::print(stderr, "korven: not enough memory\n");
        return kExitBadData;
    } catch (const std::exception& error) {
        fmt::print(stderr, "korven: {}\n", OneLine(error.what()));
        return kExitBadData;
    }
    return 0;
}

}  // namespace
}  // namespace korvenrg::frontend

int main(int argc, char** argv)
{
    return korvenrg::frontend::Main(argc, argv);
}
