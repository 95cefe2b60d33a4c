#include "logistic/logit_derivatives.h"

#include <algorithm>

#include "kernel/linalg/constrained_inverse.h"
#include "kernel/linalg/dense_block.h"
#include "kernel/linalg/determinants.h"
#include "kernel/linalg/row_forms.h"
#include "kernel/linalg/weighted_products.h"
#include "logistic/link_functions.h"
#include "logistic/row_sum.h"

namespace korvenrg::logistic {

namespace {

using Cells = std::vector<double>;

// Columns of the design with their numbers.
struct NumberedColumns
{
    std::vector<const double*> columns;
    std::vector<int> numbers;
};

bool IsFreeInSomeBlock(const LogitFit& fit, int column)
{
    for (int k = 1; k <= fit.layout.blocks; ++k) {
        if (fit.IsFree(fit.layout.Slope(k, column))) return true;
    }
    return false;
}

// The columns whose slope is free in some block, or those of which it is in none.
NumberedColumns ColumnsThatAre(bool free, const LogitModel& model, const LogitFit& fit)
{
    NumberedColumns result;
    for (int j = 1; j <= model.layout.columns; ++j) {
        if (IsFreeInSomeBlock(fit, j) != free) continue;
        result.columns.push_back(model.columns[static_cast<std::size_t>(j - 1)]);
        result.numbers.push_back(j);
    }
    return result;
}

double SumOf(const Cells& cells)
{
    const double* const column[] = {cells.data()};
    const Cells ones(cells.size(), 1.0);
    double sum = 0.0;
    linalg::ColumnProducts(column, static_cast<int>(cells.size()), ones.data(), &sum);
    return sum;
}

void StoreSymmetric(int i, int j, double value, matrix<double>& target)
{
    target.vbset(i, j, value);
    target.vbset(j, i, value);
}

// The gradient of a block over the columns and, if wanted, the intercept.
void StoreGradient(const NumberedColumns& x, const Cells& weights, int block, bool intercept, LogitFit& fit)
{
    Cells sums(x.columns.size());
    linalg::ColumnProducts(x.columns, static_cast<int>(weights.size()), weights.data(), sums.data());
    for (std::size_t j = 0; j < sums.size(); ++j) {
        fit.gradient.vbset(fit.layout.Slope(block, x.numbers[j]), sums[j]);
    }
    if (intercept) fit.gradient.vbset(fit.layout.Intercept(block), SumOf(weights));
}

// The Hessian of two blocks, and in the same pass, with weights of slopes, the gradient of the first.
void StoreHessian(const NumberedColumns& x,
                  const Cells* slopes,
                  const Cells& curvatures,
                  int rowBlock,
                  int columnBlock,
                  bool intercept,
                  LogitFit& fit)
{
    const std::size_t q = x.columns.size();
    const ParameterLayout& layout = fit.layout;
    Cells gradient(q);
    Cells constants(q);
    Cells products(q * q);
    linalg::WeightedProducts(x.columns,
                             static_cast<int>(curvatures.size()),
                             slopes == nullptr ? nullptr : slopes->data(),
                             curvatures.data(),
                             {.slopes = slopes == nullptr ? nullptr : gradient.data(),
                              .constants = constants.data(),
                              .products = products.data()});
    for (std::size_t j = 0; j < q; ++j) {
        const int rowSlope = layout.Slope(rowBlock, x.numbers[j]);
        const int columnSlope = layout.Slope(columnBlock, x.numbers[j]);
        for (std::size_t i = 0; i < q; ++i) {
            StoreSymmetric(layout.Slope(rowBlock, x.numbers[i]),
                           columnSlope,
                           products[j * q + i],
                           fit.hessian);
        }
        if (slopes != nullptr) fit.gradient.vbset(rowSlope, gradient[j]);
        if (!intercept) continue;
        StoreSymmetric(rowSlope, layout.Intercept(columnBlock), constants[j], fit.hessian);
        StoreSymmetric(layout.Intercept(rowBlock), columnSlope, constants[j], fit.hessian);
    }
    if (!intercept) return;
    StoreSymmetric(layout.Intercept(rowBlock), layout.Intercept(columnBlock), SumOf(curvatures), fit.hessian);
    if (slopes != nullptr) fit.gradient.vbset(layout.Intercept(rowBlock), SumOf(*slopes));
}

// y, the trials m and the weight w of an observation. The second weight takes no part in the derivatives of a
// binomial response, though it does in the likelihood. Pinned by LogitOddities.SecondWeightsOfBinomialData.
struct Observation
{
    double y;
    double trials;
    double weight;

