#include "comparisons/ls_means.h"

#include <algorithm>
#include <vector>

#include "comparisons/category_involved.h"
#include "comparisons/category_means_table.h"
#include "comparisons/contrast_table.h"
#include "core/limits.h"
#include "kernel/linalg/column_moments.h"
#include "kernel/linalg/qualitative.h"
#include "kernel/linalg/vector_moments.h"

namespace korvenrg::comparisons {

namespace {

// What the combinations of LS means are made from.
struct LsModel
{
    FactorVariables factors;
    matrix<int>* subParents;  ///< p
    matrix<int>* subRemoved;  ///< p
    int p;
    int factor;                       ///< the one whose means are wanted
    std::vector<double> columnMeans;  ///< p
    std::vector<ColumnBlock> blocks;  ///< by factor, from 0
    std::vector<int> nbParameters;    ///< by factor: its parameters that are not constant columns
    std::vector<char> linked;         ///< by factor: shares a variable with the factor wanted

    bool Knows(int f) const
    {
        return f >= 1 && f <= factors.nbFactors;
    }
};

std::size_t At(int i)
{
    return static_cast<std::size_t>(i - 1);
}

// Weighted means of the columns over all rows; zeros when the weights add to 0.
std::vector<double> ColumnMeans(const ModelRows& rows)
{
    std::vector<double> means(static_cast<std::size_t>(std::max(rows.p, 0)));
    if (V_Sum2(rows.weights, rows.n) == 0.0) return means;
    matrix<double> target(rows.p, 1, means.data(), true);
    matrix<double>* output = &target;
    M_Mean2(rows.x, rows.n, rows.p, rows.weights, output);
    return means;
}

void DescribeFactors(LsModel& model)
{
    const auto count = static_cast<std::size_t>(std::max(model.factors.nbFactors, 0));
    model.blocks.resize(count);
    model.nbParameters.assign(count, 0);
    model.linked.assign(count, 0);
    for (int r = 1; r <= model.p; ++r) {
        const int f = model.subParents->vbget(r);
        if (!model.Knows(f)) continue;
        ColumnBlock& block = model.blocks[At(f)];
        if (block.last < block.first) block.first = r;
        block.last = r;
        if (model.subRemoved->vbget(r) != linear::kConstant) ++model.nbParameters[At(f)];
    }
    for (int f = 1; f <= model.factors.nbFactors; ++f) {
        model.linked[At(f)] = model.factors.ShareVariable(f, model.factor) ? 1 : 0;
    }
}

// How a parameter enters the mean of a category.
enum class Share
{
    kNone,
    kOne,
    kColumnMean,
    kOfItsFactor,       ///< 1 / number of parameters of the factor
    kOfTheInvolvedOnes  ///< 1 / number of parameters of the factor that belong to the category
};

Share ShareOf(const LsModel& model, int category, int r)
{
    const int f = model.subParents->vbget(r);
    if (!model.Knows(f)) return Share::kNone;
    const int type = model.factors.type->vbget(f);
    const bool mixed = type == linear::kMixedInteraction;
    const int position = r - model.blocks[At(f)].first;
    if (f == model.factor) {
        if (position != category - 1) return Share::kNone;
        return mixed ? Share::kColumnMean : Share::kOne;
    }
    if (!mixed && isQualiPure(type) == kFalse) return Share::kColumnMean;
    if (model.linked[At(f)] == 0) return mixed ? Share::kColumnMean : Share::kOfItsFactor;
    if (!model.factors.ShareCategories(f, position, model.factor, category - 1)) return Share::kNone;
    return mixed ? Share::kColumnMean : Share::kOfTheInvolvedOnes;
}

// One category's column of the combinations. Which parameters are constant columns does not matter to the share of the
// involved ones: an empty cell counts there, and its coefficient is 0. Pinned by LsMeansCases.AnEmptyCellCounts.
void WriteCombination(const LsModel& model, int category, matrix<double>& combinations)
{
    std::vector<Share> shares;
    std::vector<int> involved(model.blocks.size(), 0);
    for (int r = 1; r <= model.p; ++r) {
        shares.push_back(ShareOf(model, category, r));
        if (shares.back() == Share::kOfTheInvolvedOnes) ++involved[At(model.subParents->vbget(r))];
    }
    for (int r = 1; r <= model.p; ++r) {
        const int f = model.subParents->vbget(r);
        double l = 0.0;
        switch (shares[At(r)]) {
            case Share::kNone:
                break;
            case Share::kOne:
                l = 1.0;
                break;
            case Share::kColumnMean:
                l = model.columnMeans[At(r)];
                break;
            case Share::kOfItsFactor:
                l = model.nbParameters[At(f)] > 0 ? 1.0 / model.nbParameters[At(f)] : 0.0;
                break;
            case Share::kOfTheInvolvedOnes:
                l = 1.0 / involved[At(f)];
        }
        combinations.vbset(r, category, l);
    }
}

// The coefficients of the parameters in each category's LS mean, p x K.
matrix<double> CombinationsOfLsMeans(const ModelRows& rows, LsModel& model, int categories)
{
    matrix<double> combinations(rows.p, categories);
    model.columnMeans = ColumnMeans(rows);
    DescribeFactors(model);
    for (int c = 1; c <= categories; ++c) {
        WriteCombination(model, c, combinations);
    }
    return combinations;
}

}  // namespace

}  // namespace korvenrg::comparisons

