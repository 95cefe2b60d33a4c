#include <algorithm>
#include <set>

#include "linear/best_subset.h"
#include "linear/ols_state.h"
#include "linear/ols_tables.h"
#include "linear/stepwise.h"

namespace korvenrg::linear {

namespace {

// States below this are candidates again when a selection starts from the empty model.
constexpr int kFirstFixedState = kDroppedLevel;

void CopyPacked(const matrix<double>& from, matrix<double>& to)
{
    std::copy_n(from.data, from.total, to.data);
}

// Number of rows that the forced pass wrote: one for each factor that brought in a column.
int CountForcedRows(const OlsRun& run)
{
    std::set<int> factors;
    for (int j = 1; j <= run.data.p; ++j) {
        if (run.factors.InModel(j)) factors.insert(run.factors.FactorOf(j));
    }
    return static_cast<int>(factors.size());
}

void ClearModels(OlsRun& run)
{
    std::fill_n(run.out.models->data, run.out.models->total, 0.0);
}

// The full model, as the forced pass left it in its last row, becomes the first row.
void KeepFullModelAsFirstRow(OlsRun& run)
{
    std::vector<double> row;
    const int last = CountForcedRows(run);
    const int width = run.factors.nbFactors + kModelPc;
    for (int j = 1; j <= width; ++j) {
        row.push_back(run.out.models->vbget(last, j));
    }
    ClearModels(run);
    for (int j = 1; j <= width; ++j) {
        run.out.models->vbset(1, j, row[static_cast<std::size_t>(j - 1)]);
    }
}

void StartFromEmptyModel(OlsRun& run)
{
    ClearModels(run);
    for (int j = 1; j <= run.data.p; ++j) {
        if (run.factors.subRemoved->vbget(j) < kFirstFixedState) run.factors.subRemoved->vbset(j, kCandidate);
    }
    *run.out.pFinal = 0;
    CopyPacked(run.unswept, run.packed);
}

void SelectInSteps(OlsRun& run)
{
    if (run.options.method == double{kBackward}) {
        KeepFullModelAsFirstRow(run);
    } else {
        StartFromEmptyModel(run);
    }
    OLSStepSelection(run.data.p,
                     run.options.tolerance,
                     run.InterceptDf(),
                     run.data.sumW,
                     run.StDevY(),
                     &run.packed,
                     static_cast<int>(run.options.method),
                     run.options.pEnter,
                     run.options.pRemove,
                     run.factors.nbFactors,
                     run.factors.type,
                     run.factors.subParents,
                     run.factors.subRemoved,
                     run.out.pFinal,
                     run.out.models);
}

// The search starts from the unswept vector; the full model stays when it finds nothing.
void SelectBestOfSubsets(OlsRun& run)
{
    const matrix<double> fullModel(run.packed);
    CopyPacked(run.unswept, run.packed);
    ClearModels(run);
    int chosen = 0;
    OLSBestSelection(run.data.p,
                     run.options.tolerance,
                     run.InterceptDf(),
                     run.data.sumW,
                     run.StDevY(),
                     &run.packed,
                     run.options.criterion,
                     run.options.minVars,
                     run.options.maxVars,
                     run.factors.nbFactors,
                     run.factors.active,
                     run.factors.subParents,
                     run.factors.subRemoved,
                     run.out.pFinal,
                     run.mseFull,
                     run.out.models,
                     &chosen);
    if (chosen == 0) {
        CopyPacked(fullModel, run.packed);
    } else {
        *run.out.bestId = chosen;
    }
}

}  // namespace

void SelectVariables(OlsRun& run)
{
    const double method = run.options.method;
    if (method == double{kBestSubset}) {
        SelectBestOfSubsets(run);
    } else if (method == double{kStepwise} || method == double{kForward} || method == double{kBackward}) {
        SelectInSteps(run);
    }
}

}  // namespace korvenrg::linear
