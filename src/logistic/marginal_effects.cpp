#include "logistic/marginal_effects.h"

#include <algorithm>
#include <cmath>

#include "core/limits.h"
#include "kernel/distributions/normal.h"
#include "kernel/linalg/columns.h"
#include "kernel/linalg/products.h"
#include "logistic/link_functions.h"
#include "logistic/marginal_columns.h"

namespace korvenrg::logistic {

namespace {

// A fitted model at the means of its columns.
struct ModelAtMeans
{
    int columns;
    double intercept;
    std::vector<double> slopes;
    std::vector<double> means;
    double mortality;
    int link;

    LinkValues At(const std::vector<double>& x) const
    {
        double eta = intercept;
        for (std::size_t k = 0; k < x.size(); ++k) {
            eta += x[k] * slopes[k];
        }
        return LogitLinkValues(link, eta);
    }
};

ModelAtMeans ModelOf(const matrix<double>& coefficients,
                     int p,
                     const matrix<double>& means,
                     double mortality,
                     int link)
{
    const linalg::ColumnsOf parameters(coefficients, p + 1, 1), centre(means, p, 1);
    return {.columns = p,
            .intercept = parameters[0][0],
            .slopes = {parameters[0] + 1, parameters[0] + 1 + p},
            .means = {centre[0], centre[0] + p},
            .mortality = mortality,
            .link = link};
}

std::size_t CellOf(const TableColumn& column)
{
    return static_cast<std::size_t>(column.model - 1);
}

// Derivatives by the slopes of columns in the model, then by the intercept. None holds the factor 1 - mortality of the
// effect. Pinned by MarginalEffects.MortalityScalesTheEffectAlone.
double QuantitativeEffect(const ModelAtMeans& model,
                          const std::vector<TableColumn>& columns,
                          std::size_t j,
                          std::vector<double>& derivatives)
{
    const LinkValues at = model.At(model.means);
    const double slope = model.slopes[CellOf(columns[j])];
    for (const TableColumn& column : columns) {
        if (!column.Counts()) continue;
        const double own = &column == &columns[j] ? at.density : 0.0;
        derivatives[CellOf(column)] = model.means[CellOf(column)] * at.second * slope + own;
    }
    // The logit's form, whatever the link. Pinned by MarginalEffects.InterceptEntryIsTheLogits.
    derivatives.back() = (1.0 - 2.0 * at.probability) * slope * at.density;
    return (1.0 - model.mortality) * slope * at.density;
}

double QualitativeEffect(const ModelAtMeans& model,
                         const std::vector<TableColumn>& columns,
                         std::size_t j,
                         std::vector<double>& derivatives)
{
    std::vector<double> with = model.means, without = model.means;
    with[CellOf(columns[j])] = 1.0;
    LogitClearInteractions(columns, j, without);
    const LinkValues at1 = model.At(with), at0 = model.At(without);
    for (const TableColumn& column : columns) {
        if (!column.Counts()) continue;
        const std::size_t k = CellOf(column);
        derivatives[k] = with[k] * at1.density - without[k] * at0.density;
    }
    derivatives.back() = at1.density - at0.density;
    return (1.0 - model.mortality) * (at1.probability - at0.probability);
}

// Effect of table column j; `derivatives` has p + 1 cells.
double LogitMarginalEffect(const ModelAtMeans& model,
                           const MarginalFactors& from,
                           const std::vector<TableColumn>& columns,
                           std::size_t j,
                           std::vector<double>& derivatives)
{
    std::fill(derivatives.begin(), derivatives.end(), 0.0);
    const bool qualitative = isQualiPure(from.factors.type->vbget(columns[j].factor)) == -1;
    return qualitative ? QualitativeEffect(model, columns, j, derivatives)
                       : QuantitativeEffect(model, columns, j, derivatives);
}

void WriteEffect(matrix<double>& table, int row, double effect, double variance, double z)
{
    table.vbset(row, kMarginalEffect, effect);
    if (!(variance > kEps)) return;
    const double stdError = std::sqrt(variance);
    table.vbset(row, kMarginalStdError, stdError);
    table.vbset(row, kMarginalZ, effect / stdError);
    // One tail, so close to 1 for a negative effect. Pinned by MarginalEffects.OneSidedTail.
    table.vbset(row, kMarginalPValue, pValNormalStd(effect / stdError));
    table.vbset(row, kMarginalLower, effect - z * stdError);
    table.vbset(row, kMarginalUpper, effect + z * stdError);
}

}  // namespace

}  // namespace korvenrg::logistic

