/** What the command line asks for. */
#ifndef KORVENRG_FRONTEND_OPTIONS_H
#define KORVENRG_FRONTEND_OPTIONS_H

#include <optional>
#include <set>
#include <string>
#include <vector>

namespace korvenrg::frontend {

enum class Analysis
{
    kRegression,
    kAnova,
    kLogit
};

/** The doors' constraint codes. */
enum class Constraint : int
{
    kFirst = 0,
    kLast = 1,
    kSum = 2,
    kWeighted = 3
};

/** The doors' codes of the ways to choose among the terms. */
enum class Selection : int
{
    kNone = -1,
    kBest = 0,
    kStepwise = 1,
    kForward = 2,
    kBackward = 3
};

/** The doors' codes of what makes a subset the best. */
enum class Criterion : int
{
    kAdjustedRSquared = 0,
    kMse = 1,
    kCp = 2,
    kAic = 3,
    kSbc = 4,
    kPc = 5
};

/** Kinds of sums of squares. */
enum class SumsType : int
{
    kSequential = 1,
    kHierarchical = 2,
    kEstimable = 3
};

/** Ways to compare all pairs of means: the doors' codes, and one of this command. */
enum class Procedure : int
{
    kTukey = 1,
    kLsd = 2,
    kBonferroni = 3,
    kSidak = 4,
    kNewmanKeuls = 5,
    kDuncan = 6,
    kRegwq = 7,
    kGamesHowell = 9,
    kTamhane = 10,
    kDunnettC = 11,
    kFalseDiscoveryRate = 100
};

/** The doors' codes of the alternatives of a comparison with a control. */
enum class Tail : int
{
    kTwo = 0,
    kLower = -1,  ///< the control is below the others
    kUpper = 1
};

/** Whether a procedure uses each group's own variance instead of the error of the model. */
inline bool UsesGroupVariances(Procedure procedure)
{
    return procedure == Procedure::kGamesHowell || procedure == Procedure::kTamhane ||
           procedure == Procedure::kDunnettC;
}

/** Small enough to keep strongly collinear columns (Longley's go down to 0.0006), large enough to refuse
 * columns that are linear combinations of others but for rounding. */
inline constexpr double kDefaultTolerance = 1e-12;

/** The doors' codes of the link between predictor and probability. */
enum class Link : int
{
    kLogit = 0,
    kProbit = 1,
    kComplementaryLogLog = 2,
    kLogLog = 3
};

/** Probability from which a row counts as 1. */
inline constexpr double kDefaultCut = 0.5;

enum class Mortality
{
    kNone,
    kEstimated,
    kGiven
};

/** The logit door's codes of the ways to choose among the terms. */
enum class LogitSelection : int
{
    kNone = -1,
    kBest = 0,
    kStepwise = 1,
    kBackwardStepwise = 2,
    kForward = 3,
    kBackward = 4
};

/** The logit door's codes of what makes a subset the best; steps know the likelihood ratio and Wald's test alone. */
enum class LogitCriterion : int
{
    kLogLikelihood = 0,
    kLikelihoodRatio = 1,
    kScore = 2,
    kWald = 3,
    kAic = 4,
    kSbc = 5
};

/** What only a logistic regression asks for. */
struct LogitOptions
{
    bool categories = false;               ///< numbers of the response are categories too
    std::optional<std::string> reference;  ///< category that the others are compared with; none: the first
    LogitSelection selection = LogitSelection::kNone;
    std::optional<LogitCriterion> criterion;  ///< none: AIC of subsets, likelihood ratio of steps
    Link link = Link::kLogit;
    bool firth = false;
    Mortality mortality = Mortality::kNone;
    double mortalityValue = 0.0;
    bool profile = false;
    bool doses = false;
    std::optional<double> cut;  ///< none: kDefaultCut
    std::string rocPath;        ///< empty: no file of the curve
    std::string plotPath;       ///< empty: no drawing
};

struct Options
{
    Analysis analysis = Analysis::kRegression;
    std::string dataPath;
    std::string response;
    std::string terms;
    std::vector<std::string> qualitative;
    std::vector<std::string> covariates;
    std::string weights;  ///< empty: every row weighs 1; in a logistic regression the trials
    LogitOptions logit;
    Constraint constraint = Constraint::kFirst;
    std::optional<double> intercept;  ///< none: estimated
    double alpha = 0.05;
    double tolerance = kDefaultTolerance;
    Selection selection = Selection::kNone;
    Criterion criterion = Criterion::kAdjustedRSquared;
    int minTerms = 1;
    std::optional<int> maxTerms;  ///< none: all
    double enter = 0.05;
    double remove = 0.1;
    std::optional<std::set<SumsType>> types;  ///< none: what the analysis gives by default
    std::vector<std::string> means;           ///< terms whose category means are wanted
    std::vector<std::string> lsMeans;         ///< terms whose LS means are wanted
    std::optional<Procedure> procedure;
    std::optional<std::string> control;  ///< the category that the others are compared with
    Tail tail = Tail::kTwo;
    bool showCases = false;
    std::string validatedRows;   ///< as 1-5,9; empty: none
    std::string predictionPath;  ///< empty: no rows to predict
    std::string outFolder;       ///< empty: no files
};

}  // namespace korvenrg::frontend

#endif
