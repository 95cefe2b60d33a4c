// What stands before the fit: the separation check, standardised columns, weights, the independent model, the screen.
#include <algorithm>
#include <cmath>

#include "kernel/linalg/column_moments.h"
#include "kernel/linalg/tolerance_screen.h"
#include "logistic/link_functions.h"
#include "logistic/logit_state.h"
#include "logistic/row_sum.h"

namespace korvenrg::logistic {

namespace {

constexpr int kOutOfModel = 1;

// Whether no observation of some category has the column at 1.
bool HasEmptyCategory(const LogitRun& run, const double* column)
{
    std::vector<bool> found(static_cast<std::size_t>(run.options.categories));
    for (std::size_t i = 0; i < run.data.response.size(); ++i) {
        if (column[i] != 1.0) continue;
        for (std::size_t code = 0; code < found.size(); ++code) {
            if (run.data.response[i] == static_cast<double>(code)) found[code] = true;
        }
    }
    return std::ranges::any_of(found, [](bool filled) { return !filled; });
}

double SumOfProducts(const double* a, const double* b, std::size_t n)
{
    RowSum sum;
    for (std::size_t i = 0; i < n; ++i) {
        sum.Add(a[i] * b[i]);
    }
    return sum.Total();
}

double SumOf(const double* cells, std::size_t n)
{
    RowSum sum;
    for (std::size_t i = 0; i < n; ++i) {
        sum.Add(cells[i]);
    }
    return sum.Total();
}

// Share of the category of a block among the observations.
double CategoryShare(const LogitRun& run, std::size_t block)
{
    const std::size_t n = run.data.response.size();
    const double* indicator = run.HasOneBlock() ? run.model.response : run.model.indicators[block];
    const double sum =
        run.model.IsBinomial() ? SumOf(indicator, n) : SumOfProducts(indicator, run.model.caseWeights, n);
    return sum / run.data.sumWc;
}

// Factors left without a column leave the model.
void DropFactorsWithoutColumn(LogitRun& run)
{
    for (int f = 1; f <= run.factors.nbFactors; ++f) {
        if (!run.factors.IsActive(f)) continue;
        bool hasColumn = false;
        bool keepsColumn = false;
        for (int j = 1; j <= run.model.layout.columns; ++j) {
            if (run.factors.FactorOf(j) != f) continue;
            hasColumn = true;
            keepsColumn = keepsColumn || run.factors.subRemoved->vbget(j) < kOutOfModel;
        }
        if (!hasColumn || keepsColumn) continue;
        run.factors.active->vbset(f, 0);
        *run.out.nbActiveFactors -= 1;
    }
}

// Columns of factors that are not in the model are out of it as well.
void RemoveColumnsOfInactiveFactors(LogitRun& run)
{
    for (int j = 1; j <= run.model.layout.columns; ++j) {
        const bool out = !run.factors.IsActive(run.factors.FactorOf(j));
        if (out && run.factors.subRemoved->vbget(j) < kOutOfModel)
            run.factors.subRemoved->vbset(j, kOutOfModel);
    }
}

void BuildMask(LogitRun& run)
{
    LogitFit& fit = run.fit;
    for (int j = 1; j <= fit.layout.columns; ++j) {
        fit.MarkColumn(j, run.factors.subRemoved->vbget(j) >= kOutOfModel ? kFixed : kFree);
    }
    for (int k = 1; k <= fit.layout.blocks; ++k) {
        fit.fixedMask.vbset(fit.layout.Intercept(k), run.fitOptions.estimatesIntercept ? kFree : kFixed);
        fit.fixedMask.vbset(fit.layout.Mortality(k), run.fitOptions.estimatesMortality ? kFree : kFixed);
    }
}

}  // namespace

// A level of a qualitative variable that no observation of some category has: with one block the likelihood has no
// maximum there and Firth's penalty takes over.
bool CheckSeparation(LogitRun& run)
{
    *run.out.separated = kFalse;
    for (int j = 1; j <= run.model.layout.columns; ++j) {
        const bool qualitative = run.factors.HoldsQualitative(run.factors.FactorOf(j));
        if (!qualitative || !HasEmptyCategory(run, run.data.raw[static_cast<std::size_t>(j - 1)])) continue;
        *run.out.separated = kTrue;
        if (!run.HasOneBlock()) return false;
        run.fitOptions.firth = true;
        return true;
    }
    return true;
}

void StandardiseColumns(LogitRun& run)
{
    LogitData& data = run.data;
    matrix<double> weights(data.n, 1, data.caseWeights.data(), true);
    matrix<double> variance(run.model.layout.columns, 1);
    matrix<double>* correlation = &data.correlation;
    matrix<double>* mean = &data.mean;
    matrix<double>* stDev = &data.stDev;
    matrix<double>* varianceOut = &variance;
    M_CovCorrAndMeanStDevVar(&data.design,
                             data.n,
                             run.model.layout.columns,
                             correlation,
                             mean,
                             stDev,
                             varianceOut,
                             kTrue,
                             nullptr,
                             &weights,
                             kTrue,
                             kTrue,
                             kFalse,
                             kTrue,
                             kTrue);
}

// Wr is scaled so that Wc Wr adds up to Wc. A sum of exactly 0 leaves it.
void RescaleWeights(LogitRun& run, matrix<double>& Wr)
{
    LogitData& data = run.data;
    data.sumWc = SumOf(data.caseWeights.data(), data.caseWeights.size());
    data.sumWcWr = SumOfProducts(data.caseWeights.data(), data.secondWeights.data(), data.caseWeights.size());
    if (data.sumWcWr == 0.0) return;
    const double factor = data.sumWc / data.sumWcWr;
    for (int i = 1; i <= data.n; ++i) {
        double& weight = data.secondWeights[static_cast<std::size_t>(i - 1)];
        weight *= factor;
        Wr.vbset(i, weight);
    }
}

void ComputeMarginals(LogitRun& run)
{
    run.referenceMarginal = 1.0;
    for (std::size_t k = 0; k < static_cast<std::size_t>(run.model.layout.blocks); ++k) {
        const double share =
            run.fitOptions.estimatesIntercept ? CategoryShare(run, k) : 1.0 / run.options.categories;
        const double c = run.startMortality[k];
        const double pi = c + (1.0 - c) * share;
        run.marginal.push_back(pi);
        run.referenceMarginal -= pi;
        run.out.marginal->vbset(static_cast<int>(k) + 1, pi);
    }
}

// With one block of a multinomial response the start is log(pi) and not its logit. Pinned by
// LogitOddities.MultinomialResponseOfOneBlock.
void PutStartValues(LogitRun& run)
{
    for (const double pi : run.marginal) {
        if (!run.HasOneBlock()) {
            run.startIntercepts.push_back(std::log(pi / run.referenceMarginal));
        } else if (run.model.form == kMultinomial) {
            run.startIntercepts.push_back(std::log(pi));
        } else {
            run.startIntercepts.push_back(LogitInverseLink(run.model.form, run.model.link, pi));
        }
    }
    run.fit.intercepts = run.startIntercepts;
    run.fit.mortality = run.startMortality;
}

// The case weight is missing from the second term of one block unless the response is binary, and from the categories
// of several blocks but the reference; the model's log-likelihood has it. Pinned by LogitOddities.NullLogLikelihood.
void ComputeNullLogLikelihood(LogitRun& run)
{
    const LogitModel& model = run.model;
    const auto n = static_cast<std::size_t>(model.n);
    if (run.HasOneBlock()) {
        const double pi = run.marginal[0];
        RowSum trials;
        RowSum successes;
        for (std::size_t i = 0; i < n; ++i) {
            const double w = model.secondWeights[i] * model.caseWeights[i];
            trials.Add(w);
            successes.Add((model.form == kBinary ? w : model.secondWeights[i]) * model.response[i]);
        }
        run.nullLogLikelihood =
            trials.Total() * std::log(1.0 - pi) + successes.Total() * std::log(pi / (1.0 - pi));
        return;
    }
    RowSum sum;
    for (std::size_t i = 0; i < n; ++i) {
        if (model.isReference[i] == 1.0) {
            sum.Add(model.secondWeights[i] * model.caseWeights[i] * std::log(run.referenceMarginal));
            continue;
        }
        for (std::size_t k = 0; k < run.marginal.size(); ++k) {
            if (model.indicators[k][i] != 0.0) sum.Add(model.secondWeights[i] * std::log(run.marginal[k]));
        }
    }
    run.nullLogLikelihood = sum.Total();
}

void ScreenColumns(LogitRun& run)
{
    matrix<double>* const noTable = nullptr;
    CheckTolerance(&run.data.correlation,
                   run.data.n,
                   run.model.layout.columns,
                   run.factors.active,
                   run.factors.subParents,
                   run.options.tolerance,
                   kFalse,
                   kFalse,
                   AsFlag(run.options.appliesTolerance),
                   kFalse,
                   run.factors.subRemoved,
                   noTable,
                   noTable);
    RemoveColumnsOfInactiveFactors(run);
    DropFactorsWithoutColumn(run);
    BuildMask(run);
}

void RecountModel(LogitRun& run)
{
    const int p = run.model.layout.columns;
    *run.out.nbActiveFactors = 0;
    for (int f = 1; f <= run.factors.nbFactors; ++f) {
        if (!run.factors.IsActive(f)) continue;
        bool isFree = false;
        for (int j = 1; j <= p && !isFree; ++j) {
            isFree = run.factors.FactorOf(j) == f && run.fit.IsFree(j);
        }
        run.factors.active->vbset(f, isFree ? 1 : 0);
        *run.out.nbActiveFactors += isFree ? 1 : 0;
    }
    for (int j = 1; j <= p; ++j) {
        const int state = run.factors.subRemoved->vbget(j);
        run.factors.subRemoved->vbset(
            j,
            run.fit.IsFree(j) ? int{linear::kInModel} : std::max(state, kOutOfModel));
    }
    run.parameters =
        run.fit.CountFreeColumns() + (run.fitOptions.estimatesMortality ? 1.0 : 0.0) + run.InterceptDf();
}

}  // namespace korvenrg::logistic
