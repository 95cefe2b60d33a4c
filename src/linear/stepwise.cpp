#include "linear/stepwise.h"

#include <algorithm>
#include <cmath>
#include <set>
#include <vector>

#include "core/limits.h"
#include "kernel/distributions/distributions.h"
#include "linear/factor_description.h"
#include "linear/ols_state.h"
#include "linear/ols_tables.h"
#include "linear/packed_model.h"

namespace korvenrg::linear {

namespace {

constexpr short kUpperTail = 0;

struct StepSelection
{
    PackedModel model;
    int method;
    double pEnter;
    double pRemove;
    int nbFactors;
    const matrix<int>& type;
    const matrix<int>& parents;
    matrix<int>& states;
    int& pFinal;
    matrix<double>& models;
    int factorsIn = 0;
    int rows = 0;
    std::vector<double> lastRow;  // as written, or as it would be beyond the rows of the table

    double Df() const
    {
        return model.ErrorDf(pFinal);
    }
    bool BelongsToAFactor(int column) const
    {
        const int factor = parents.vbget(column);
        return factor >= 1 && factor <= nbFactors;
    }
    bool MovesAsBlock(int column) const
    {
        return isQuali(type.vbget(parents.vbget(column))) == kTrue;
    }
};

// A factor that may move: its columns from first to last, those of them that are swept, and its probability.
struct Move
{
    int first = 0;  // 0 while there is none
    int last = 0;
    std::vector<int> swept;
    double probability;
};

// The F test of two models whose residual terms and degrees of freedom differ by a block.
struct FTest
{
    double f;
    double numeratorDf;
    double denominatorDf;
};

FTest TestOfBlock(double r0, double df0, double r1, double df1)
{
    const double difference = df1 - df0;
    if (!(std::fabs(difference) >= kGuard)) return {r1 / r0, df0, df1};
    if (df0 <= df1) return {((r1 - r0) / difference) / (r0 / df0), difference, df0};
    return {((r0 - r1) / (df0 - df1)) / (r1 / df1), df0 - df1, df1};
}

// The last column of the adjacent block of one factor that starts at `first`.
int EndOfBlock(const StepSelection& run, int first)
{
    int last = first;
    while (last < run.model.p && run.parents.vbget(last + 1) == run.parents.vbget(first)) {
        last += 1;
    }
    return last;
}

// Sweeps what `moves` says of a block, tests it against the model before, and puts the vector back as it was.
template <typename Moves>
Move TryBlock(const StepSelection& run, int first, int dfSign, Moves moves)
{
    const matrix<double> before(*run.model.packed);
    const double r0 = run.model.ResidualTerm();
    Move move{.first = first, .last = EndOfBlock(run, first), .swept = {}, .probability = 0.0};
    for (int j = first; j <= move.last; ++j) {
        if (!moves(j)) continue;
        run.model.Sweep(j);
        move.swept.push_back(j);
    }
    const double df1 = run.Df() + dfSign * static_cast<double>(move.swept.size());
    const FTest test = TestOfBlock(r0, run.Df(), run.model.ResidualTerm(), df1);
    move.probability = CDFFisher(test.f, test.numeratorDf, test.denominatorDf, kUpperTail);
    std::copy_n(before.data, before.total, run.model.packed->data);
    return move;
}

// What a column brings to the model, or takes from it, as a share of the residual term.
double ShareOf(const StepSelection& run, int column)
{
    const double a = run.model.Cell(run.model.p + 1, column);
    return a * a / run.model.Cell(column, column);
}

// The residual term without a column's share. An exact fit leaves nothing, not less; where nothing was left before, the
// difference stays below 0, and the column has no part in the fit.
double RestWithout(double share, double r0)
{
    return r0 > 0.0 ? std::max(r0 - share, 0.0) : r0 - share;
}

// The candidate with the smallest probability of entering.
Move BestEntry(const StepSelection& run)
{
    Move best{.swept = {}, .probability = 1.0};
    const double r0 = run.model.ResidualTerm();
    const double df0 = run.Df();
    for (int i = 1; i <= run.model.p; ++i) {
        if (run.states.vbget(i) >= 0 || !run.BelongsToAFactor(i)) continue;
        if (run.MovesAsBlock(i)) {
            Move move = TryBlock(run, i, -1, [&run](int j) {
                return run.states.vbget(j) < 0 && run.model.Passes(j);
            });
            i = move.last;
            if (move.probability < best.probability) best = std::move(move);
            continue;
        }
        if (!run.model.Passes(i)) continue;
        const double share = ShareOf(run, i);
        const double probability = pValFisher((df0 - 1.0) * share / RestWithout(share, r0), 1.0, df0 - 1.0);
        if (probability < best.probability) best = {i, i, {i}, probability};
    }
    return best;
}

// The factor in the model with the largest probability.
Move BestRemoval(const StepSelection& run)
{
    Move worst{.swept = {}, .probability = 0.0};
    const double r0 = run.model.ResidualTerm();
    const double df0 = run.Df();
    for (int i = 1; i <= run.model.p; ++i) {
        if (run.states.vbget(i) != kInModel || !run.BelongsToAFactor(i)) continue;
        if (run.MovesAsBlock(i)) {
            Move move = TryBlock(run, i, 1, [&run](int j) { return run.states.vbget(j) == kInModel; });
            i = move.last;
            if (move.probability > worst.probability) worst = std::move(move);
            continue;
        }
        const double probability = pValFisher(std::fabs(ShareOf(run, i)) * df0 / r0, 1.0, df0);
        if (probability > worst.probability) worst = {i, i, {i}, probability};
    }
    return worst;
}

// A row of oModels after a step: +1 an entry, -1 a removal of factor f. Its statistics have no guard.
void WriteStepRow(StepSelection& run, int factor, double direction)
{
    run.rows += 1;
    std::vector<double>& row = run.lastRow;
    const auto cell = [&row](int column) -> double& { return row[static_cast<std::size_t>(column - 1)]; };
    double& indicator = cell(kModelFirstIndicator + factor - 1);
    cell(kModelNumber) = run.rows == 1 ? 1.0 : cell(kModelNumber) + direction;
    indicator = run.rows == 1 ? 1.0 : 1.0 - indicator;
    cell(kModelColumns) = run.pFinal;
    cell(kModelMove) = direction;
    cell(kModelFactor) = factor;

    const double q = run.pFinal;
    const double r = run.model.ResidualTerm();
    const double sse = run.model.Sse(r);
    const double dfE = run.Df();
    const InformationCriteria criteria = InformationCriteriaOf(run.model, q, sse);
    const int nf = run.nbFactors;
    cell(nf + kModelSse) = sse;
    cell(nf + kModelMse) = sse / dfE;
    cell(nf + kModelRSquared) = 1.0 - r;
    cell(nf + kModelAdjustedRSquared) = (1.0 - r) - q * r / dfE;
    cell(nf + kModelAic) = criteria.aic;
    cell(nf + kModelSbc) = criteria.sbc;
    cell(nf + kModelPc) = (q + run.model.S + run.model.c) * r / dfE;

    if (run.rows > run.models.rows) return;
    for (int j = 1; j <= nf + kModelPc; ++j) {
        run.models.vbset(run.rows, j, cell(j));
    }
}

// False when no factor enters, which ends the routine.
bool TryEnter(StepSelection& run)
{
    const Move best = BestEntry(run);
    if (best.first == 0) return false;
    if (best.probability > run.pEnter && run.factorsIn > 0) return false;
    for (const int j : best.swept) {
        run.model.Sweep(j);
    }
    // The count follows the state and not the sweep: a column of the block that was refused counts as entered. Pinned by
    // Stepwise.CountFollowsTheState.
    for (int j = best.first; j <= best.last; ++j) {
        if (run.states.vbget(j) >= 1) continue;
        run.states.vbset(j, kInModel);
        run.pFinal += 1;
    }
    run.factorsIn += 1;
    WriteStepRow(run, run.parents.vbget(best.first), 1.0);
    return true;
}

// False when no factor leaves.
bool TryRemove(StepSelection& run)
{
    const Move worst = BestRemoval(run);
    if (worst.first == 0 || !(worst.probability >= run.pRemove)) return false;
    for (const int j : worst.swept) {
        run.model.Sweep(j);
    }
    for (int j = worst.first; j <= worst.last; ++j) {
        if (run.states.vbget(j) != kInModel) continue;
        run.states.vbset(j, kCandidate);
        run.pFinal -= 1;
    }
    run.factorsIn -= 1;
    WriteStepRow(run, run.parents.vbget(worst.first), -1.0);
    return true;
}

bool AllColumnsAreIn(const StepSelection& run)
{
    return run.pFinal == run.model.p;
}

void SelectForward(StepSelection& run)
{
    while (TryEnter(run) && !AllColumnsAreIn(run)) {
    }
}

void SelectBackward(StepSelection& run)
{
    while (run.factorsIn >= 2 && TryRemove(run)) {
    }
}

// What is in the model decides all that follows, so a model met for the second time would come again for ever.
void SelectStepwise(StepSelection& run)
{
    std::set<std::vector<int>> met;
    const auto isNew = [&run, &met] {
        return met.emplace(run.states.data, run.states.data + run.states.total).second;
    };
    bool isFull = false;
    while (!isFull && isNew() && TryEnter(run)) {
        isFull = AllColumnsAreIn(run);
        if (run.rows >= 2 && run.factorsIn >= 2) TryRemove(run);
    }
}

int CountFactorsIn(const StepSelection& run)
{
    std::set<int> factors;
    for (int j = 1; j <= run.model.p; ++j) {
        if (run.states.vbget(j) == kInModel) factors.insert(run.parents.vbget(j));
    }
    return static_cast<int>(factors.size());
}

// The full model, which the caller wrote into the first row.
void TakeFirstRow(StepSelection& run)
{
    run.rows = 1;
    for (std::size_t j = 0; j < run.lastRow.size(); ++j) {
        run.lastRow[j] = run.models.vbget(1, static_cast<int>(j) + 1);
    }
}

}  // namespace

}  // namespace korvenrg::linear