    Observation(const LogitModel& model, std::size_t i)
        : y(model.response[i]),
          trials(model.IsBinomial() ? model.caseWeights[i] : 1.0),
          weight(model.IsBinomial() ? 1.0 : model.caseWeights[i] * model.secondWeights[i])
    {
    }
};

template <LinkCode kLink, bool kFirth>
void WeighRows(const LogitModel& model, double mortality, LogitWork& work, RowWeights& rows)
{
    const double survival = 1.0 - mortality;
    for (std::size_t i = 0; i < work.natural.size(); ++i) {
        const Observation row(model, i);
        const LinkValues link = LinkValuesOf<kLink>(work.predictor[0][i], work.natural[i]);
        const double P = work.probability[0][i];
        const double Q = 1.0 - P;
        const double f = survival * link.density;
        const double g = survival * link.second;
        const double d = row.y / P - row.trials;
        const double s = row.y / (P * P) + (row.trials - row.y) / (Q * Q);
        work.density[i] = f;
        rows.slope[i] = row.weight * d * f / Q;
        rows.curvature[i] = row.weight * (d * g / Q - s * f * f);
        if constexpr (kFirth) {
            const double h = survival * link.third;
            const double cubes = row.y / (P * P * P) - (row.trials - row.y) / (Q * Q * Q);
            rows.third[i] = row.weight * (d * h / Q + 2.0 * f * f * f * cubes - 3.0 * f * g * s);
        }
    }
}

void WeighMortality(const LogitModel& model, double mortality, const LogitWork& work, RowWeights& rows)
{
    rows.mortalitySlope.resize(work.natural.size());
    RowSum gradient;
    RowSum curvature;
    for (std::size_t i = 0; i < work.natural.size(); ++i) {
        const Observation row(model, i);
        const double P = work.probability[0][i];
        const double Q = 1.0 - P;
        const double below = 1.0 - work.natural[i];
        const double f = work.density[i];
        const double d = row.y / P - row.trials;
        const double s = row.y / (P * P) + (row.trials - row.y) / (Q * Q);
        gradient.Add(row.weight * (row.y / P - (row.trials - row.y) / Q) * below);
        curvature.Add(-row.weight * s * below * below);
        rows.mortalitySlope[i] = row.weight * (-(f / (1.0 - mortality)) / Q * d - s * f * below);
    }
    rows.mortalityGradient = gradient.Total();
    rows.mortalityCurvature = curvature.Total();
}

void StoreMortality(const NumberedColumns& free, const RowWeights& rows, bool intercept, LogitFit& fit)
{
    const int position = fit.layout.Mortality(1);
    Cells sums(free.columns.size());
    linalg::ColumnProducts(free.columns,
                           static_cast<int>(rows.mortalitySlope.size()),
                           rows.mortalitySlope.data(),
                           sums.data());
    for (std::size_t j = 0; j < sums.size(); ++j) {
        StoreSymmetric(free.numbers[j], position, sums[j], fit.hessian);
    }
    if (intercept) StoreSymmetric(fit.layout.Intercept(1), position, SumOf(rows.mortalitySlope), fit.hessian);
    fit.hessian.vbset(position, position, rows.mortalityCurvature);
    fit.gradient.vbset(position, rows.mortalityGradient);
}

// Adds half of t (x' H^-1 x) to what each observation brings to the gradient. False without an inverse.
bool CorrectSlopes(const NumberedColumns& free,
                   const LogitWork& work,
                   bool intercept,
                   LogitFit& fit,
                   RowWeights& rows)
{
    const int length = fit.layout.Length();
    matrix<double> inverse(length, length);
    if (!InvertOverFree(length, fit.fixedMask, fit.hessian, inverse)) return false;
    std::vector<const double*> terms = free.columns;
    std::vector<int> positions = free.numbers;
    if (intercept) {
        terms.push_back(work.ones.data());
        positions.push_back(fit.layout.Intercept(1));
    }
    const std::size_t q = terms.size();
    Cells form(q * q);
    for (std::size_t j = 0; j < q; ++j) {
        for (std::size_t i = 0; i < q; ++i) {
            form[j * q + i] = -inverse.vbget(positions[i], positions[j]);
        }
    }
    const Cells centres(q);
    Cells leverages(rows.slope.size());
    linalg::QuadraticForms(terms,
                           static_cast<int>(leverages.size()),
                           centres.data(),
                           form.data(),
                           leverages.data());
    for (std::size_t i = 0; i < leverages.size(); ++i) {
        rows.slope[i] -= 0.5 * rows.third[i] * leverages[i];
    }
    return true;
}

void OneBlockDerivatives(const LogitModel& model,
                         const DerivativeOptions& options,
                         LogitFit& fit,
                         LogitWork& work)
{
    const std::size_t n = work.natural.size();
    const double mortality = fit.parameters.vbget(fit.layout.Mortality(1));
    RowWeights& rows = work.rowWeights;
    rows.slope.resize(n);
    rows.curvature.resize(n);
    rows.third.resize(options.firth ? n : 0);
    WithLink(model.link, [&]<LinkCode kLink>() {
        if (options.firth) {
            WeighRows<kLink, true>(model, mortality, work, rows);
        } else {
            WeighRows<kLink, false>(model, mortality, work, rows);
        }
    });
    const NumberedColumns free = ColumnsThatAre(true, model, fit);
    StoreHessian(free, &rows.slope, rows.curvature, 1, 1, options.intercept, fit);
    if (options.mortality) {
        WeighMortality(model, mortality, work, rows);
        StoreMortality(free, rows, options.intercept, fit);
    }
    if (options.firth && CorrectSlopes(free, work, options.intercept, fit, rows)) {
        StoreGradient(free, rows.slope, 1, options.intercept, fit);
    }
    StoreGradient(ColumnsThatAre(false, model, fit), rows.slope, 1, false, fit);
}

void SeveralBlockDerivatives(const LogitModel& model,
                             const DerivativeOptions& options,
                             LogitFit& fit,
                             LogitWork& work)
{
    const std::size_t n = work.reference.size();
    const NumberedColumns free = ColumnsThatAre(true, model, fit);
    const NumberedColumns held = ColumnsThatAre(false, model, fit);
    Cells slopes(n);
    Cells curvatures(n);
    for (std::size_t k = 0; k < work.probability.size(); ++k) {
        const int block = static_cast<int>(k) + 1;
        const Cells& P = work.probability[k];
        for (std::size_t i = 0; i < n; ++i) {
            const double w = model.caseWeights[i] * model.secondWeights[i];
            slopes[i] = w * (model.indicators[k][i] - P[i]);
            curvatures[i] = -w * P[i] * (1.0 - P[i]);
        }
        StoreHessian(free, &slopes, curvatures, block, block, options.intercept, fit);
        StoreGradient(held, slopes, block, false, fit);
        for (std::size_t l = k + 1; l < work.probability.size(); ++l) {
            for (std::size_t i = 0; i < n; ++i) {
                curvatures[i] = model.caseWeights[i] * model.secondWeights[i] * P[i] * work.probability[l][i];
            }
            StoreHessian(free, nullptr, curvatures, block, static_cast<int>(l) + 1, options.intercept, fit);
        }
    }
}

}  // namespace

DerivativeOptions DerivativesOf(const FitOptions& options)
{
    return {.intercept = options.estimatesIntercept,
            .mortality = options.estimatesMortality,
            .firth = options.firth};
}

void LogitDerivatives(const LogitModel& model,
                      const DerivativeOptions& options,
                      LogitFit& fit,
                      LogitWork& work)
{
    std::fill_n(fit.gradient.data, fit.gradient.total, 0.0);
    std::fill_n(fit.hessian.data, fit.hessian.total, 0.0);
    if (model.IsMultinomial()) {
        SeveralBlockDerivatives(model, options, fit, work);
    } else {
        OneBlockDerivatives(model, options, fit, work);
    }
}

double FirthPenalty(const LogitFit& fit)
{
    const int length = fit.layout.Length();
    const auto free = linalg::UnmarkedPositions(&fit.fixedMask, length);
    const auto block = linalg::PrincipalBlock(linalg::LeadingBlock(fit.hessian, length, length), free);
    matrix<double> freeHessian(static_cast<int>(free.size()), static_cast<int>(free.size()));
    linalg::StoreBlock(block, freeHessian);
    return 0.5 * linalg::LogDeterminantOf(freeHessian, freeHessian.rows).logAbsolute;
}

bool InvertOverFree(int length, matrix<int>& fixedMask, matrix<double>& hessian, matrix<double>& inverse)
{
    if (linalg::UnmarkedPositions(&fixedMask, length).empty()) {
        std::fill_n(inverse.data, inverse.total, 0.0);
        return false;
    }
    return cCleanConstraintsAndInvert(length, &fixedMask, &hessian, &inverse) == 0;
}

}  // namespace korvenrg::logistic
