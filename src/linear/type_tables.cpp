#include "linear/type_tables.h"

#include <algorithm>
#include <vector>

#include "core/limits.h"
#include "linear/factor_description.h"
#include "linear/packed_model.h"
#include "linear/type_table_rows.h"

namespace korvenrg::linear {

namespace {

// Tolerance of a column that comes back while a factor is tested: any pivot that is more than rounding.
constexpr double kAnyPivot = 0.0;

PackedModel OnVector(int p, matrix<double>& packed)
{
    return {.p = p, .tol = kAnyPivot, .c = 0.0, .S = 0.0, .sY = 0.0, .packed = &packed};
}

void Restore(const matrix<double>& from, matrix<double>& packed)
{
    std::copy_n(from.data, from.total, packed.data);
}

// What the Type II walk needs to know of factors and columns.
struct TypeIiModel
{
    PackedModel model;
    const matrix<int>& active;
    const matrix<int>& type;
    const matrix<int>& nbVars;
    const matrix<int>& listVars;
    const matrix<int>& parents;
    const matrix<int>& states;

    bool IsActive(int factor) const
    {
        return active.vbget(factor) == 1;
    }
    bool InModel(int column) const
    {
        return states.vbget(column) == kInModel;
    }
};

// Only the first variable of f is looked for; the others do not matter.
bool ListsFirstVariableOf(const TypeIiModel& m, int g, int f)
{
    for (int v = 1; v <= m.nbVars.vbget(g); ++v) {
        if (m.listVars.vbget(g, v) == m.listVars.vbget(f, 1)) return true;
    }
    return false;
}

bool Contains(const TypeIiModel& m, int g, int f)
{
    const bool isLargerInteraction = m.IsActive(g) && g > f && m.nbVars.vbget(g) > m.nbVars.vbget(f) &&
                                     m.type.vbget(g) == kQualitativeInteraction;
    const bool mixesAQuantity = m.type.vbget(g) == kMixedInteraction && m.type.vbget(f) == kQuantitative;
    return (isLargerInteraction || mixesAQuantity) && ListsFirstVariableOf(m, g, f);
}

// Sweeps f out and, unless they are kept, the factors after it that contain it. Gives the columns of containing factors.
std::vector<bool> SweepOutFactor(const TypeIiModel& m, int f, bool keepsContaining)
{
    std::vector<bool> contains(static_cast<std::size_t>(m.model.p), false);
    for (int i = 1; i <= m.model.p; ++i) {
        const int g = m.parents.vbget(i);
        if (g == f && m.InModel(i)) m.model.Sweep(i);
        if (g <= f || !Contains(m, g, f)) continue;
        contains[static_cast<std::size_t>(i - 1)] = true;
        if (!keepsContaining && m.InModel(i)) m.model.Sweep(i);
    }
    return contains;
}

// Columns that were kept out of the final model may come back once others have left.
void SweepInOthers(const TypeIiModel& m, int f, const std::vector<bool>& contains)
{
    for (int i = 1; i <= m.model.p; ++i) {
        const int g = m.parents.vbget(i);
        if (g == f || contains[static_cast<std::size_t>(i - 1)]) continue;
        if (m.states.vbget(i) > kInModel && m.IsActive(g) && m.model.Passes(i)) m.model.Sweep(i);
    }
}

// Sweeps the columns of f back in. Gives how many entered.
int SweepInFactor(const TypeIiModel& m, int f)
{
    int count = 0;
    for (int i = 1; i <= m.model.p && m.parents.vbget(i) <= f; ++i) {
        if (m.parents.vbget(i) != f || !m.InModel(i) || !m.IsActive(f) || !m.model.Passes(i)) continue;
        m.model.Sweep(i);
        count += 1;
    }
    return count;
}

}  // namespace

}  // namespace korvenrg::linear

using namespace korvenrg::linear;