// The LS means and their contrasts:
//   - count the parameters of each factor
//   - combinations: the category's own parameter, the other factors in equal shares, the covariates at their means
//   - means, standard errors and limits, ranked by ascending mean; missing ones last
//   - contrasts in the order of the ranks; those of missing means last
void cGetLSMeansContrastsStatVar(matrix<double>* X,
                                 matrix<double>* W,
                                 int n,
                                 int p,
                                 [[maybe_unused]] int NbParams,
                                 int NbContrasts,
                                 int NbFactors,
                                 int Interlevel,
                                 int FactID,
                                 matrix<int>* FactType,
                                 [[maybe_unused]] matrix<int>* FactActive,
                                 matrix<int>* FactNbSubInit,
                                 matrix<int>* FactNbSub,
                                 matrix<int>* FactSubRemoved,
                                 [[maybe_unused]] matrix<int>* FactSubCleaned,
                                 matrix<int>* FactListVars,
                                 matrix<int>* FactNbVars,
                                 matrix<int>* FactSubParents,
                                 matrix<int>* RemovedVect,
                                 matrix<double>* iStats,
                                 matrix<double>* iVarCov,
                                 double alpha,
                                 double DFErrors,
                                 matrix<double>* oMeans,
                                 matrix<double>* oContrastsStats,
                                 matrix<double>* Ranks,
                                 int* NbNull)
{
    using namespace korvenrg::comparisons;
    const ModelRows rows{.x = X, .weights = W, .n = n, .p = p};
    const FittedModel fit{.p = p,
                          .coefficients = iStats,
                          .covariance = iVarCov,
                          .alpha = alpha,
                          .dfErrors = DFErrors};
    const FactorCategories categories{.count = CategoryCountOf(FactNbSub, FactID), .removed = RemovedVect};
    LsModel model{.factors = {.nbFactors = NbFactors,
                              .interlevel = Interlevel,
                              .type = FactType,
                              .categoryCounts = FactNbSubInit,
                              .listVars = FactListVars,
                              .nbVars = FactNbVars},
                  .subParents = FactSubParents,
                  .subRemoved = FactSubRemoved,
                  .p = p,
                  .factor = FactID,
                  .columnMeans = {},
                  .blocks = {},
                  .nbParameters = {},
                  .linked = {}};

    *NbNull = categories.CountRemoved();
    const matrix<double> combinations = CombinationsOfLsMeans(rows, model, categories.count);
    RankedMeans ranked = RankCategories(fit, categories, combinations, MissingMeans::kLast);
    WriteRankedMeans(ranked, categories.count, oMeans, Ranks);
    WriteRankedContrasts(fit,
                         categories,
                         combinations,
                         ranked.identifiers,
                         categories.count - *NbNull,
                         {.cells = oContrastsStats, .rows = NbContrasts});
}

void cGetCategoryLSMeans(matrix<double>* X,
                         matrix<double>* W,
                         int n,
                         int p,
                         [[maybe_unused]] int NbParams,
                         int NbFactors,
                         int Interlevel,
                         int FactID,
                         matrix<int>* FactType,
                         matrix<int>* FactActive,
                         matrix<int>* FactNbSubInit,
                         matrix<int>* FactNbSub,
                         matrix<int>* FactSubRemoved,
                         matrix<int>* FactSubCleaned,
                         matrix<int>* FactListVars,
                         matrix<int>* FactNbVars,
                         matrix<int>* FactSubParents,
                         matrix<int>* RemovedVect,
                         matrix<double>* iStats,
                         matrix<double>* iVarCov,
                         double alpha,
                         double DFErrors,
                         matrix<double>* oMeans,
                         matrix<double>* oMeanIDs)
{
    constexpr int kNoContrasts = 0;
    matrix<double> none(1, 1);
    int removed = 0;
    cGetLSMeansContrastsStatVar(X,
                                W,
                                n,
                                p,
                                NbParams,
                                kNoContrasts,
                                NbFactors,
                                Interlevel,
                                FactID,
                                FactType,
                                FactActive,
                                FactNbSubInit,
                                FactNbSub,
                                FactSubRemoved,
                                FactSubCleaned,
                                FactListVars,
                                FactNbVars,
                                FactSubParents,
                                RemovedVect,
                                iStats,
                                iVarCov,
                                alpha,
                                DFErrors,
                                oMeans,
                                &none,
                                oMeanIDs,
                                &removed);
}
