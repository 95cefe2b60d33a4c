#include "linear/best_subset.h"

#include <algorithm>
#include <cmath>

#include "core/limits.h"
#include "linear/factor_description.h"
#include "linear/ols_tables.h"
#include "linear/packed_model.h"
#include "linear/subset_search.h"

namespace korvenrg::linear {

namespace {

// Criteria that differ by at most this part of themselves are those of one model.
constexpr double kSameModel = 1E-12;

// Sets every state but that of a constant column back, and lets each factor compete that has such a column.
void ReopenStates(int p, const matrix<int>& parents, matrix<int>& states, matrix<int>& active)
{
    for (int j = 1; j <= p; ++j) {
        if (states.vbget(j) != kConstant) states.vbset(j, kCandidate);
    }
    for (int j = 1; j <= p; ++j) {
        if (states.vbget(j) < 1 && active.vbget(parents.vbget(j)) == 0) active.vbset(parents.vbget(j), 1);
    }
}

Search MakeSearch(const PackedModel& model,
                  double criterion,
                  double mseFull,
                  int nbFactors,
                  const matrix<int>& active,
                  const matrix<int>& parents,
                  const matrix<int>& states)
{
    const bool isKnown = criterion >= double{kByAdjustedRSquared} && criterion <= double{kByPc};
    Search search{.model = model,
                  .criterion = isKnown ? static_cast<int>(criterion) : kByMse,
                  .mseFull = mseFull,
                  .nbFactors = nbFactors,
                  .columnsOf = std::vector<std::vector<EnteringColumn>>(static_cast<std::size_t>(nbFactors)),
                  .isActive = {}};
    for (int f = 1; f <= nbFactors; ++f) {
        search.isActive.push_back(active.vbget(f) == 1);
    }
    std::vector<int> before(
        static_cast<std::size_t>(nbFactors));  // the factor's column before, whatever its state
    for (int j = 1; j <= model.p; ++j) {
        const int factor = parents.vbget(j);
        if (factor < 1 || factor > nbFactors) continue;
        const auto position = static_cast<std::size_t>(factor - 1);
        if (states.vbget(j) < 1) search.columnsOf[position].push_back({j, j != before[position] + 1});
        before[position] = j;
    }
    return search;
}

void WriteRow(const Search& search, int row, int size, const SweptSubset& subset, matrix<double>& models)
{
    const int nf = search.nbFactors;
    for (int j = 1; j <= nf + kModelPc; ++j) {
        models.vbset(row, j, 0.0);
    }
    models.vbset(row, kModelNumber, size);
    for (const int factor : subset.entered) {
        models.vbset(row, kModelFirstIndicator + factor - 1, 1.0);
    }
    if (subset.entered.empty()) return;
    const CandidateRow values = RowOf(search, subset.residualTerm, subset.columns, size);
    models.vbset(row, kModelColumns, values.columns);
    models.vbset(row, nf + kModelSse, values.sse);
    models.vbset(row, nf + kModelMse, values.mse);
    models.vbset(row, nf + kModelRSquared, values.rSquared);
    models.vbset(row, nf + kModelAdjustedRSquared, values.adjustedRSquared);
    models.vbset(row, nf + kModelCp, values.cp);
    models.vbset(row, nf + kModelAic, values.aic);
    models.vbset(row, nf + kModelSbc, values.sbc);
    models.vbset(row, nf + kModelPc, values.pc);
}

// Where a row stands among the sizes: the smaller the better, NaN for a row that may not be chosen.
double ChoiceValue(const Search& search, const matrix<double>& models, int row)
{
    const int nf = search.nbFactors;
    switch (search.criterion) {
        case kByAdjustedRSquared:
            return -models.vbget(row, nf + kModelAdjustedRSquared);
        case kByCp: {
            const double distance = std::fabs(models.vbget(row, nf + kModelCp) -
                                              models.vbget(row, kModelColumns) - search.model.c);
            return distance > kGuard ? distance : std::nan("");
        }
        case kByAic:
            return models.vbget(row, nf + kModelAic);
        case kBySbc:
            return models.vbget(row, nf + kModelSbc);
        case kByPc:
            return models.vbget(row, nf + kModelPc);
        default:
            return models.vbget(row, nf + kModelMse);
    }
}

// The row that is strictly better than all before it, or 0. Sizes that stand for the same model, as an interaction with
// and without its main effect, differ by rounding: they tie.
int ChooseRow(const Search& search, const matrix<double>& models, int rows)
{
    double best = kLargest;
    int chosen = 0;
    for (int row = 1; row <= rows; ++row) {
        const double value = ChoiceValue(search, models, row);
        if (!(value < best - kSameModel * std::fabs(best))) continue;
        best = value;
        chosen = row;
    }
    return chosen;
}

// Sweeps the factors of the chosen row into the caller's vector; the others leave the model.
void SweepChosen(const Search& search,
                 const matrix<double>& models,
                 int row,
                 const matrix<int>& parents,
                 matrix<int>& states,
                 matrix<int>& active)
{
    for (int j = 1; j <= search.model.p; ++j) {
        if (states.vbget(j) == kInModel) states.vbset(j, kCandidate);
    }
    for (int f = 1; f <= search.nbFactors; ++f) {
        if (models.vbget(row, kModelFirstIndicator + f - 1) != 1.0) {
            active.vbset(f, 0);
            continue;
        }
        for (int j = 1; j <= search.model.p; ++j) {
            if (parents.vbget(j) != f || states.vbget(j) >= 1 || !search.model.Passes(j)) continue;
            search.model.Sweep(j);
            states.vbset(j, kInModel);
        }
    }
}

// Truncated to an integer; what no integer of factors holds is cut off.
int NumberOfFactors(double value, int nbFactors)
{
    return std::isnan(value) ? 0 : static_cast<int>(std::clamp(value, -1.0, static_cast<double>(nbFactors)));
}

}  // namespace

// The search:
//   - reopen the states
//   - for each number of factors: find the best subset and write its row; end where one lacks a factor
//   - choose the best row
//   - sweep its factors in
void SelectBestSubset(int p,
                      double tol,
                      double c,
                      double S,
                      double sY,
                      matrix<double>* packed,
                      double Criterion,
                      double MinVars,
                      double MaxVars,
                      int NbFactors,
                      matrix<int>* FactActive,
                      matrix<int>* FactSubParents,
                      matrix<int>* ioFactSubRemoved,
                      int* pFinal,
                      double MSEfull,
                      matrix<double>* oModels,
                      int* oBestID,
                      SubsetWalk walk)
{
    if (NbFactors < 1) return;
    const matrix<int> statesBefore(*ioFactSubRemoved);
    const matrix<int> activeBefore(*FactActive);
    ReopenStates(p, *FactSubParents, *ioFactSubRemoved, *FactActive);
    const Search search = MakeSearch({p, tol, c, S, sY, packed},
                                     Criterion,
                                     MSEfull,
                                     NbFactors,
                                     *FactActive,
                                     *FactSubParents,
                                     *ioFactSubRemoved);
    const int least = std::max(NumberOfFactors(MinVars, NbFactors), 1);
    const int most = NumberOfFactors(MaxVars, NbFactors);
    int rows = 0;
    for (int size = least; size <= most; ++size) {
        const SweptSubset subset = SweepSubset(search, BestOfSize(search, size, walk));
        if (static_cast<int>(subset.entered.size()) - least + 1 != rows + 1) break;
        rows += 1;
        WriteRow(search, rows, size, subset, *oModels);
    }

    const int chosen = ChooseRow(search, *oModels, rows);
    if (chosen == 0) {
        std::copy_n(statesBefore.data, statesBefore.total, ioFactSubRemoved->data);
        std::copy_n(activeBefore.data, activeBefore.total, FactActive->data);
        return;
    }
    *pFinal = static_cast<int>(oModels->vbget(chosen, kModelColumns));
    *oBestID = chosen;
    SweepChosen(search, *oModels, chosen, *FactSubParents, *ioFactSubRemoved, *FactActive);
}

}  // namespace korvenrg::linear

void OLSBestSelection(int p,
                      double tol,
                      double c,
                      double S,
                      double sY,
                      matrix<double>* packed,
                      double Criterion,
                      double MinVars,
                      double MaxVars,
                      int NbFactors,
                      matrix<int>* FactActive,
                      matrix<int>* FactSubParents,
                      matrix<int>* ioFactSubRemoved,
                      int* pFinal,
                      double MSEfull,
                      matrix<double>* oModels,
                      int* oBestID)
{
    korvenrg::linear::SelectBestSubset(p,
                                       tol,
                                       c,
                                       S,
                                       sY,
                                       packed,
                                       Criterion,
                                       MinVars,
                                       MaxVars,
                                       NbFactors,
                                       FactActive,
                                       FactSubParents,
                                       ioFactSubRemoved,
                                       pFinal,
                                       MSEfull,
                                       oModels,
                                       oBestID,
                                       korvenrg::linear::SubsetWalk::kSharedPrefixes);
}
