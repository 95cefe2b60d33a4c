#include "logistic/logit_probabilities.h"

#include <algorithm>
#include <cmath>

#include "kernel/linalg/exponentials.h"
#include "kernel/linalg/row_forms.h"
#include "logistic/link_functions.h"
#include "logistic/row_sum.h"

namespace korvenrg::logistic {

namespace {

// eta = x'b + a of one block, over the columns with a slope.
void PredictBlock(const LogitModel& model,
                  const matrix<double>& parameters,
                  int block,
                  std::vector<double>& eta)
{
    std::vector<const double*> used;
    std::vector<double> slopes;
    for (int j = 1; j <= model.layout.columns; ++j) {
        const double slope = parameters.vbget(model.layout.Slope(block, j));
        if (slope == 0.0) continue;
        used.push_back(model.columns[static_cast<std::size_t>(j - 1)]);
        slopes.push_back(slope);
    }
    linalg::LinearCombination(used,
                              model.n,
                              slopes.data(),
                              parameters.vbget(model.layout.Intercept(block)),
                              eta.data());
}

// F of every observation. The logit, which most fits are, takes its exponentials together.
void NaturalProbabilities(int link, const std::vector<double>& eta, std::vector<double>& natural)
{
    WithLink(link, [&]<LinkCode kLink>() {
        if constexpr (kLink == kLogit) {
            std::ranges::transform(eta, natural.begin(), [](double x) { return -CutPredictor(x); });
            linalg::Exponentials(natural.data(), static_cast<int>(natural.size()), natural.data());
            for (double& F : natural) {
                F = 1.0 / (1.0 + F);
            }
        } else {
            std::ranges::transform(eta, natural.begin(), LinkProbabilityOf<kLink>);
        }
    });
}

void OneBlockProbabilities(const LogitModel& model, double mortality, LogitWork& work)
{
    NaturalProbabilities(model.link, work.predictor[0], work.natural);
    std::ranges::transform(work.natural, work.probability[0].begin(), [mortality](double F) {
        return Clamped(mortality + (1.0 - mortality) * F);
    });
}

// A predictor beyond 709 counts in its own numerator and not in the sum: its probability is the largest one,
// and the others keep theirs. Pinned by LogitCore.HugePredictorsOfSeveralBlocks.
void SeveralBlockProbabilities(const LogitModel& model, const matrix<double>& parameters, LogitWork& work)
{
    const std::size_t n = work.reference.size();
    work.reference.assign(n, 1.0);
    for (std::size_t k = 0; k < work.predictor.size(); ++k) {
        const std::vector<double>& eta = work.predictor[k];
        std::vector<double>& P = work.probability[k];
        std::ranges::transform(eta, P.begin(), CutPredictor);
        linalg::Exponentials(P.data(), static_cast<int>(n), P.data());
        for (std::size_t i = 0; i < n; ++i) {
            work.reference[i] += std::fabs(eta[i]) <= kLargestPredictor ? P[i] : 0.0;
        }
    }
    for (std::size_t k = 0; k < work.predictor.size(); ++k) {
        const double c = parameters.vbget(model.layout.Mortality(static_cast<int>(k) + 1));
        for (std::size_t i = 0; i < n; ++i) {
            double& P = work.probability[k][i];
            P = c + (1.0 - c) * Clamped(P / work.reference[i]);
        }
    }
    for (double& sum : work.reference) {
        sum = Clamped(1.0 / sum);
    }
}

// Terms that nothing multiplies are left out. A response of 0 or 1 has one term.
double OneBlockLogLikelihood(const LogitModel& model, const LogitWork& work)
{
    const std::vector<double>& P = work.probability[0];
    WeightedLogSum sum;
    for (std::size_t i = 0; i < P.size(); ++i) {
        const double y = model.response[i];
        const double trials = model.IsBinomial() ? model.caseWeights[i] : 1.0;
        const double weight = model.secondWeights[i] * (model.IsBinomial() ? 1.0 : model.caseWeights[i]);
        if (trials == 1.0 && (y - 1.0) * y == 0.0) {
            sum.Add(weight, (1.0 - y) + (2.0 * y - 1.0) * P[i]);  // P or 1 - P
        } else {
            sum.Add(weight * (trials - y), 1.0 - P[i]);
            sum.Add(weight * y, P[i]);
        }
    }
    return sum.Total();
}

double SeveralBlockLogLikelihood(const LogitModel& model, const LogitWork& work)
{
    WeightedLogSum sum;
    for (std::size_t i = 0; i < work.reference.size(); ++i) {
        const double weight = model.caseWeights[i] * model.secondWeights[i];
        if (model.isReference[i] == 1.0) {
            sum.Add(weight, work.reference[i]);
            continue;
        }
        for (std::size_t k = 0; k < work.probability.size(); ++k) {
            if (model.indicators[k][i] != 0.0)
                sum.Add(weight * model.indicators[k][i], work.probability[k][i]);
        }
    }
    return sum.Total();
}

}  // namespace

void LogitPredictors(const LogitModel& model,
                     const matrix<double>& parameters,
                     std::vector<std::vector<double>>& predictors)
{
    for (int k = 1; k <= model.layout.blocks; ++k) {
        PredictBlock(model, parameters, k, predictors[static_cast<std::size_t>(k - 1)]);
    }
}

void ProbabilitiesOfPredictors(const LogitModel& model, const matrix<double>& parameters, LogitWork& work)
{
    if (model.IsMultinomial()) {
        SeveralBlockProbabilities(model, parameters, work);
    } else {
        OneBlockProbabilities(model, parameters.vbget(model.layout.Mortality(1)), work);
    }
}

void LogitProbabilities(const LogitModel& model, const matrix<double>& parameters, LogitWork& work)
{
    LogitPredictors(model, parameters, work.predictor);
    ProbabilitiesOfPredictors(model, parameters, work);
}

double LogitLogLikelihood(const LogitModel& model, const LogitWork& work)
{
    return model.IsMultinomial() ? SeveralBlockLogLikelihood(model, work)
                                 : OneBlockLogLikelihood(model, work);
}

}  // namespace korvenrg::logistic
