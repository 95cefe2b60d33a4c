#include "logistic/logit_selection.h"

#include <algorithm>
#include <set>

#include "logistic/best_logit_subsets.h"
#include "logistic/logit_probabilities.h"
#include "logistic/model_history.h"

namespace korvenrg::logistic {

namespace {

// iCriterionType of the removal tests; any other value is Wald.
constexpr int kByLikelihoodRatio = 0;

// Where a selection stands.
struct Selection
{
    LogitRun& run;
    ModelHistory history;
    FactorFlags inModel;
    LogitWork scratch;
    int row = 0;                   // of the history, the last one written
    std::set<FactorFlags> before;  // models that the loop has been at

    explicit Selection(LogitRun& theRun)
        : run(theRun),
          history(*theRun.out.models, theRun.fit.layout.columns),
          inModel(static_cast<std::size_t>(std::max(theRun.factors.nbFactors, 0))),
          scratch(theRun.model.n, theRun.model.layout.blocks)
    {
    }

    int CountFactors() const
    {
        return static_cast<int>(std::ranges::count(inModel, true));
    }

    void Mark(int factor, bool in)
    {
        inModel[static_cast<std::size_t>(factor - 1)] = in;
    }
};

int CountActive(const FactorDescription& factors)
{
    int count = 0;
    for (int f = 1; f <= factors.nbFactors; ++f) {
        count += factors.IsActive(f) ? 1 : 0;
    }
    return count;
}

// q = free columns, intercept and mortality; d = (q - 1) K, also where the intercept is fixed and no 1 is in q. Pinned by
// LogitSelectionInvariants.RowsAreRunsOfTheirColumns.
ModelPenalty StepPenalty(const LogitRun& run)
{
    const double q =
        run.fit.CountFreeColumns() + run.InterceptDf() + (run.fitOptions.estimatesMortality ? 1.0 : 0.0);
    const double K = run.Blocks();
    return {.df = (q - 1.0) * K, .aic = 2.0 * K * q, .schwarz = K * q};
}

void WriteRow(Selection& selection, int count, ModelsStep step, int factor, const EntryChoice* entry)
{
    const LogitRun& run = selection.run;
    ModelHistory& history = selection.history;
    selection.row += 1;
    history.Set(selection.row, kModelsFactors, count);
    history.Set(selection.row, kModelsStep, step);
    history.Set(selection.row, kModelsFactor, factor);
    history.SetMask(selection.row, run.fit);
    history.SetStatistics(selection.row,
                          StatisticsOf(run.fit.statistics, run.nullLogLikelihood, StepPenalty(run)));
    history.Set(selection.row, kModelsEntryStatistic, entry == nullptr ? kMissing : entry->statistic);
    history.Set(selection.row, kModelsEntryP, entry == nullptr ? kMissing : entry->p);
}

EntryChoice BestEntry(const Selection& selection)
{
    return selection.run.HasOneBlock() ? GetBestScore(selection.run, selection.inModel)
                                       : GetVariableScoreMulti(selection.run, selection.inModel);
}

// The weakest factor in the model; its test goes into the current row.
RemovalChoice WeakestFactor(Selection& selection)
{
    LogitRun& run = selection.run;
    RemovalChoice weakest;
    for (int f = 1; f <= run.factors.nbFactors; ++f) {
        if (!selection.inModel[static_cast<std::size_t>(f - 1)]) continue;
        const FactorTest test = run.options.criterion == kByLikelihoodRatio
                                    ? GetVariableLRStat(run, f, selection.CountFactors(), selection.scratch)
                                    : GetVariableWaldStat(run.factors, run.fit, f);
        if (!weakest.Consider(f, test)) continue;
        selection.history.Set(selection.row, kModelsRemovalStatistic, test.statistic);
        selection.history.Set(selection.row, kModelsRemovalP, test.p);
    }
    return weakest;
}

int Refit(LogitRun& run)
{
    return OptimizeLogitModel(run.model, run.fitOptions, run.fit, run.work);
}

int Enter(Selection& selection, const EntryChoice& entry)
{
    LogitRun& run = selection.run;
    selection.Mark(entry.factor, true);
    for (const int column : ColumnsToEnter(run.factors, run.fit.layout.columns, entry.factor)) {
        run.fit.MarkColumn(column, kFree);
    }
    if (Refit(run) != kFitted) return kFitFailed;
    WriteRow(selection, selection.CountFactors(), kStepEntry, entry.factor, &entry);
    return kFitted;
}

int Remove(Selection& selection, int factor)
{
    LogitRun& run = selection.run;
    const LogitFit kept = run.fit;
    selection.Mark(factor, false);
    for (const int column : FreeColumnsOf(run.factors, kept, factor)) {
        run.fit.RemoveColumn(column);
    }
    if (Refit(run) != kFitted) {
        CopyFit(kept, run.fit);
        selection.Mark(factor, true);
        return kFitFailed;
    }
    WriteRow(selection, selection.CountFactors(), kStepRemoval, factor, nullptr);
    return kFitted;
}

// A loop that comes back to a model would go round for ever: what follows depends on the model alone.
bool IsNewModel(Selection& selection)
{
    return selection.before.insert(selection.inModel).second;
}

// The factor has a removal p-value above pRemove. A p-value of NaN removes nothing.
bool IsWeak(const RemovalChoice& choice, const LogitOptions& options)
{
    return choice.factor > 0 && choice.p > options.pRemove;
}

// The factor has an entry p-value below pEnter.
bool IsStrong(const EntryChoice& choice, const LogitOptions& options)
{
    return choice.factor > 0 && choice.p < options.pEnter;
}

// The factor would go back at once where it came from: the row says so and the selection ends.
bool ClosesCircle(Selection& selection, int factor, int last)
{
    if (factor != last) return false;
    selection.history.Set(selection.row, kModelsFactor, kModelsCircle);
    return true;
}

void MarkFactorsInModel(Selection& selection)
{
    const LogitRun& run = selection.run;
    for (int f = 1; f <= run.factors.nbFactors; ++f) {
        selection.Mark(f, !FreeColumnsOf(run.factors, run.fit, f).empty());
    }
}

// All slopes out of the model; probabilities and derivatives at the start values.
void StartFromIntercept(LogitRun& run)
{
    LogitFit& fit = run.fit;
    for (int j = 1; j <= fit.layout.columns; ++j) {
        fit.RemoveColumn(j);
    }
    for (int k = 1; k <= fit.layout.blocks; ++k) {
        fit.parameters.vbset(fit.layout.Intercept(k), fit.intercepts[static_cast<std::size_t>(k - 1)]);
        fit.parameters.vbset(fit.layout.Mortality(k), fit.mortality[static_cast<std::size_t>(k - 1)]);
    }
    EvaluateLogitModel(run.model, run.fitOptions, fit, run.work);
}

int SelectBackward(LogitRun& run)
{
    if (Refit(run) != kFitted) return kFirstFitFailed;
    return Log_StepBackSelection(run) == kFitted ? kFinished : kBackwardFailed;
}

}  // namespace

bool RemovalChoice::Consider(int candidate, const FactorTest& test)
{
    const bool larger = test.df > largestDf;
    largestDf = std::max(largestDf, test.df);
    const bool wins = larger ? test.p > p : test.statistic < statistic;
    if (!wins) return false;
    factor = candidate;
    statistic = test.statistic;
    p = test.p;
    return true;
}

int Log_StepBackSelection(LogitRun& run)
{
    Selection selection(run);
    MarkFactorsInModel(selection);
    WriteRow(selection, CountActive(run.factors), kStepRemoval, kModelsStart, nullptr);
    if (run.fit.statistics.wald < 0.0) return kNegativeWald;
    while (selection.CountFactors() != 1 && IsNewModel(selection)) {
        const RemovalChoice leaving = WeakestFactor(selection);
        if (!IsWeak(leaving, run.options)) break;
        if (Remove(selection, leaving.factor) != kFitted) return kFitFailed;
        if (run.options.selection != kStepwiseBackward) continue;
        const EntryChoice entering = BestEntry(selection);
        if (!IsStrong(entering, run.options)) continue;
        if (ClosesCircle(selection, entering.factor, leaving.factor)) break;
        if (Enter(selection, entering) != kFitted) return kFitFailed;
    }
    LogitProbabilities(run.model, run.fit.parameters, run.work);
    return kFitted;
}

int Log_StepForSelection(LogitRun& run)
{
    Selection selection(run);
    StartFromIntercept(run);
    while (IsNewModel(selection)) {
        const EntryChoice entering = BestEntry(selection);
        if (!IsStrong(entering, run.options)) break;
        if (Enter(selection, entering) != kFitted) return kFitFailed;
        if (run.options.selection != kStepwiseForward) continue;
        const RemovalChoice leaving = WeakestFactor(selection);
        if (!IsWeak(leaving, run.options)) continue;
        if (ClosesCircle(selection, leaving.factor, entering.factor)) break;
        if (Remove(selection, leaving.factor) != kFitted) return kFitFailed;
    }
    return Refit(run);
}

int SelectLogitVariables(LogitRun& run)
{
    switch (run.options.selection) {
        case kBestSubsets:
            return Log_BestSelection(run) == kFitted ? kFinished : kBestSubsetsFailed;
        case kStepwiseForward:
        case kForward:
            return Log_StepForSelection(run) == kFitted ? kFinished : kForwardFailed;
        case kStepwiseBackward:
        case kBackward:
            return SelectBackward(run);
        default:
            return kFinished;
    }
}

}  // namespace korvenrg::logistic
