#include "comparisons/control_test.h"

#include <algorithm>
#include <cmath>
#include <initializer_list>
#include <optional>

#include "comparisons/contrast_columns.h"
#include "core/limits.h"
#include "kernel/distributions/comparison_laws.h"
#include "kernel/scalars/scalars.h"

namespace korvenrg::comparisons {

namespace {

/** Tail codes; any other is the upper tail, save that its critical value takes the sign of the code. */
enum TailCode
{
    kLowerTail = -1,
    kTwoSided = 0
};

struct ControlRun
{
    int categories;
    int control;
    matrix<double>* factors;
    const matrix<double>* contrasts;
    double df;
    double alpha;
    int tail;
    matrix<double>* table;
    matrix<int>* verdicts;
};

/** Dunnett's critical value, the same for all rows. */
double CriticalValue(const ControlRun& run)
{
    matrix<double> confidence(1, 1, 1 - run.alpha);
    matrix<double> result(1, 1);
    if (run.tail == kTwoSided) {
        qmccv(run.categories, run.factors, run.df, 1.0, &confidence, &result);
    } else {
        qmcbv(run.categories, run.factors, 1.0, run.df, 1.0, &confidence, &result);
    }
    return result.vbget(1);
}

bool Involves(const ControlRun& run, int contrast, ContrastCol id)
{
    return run.contrasts->vbget(contrast, id) == run.control;
}

/** Difference and t as control minus other, and who they are. */
void Orient(const ControlRun& run, int contrast, int row)
{
    const bool turned = Involves(run, contrast, kContrastSecondId);
    const double sign = turned ? -1.0 : 1.0;
    const ContrastCol own = turned ? kContrastSecondId : kContrastFirstId;
    const ContrastCol other = turned ? kContrastFirstId : kContrastSecondId;
    run.table->vbset(row, kControlDifference, sign * run.contrasts->vbget(contrast, kContrastDifference));
    run.table->vbset(row, kControlStandardised, sign * run.contrasts->vbget(contrast, kContrastStandardised));
    run.table->vbset(row, kControlId, run.contrasts->vbget(contrast, own));
    run.table->vbset(row, kControlOtherId, run.contrasts->vbget(contrast, other));
}

void WriteTest(const ControlRun& run, int row, double variance, double critical)
{
    const double t = run.table->vbget(row, kControlStandardised);
    const double sign = run.tail == kTwoSided ? 1.0 : FSgn(run.tail);
    const double p = run.tail == kTwoSided ? pvmccv(run.categories, run.factors, run.df, std::fabs(t))
                                           : pvmcbv(run.categories, run.factors, run.df, sign * t);
    run.table->vbset(row, kControlCritical, critical * sign);
    run.table->vbset(row, kControlCriticalDifference, std::sqrt(variance) * sign * critical);
    run.table->vbset(row, kControlP, p);
}

void MarkUntestable(const ControlRun& run, int row)
{
    for (const ControlCol col :
         {kControlDifference, kControlStandardised, kControlCritical, kControlCriticalDifference, kControlP})
    {
        run.table->vbset(row, col, kMissing);
    }
}

// A variance above 0 that is too small for a test leaves markers that are compared like numbers, so the two-sided
// verdict is 1. Pinned by MCBTest.TinyVariance.
Verdict JudgeRow(const ControlRun& run, int row, double variance)
{
    if (variance <= 0) return kNotTestable;
    const double t = run.table->vbget(row, kControlStandardised);
    const double critical = run.table->vbget(row, kControlCritical);
    const bool significant = run.tail == kTwoSided    ? critical < std::fabs(t)
                             : run.tail == kLowerTail ? t < critical
                                                      : critical < t;
    return significant ? kSignificant : kNotSignificant;
}

}  // namespace

}  // namespace korvenrg::comparisons

using namespace korvenrg::comparisons;

void cMCBTest(int NbClasses,
              int ControlID,
              int nnm1,
              matrix<double>* sqrni,
              matrix<double>* ioContrastsStats,
              int NbContrasts,
              double DFErrors,
              double alpha,
              matrix<double>* oMat,
              matrix<int>* oSignif,
              int Tail)
{
    const ControlRun run{NbClasses, ControlID, sqrni, ioContrastsStats, DFErrors, alpha, Tail, oMat, oSignif};
    const int contrasts = std::min(NbContrasts, ioContrastsStats->rows);
    const int rows = std::min(nnm1, oMat->rows);
    std::optional<double> critical;
    int row = 0;
    for (int contrast = 1; contrast <= contrasts && row < rows; ++contrast) {
        if (!Involves(run, contrast, kContrastFirstId) && !Involves(run, contrast, kContrastSecondId))
            continue;
        row += 1;
        Orient(run, contrast, row);
        const double variance = ioContrastsStats->vbget(contrast, kContrastVariance);
        if (variance <= korvenrg::kEps) {
            MarkUntestable(run, row);
        } else {
            if (!critical) critical = CriticalValue(run);
            WriteTest(run, row, variance, *critical);
        }
        oSignif->vbset(row, JudgeRow(run, row, variance));
    }
}
