#include "logistic/marginal_columns.h"

#include <algorithm>
#include <map>

namespace korvenrg::logistic {

namespace {

using linear::FactorDescription;

// The level that a constraint drops stays in the table.
bool IsCleaned(int state)
{
    return state != linear::kInModel && state != linear::kDroppedLevel;
}

int LevelsOf(const FactorDescription& factors, int variable)
{
    const bool qualitative = factors.type->vbget(variable) == linear::kQualitative;
    return qualitative ? std::max(factors.nbSub->vbget(variable), 1) : 1;
}

// Variables and levels of a column. A main effect is a variable of its own number; of an interaction the first variable
// changes slowest. Interactions of a higher order than examined have none.
std::vector<std::pair<int, int>> ComponentsOf(const MarginalFactors& from, int factor, int place)
{
    const FactorDescription& factors = from.factors;
    if (factors.type->vbget(factor) < linear::kQuantitativeInteraction) return {{factor, place}};
    const int order = factors.nbVars->vbget(factor);
    if (order > from.interlevel) return {};
    std::vector<std::pair<int, int>> components;
    for (int v = order; v >= 1; --v) {
        const int variable = factors.listVars->vbget(factor, v);
        const int levels = LevelsOf(factors, variable);
        components.emplace_back(variable, place % levels);
        place /= levels;
    }
    return components;
}

// A column with its place in the model. Without cells of their own for cleaned columns, the arrays of p hold the others
// one behind the other.
class ModelPlaces
{
  public:
    ModelPlaces(const MarginalFactors& from, int p, bool skipsCleaned)
        : from_(from), p_(p), skipsCleaned_(skipsCleaned)
    {
    }

    TableColumn Next(int factor, int place, bool cleaned)
    {
        const bool hasCell = !(cleaned && skipsCleaned_);
        if (hasCell) ++used_;
        TableColumn column{.factor = factor, .place = place, .cleaned = cleaned};
        column.model = hasCell && used_ <= p_ ? used_ : 0;
        column.removed = column.model > 0 && !from_.factors.InModel(column.model);
        column.components = ComponentsOf(from_, factor, place);
        return column;
    }

  private:
    const MarginalFactors& from_;
    int p_;
    bool skipsCleaned_;
    int used_ = 0;
};

bool ShareLevel(const TableColumn& a, const TableColumn& b)
{
    return std::find_first_of(a.components.begin(),
                              a.components.end(),
                              b.components.begin(),
                              b.components.end()) != a.components.end();
}

}  // namespace

int CountInitialColumns(int nbFactors, const int* active, const int* nbSub)
{
    if (active == nullptr || nbSub == nullptr) return 0;
    int count = 0;
    for (int f = 0; f < nbFactors; ++f) {
        if (active[f] == 1) count += std::max(nbSub[f], 0);
    }
    return count;
}

std::vector<TableColumn> ColumnsFromCounts(const MarginalFactors& from, int p, const matrix<int>& subCleaned)
{
    const FactorDescription& factors = from.factors;
    const int count = CountInitialColumns(factors.nbFactors, factors.active->data, factors.nbSub->data);
    ModelPlaces places(from, p, count > p);
    std::vector<TableColumn> columns;
    for (int f = 1; f <= factors.nbFactors; ++f) {
        if (!factors.IsActive(f)) continue;
        for (int place = 0; place < factors.nbSub->vbget(f); ++place) {
            const int number = static_cast<int>(columns.size()) + 1;
            columns.push_back(places.Next(f, place, IsCleaned(subCleaned.vbget(number))));
        }
    }
    return columns;
}

std::vector<TableColumn> ColumnsFromParents(const MarginalFactors& from,
                                            int p,
                                            const matrix<int>& subCleaned,
                                            const InitialColumns& initial)
{
    const bool skipsCleaned = initial.count > p;
    ModelPlaces places(from, p, skipsCleaned);
    std::vector<TableColumn> columns;
    std::map<int, int> columnsOfFactor;
    for (int number = 1; number <= initial.count; ++number) {
        const int state = initial.subRemoved->vbget(number);
        const bool cleaned = skipsCleaned ? state == linear::kConstant : IsCleaned(subCleaned.vbget(number));
        const int factor = initial.subParents->vbget(number);
        TableColumn column = places.Next(factor, columnsOfFactor[factor]++, cleaned);
        if (state > linear::kInModel || !from.factors.IsActive(factor)) column.removed = true;
        columns.push_back(column);
    }
    return columns;
}

void LogitClearInteractions(const std::vector<TableColumn>& columns,
                            std::size_t j,
                            std::vector<double>& values)
{
    for (std::size_t k = j; k < columns.size(); ++k) {
        const TableColumn& other = columns[k];
        const bool cleared = k == j || (other.Counts() && ShareLevel(columns[j], other));
        if (cleared && other.model > 0) values[static_cast<std::size_t>(other.model - 1)] = 0.0;
    }
}

}  // namespace korvenrg::logistic