void OLSStepSelection(int p,
                      double tol,
                      double c,
                      double S,
                      double sY,
                      matrix<double>* packed,
                      int Method,
                      double PEnter,
                      double PRemove,
                      int NbFactors,
                      matrix<int>* FactType,
                      matrix<int>* FactSubParents,
                      matrix<int>* ioFactSubRemoved,
                      int* pFinal,
                      matrix<double>* oModels)
{
    using namespace korvenrg::linear;
    if (NbFactors < 1) return;
    StepSelection run{.model = {p, tol, c, S, sY, packed},
                      .method = Method,
                      .pEnter = PEnter,
                      .pRemove = PRemove,
                      .nbFactors = NbFactors,
                      .type = *FactType,
                      .parents = *FactSubParents,
                      .states = *ioFactSubRemoved,
                      .pFinal = *pFinal,
                      .models = *oModels,
                      .lastRow = std::vector<double>(static_cast<std::size_t>(NbFactors + kModelPc))};
    switch (Method) {
        case kStepwise:
            SelectStepwise(run);
            break;
        case kForward:
            SelectForward(run);
            break;
        case kBackward:
            run.factorsIn = CountFactorsIn(run);
            TakeFirstRow(run);
            SelectBackward(run);
            break;
        default:
            break;
    }
}