void OLSGetTypeITable(int p,
                      double sumWc,
                      double sY,
                      double varY,
                      double dfE,
                      double MSE,
                      matrix<double>* unswept,
                      int NbFactors,
                      matrix<int>* FactActive,
                      matrix<double>* origActive,
                      matrix<int>* FactSubParents,
                      matrix<int>* ioFactSubRemoved,
                      matrix<double>* oTypeISSTable)
{
    matrix<double> packed(*unswept);
    const PackedModel model = OnVector(p, packed);
    TypeTable table{*oTypeISSTable};
    double explainedBefore = 0.0;
    for (int f = 1; f <= NbFactors; ++f) {
        if (FactActive->vbget(f) != 1) {
            table.WriteInactive(*origActive, f);
            continue;
        }
        int count = 0;
        for (int j = 1; j <= p; ++j) {
            if (FactSubParents->vbget(j) != f || ioFactSubRemoved->vbget(j) != kInModel) continue;
            model.Sweep(j);
            count += 1;
        }
        const double residual = model.ResidualTerm() * sY * sY;
        const double sumOfSquares = ((sumWc - 1.0) * varY - (sumWc - 1.0) * residual) - explainedBefore;
        explainedBefore = (varY - residual) * (sumWc - 1.0);
        table.WriteTest(count, sumOfSquares, dfE, MSE, 0.0);
    }
}

void OLSGetTypeIITable(int p,
                       double sumWc,
                       double varY,
                       double dfE,
                       double MSE,
                       matrix<double>* swept,
                       short keepContaining,
                       int NbFactors,
                       matrix<int>* FactActive,
                       matrix<double>* origActive,
                       matrix<int>* FactType,
                       matrix<int>* FactNbVars,
                       matrix<int>* FactListVars,
                       matrix<int>* FactSubParents,
                       matrix<int>* ioFactSubRemoved,
                       matrix<double>* table)
{
    matrix<double> packed(*swept);
    const TypeIiModel m{OnVector(p, packed),
                        *FactActive,
                        *FactType,
                        *FactNbVars,
                        *FactListVars,
                        *FactSubParents,
                        *ioFactSubRemoved};
    TypeTable rows{*table};
    const double base = (sumWc - 1.0) * varY;
    for (int f = 1; f <= NbFactors; ++f) {
        if (!m.IsActive(f)) {
            rows.WriteInactive(*origActive, f);
            continue;
        }
        SweepInOthers(m, f, SweepOutFactor(m, f, keepContaining == korvenrg::kTrue));
        const double r0 = m.model.ResidualTerm();
        const int count = SweepInFactor(m, f);
        const double r1 = m.model.ResidualTerm();
        const double sumOfSquares = (1.0 - r1) * base - (1.0 - r0) * base;
        // An MSE near 0 gives F 0 and Pr 1 here, and missing cells in the other tables. It stays:
        // TypeTables.AnswersAtAPerfectFit.
        if (count < 1) {
            rows.WriteEmpty();
        } else if (MSE <= korvenrg::kEps) {
            rows.Write(count, sumOfSquares, sumOfSquares / count, 0.0, 1.0);
        } else {
            rows.WriteTest(count, sumOfSquares, dfE, MSE, korvenrg::kEps);
        }
        Restore(*swept, packed);
    }
}

void OLSGetTypeIIITable(int p,
                        double S,
                        double sY,
                        double varY,
                        double MSS,
                        double dfE,
                        double MSE,
                        matrix<double>* swept,
                        int NbFactors,
                        matrix<double>* FactActive,
                        matrix<double>* FactSubParents,
                        matrix<double>* ioFactSubRemoved,
                        matrix<double>* table)
{
    matrix<double> packed(*swept);
    const PackedModel model = OnVector(p, packed);
    TypeTable rows{*table};
    for (int f = 1; f <= NbFactors; ++f) {
        if (FactActive->vbget(f) != 1.0) continue;
        int count = 0;
        for (int j = 1; j <= p; ++j) {
            if (FactSubParents->vbget(j) != f || ioFactSubRemoved->vbget(j) != 0.0) continue;
            model.Sweep(j);
            count += 1;
        }
        const double sumOfSquares = MSS - (varY - model.ResidualTerm() * sY * sY) * (S - 1.0);
        rows.WriteTest(count, sumOfSquares, dfE, MSE, korvenrg::kEps);
        Restore(*swept, packed);
    }
}
