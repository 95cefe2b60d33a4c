#include "logistic/logit_derivatives.h"

#include <algorithm>

#include "kernel/linalg/constrained_inverse.h"
#include "kernel/linalg/cross_products.h"
#include "kernel/linalg/dense_block.h"
#include "kernel/linalg/determinants.h"
#include "kernel/linalg/row_forms.h"
#include "logistic/link_functions.h"
#include "logistic/row_sum.h"

namespace korvenrg::logistic {

namespace {

using Cells = std::vector<double>;

// Columns of x with their positions in a block: those of the design, then the constant.
struct Terms
{
    std::vector<const double*> columns;
    std::vector<int> positions;

    void Add(const double* column, int position)
    {
        columns.push_back(column);
        positions.push_back(position);
    }

    std::size_t Count() const
    {
        return columns.size();
    }
};

bool IsFreeInSomeBlock(const LogitFit& fit, int column)
{
    for (int k = 1; k <= fit.layout.blocks; ++k) {
        if (fit.IsFree(fit.layout.Slope(k, column))) return true;
    }
    return false;
}

Terms TermsOf(const LogitModel& model,
              const LogitFit& fit,
              const LogitWork& work,
              bool intercept,
              bool freeAlone)
{
    Terms terms;
    for (int j = 1; j <= model.layout.columns; ++j) {
        if (freeAlone && !IsFreeInSomeBlock(fit, j)) continue;
        terms.Add(model.columns[static_cast<std::size_t>(j - 1)], j);
    }
    if (intercept) terms.Add(work.ones.data(), model.layout.columns + 1);
    return terms;
}

void AddToGradient(const Terms& terms, const Cells& weights, int block, LogitFit& fit)
{
    Cells sums(terms.Count());
    linalg::ColumnProducts(terms.columns, static_cast<int>(weights.size()), weights.data(), sums.data());
    for (std::size_t j = 0; j < sums.size(); ++j) {
        fit.gradient.vbset(fit.layout.Slope(block, terms.positions[j]), sums[j]);
    }
}

void StoreSymmetric(int i, int j, double value, matrix<double>& target)
{
    target.vbset(i, j, value);
    target.vbset(j, i, value);
}

void AddToHessian(const Terms& terms, const Cells& weights, int rowBlock, int columnBlock, LogitFit& fit)
{
    const std::size_t q = terms.Count();
    Cells products(q * q);
    linalg::CrossProducts(terms.columns,
                          static_cast<int>(weights.size()),
                          weights.data(),
                          linalg::ZeroCentres(q),
                          false,
                          products.data());
    for (std::size_t j = 0; j < q; ++j) {
        for (std::size_t i = 0; i < q; ++i) {
            StoreSymmetric(fit.layout.Slope(rowBlock, terms.positions[i]),
                           fit.layout.Slope(columnBlock, terms.positions[j]),
                           products[j * q + i],
                           fit.hessian);
        }
    }
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

void StoreMortality(const Terms& terms, const RowWeights& rows, LogitFit& fit)
{
    const int position = fit.layout.Mortality(1);
    Cells sums(terms.Count());
    linalg::ColumnProducts(terms.columns,
                           static_cast<int>(rows.mortalitySlope.size()),
                           rows.mortalitySlope.data(),
                           sums.data());
    for (std::size_t j = 0; j < sums.size(); ++j) {
        StoreSymmetric(terms.positions[j], position, sums[j], fit.hessian);
    }
    fit.hessian.vbset(position, position, rows.mortalityCurvature);
    fit.gradient.vbset(position, rows.mortalityGradient);
}

// Adds half of t (x' H^-1 x) to what each observation brings to the gradient.
void CorrectSlopes(const Terms& terms, LogitFit& fit, RowWeights& rows)
{
    const int length = fit.layout.Length();
    matrix<double> inverse(length, length);
    if (!InvertOverFree(length, fit.fixedMask, fit.hessian, inverse)) return;
    const std::size_t q = terms.Count();
    Cells form(q * q);
    for (std::size_t j = 0; j < q; ++j) {
        for (std::size_t i = 0; i < q; ++i) {
            form[j * q + i] = -inverse.vbget(terms.positions[i], terms.positions[j]);
        }
    }
    const Cells centres(q);
    Cells leverages(rows.slope.size());
    linalg::QuadraticForms(terms.columns,
                           static_cast<int>(leverages.size()),
                           centres.data(),
                           form.data(),
                           leverages.data());
    for (std::size_t i = 0; i < leverages.size(); ++i) {
        rows.slope[i] -= 0.5 * rows.third[i] * leverages[i];
    }
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
    const Terms free = TermsOf(model, fit, work, options.intercept, true);
    AddToHessian(free, rows.curvature, 1, 1, fit);
    if (options.mortality) {
        WeighMortality(model, mortality, work, rows);
        StoreMortality(free, rows, fit);
    }
    if (options.firth) CorrectSlopes(free, fit, rows);
    AddToGradient(TermsOf(model, fit, work, options.intercept, false), rows.slope, 1, fit);
}

void SeveralBlockDerivatives(const LogitModel& model,
                             const DerivativeOptions& options,
                             LogitFit& fit,
                             LogitWork& work)
{
    const std::size_t n = work.reference.size();
    const Terms all = TermsOf(model, fit, work, options.intercept, false);
    const Terms free = TermsOf(model, fit, work, options.intercept, true);
    Cells weights(n);
    for (std::size_t k = 0; k < work.probability.size(); ++k) {
        const int block = static_cast<int>(k) + 1;
        const Cells& P = work.probability[k];
        for (std::size_t i = 0; i < n; ++i) {
            weights[i] = model.caseWeights[i] * model.secondWeights[i] * (model.indicators[k][i] - P[i]);
        }
        AddToGradient(all, weights, block, fit);
        for (std::size_t l = k; l < work.probability.size(); ++l) {
            for (std::size_t i = 0; i < n; ++i) {
                const double w = model.caseWeights[i] * model.secondWeights[i];
                weights[i] = k == l ? -w * P[i] * (1.0 - P[i]) : w * P[i] * work.probability[l][i];
            }
            AddToHessian(free, weights, block, static_cast<int>(l) + 1, fit);
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
