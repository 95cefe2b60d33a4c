#include "comparisons/stepwise_pass.h"

#include <cmath>
#include <initializer_list>
#include <vector>

#include "comparisons/scalar_tests.h"
#include "core/limits.h"

namespace korvenrg::comparisons {

namespace {

/** Level and critical value of a row. */
struct Threshold
{
    double level = 0;
    double critical = 0;
};

/** The thresholds of the ranges met so far, so that each costs one critical value. */
class RangeMemo
{
  public:
    explicit RangeMemo(const ComparisonRun& run) : run_(run) {}

    const Threshold* Find(double means) const
    {
        for (const auto& [known, threshold] : entries_) {
            if (std::fabs(known - means) < kEps) return &threshold;
        }
        return nullptr;
    }

    Threshold Of(double means)
    {
        if (const Threshold* known = Find(means)) return *known;
        const double level = LevelOf(means);
        const Threshold threshold{level, RangeCritical(means, run_.categories, run_.df, level)};
        entries_.emplace_back(means, threshold);
        return threshold;
    }

  private:
    double LevelOf(double means) const
    {
        if (run_.procedure == kNewmanKeuls) return run_.alpha;
        return run_.procedure == kDuncan ? DuncanLevel(means, run_.alpha)
                                         : RegwqLevel(means, run_.categories, run_.alpha);
    }

    const ComparisonRun& run_;
    std::vector<std::pair<double, Threshold>> entries_;
};

/** The number of sorted means from one category of a row to the other. */
double MeansSpanned(const ComparisonRun& run, int row)
{
    const matrix<double>& table = *run.contrasts;
    return std::fabs(table.vbget(row, kContrastFirstRank) - table.vbget(row, kContrastSecondRank)) + 1;
}

/**
 * The thresholds of REGWQ, one a row: those of the row's range, and then, from the last row but one up, those of the
 * next row where that one's critical value is larger. A row that cannot be tested has those of an earlier one of its
 * range, or zeros.
 */
std::vector<Threshold> PrepareRegwq(const ComparisonRun& run)
{
    RangeMemo memo(run);
    std::vector<Threshold> thresholds;
    for (int row = 1; row <= run.rows; ++row) {
        const double means = MeansSpanned(run, row);
        const Threshold* known = memo.Find(means);
        if (known != nullptr) {
            thresholds.push_back(*known);
        } else if (run.contrasts->vbget(row, kContrastVariance) > kGuard) {
            thresholds.push_back(memo.Of(means));
        } else {
            thresholds.emplace_back();
        }
    }
    // The textbook keeps the thresholds of each range. Here a row takes larger ones from any row behind it, that of
    // another first rank too. Pinned by MCATest.RegwqCriticalValuesNeverRise.
    for (std::size_t i = thresholds.size(); i-- > 1;) {
        if (thresholds[i - 1].critical < thresholds[i].critical) thresholds[i - 1] = thresholds[i];
    }
    return thresholds;
}

/** The range of the last non-significant row: narrower ones behind it are not tested. */
struct Barrier
{
    double means = 0;
    bool armed = false;

    /** Whether a row is to be tested; one that is takes the barrier down. */
    bool LetsThrough(double spanned)
    {
        if (!(spanned >= means)) return false;
        if (armed) *this = Barrier();
        return true;
    }
};

// An untested row counts as not significant, so the barrier comes down with the ranges along a first rank and
// the next first rank is tested again, also inside a range that was not significant; the textbook never tests
// there. Pinned by MCATest.TheBarrierFollowsTheRange.
void JudgeRow(const ComparisonRun& run, int row, double means, Barrier& barrier)
{
    const double level = run.contrasts->vbget(row, kContrastLevel);
    const bool significant = !(level <= run.contrasts->vbget(row, kContrastP));
    barrier = significant ? Barrier() : Barrier{means, true};
    run.verdicts->vbset(row, significant ? kSignificant : kNotSignificant);
}

void WriteTest(const ComparisonRun& run, int row, double means, const Threshold& threshold)
{
    matrix<double>& table = *run.contrasts;
    const double diff = std::fabs(table.vbget(row, kContrastStandardised));
    table.vbset(row, kContrastCritical, threshold.critical);
    table.vbset(row, kContrastP, RangeP(means, run.categories, run.df, diff));
    table.vbset(row, kContrastLevel, threshold.level);
    if (run.procedure == kDuncan) StoreLevel(run, threshold.level);
}

void MarkUntested(const ComparisonRun& run, int row)
{
    for (const ContrastCol col : {kContrastCritical, kContrastP, kContrastLevel}) {
        run.contrasts->vbset(row, col, kMissing);
    }
}

}  // namespace

void JudgeStepwise(const ComparisonRun& run)
{
    RangeMemo memo(run);
    std::vector<Threshold> regwq;
    if (run.procedure == kRegwq) regwq = PrepareRegwq(run);
    Barrier barrier;
    for (int row = 1; row <= run.rows; ++row) {
        const double means = MeansSpanned(run, row);
        const bool testable = run.contrasts->vbget(row, kContrastVariance) > kEps;
        if (barrier.LetsThrough(means) && testable) {
            const auto index = static_cast<std::size_t>(row - 1);
            WriteTest(run, row, means, run.procedure == kRegwq ? regwq[index] : memo.Of(means));
        } else {
            MarkUntested(run, row);
        }
        if (testable) {
            JudgeRow(run, row, means, barrier);
        } else {
            run.verdicts->vbset(row, kNotTestable);
        }
    }
}

}  // namespace korvenrg::comparisons
