#include "comparisons/category_involved.h"

#include <algorithm>
#include <cstdint>
#include <limits>

#include "core/limits.h"

namespace korvenrg::comparisons {

namespace {

// Categories of a variable; one for a variable without a count, so that every position has its digits.
std::int64_t CategoriesOf(const FactorVariables& factors, int variable)
{
    const bool quantitative =
        factors.type != nullptr && factors.type->vbget(variable) == linear::kQuantitative;
    return quantitative ? 1 : std::max(factors.categoryCounts->vbget(variable), 1);
}

}  // namespace

ColumnBlock BlockOf(int factor, const matrix<int>& subParents, int p)
{
    ColumnBlock block;
    for (int j = 1; j <= p; ++j) {
        if (subParents.vbget(j) != factor) continue;
        if (block.last < block.first) block.first = j;
        block.last = j;
    }
    return block;
}

std::vector<int> FactorVariables::VariablesOf(int factor) const
{
    std::vector<int> variables;
    if (factor < 1 || factor > nbFactors) return variables;
    const int count = nbVars == nullptr ? interlevel : std::min(nbVars->vbget(factor), interlevel);
    for (int i = 1; i <= count; ++i) {
        const int variable = listVars->vbget(factor, i);
        if (variable < 1 || variable > nbFactors) break;
        variables.push_back(variable);
    }
    return variables;
}

// digit = floor(position / y) with y the product of the counts of the variables after this one; the position goes on as
// position mod y. A factor of one variable has the position itself.
std::vector<CategoryDigit> FactorVariables::DigitsOf(int factor, int position) const
{
    const std::vector<int> variables = VariablesOf(factor);
    std::vector<CategoryDigit> digits(variables.size());
    std::int64_t after = 1;
    for (std::size_t k = variables.size(); k-- > 0;) {
        const std::int64_t quotient = position / after;
        const std::int64_t count = CategoriesOf(*this, variables[k]);
        digits[k] = {variables[k], static_cast<int>(k == 0 ? quotient : quotient % count)};
        after = std::min<std::int64_t>(after * count, std::numeric_limits<int>::max());
    }
    return digits;
}

bool FactorVariables::ShareVariable(int factor1, int factor2) const
{
    const std::vector<int> first = VariablesOf(factor1);
    const std::vector<int> second = VariablesOf(factor2);
    return std::any_of(first.begin(), first.end(), [&](int variable) {
        return std::find(second.begin(), second.end(), variable) != second.end();
    });
}

bool FactorVariables::ShareCategories(int factor1, int position1, int factor2, int position2) const
{
    bool shared = false;
    const std::vector<CategoryDigit> others = DigitsOf(factor2, position2);
    for (const CategoryDigit& digit : DigitsOf(factor1, position1)) {
        for (const CategoryDigit& other : others) {
            if (digit.variable != other.variable) continue;
            if (digit.digit != other.digit) return false;
            shared = true;
        }
    }
    return shared;
}

}  // namespace korvenrg::comparisons

short CategoryInvolved(int column1,
                       int factor1,
                       int column2,
                       int factor2,
                       int p,
                       int NbFactors,
                       int Interlevel,
                       matrix<int>* FactType,
                       matrix<int>* FactNbSubInit,
                       matrix<int>* FactListVars,
                       matrix<int>* FactNbVars,
                       matrix<int>* FactSubParents)
{
    using namespace korvenrg::comparisons;
    const FactorVariables factors{.nbFactors = NbFactors,
                                  .interlevel = Interlevel,
                                  .type = FactType,
                                  .categoryCounts = FactNbSubInit,
                                  .listVars = FactListVars,
                                  .nbVars = FactNbVars};
    const int position1 = column1 - BlockOf(factor1, *FactSubParents, p).first;
    const int position2 = column2 - BlockOf(factor2, *FactSubParents, p).first;
    return korvenrg::AsFlag(factors.ShareCategories(factor1, position1, factor2, position2));
}
