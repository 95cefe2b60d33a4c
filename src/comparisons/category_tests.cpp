#include "comparisons/category_tests.h"

#include <algorithm>
#include <cmath>
#include <vector>

#include "comparisons/comparison_run.h"
#include "comparisons/scalar_tests.h"
#include "comparisons/stepwise_pass.h"
#include "core/limits.h"

namespace korvenrg::comparisons {

namespace {

/** Two groups of a row with unequal variances, without pooling. */
struct WelchPair
{
    double firstSize = 0, secondSize = 0;
    double firstVariance = 0, secondVariance = 0;  ///< of the means
    double variance = 0;                           ///< of the difference
    double df = 0;                                 ///< of Welch and Satterthwaite
};

/** The critical values that rows share. */
struct Memos
{
    double df = 0, means = 0, critical = 0;
    std::vector<std::pair<double, double>> dunnettC;  ///< group size, critical value
};

/** What a procedure says of one row. */
struct RowTest
{
    double t;
    double critical;
    double p;
};

// A group of one observation has no variance: its row keeps the variances and degrees of freedom of the row before,
// zeros at the start, where the textbook has no test. Pinned by MCATest.SingleObservationKeepsTheRowBefore.
void LookUpGroups(const ComparisonRun& run, int row, WelchPair& pair)
{
    const auto of = [&](const matrix<double>& groups, ContrastCol id) {
        return groups.vbget(MeansOf(run.contrasts->vbget(row, id)));
    };
    pair.firstSize = of(*run.sizes, kContrastFirstId);
    pair.secondSize = of(*run.sizes, kContrastSecondId);
    if (!(pair.firstSize - 1 > kGuard && pair.secondSize - 1 > kGuard)) return;
    const double a = of(*run.variances, kContrastFirstId) / pair.firstSize;
    const double b = of(*run.variances, kContrastSecondId) / pair.secondSize;
    pair.firstVariance = a;
    pair.secondVariance = b;
    pair.variance = a + b;
    pair.df = pair.variance * pair.variance / (b * b / (pair.secondSize - 1) + a * a / (pair.firstSize - 1));
}

double RememberedDunnettC(const ComparisonRun& run, double size, Memos& memos)
{
    for (const auto& [known, critical] : memos.dunnettC) {
        if (known == size) return critical;
    }
    memos.dunnettC.emplace_back(size, DunnettCCritical(size, run.categories, run.alpha));
    return memos.dunnettC.back().second;
}

/** The common-variance procedures, on the run's degrees of freedom. */
void TestPooled(const ComparisonRun& run, Memos& memos, RowTest& test)
{
    const double diff = std::fabs(test.t);
    double level = run.alpha;
    double *const df = &memos.df, *const means = &memos.means, *const critical = &memos.critical;
    switch (run.procedure) {
        case kTukey:
            MCATestTukey(run.df,
                         run.categories,
                         diff,
                         run.alpha,
                         &test.critical,
                         &test.p,
                         df,
                         means,
                         critical);
            return;
        case kFisherLsd:
            MCATestFischerLSD(run.df, diff, run.alpha, &test.critical, &test.p, df, critical);
            return;
        case kBonferroni:
            MCATestBonferroni(run.df,
                              run.categories,
                              diff,
                              run.alpha,
                              &level,
                              &test.critical,
                              &test.p,
                              df,
                              means,
                              critical);
            break;
        default:
            MCATestDunnSidak(run.df, run.categories, diff, run.alpha, &level, &test.critical, &test.p);
    }
    StoreLevel(run, level);
}

/** The procedures for unequal variances. */
void TestUnpooled(const ComparisonRun& run, const WelchPair& pair, Memos& memos, RowTest& test)
{
    const double diff = std::fabs(test.t);
    const double pairs = (run.categories - 1) * run.categories / 2;
    double *const df = &memos.df, *const means = &memos.means, *const critical = &memos.critical;
    switch (run.procedure) {
        case kGamesHowell:
            MCATestTukey(pair.df,
                         run.categories,
                         diff,
                         run.alpha,
                         &test.critical,
                         &test.p,
                         df,
                         means,
                         critical);
            return;
        case kTamhaneT2:
            MCATestTukey(pair.df,
                         2,
                         diff,
                         ChanceOfAny(run.alpha, 1 / pairs),
                         &test.critical,
                         &test.p,
                         df,
                         means,
                         critical);
            test.p = ChanceOfAny(test.p, pairs);
            return;
        default:
            test.critical = DunnettCMean(RememberedDunnettC(run, pair.firstSize, memos),
                                         RememberedDunnettC(run, pair.secondSize, memos),
                                         pair.firstVariance,
                                         pair.secondVariance);
            test.p = kMissing;
    }
}

bool IsUnpooled(int procedure)
{
    return procedure >= kGamesHowell && procedure <= kDunnettC;
}

bool IsPooled(int procedure)
{
    return procedure >= kTukey && procedure <= kDunnSidak;
}

bool IsStepwise(int procedure)
{
    return procedure >= kNewmanKeuls && procedure <= kRegwq;
}

void MarkUntestable(const ComparisonRun& run, int row)
{
    for (const ContrastCol col : {kContrastStandardised, kContrastCritical, kContrastP}) {
        run.contrasts->vbset(row, col, kMissing);
    }
    run.verdicts->vbset(row, kNotTestable);
}

void TestRow(const ComparisonRun& run, int row, WelchPair& pair, Memos& memos)
{
    matrix<double>& table = *run.contrasts;
    const double difference = table.vbget(row, kContrastDifference);
    const double variance = table.vbget(row, kContrastVariance);
    if (variance <= 0) {
        MarkUntestable(run, row);
        return;
    }
    const double pooled = run.harmonic ? run.harmonicVariance : variance;
    RowTest test{difference / std::sqrt(pooled),
                 table.vbget(row, kContrastCritical),
                 table.vbget(row, kContrastP)};
    if (IsPooled(run.procedure)) {
        TestPooled(run, memos, test);
    } else if (IsUnpooled(run.procedure)) {
        LookUpGroups(run, row, pair);
        test.t = difference / std::sqrt(pair.variance);
        TestUnpooled(run, pair, memos, test);
    }
    table.vbset(row, kContrastStandardised, test.t);
    table.vbset(row, kContrastCritical, test.critical);
    table.vbset(row, kContrastP, test.p);
    run.verdicts->vbset(row, std::fabs(test.t) <= test.critical ? kNotSignificant : kSignificant);
}

}  // namespace

}  // namespace korvenrg::comparisons

using namespace korvenrg::comparisons;

// - standardise each difference by its own, the harmonic, or the unpooled variance of its row
// - test it by the procedure, on critical values that rows share
// - judge it against the critical value
// - stepwise procedures: judge the rows once more, in order, by the number of means that they span
void cMCATest(int NbClasses,
              matrix<double>* ni,
              matrix<double>* si2,
              double iHarmoSpp,
              short iUseHarmonic,
              matrix<double>* ioContrastsStats,
              int NbContrasts,
              int TestType,
              double DFErrors,
              double alpha,
              double* newalpha,
              matrix<int>* oSignif)
{
    const ComparisonRun run{TestType,
                            static_cast<double>(NbClasses),
                            DFErrors,
                            alpha,
                            newalpha,
                            ni,
                            si2,
                            iUseHarmonic == korvenrg::kTrue,
                            iHarmoSpp,
                            ioContrastsStats,
                            std::min(NbContrasts, ioContrastsStats->rows),
                            oSignif};
    WelchPair pair;
    Memos memos;
    for (int row = 1; row <= run.rows; ++row) {
        TestRow(run, row, pair, memos);
    }
    if (IsStepwise(run.procedure)) JudgeStepwise(run);
}
