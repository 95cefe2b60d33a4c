/** What the command line asks for. */
#ifndef KORVENRG_FRONTEND_OPTIONS_H
#define KORVENRG_FRONTEND_OPTIONS_H

#include <optional>
#include <string>
#include <vector>

namespace korvenrg::frontend {

enum class Analysis
{
    kRegression,
    kAnova
};

/** The doors' constraint codes. */
enum class Constraint : int
{
    kFirst = 0,
    kLast = 1,
    kSum = 2,
    kWeighted = 3
};

/** Small enough to keep strongly collinear columns (Longley's go down to 0.0006), large enough to refuse
 * columns that are linear combinations of others but for rounding. */
inline constexpr double kDefaultTolerance = 1e-12;

struct Options
{
    Analysis analysis = Analysis::kRegression;
    std::string dataPath;
    std::string response;
    std::string terms;
    std::vector<std::string> qualitative;
    std::vector<std::string> covariates;
    std::string weights;  ///< empty: every row weighs 1
    Constraint constraint = Constraint::kFirst;
    std::optional<double> intercept;  ///< none: estimated
    double alpha = 0.05;
    double tolerance = kDefaultTolerance;
    bool showCases = false;
    std::string outFolder;  ///< empty: no files
};

}  // namespace korvenrg::frontend

#endif
