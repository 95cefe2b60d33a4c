#include "comparisons/category_means.h"

#include <algorithm>
#include <cmath>
#include <vector>

#include "comparisons/category_involved.h"
#include "comparisons/category_means_table.h"
#include "comparisons/contrast_table.h"
#include "core/limits.h"
#include "kernel/linalg/column_moments.h"
#include "kernel/linalg/columns.h"
#include "kernel/linalg/qualitative.h"
#include "kernel/linalg/vector_moments.h"

namespace korvenrg::comparisons {

namespace {

using RowList = std::vector<int>;

// The rows, from 0, of each category. A category of a qualitative factor has those above eps in its column that are not
// below -eps in this or a later column of the factor: a sum-type constraint writes negative cells for the dropped level.
std::vector<RowList> RowsByDummies(const ModelRows& rows, const ColumnBlock& block, int categories)
{
    std::vector<RowList> members(static_cast<std::size_t>(categories));
    std::vector<char> negativeFromHere(static_cast<std::size_t>(std::max(rows.n, 0)), 0);
    for (int column = block.last; column >= block.first; --column) {
        const int category = column - block.first;
        for (std::size_t r = 0; r < negativeFromHere.size(); ++r) {
            const double cell = rows.x->vbget(static_cast<int>(r) + 1, column);
            if (cell < -kEps) negativeFromHere[r] = 1;
            if (category >= categories || !(cell > kEps) || negativeFromHere[r] == 1) continue;
            members[static_cast<std::size_t>(category)].push_back(static_cast<int>(r));
        }
    }
    return members;
}

// A cell of a mixed interaction has the rows where its column, a product with quantitative values, is not 0.
std::vector<RowList> RowsByProducts(const ModelRows& rows, const ColumnBlock& block, int categories)
{
    std::vector<RowList> members(static_cast<std::size_t>(categories));
    for (int c = 0; c < categories && block.Holds(block.first + c); ++c) {
        for (int r = 0; r < rows.n; ++r) {
            const bool inCell = std::fabs(rows.x->vbget(r + 1, block.first + c)) > kEps;
            if (inCell) members[static_cast<std::size_t>(c)].push_back(r);
        }
    }
    return members;
}

// A quantitative factor does not divide the rows.
std::vector<RowList> AllRows(const ModelRows& rows, int categories)
{
    RowList all;
    for (int r = 0; r < rows.n; ++r) {
        all.push_back(r);
    }
    return std::vector<RowList>(static_cast<std::size_t>(categories), all);
}

std::vector<RowList> RowsOfCategories(const ModelRows& rows,
                                      const ColumnBlock& block,
                                      int type,
                                      int categories)
{
    if (isQualiPure(type) == kTrue) return RowsByDummies(rows, block, categories);
    if (type == linear::kMixedInteraction) return RowsByProducts(rows, block, categories);
    return AllRows(rows, categories);
}

// Weighted means of the model columns over some rows; zeros when their weights add to 0.
void WriteColumnMeans(const ModelRows& rows,
                      const RowList& members,
                      int category,
                      matrix<double>& combinations)
{
    const int count = static_cast<int>(members.size());
    matrix<double> x(count, rows.p);
    matrix<double> weights(count, 1);
    for (int k = 1; k <= count; ++k) {
        weights.vbset(k, rows.weights->vbget(members[static_cast<std::size_t>(k - 1)] + 1));
    }
    if (V_Sum2(&weights, count) == 0.0) return;
    for (int j = 1; j <= rows.p; ++j) {
        for (int k = 1; k <= count; ++k) {
            x.vbset(k, j, rows.x->vbget(members[static_cast<std::size_t>(k - 1)] + 1, j));
        }
    }
    matrix<double> means(rows.p, 1);
    matrix<double>* target = &means;
    M_Mean2(&x, count, rows.p, &weights, target);
    for (int j = 1; j <= rows.p; ++j) {
        combinations.vbset(j, category, means.vbget(j));
    }
}

// The coefficients of the parameters in each category's mean, p x K.
matrix<double> CombinationsOfMeans(const ModelRows& rows, const ColumnBlock& block, int type, int categories)
{
    matrix<double> combinations(rows.p, categories);
    const std::vector<RowList> members = RowsOfCategories(rows, block, type, categories);
    for (int c = 1; c <= categories; ++c) {
        WriteColumnMeans(rows, members[static_cast<std::size_t>(c - 1)], c, combinations);
    }
    return combinations;
}

}  // namespace

}  // namespace korvenrg::comparisons

// The means and their contrasts:
//   - find the categories and the columns of the factor
//   - means of the model columns within each category
//   - means, standard errors and limits, ranked by ascending mean; missing ones first
//   - contrasts in the order of the ranks
void GetMeansContrastsStatVar2(matrix<double>* X,
                               matrix<double>* W,
                               int n,
                               int p,
                               int NbContrasts,
                               [[maybe_unused]] int NbFactors,
                               [[maybe_unused]] int Interlevel,
                               int FactID,
                               int FactType,
                               matrix<int>* FactNbSub,
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

    *NbNull = categories.CountRemoved();
    const ColumnBlock block = BlockOf(FactID, *FactSubParents, p);
    const matrix<double> combinations = CombinationsOfMeans(rows, block, FactType, categories.count);
    RankedMeans ranked = RankCategories(fit, categories, combinations, MissingMeans::kFirst);
    WriteRankedMeans(ranked, categories.count, oMeans, Ranks);
    WriteRankedContrasts(fit,
                         categories,
                         combinations,
                         ranked.identifiers,
                         categories.count,
                         {.cells = oContrastsStats, .rows = NbContrasts});
}

void GetCategoryMeans2(matrix<double>* X,
                       matrix<double>* W,
                       int n,
                       int p,
                       [[maybe_unused]] int NbFactors,
                       [[maybe_unused]] int Interlevel,
                       int FactID,
                       matrix<int>* FactType,
                       [[maybe_unused]] matrix<int>* FactActive,
                       [[maybe_unused]] matrix<int>* FactNbSubInit,
                       matrix<int>* FactNbSub,
                       [[maybe_unused]] matrix<int>* FactListVars,
                       [[maybe_unused]] matrix<int>* FactNbVars,
                       matrix<int>* FactSubParents,
                       matrix<int>* RemovedVect,
                       matrix<double>* iStats,
                       matrix<double>* iVarCov,
                       double alpha,
                       double DFErrors,
                       matrix<double>* oMeans,
                       matrix<double>* oMeanIDs)
{
    using namespace korvenrg::comparisons;
    const ModelRows rows{.x = X, .weights = W, .n = n, .p = p};
    const FittedModel fit{.p = p,
                          .coefficients = iStats,
                          .covariance = iVarCov,
                          .alpha = alpha,
                          .dfErrors = DFErrors};
    const FactorCategories categories{.count = CategoryCountOf(FactNbSub, FactID), .removed = RemovedVect};

    const ColumnBlock block = BlockOf(FactID, *FactSubParents, p);
    const matrix<double> combinations =
        CombinationsOfMeans(rows, block, FactType->vbget(FactID), categories.count);
    RankedMeans ranked = RankCategories(fit, categories, combinations, MissingMeans::kFirst);
    WriteRankedMeans(ranked, categories.count, oMeans, oMeanIDs);
}
