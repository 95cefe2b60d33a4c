#include "linear/interaction_cells.h"

#include <algorithm>
#include <cstdint>
#include <memory>
#include <numeric>
#include <vector>

#include "core/limits.h"
#include "kernel/linalg/outputs.h"
#include "kernel/linalg/qualitative.h"
#include "linear/design_size.h"
#include "linear/factor_description.h"

namespace korvenrg::linear {

namespace {

// Category numbers of the text columns, n x pQ, from their sorted categories.
std::unique_ptr<matrix<int>> CodesOf(matrix<std::wstring>& q, int n, int pQ)
{
    matrix<std::wstring>* labels = nullptr;
    matrix<std::wstring>* allLabels = nullptr;
    matrix<double>* frequencies = nullptr;
    matrix<double>* allFrequencies = nullptr;
    matrix<int>* counts = nullptr;
    matrix<int>* codes = nullptr;
    int maxCat = 0;
    M_InfoQuali(&q, n, pQ, labels, frequencies, counts, allLabels, allFrequencies, nullptr, &maxCat, kFalse);
    M_ReplaceCatByCodes(&q, n, pQ, labels, counts, codes);
    delete labels;
    delete allLabels;
    delete frequencies;
    delete allFrequencies;
    delete counts;
    return std::unique_ptr<matrix<int>>(codes);
}

// A qualitative variable of an interaction.
struct CellVariable
{
    int number;  ///< among the qualitative ones
    int categories;
};

// The qualitative variables of a factor, in its order.
std::vector<CellVariable> VariablesOf(int f,
                                      int pX,
                                      int interlevel,
                                      const FactorDescription& factors,
                                      const matrix<int>& nbCat)
{
    std::vector<CellVariable> variables;
    const int count = std::min(factors.nbVars->vbget(f), interlevel);
    for (int i = 1; i <= count; ++i) {
        const int variable = factors.listVars->vbget(f, i);
        if (factors.type->vbget(variable) != kQualitative) continue;
        variables.push_back({variable - pX, nbCat.vbget(variable - pX)});
    }
    return variables;
}

// Which of the first `cells` combinations have an observation. The first variable changes slowest.
std::vector<bool> FilledCells(const matrix<int>& codes,
                              int n,
                              const std::vector<CellVariable>& variables,
                              std::size_t cells)
{
    std::vector<bool> filled(cells);
    for (int row = 1; row <= n; ++row) {
        std::size_t cell = 0;
        bool known = true;
        for (const CellVariable& variable : variables) {
            const int code = codes.vbget(row, variable.number);
            known = known && code >= 1 && code <= variable.categories;
            cell = cell * static_cast<std::size_t>(variable.categories) + static_cast<std::size_t>(code - 1);
        }
        if (known && cell < cells) filled[cell] = true;
    }
    return filled;
}

bool IsActiveInteraction(const matrix<int>& active, const matrix<int>& type, int factor)
{
    return active.vbget(factor) == 1 && type.vbget(factor) > kQualitative;
}

// Whether an active interaction lists a main effect's variable.
bool IsHeldByInteraction(int mainEffect,
                         int nbFactors,
                         int interlevel,
                         const matrix<int>& active,
                         const matrix<int>& type,
                         const matrix<int>& listVars)
{
    for (int f = 1; f <= nbFactors; ++f) {
        if (!IsActiveInteraction(active, type, f)) continue;
        for (int v = 1; v <= interlevel; ++v) {
            if (listVars.vbget(f, v) == mainEffect) return true;
        }
    }
    return false;
}

// Columns of X, from 1, that stay.
std::vector<int> ColumnsKept(int p,
                             int nbFactors,
                             int interlevel,
                             const matrix<int>& active,
                             const matrix<int>& type,
                             const matrix<int>& nbSub,
                             const matrix<int>& listVars)
{
    std::vector<int> kept;
    int source = 0;
    for (int f = 1; f <= nbFactors; ++f) {
        if (active.vbget(f) != 1) continue;
        const int width = std::clamp(nbSub.vbget(f) - 1, 0, std::max(p - source, 0));
        const bool drops = type.vbget(f) <= kQualitative &&
                           IsHeldByInteraction(f, nbFactors, interlevel, active, type, listVars);
        for (int j = 1; j <= width && !drops; ++j) {
            kept.push_back(source + j);
        }
        source += width;
    }
    return kept;
}

}  // namespace

}  // namespace korvenrg::linear

