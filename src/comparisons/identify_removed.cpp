#include "comparisons/identify_removed.h"

#include <algorithm>

#include "comparisons/category_involved.h"

namespace korvenrg::comparisons {

namespace {

constexpr int kFlag = 1;

bool IsConstant(const matrix<int>& states, int column)
{
    return states.vbget(column) == linear::kConstant;
}

// A variable with several columns is qualitative; the main effect of a quantitative one has a single column, which is no
// category.
bool HasCategories(const FactorVariables& factors, int variable)
{
    return factors.categoryCounts->vbget(variable) > 1;
}

// Flags a column and, in the main effects, the category of each variable of its factor.
void FlagColumn(const FactorVariables& factors,
                const matrix<int>& subParents,
                int p,
                int column,
                matrix<int>& flags)
{
    flags.vbset(column, kFlag);
    const int factor = subParents.vbget(column);
    const int position = column - BlockOf(factor, subParents, p).first;
    for (const CategoryDigit& digit : factors.DigitsOf(factor, position)) {
        const ColumnBlock mainEffect = BlockOf(digit.variable, subParents, p);
        const int parent = mainEffect.first + digit.digit;
        if (HasCategories(factors, digit.variable) && mainEffect.Holds(parent)) flags.vbset(parent, kFlag);
    }
}

// The factor of each column of a table in which the active factors stand one after the other.
matrix<int> ParentsInOrder(const matrix<int>& active, const matrix<int>& nbSub, int nbFactors, int p)
{
    matrix<int> parents(p, 1);
    int column = 0;
    for (int f = 1; f <= nbFactors; ++f) {
        const int count = active.vbget(f) == 1 ? nbSub.vbget(f) : 0;
        for (int k = 0; k < count && column < p; ++k) {
            parents.vbset(++column, f);
        }
    }
    return parents;
}

}  // namespace

}  // namespace korvenrg::comparisons

void identifyRemoved([[maybe_unused]] matrix<int>* iFactActive,
                     int NbFactors,
                     int p,
                     int Interlevel,
                     matrix<int>* iFactSubParents,
                     matrix<int>* iFactListVars,
                     matrix<int>* iFactNbSub,
                     matrix<int>* iFactSubRemoved,
                     matrix<int>* oFactRemovedParents)
{
    using namespace korvenrg::comparisons;
    const FactorVariables factors{.nbFactors = NbFactors,
                                  .interlevel = Interlevel,
                                  .type = nullptr,
                                  .categoryCounts = iFactNbSub,
                                  .listVars = iFactListVars,
                                  .nbVars = nullptr};
    for (int j = 1; j <= p; ++j) {
        if (IsConstant(*iFactSubRemoved, j))
            FlagColumn(factors, *iFactSubParents, p, j, *oFactRemovedParents);
    }
}

void identifyRemoved2(matrix<int>* iFactActive,
                      int NbFactors,
                      int p,
                      int Interlevel,
                      matrix<int>* iFactType,
                      matrix<int>* iFactListVars,
                      matrix<int>* iFactNbSubInit,
                      matrix<int>* iFactSubRemoved,
                      matrix<int>* iFactSubCleaned,
                      matrix<int>* oFactRemovedParents)
{
    using namespace korvenrg::comparisons;
    const FactorVariables factors{.nbFactors = NbFactors,
                                  .interlevel = Interlevel,
                                  .type = iFactType,
                                  .categoryCounts = iFactNbSubInit,
                                  .listVars = iFactListVars,
                                  .nbVars = nullptr};
    const matrix<int> parents = ParentsInOrder(*iFactActive, *iFactNbSubInit, NbFactors, p);
    for (int j = 1; j <= p; ++j) {
        const bool removed = IsConstant(*iFactSubRemoved, j) || IsConstant(*iFactSubCleaned, j);
        if (removed) FlagColumn(factors, parents, p, j, *oFactRemovedParents);
    }
}
