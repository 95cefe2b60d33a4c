/** What one run of multiple comparisons works on. */
#pragma once

#include "comparisons/contrast_columns.h"
#include "core/matrix.h"

namespace korvenrg::comparisons {

/** Codes of the procedures. Others compute nothing. */
enum Procedure
{
    kTukey = 1,
    kFisherLsd,
    kBonferroni,
    kDunnSidak,
    kNewmanKeuls,
    kDuncan,
    kRegwq,
    kNone,
    kGamesHowell,
    kTamhaneT2,
    kDunnettC
};

struct ComparisonRun
{
    int procedure;
    double categories;  ///< k
    double df;          ///< of the common error
    double alpha;
    double* newalpha;  ///< the caller's cell for the adjusted level

    const matrix<double>* sizes;      ///< of the groups, by identifier
    const matrix<double>* variances;  ///< of the groups, by identifier
    bool harmonic;                    ///< one variance for every difference
    double harmonicVariance;

    matrix<double>* contrasts;
    int rows;
    matrix<int>* verdicts;
};

/** Hands out the level of a procedure that has one. */
inline void StoreLevel(const ComparisonRun& run, double level)
{
    if (run.newalpha != nullptr) *run.newalpha = level;
}

}  // namespace korvenrg::comparisons
