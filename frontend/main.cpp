/**
 * korven: reads a CSV file, fits a linear model through the doors of the shared library, prints the report.
 *
 * Exit codes: 0 done, 1 the request or the data make no model (one line on stderr), 2 the command line is
 * wrong.
 */
#include <fmt/format.h>
#include <CLI/CLI.hpp>

#include <cstdio>
#include <exception>
#include <map>
#include <new>

#include "csv_output.h"
#include "report.h"
#include "user_error.h"

namespace korvenrg::frontend {
namespace {

constexpr int kExitBadData = 1;
constexpr int kExitBadUsage = 2;

std::string CheckProbability(const std::string& text)
{
    double value = 0.0;
    const bool open = CLI::detail::lexical_cast(text, value) && value > 0.0 && value < 1.0;
    return open ? "" : fmt::format("{} is not between 0 and 1", text);
}

std::string CheckFinite(const std::string& text)
{
    return NumberOf(text) ? "" : fmt::format("{} is not a number", text);
}

void AddModelOptions(CLI::App& command, Options& options)
{
    command.add_option("data", options.dataPath, "CSV file: UTF-8, commas, one header line")->required();
    command.add_option("--response", options.response, "numeric column to explain")->required();
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
    command.add_option("--weights",
                       options.weights,
                       "column of regression weights, 0 or more; scaled to mean 1");
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
    command.add_option("--intercept", options.intercept, "fixes the intercept at this value")
        ->check(CLI::Validator(CheckFinite, "", ""));
    command.add_option("--alpha", options.alpha, "1 - confidence of the intervals [0.05]")
        ->check(CLI::Validator(CheckProbability, "", ""));
    command
        .add_option(
            "--tolerance",
            options.tolerance,
            "smallest tolerance (1 - R squared on the columns before it) at which a column still enters; the "
            "default keeps out what is a linear combination but for rounding [1e-12]")
        ->check(CLI::Range(0.0, 1.0).description(""));
    command.add_flag("--cases", options.showCases, "prints predictions, residuals and influence of each row");
    command.add_option(
        "--out",
        options.outFolder,
        "folder for fit.csv, anova.csv, parameters.csv, standardised.csv, covariance.csv, cases.csv");
}

void RunCommand(const Options& options)
{
    const CsvTable table = ReadCsvTable(options.dataPath);
    const ModelData data = MakeModelData(table, options);
    const Design design = BuildDesign(data, options.constraint);
    const Fit fit = FitModel(data, design, options);
    const std::vector<ResultTable> tables = MakeResultTables(data, design, fit, options);
    if (!options.outFolder.empty()) WriteCsvFiles(tables, options.outFolder);

    const std::string report = ReportText(data, tables, options);
    const bool written = std::fwrite(report.data(), 1, report.size(), stdout) == report.size();
    if (!written || std::fflush(stdout) != 0) throw UserError("cannot write the report");
}

int Main(int argc, char** argv)
{
    Options options;
    CLI::App app{
        "Linear models from CSV files. Rows with a missing cell (empty, NA, NaN or a point) in a "
        "column of the model are left out and counted."};
    app.require_subcommand(1);
    CLI::App* regress =
        app.add_subcommand("regress", "linear regression; text columns are categories, numbers are not");
    CLI::App* anova =
        app.add_subcommand("anova", "analysis of variance; all columns are categories but --covariate");
    AddModelOptions(*regress, options);
    AddModelOptions(*anova, options);
    anova->add_option("--covariate", options.covariates, "a numeric column taken as it is; may be repeated")
        ->allow_extra_args(false);

    try {
        app.parse(argc, argv);
    } catch (const CLI::Success& request) {
        return app.exit(request);
    } catch (const CLI::ParseError& error) {
        fmt::print(stderr, "korven: {} (korven --help shows the options)\n", error.what());
        return kExitBadUsage;
    }
    options.analysis = anova->parsed() ? Analysis::kAnova : Analysis::kRegression;

    try {
        RunCommand(options);
    } catch (const std::bad_alloc&) {
        fmt::print(stderr, "korven: not enough memory\n");
        return kExitBadData;
    } catch (const std::exception& error) {
        fmt::print(stderr, "korven: {}\n", error.what());
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
