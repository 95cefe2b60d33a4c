// Tables by observation: predictions of the fitted sample, of a validation sample and of new observations.
#include <cmath>
#include <optional>

#include "kernel/linalg/row_forms.h"
#include "logistic/link_functions.h"
#include "logistic/logit_probabilities.h"
#include "logistic/logit_state.h"
#include "logistic/logit_tables.h"

namespace korvenrg::logistic {

namespace {

// Bounds of the probability of each observation, from its linear predictor; one block.
struct PredictionBounds
{
    std::vector<double> lower;
    std::vector<double> upper;
};

// Standard errors of the linear predictors: sqrt |x'Vx| over the free slopes and the intercept.
std::vector<double> PredictorErrors(const LogitRun& run, linalg::Columns columns, int n)
{
    const ParameterLayout& layout = run.model.layout;
    const std::vector<double> ones(static_cast<std::size_t>(n), 1.0);
    std::vector<const double*> terms;
    std::vector<int> positions;
    for (int j = 1; j <= layout.columns + 1; ++j) {
        if (!run.fit.IsFree(j)) continue;
        terms.push_back(j > layout.columns ? ones.data() : columns[static_cast<std::size_t>(j - 1)]);
        positions.push_back(j);
    }
    const std::size_t q = terms.size();
    std::vector<double> form(q * q);
    for (std::size_t j = 0; j < q; ++j) {
        for (std::size_t i = 0; i < q; ++i) {
            form[j * q + i] = -run.fit.covariance.vbget(positions[i], positions[j]);
        }
    }
    const std::vector<double> centres(q);
    std::vector<double> errors(static_cast<std::size_t>(n));
    linalg::QuadraticForms(terms, n, centres.data(), form.data(), errors.data());
    for (double& error : errors) {
        error = std::sqrt(std::fabs(error));
    }
    return errors;
}

PredictionBounds BoundsOf(const LogitRun& run, linalg::Columns columns, const LogitWork& work, int n)
{
    const double mortality = run.fit.parameters.vbget(run.model.layout.Mortality(1));
    const std::vector<double> errors = PredictorErrors(run, columns, n);
    PredictionBounds bounds;
    for (std::size_t i = 0; i < errors.size(); ++i) {
        const double eta = work.predictor[0][i];
        bounds.lower.push_back(LogitLinkCDF(run.model.link, eta - run.z * errors[i], mortality));
        bounds.upper.push_back(LogitLinkCDF(run.model.link, eta + run.z * errors[i], mortality));
    }
    return bounds;
}

// difference / sqrt(variance), missing when the variance per observation is at most eps.
double Scaled(double difference, double variance, double count)
{
    return variance <= kEps ? kMissing : difference / std::sqrt(count * variance);
}

// The observed share is y / Wc for binary responses too, where Wc is a case weight. Pinned by
// LogitOddities.ObservedShareOfWeightedCases.
void WriteOneBlockPredictions(const LogitRun& run,
                              const LogitSample& sample,
                              const LogitWork& work,
                              matrix<double>& table)
{
    const PredictionBounds bounds = BoundsOf(run, sample.columns, work, sample.n);
    const double c = run.CorrectedMortality();
    const double independent = (run.marginal[0] - c) / (1.0 - c);
    for (int row = 1; row <= sample.n; ++row) {
        const auto i = static_cast<std::size_t>(row - 1);
        const double count = run.model.IsBinomial() ? sample.caseWeights[i] : 1.0;
        const double observed = (sample.response[i] / sample.caseWeights[i] - c) / (1.0 - c);
        const double expected = (work.probability[0][i] - c) / (1.0 - c);
        table.vbset(row, kPredObservedCount, count * observed);
        table.vbset(row, kPredExpectedCount, count * expected);
        table.vbset(row, kPredIndependentCount, count * independent);
        table.vbset(row, kPredObserved, observed);
        table.vbset(row, kPredExpected, expected);
        table.vbset(row,
                    kPredResidual,
                    Scaled((observed - expected) * count, expected * (1.0 - expected), count));
        table.vbset(row,
                    kPredIndependentResidual,
                    Scaled(count * observed - count * independent, independent * (1.0 - independent), count));
        table.vbset(row, kPredLower, count * bounds.lower[i]);
        table.vbset(row, kPredUpper, count * bounds.upper[i]);
    }
}

// 1 + the number of the most probable of the other categories, the first of equal ones; 1 when the reference is more
// probable.
int PredictedCategory(const LogitWork& work, std::size_t i, double reference)
{
    std::size_t best = 0;
    for (std::size_t k = 1; k < work.probability.size(); ++k) {
        if (work.probability[k][i] > work.probability[best][i]) best = k;
    }
    return reference > work.probability[best][i] ? 1 : static_cast<int>(best) + 2;
}

void WriteSeveralBlockPredictions(const LogitSample& sample, const LogitWork& work, matrix<double>& table)
{
    for (int row = 1; row <= sample.n; ++row) {
        const auto i = static_cast<std::size_t>(row - 1);
        double reference = 1.0;
        for (std::size_t k = 0; k < work.probability.size(); ++k) {
            const double P = work.probability[k][i];
            reference -= P;
            table.vbset(row, kCatReference + static_cast<int>(k) + 1, P);
        }
        table.vbset(row, kCatObserved, sample.response[i] + 1.0);
        table.vbset(row, kCatPredicted, PredictedCategory(work, i, reference));
        table.vbset(row, kCatReference, reference);
    }
}

// Columns of another sample, standardised by the means and deviations of the fit.
matrix<double> StandardisedLikeFit(const LogitRun& run, const matrix<double>& X, int n)
{
    const int p = run.model.layout.columns;
    const linalg::ColumnsOf raw(X, n, p);
    matrix<double> columns(n, p);
    for (int j = 1; j <= p; ++j) {
        const double mean = run.data.mean.vbget(j);
        const double stDev = run.data.stDev.vbget(j);
        if (stDev == 0.0) continue;
        const double* source = raw[static_cast<std::size_t>(j - 1)];
        double* target = columns.data + CountOfCells(n, j - 1);
        for (int i = 0; i < n; ++i) {
            target[i] = (source[i] - mean) / stDev;
        }
    }
    return columns;
}

LogitWork ProbabilitiesOf(const LogitRun& run, linalg::Columns columns, int n)
{
    LogitModel model(run.model);
    model.n = n;
    model.columns = columns;
    LogitWork work(n, model.layout.blocks);
    LogitProbabilities(model, run.fit.parameters, work);
    return work;
}

void PredictValidation(LogitRun& run)
{
    const SampleArrays& arrays = run.validation;
    const int n = arrays.n;
    const matrix<double> design = StandardisedLikeFit(run, *arrays.X, n);
    const linalg::ColumnsOf columns(design, n, run.model.layout.columns);
    const linalg::ColumnsOf response(*arrays.response, n, 1);
    const linalg::ColumnsOf weights(*arrays.caseWeights, n, 1);
    const LogitSample sample{n, columns, response[0], weights[0]};
    const LogitWork work = ProbabilitiesOf(run, columns, n);
    WritePredictions(run, sample, work, *arrays.predictions);
    WriteClassification(run, sample, work, *arrays.classification);
}

void PredictNewRows(LogitRun& run)
{
    const SampleArrays& arrays = run.prediction;
    const matrix<double> design = StandardisedLikeFit(run, *arrays.X, arrays.n);
    const linalg::ColumnsOf columns(design, arrays.n, run.model.layout.columns);
    const LogitSample sample{arrays.n, columns, nullptr, nullptr};
    WriteNewPredictions(run, sample, ProbabilitiesOf(run, columns, arrays.n), *arrays.predictions);
}

}  // namespace

void WritePredictions(LogitRun& run, const LogitSample& sample, const LogitWork& work, matrix<double>& table)
{
    if (run.HasOneBlock()) {
        WriteOneBlockPredictions(run, sample, work, table);
    } else {
        WriteSeveralBlockPredictions(sample, work, table);
    }
}

void WriteNewPredictions(LogitRun& run,
                         const LogitSample& sample,
                         const LogitWork& work,
                         matrix<double>& table)
{
    const double c = run.CorrectedMortality();
    for (int row = 1; row <= sample.n; ++row) {
        for (std::size_t k = 0; k < run.marginal.size(); ++k) {
            const int before = static_cast<int>(k) * kNewCategoryCols;
            const double P = work.probability[k][static_cast<std::size_t>(row - 1)];
            table.vbset(row, before + kNewCategoryExpected, (P - c) / (1.0 - c));
            table.vbset(row, before + kNewCategoryIndependent, (run.marginal[k] - c) / (1.0 - c));
        }
    }
    if (!run.HasOneBlock()) return;
    const PredictionBounds bounds = BoundsOf(run, sample.columns, work, sample.n);
    for (int row = 1; row <= sample.n; ++row) {
        table.vbset(row, kNewLower, bounds.lower[static_cast<std::size_t>(row - 1)]);
        table.vbset(row, kNewUpper, bounds.upper[static_cast<std::size_t>(row - 1)]);
    }
}

void PredictOtherSamples(LogitRun& run)
{
    if (run.validation.n > 0) PredictValidation(run);
    if (run.prediction.n > 0) PredictNewRows(run);
}

}  // namespace korvenrg::logistic
