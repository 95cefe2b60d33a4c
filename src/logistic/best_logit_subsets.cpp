#include "logistic/best_logit_subsets.h"

#include <algorithm>

#include "kernel/distributions/combinations.h"
#include "kernel/distributions/subset_tree.h"
#include "kernel/linalg/sorting.h"
#include "kernel/scalars/scalars.h"
#include "logistic/logit_selection.h"
#include "logistic/model_history.h"

namespace korvenrg::logistic {

namespace {

// Parameters that AIC and Schwarz's criterion charge beside those of the model; one is taken back.
constexpr double kExtraParameters = 2.0;

// The best model of one size: its criterion, its mask and what its fit started from.
struct BestOfSize
{
    bool exists = false;
    double criterion = kLargest;
    int fitted = 0;
    std::vector<int> mask;
    std::vector<double> intercepts;
};

struct SubsetSearch
{
    LogitRun& run;
    ModelHistory history;
    LogTree tree;
    int minSize;
    int maxSize;
    int leaves = 0;
    std::vector<BestOfSize> best;  // from minSize on

    BestOfSize& BestOf(int size)
    {
        return best[static_cast<std::size_t>(size - minSize)];
    }

    int RowOf(int size) const
    {
        return size - minSize + 1;
    }
};

// A criterion code without a meaning counts as -2 log-likelihood.
std::size_t CriterionOf(const LogitOptions& options)
{
    const bool known =
        options.criterion >= 0 && options.criterion < static_cast<int>(ModelStatistics{}.size());
    return known ? static_cast<std::size_t>(options.criterion) : 0;
}

SubsetSearch PrepareSearch(LogitRun& run)
{
    const int active = *run.out.nbActiveFactors;
    SubsetSearch search{.run = run,
                        .history = {*run.out.models, run.fit.layout.columns},
                        .tree = {},
                        .minSize = std::clamp(run.options.minFactors, 0, std::max(active, 0)),
                        .maxSize = std::min(run.options.maxFactors, active),
                        .best = {}};
    std::vector<double> numbers;
    for (int f = 1; f <= run.factors.nbFactors; ++f) {
        if (run.factors.IsActive(f)) numbers.push_back(f);
    }
    const int count = static_cast<int>(numbers.size());
    const matrix<double> objects(count, 1, numbers.data(), true);
    search.leaves = search.tree.BuildTreeLeaves(count, search.minSize, search.maxSize, &objects, 0);
    search.best.resize(static_cast<std::size_t>(std::max(search.maxSize - search.minSize + 1, 0)));
    return search;
}

void WriteStartRows(SubsetSearch& search)
{
    ModelStatistics start;
    start.fill(kLargest);
    for (int row = 1; row <= search.history.Rows(); ++row) {
        search.history.SetStatistics(row, start);
    }
}

// The columns that a subset may use, and those of its qualitative factors among them.
struct LeafColumns
{
    std::vector<int> all;
    std::vector<int> qualitative;
};

LeafColumns ColumnsOf(const LogitRun& run, const LogNode& leaf)
{
    LeafColumns columns;
    for (int j = 1; j <= run.fit.layout.columns; ++j) {
        const int factor = run.factors.FactorOf(j);
        bool inLeaf = false;
        for (int k = 1; k <= leaf.size() && !inLeaf; ++k) {
            inLeaf = leaf.getObjectList(k) == factor;
        }
        if (!inLeaf || run.factors.subRemoved->vbget(j) >= kExcluded) continue;
        columns.all.push_back(j);
        if (run.factors.HoldsQualitative(factor)) columns.qualitative.push_back(j);
    }
    return columns;
}

// Mask and slopes of a model of these columns, before its fit.
void SetModel(LogitRun& run, const std::vector<int>& columns)
{
    LogitFit& fit = run.fit;
    for (int j = 1; j <= fit.layout.columns; ++j) {
        fit.RemoveColumn(j);
    }
    for (const int column : columns) {
        fit.MarkColumn(column, kFree);
    }
    for (int k = 1; k <= fit.layout.blocks; ++k) {
        fit.fixedMask.vbset(fit.layout.Intercept(k), run.fitOptions.estimatesIntercept ? kFree : kFixed);
        fit.fixedMask.vbset(fit.layout.Mortality(k), run.fitOptions.estimatesMortality ? kFree : kFixed);
    }
    fit.mortality = run.startMortality;
}

bool FitModel(LogitRun& run)
{
    return OptimizeLogitModel(run.model, run.fitOptions, run.fit, run.work) == kFitted;
}

// All columns but some qualitative ones.
std::vector<int> Without(const LeafColumns& columns, const std::vector<int>& keptQualitative)
{
    std::vector<int> rest;
    for (const int column : columns.all) {
        const bool drops = std::ranges::binary_search(columns.qualitative, column) &&
                           !std::ranges::binary_search(keptQualitative, column);
        if (!drops) rest.push_back(column);
    }
    return rest;
}

// Factors of the columns that are not among those kept.
int CountShortened(const LogitRun& run, const LeafColumns& columns, const std::vector<int>& kept)
{
    std::vector<int> shortened;
    for (const int column : columns.all) {
        const int factor = run.factors.FactorOf(column);
        const bool counted = std::ranges::find(shortened, factor) != shortened.end();
        if (!counted && !std::ranges::binary_search(kept, column)) shortened.push_back(factor);
    }
    return static_cast<int>(shortened.size());
}

struct FittedModel
{
    int size = -1;  // below 0: none fitted
    std::vector<double> startIntercepts;
};

// The largest part of a failed subset that can be fitted. Each try starts from the start values of the run.
FittedModel FitPart(SubsetSearch& search, const LogNode& leaf, const LeafColumns& columns)
{
    LogitRun& run = search.run;
    const int Q = static_cast<int>(columns.qualitative.size());
    double tries = 0.0;
    for (int s = Q; s >= 1; --s) {
        tries += Cnk(Q, s);
        if (tries > kMostRefits) break;
        for (const std::vector<int>& part : PartsInOrder(run.factors, columns.qualitative, s)) {
            const std::vector<int> kept = Without(columns, part);
            run.fit.intercepts = run.startIntercepts;
            SetModel(run, kept);
            if (FitModel(run)) return {leaf.size() - CountShortened(run, columns, kept), run.startIntercepts};
        }
    }
    return {};
}

// The intercepts start where the fit before ended, the mortality at its start value.
FittedModel FitLeaf(SubsetSearch& search, const LogNode& leaf)
{
    LogitRun& run = search.run;
    const LeafColumns columns = ColumnsOf(run, leaf);
    const std::vector<double> start = run.fit.intercepts;
    SetModel(run, columns.all);
    if (FitModel(run)) return {leaf.size(), start};
    return FitPart(search, leaf, columns);
}

// q = free parameters of the first block, and the tests have q - 1 degrees of freedom: blocks do not count, and a fixed
// intercept takes one away. Pinned by LogitSelectionReference.HistoriesAndTypeIII.
ModelPenalty SubsetPenalty(const LogitFit& fit)
{
    double q = 0.0;
    for (int i = 1; i <= fit.layout.BlockLength(); ++i) {
        q += fit.IsFree(i) ? 1.0 : 0.0;
    }
    const double penalty = 2.0 * (kExtraParameters + q) - 2.0;
    return {.df = q - 1.0, .aic = penalty, .schwarz = penalty};
}

// Strictly below what is stored. A missing p-value is never better.
bool IsBetter(double criterion, double stored)
{
    return criterion != kMissing && criterion < stored;
}

void RecordModel(SubsetSearch& search, int leaf, const FittedModel& model)
{
    const LogitFit& fit = search.run.fit;
    ModelHistory& history = search.history;
    BestOfSize& best = search.BestOf(model.size);
    const int row = search.RowOf(model.size);
    best.fitted += 1;
    history.Set(row, kModelsFactors, model.size);
    history.Set(row, kModelsStep, best.fitted);
    const ModelStatistics statistics =
        StatisticsOf(fit.statistics, search.run.nullLogLikelihood, SubsetPenalty(fit));
    const double criterion = statistics[CriterionOf(search.run.options)];
    if (!IsBetter(criterion, best.criterion)) return;
    best.exists = true;
    best.criterion = criterion;
    best.mask.assign(fit.fixedMask.data, fit.fixedMask.data + fit.fixedMask.total);
    best.intercepts = model.startIntercepts;
    history.Set(row, kModelsFactor, leaf);
    history.SetMask(row, fit);
    history.SetStatistics(row, statistics);
}

// The size with the smallest criterion, the first of equals; null when none has a model.
const BestOfSize* BestOfAll(const SubsetSearch& search)
{
    const BestOfSize* winner = nullptr;
    for (const BestOfSize& best : search.best) {
        if (best.exists && (winner == nullptr || best.criterion < winner->criterion)) winner = &best;
    }
    return winner;
}

// Fits the model once more from where its first fit started. The result of that fit is not looked at.
void RestoreModel(LogitRun& run, const BestOfSize& best)
{
    LogitFit& fit = run.fit;
    std::fill_n(fit.parameters.data, fit.parameters.total, 0.0);
    std::copy(best.mask.begin(), best.mask.end(), fit.fixedMask.data);
    fit.intercepts = best.intercepts;
    fit.mortality = run.startMortality;
    FitModel(run);
}

}  // namespace

std::vector<std::vector<int>> PartsInOrder(const FactorDescription& factors,
                                           const std::vector<int>& columns,
                                           int size)
{
    const int Q = static_cast<int>(columns.size());
    if (size >= Q) return {columns};
    std::vector<int> byRank = columns;
    std::ranges::sort(byRank, [&](int a, int b) {
        const int factorOfA = factors.FactorOf(a);
        const int factorOfB = factors.FactorOf(b);
        return factorOfA != factorOfB ? factorOfA < factorOfB : a > b;
    });
    std::vector<int> rankOf;
    for (const int column : columns) {
        rankOf.push_back(static_cast<int>(std::ranges::find(byRank, column) - byRank.begin()));
    }
    const int count = static_cast<int>(Cnk(Q, size));
    matrix<int> table(count, size);
    matrix<int> state(size, 1);
    for (int row = 1; row <= count; ++row) {
        cKurtzberg(Q, size, &state);
        for (int k = 1; k <= size; ++k) {
            table.vbset(row, k, rankOf[static_cast<std::size_t>(state.vbget(k))]);
        }
    }
    SortMatrixSeqQ(&table, count, size, kFalse);
    std::vector<std::vector<int>> parts(static_cast<std::size_t>(count));
    for (int row = 1; row <= count; ++row) {
        std::vector<int>& part = parts[static_cast<std::size_t>(row - 1)];
        for (int k = 1; k <= size; ++k) {
            part.push_back(byRank[static_cast<std::size_t>(table.vbget(row, k))]);
        }
    }
    return parts;
}

int Log_BestSelection(LogitRun& run)
{
    SubsetSearch search = PrepareSearch(run);
    WriteStartRows(search);
    for (int leaf = 1; leaf <= search.leaves; ++leaf) {
        const FittedModel model = FitLeaf(search, search.tree.getTreeNode(leaf));
        if (model.size >= search.minSize) RecordModel(search, leaf, model);
    }
    const BestOfSize* best = BestOfAll(search);
    if (best == nullptr) return kNoSubsetFitted;
    RestoreModel(run, *best);
    return kFitted;
}

}  // namespace korvenrg::logistic