int GetMissingInteractions(matrix<std::wstring>* q,
                           int n,
                           int NbFactors,
                           int pX,
                           int pQ,
                           [[maybe_unused]] int Interlevel,
                           matrix<int>* NbCat,
                           matrix<int>* FactType,
                           matrix<int>* FactListVars,
                           matrix<int>* FactNbVars,
                           matrix<int>* FactActive,
                           matrix<int>* oMissing)
{
    using namespace korvenrg::linear;
    const FactorDescription factors{.nbFactors = NbFactors,
                                    .type = FactType,
                                    .active = FactActive,
                                    .nbVars = FactNbVars,
                                    .listVars = FactListVars,
                                    .nbSub = nullptr,
                                    .subParents = nullptr,
                                    .subDesign = nullptr,
                                    .subRemoved = nullptr};
    const std::unique_ptr<matrix<int>> codes = CodesOf(*q, n, pQ);
    const std::int64_t room = oMissing->total;
    std::int64_t before = 0;  // columns of the factors so far
    int missing = 0;
    for (int f = 1; f <= NbFactors && before < room; ++f) {
        if (!factors.IsActive(f)) continue;
        const std::int64_t columns =
            std::min(ColumnsOfFactor(f, pX, *NbCat, *FactType, *FactListVars, *FactNbVars), room - before);
        if (FactType->vbget(f) == kQualitativeInteraction) {
            const auto cells = static_cast<std::size_t>(columns);
            const std::vector<bool> filled =
                FilledCells(*codes, n, VariablesOf(f, pX, Interlevel, factors, *NbCat), cells);
            for (std::size_t cell = 0; cell < cells; ++cell) {
                oMissing->vbset(static_cast<int>(before + static_cast<std::int64_t>(cell)) + 1,
                                filled[cell] ? 0 : 1);
                missing += filled[cell] ? 0 : 1;
            }
        }
        before += columns;
    }
    return missing;
}

short CheckInteractions(matrix<int>* FactNbVars, matrix<double>* Frequencies, int* n)
{
    const auto sameGroup = [&](int i, int j) {
        return j >= 1 && j <= *n && FactNbVars->vbget(j) == FactNbVars->vbget(i);
    };
    for (int i = 1; i <= *n; ++i) {
        if (Frequencies->vbget(i) != 0.0) continue;
        // One neighbour alone decides, the next cell only where the previous one is of another group: a group 0, 0, 5
        // counts as not filled in part. It stays: InteractionCells.OneNeighbourDecides.
        const int neighbour = sameGroup(i, i - 1) ? i - 1 : i + 1;
        if (sameGroup(i, neighbour) && Frequencies->vbget(neighbour) > 0.0) return korvenrg::kTrue;
    }
    return korvenrg::kFalse;
}

void CheckForInteraction(matrix<double>* X,
                         int p,
                         int n,
                         int Interlevel,
                         int NbFactors,
                         matrix<int>* FactActive,
                         matrix<int>* FactType,
                         matrix<int>* FactNbSub,
                         matrix<int>* FactListVars,
                         int* pOut,
                         matrix<double>*& oX)
{
    using namespace korvenrg::linear;
    bool hasInteraction = false;
    for (int f = 1; f <= NbFactors && !hasInteraction; ++f) {
        hasInteraction = IsActiveInteraction(*FactActive, *FactType, f);
    }
    std::vector<int> kept;
    if (hasInteraction) {
        kept = ColumnsKept(p, NbFactors, Interlevel, *FactActive, *FactType, *FactNbSub, *FactListVars);
    } else {
        kept.resize(static_cast<std::size_t>(std::max(p, 0)));
        std::iota(kept.begin(), kept.end(), 1);
    }
    *pOut = static_cast<int>(kept.size()) + (hasInteraction ? 1 : 0);
    korvenrg::linalg::EnsureShape(oX, n, *pOut);
    for (int i = 1; i <= n; ++i) {
        int target = 0;
        for (const int column : kept) {
            target += 1;
            oX->vbset(i, target, X->vbget(i, column));
        }
        if (hasInteraction) oX->vbset(i, target + 1, 1.0);
    }
}
