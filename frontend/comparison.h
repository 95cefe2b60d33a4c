/** Tests of the differences between category means, and letter groups, through the doors. */
#ifndef KORVENRG_FRONTEND_COMPARISON_H
#define KORVENRG_FRONTEND_COMPARISON_H

#include <string>
#include <vector>

#include "category_means.h"

namespace korvenrg::frontend {

/** The doors' verdicts on a difference. */
enum Verdict : int
{
    kNotTested = -1,
    kNotSignificant = 0,
    kSignificant = 1
};

struct Comparison
{
    NumberTable contrasts;          ///< the rows of the means' contrasts, with critical values and p-values
    std::vector<double> levels;     ///< what each p-value is compared with
    std::vector<int> verdicts;      ///< of the rows
    bool usesHarmonicMean = false;  ///< one variance for all differences, from the harmonic mean of the sizes
    std::vector<std::string>
        groups;  ///< letters of each category, by identifier; empty when there is no grouping
};

/** Compares all pairs. When that gives no letter groups, the test is repeated with the harmonic mean of the sizes. */
Comparison CompareAll(const CategoryMeans& means, const Fit& fit, Procedure procedure, double alpha);

/** Columns of a comparison with a control, from 0. */
enum ControlColumn : std::size_t
{
    kControlDifference = 0,
    kControlT = 1,
    kControlCritical = 2,
    kControlCriticalDifference = 3,
    kControlProbability = 4,
    kControlId = 5,
    kOtherId = 6
};

struct ControlComparison
{
    NumberTable rows;  ///< one for each other category x 7
    std::vector<int> verdicts;
};

/** Dunnett's test of the other categories against a control, given by its identifier. */
ControlComparison CompareWithControl(const CategoryMeans& means,
                                     const Fit& fit,
                                     int control,
                                     Tail tail,
                                     double alpha);

}  // namespace korvenrg::frontend

#endif
