#include "logit_options.h"

#include <fmt/format.h>

#include <map>
#include <set>

#include "csv_table.h"

namespace korvenrg::frontend {
namespace {

std::string CheckShare(const std::string& text)
{
    const auto value = NumberOf(text);
    return text == "estimate" || (value && *value >= 0.0 && *value < 1.0)
               ? ""
               : fmt::format("{} is neither estimate nor a share below 1", text);
}

void AddSelectionOptions(CLI::App& command, Options& options)
{
    static const std::map<std::string, LogitSelection> kSelections{
        {"best", LogitSelection::kBest},
        {"stepwise", LogitSelection::kStepwise},
        {"backward-stepwise", LogitSelection::kBackwardStepwise},
        {"forward", LogitSelection::kForward},
        {"backward", LogitSelection::kBackward}};
    static const std::map<std::string, LogitCriterion> kCriteria{{"loglik", LogitCriterion::kLogLikelihood},
                                                                 {"lr", LogitCriterion::kLikelihoodRatio},
                                                                 {"score", LogitCriterion::kScore},
                                                                 {"wald", LogitCriterion::kWald},
                                                                 {"aic", LogitCriterion::kAic},
                                                                 {"sbc", LogitCriterion::kSbc}};
    LogitOptions& logit = options.logit;
    command
        .add_option_function<std::string>(
            "--selection",
            [&logit](const std::string& name) { logit.selection = kSelections.at(name); },
            "chooses among the terms: the best subset, or steps in by score tests and out by --criterion (a "
            "term "
            "with many columns moves as a whole)")
        ->check(CLI::IsMember({"best", "stepwise", "backward-stepwise", "forward", "backward"}));
    command
        .add_option_function<std::string>(
            "--criterion",
            [&logit](const std::string& name) { logit.criterion = kCriteria.at(name); },
            "of the best subset, the p-value for lr, score and wald [aic]; of removals lr or wald [lr]")
        ->check(CLI::IsMember({"loglik", "lr", "score", "wald", "aic", "sbc"}));
    command.add_option("--min-vars", options.minTerms, "fewest terms of the best subset [1]")
        ->check(CLI::Range(0, 100000).description(""));
    command.add_option("--max-vars", options.maxTerms, "most terms of the best subset [all]")
        ->check(CLI::Range(1, 100000).description(""));
    command.add_option("--enter", options.enter, "a term enters while its p-value is below [0.05]")
        ->check(CLI::Validator(CheckProbability, "", ""));
    command.add_option("--remove", options.remove, "a term leaves while its p-value is above [0.1]")
        ->check(CLI::Validator(CheckProbability, "", ""));
}

}  // namespace

std::string CheckProbability(const std::string& text)
{
    double value = 0.0;
    const bool open = CLI::detail::lexical_cast(text, value) && value > 0.0 && value < 1.0;
    return open ? "" : fmt::format("{} is not between 0 and 1", text);
}

void AddLogitOptions(CLI::App& command, Options& options)
{
    static const std::map<std::string, Link> kLinks{{"logit", Link::kLogit},
                                                    {"probit", Link::kProbit},
                                                    {"cloglog", Link::kComplementaryLogLog},
                                                    {"loglog", Link::kLogLog}};
    LogitOptions& logit = options.logit;
    command.add_option("--trials", options.weights, "column of trials; the response then counts successes");
    command.add_flag("--multinomial",
                     logit.categories,
                     "the numbers of the response are categories, as those of a text response always are");
    command.add_option("--reference",
                       logit.reference,
                       "category of the response that the others are compared with [the first]");
    AddSelectionOptions(command, options);
    command
        .add_option_function<std::string>(
            "--link",
            [&logit](const std::string& name) { logit.link = kLinks.at(name); },
            "between predictor and probability [logit]")
        ->check(CLI::IsMember({"logit", "probit", "cloglog", "loglog"}));
    command.add_flag("--firth", logit.firth, "Firth's penalised likelihood, for separated data");
    command
        .add_option_function<std::string>(
            "--mortality",
            [&logit](const std::string& text) {
                logit.mortality = text == "estimate" ? Mortality::kEstimated : Mortality::kGiven;
                logit.mortalityValue = NumberOf(text).value_or(0.0);
            },
            "share that responds without any dose: estimate, or its value")
        ->check(CLI::Validator(CheckShare, "", ""));
    command.add_flag("--profile", logit.profile, "profile-likelihood intervals beside Wald's");
    command
        .add_option("--classify",
                    logit.cut,
                    "probability from which a row counts as 1 [0.5]; of two categories")
        ->check(CLI::Validator(CheckProbability, "", ""));
    command.add_flag("--dose", logit.doses, "doses at given probabilities; for one numeric term");
    command.add_option("--roc", logit.rocPath, "CSV file for the points of the ROC curve");
    command.add_option("--plot", logit.plotPath, "SVG file for the ROC curve and the classification");
    command.add_option("--out",
                       options.outFolder,
                       "folder for the tables: fit.csv, tests.csv, parameters.csv, standardised.csv, "
                       "classification.csv, cases.csv; with several terms or categories type3.csv, with "
                       "--selection models.csv, "
                       "with --dose doses.csv");
}

void CheckLogitOptions(const CLI::App& command, const Options& options)
{
    using enum LogitSelection;
    const LogitOptions& logit = options.logit;
    struct Use
    {
        const char* option;
        std::set<LogitSelection> selections;
        const char* owners;
    };
    const Use uses[] = {
        {"--criterion",
         {kBest, kStepwise, kBackwardStepwise, kBackward},
         "best, stepwise, backward-stepwise or backward"},
        {"--min-vars", {kBest}, "best"},
        {"--max-vars", {kBest}, "best"},
        {"--enter", {kStepwise, kBackwardStepwise, kForward}, "stepwise, backward-stepwise or forward"},
        {"--remove", {kStepwise, kBackwardStepwise, kBackward}, "stepwise, backward-stepwise or backward"}};
    for (const Use& use : uses) {
        if (command.get_option(use.option)->count() > 0 && !use.selections.contains(logit.selection))
            throw CLI::ValidationError(use.option, fmt::format("belongs to --selection {}", use.owners));
    }
    const bool isOfSteps = !logit.criterion || *logit.criterion == LogitCriterion::kLikelihoodRatio ||
                           *logit.criterion == LogitCriterion::kWald;
    if (logit.selection != kBest && !isOfSteps)
        throw CLI::ValidationError("--criterion", "is lr or wald unless --selection is best");
    if (options.maxTerms && *options.maxTerms < options.minTerms)
        throw CLI::ValidationError("--max-vars", "is below --min-vars");
    if (logit.doses && logit.selection != kNone)
        throw CLI::ValidationError("--dose", "takes a model of one numeric term, which is no --selection");
}

}  // namespace korvenrg::frontend