// The table:
//   - the columns of the active factors, with their levels
//   - for each column that cleaning left a row of markers
//   - removed columns have no effect
//   - others their effect, its standard error, test and interval
void GetLogMarginalEffects(matrix<double>* iCoefficients,
                           int p,
                           matrix<double>* iVarCov,
                           matrix<double>* iMeans,
                           int iInterlevel,
                           int iNbFactors,
                           double iMortality,
                           int iModelType,
                           double alpha,
                           matrix<int>* iFactActive,
                           matrix<int>* iFactType,
                           matrix<int>* iFactNbVars,
                           matrix<int>* iFactListVars,
                           matrix<int>* iFactNbSubInit,
                           matrix<int>* iFactSubRemoved,
                           matrix<int>* iFactSubCleaned,
                           matrix<double>* oMarginalEffects)
{
    using namespace korvenrg;
    using namespace korvenrg::logistic;
    const MarginalFactors from{.factors = {.nbFactors = iNbFactors,
                                           .type = iFactType,
                                           .active = iFactActive,
                                           .nbVars = iFactNbVars,
                                           .listVars = iFactListVars,
                                           .nbSub = iFactNbSubInit,
                                           .subParents = nullptr,
                                           .subDesign = nullptr,
                                           .subRemoved = iFactSubRemoved},
                               .interlevel = iInterlevel};
    if (p < 1) return;
    const ModelAtMeans model = ModelOf(*iCoefficients, p, *iMeans, iMortality, iModelType);
    const std::vector<TableColumn> columns = ColumnsFromCounts(from, p, *iFactSubCleaned);
    const double z = InvCDFNormalStd(1.0 - alpha / 2.0);
    std::vector<double> derivatives(static_cast<std::size_t>(p) + 1);
    matrix<double> direction(p + 1, 1, derivatives.data(), true);
    for (std::size_t j = 0; j < columns.size(); ++j) {
        const TableColumn& column = columns[j];
        if (column.cleaned || column.model == 0) continue;
        for (int cell = kMarginalEffect; cell <= kMarginalUpper; ++cell) {
            oMarginalEffects->vbset(column.model, cell, kMissing);
        }
        if (column.removed) {
            oMarginalEffects->vbset(column.model, kMarginalEffect, 0.0);
            continue;
        }
        const double effect = LogitMarginalEffect(model, from, columns, j, derivatives);
        const double variance = M_ProductTrVBV(&direction, p + 1, iVarCov);
        WriteEffect(*oMarginalEffects, column.model, effect, variance, z);
    }
}

double GetLogDerivX(int idx,
                    [[maybe_unused]] int idxclean,
                    int jdx,
                    matrix<double>* iCoefficients,
                    int p,
                    int pInit,
                    matrix<double>* iMeans,
                    int iInterlevel,
                    double iMortality,
                    int iModelType,
                    int iNbFactors,
                    matrix<int>* iFactActive,
                    matrix<int>* iFactType,
                    matrix<int>* iFactNbVars,
                    matrix<int>* iFactListVars,
                    matrix<int>* iFactNbSubInit,
                    matrix<int>* iFactSubRemoved,
                    matrix<int>* iFactSubCleaned,
                    matrix<int>* iFactSubRemovedInit,
                    matrix<int>* iFactSubParentsInit,
                    matrix<double>* oVectDxDy)
{
    using namespace korvenrg;
    using namespace korvenrg::logistic;
    const MarginalFactors from{.factors = {.nbFactors = iNbFactors,
                                           .type = iFactType,
                                           .active = iFactActive,
                                           .nbVars = iFactNbVars,
                                           .listVars = iFactListVars,
                                           .nbSub = iFactNbSubInit,
                                           .subParents = nullptr,
                                           .subDesign = nullptr,
                                           .subRemoved = iFactSubRemoved},
                               .interlevel = iInterlevel};
    std::vector<double> derivatives(static_cast<std::size_t>(std::max(p, 0)) + 1);
    double effect = 0.0;
    const bool known = idx >= 1 && idx <= p && jdx >= 1 && jdx <= pInit;
    if (known) {
        const ModelAtMeans model = ModelOf(*iCoefficients, p, *iMeans, iMortality, iModelType);
        std::vector<TableColumn> columns =
            ColumnsFromParents(from, p, *iFactSubCleaned, {pInit, iFactSubRemovedInit, iFactSubParentsInit});
        const std::size_t j = static_cast<std::size_t>(jdx - 1);
        columns[j].model = idx;
        effect = LogitMarginalEffect(model, from, columns, j, derivatives);
    }
    for (std::size_t k = 0; k < derivatives.size(); ++k) {
        oVectDxDy->vbset(static_cast<int>(k) + 1, derivatives[k]);
    }
    return effect;
}
