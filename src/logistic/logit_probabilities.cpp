#include "logistic/logit_probabilities.h"

#include <cmath>

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

void OneBlockProbabilities(const LogitModel& model, double mortality, LogitWork& work)
{
    const std::vector<double>& eta = work.predictor[0];
    std::vector<double>& P = work.probability[0];
    WithLink(model.link, [&]<LinkCode kLink>() {
        for (std::size_t i = 0; i < eta.size(); ++i) {
            const double F = LinkProbabilityOf<kLink>(eta[i]);
            work.natural[i] = F;
            P[i] = Clamped(mortality + (1.0 - mortality) * F);
        }
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
        for (std::size_t i = 0; i < n; ++i) {
            P[i] = std::exp(CutPredictor(eta[i]));
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

// Terms that nothing multiplies are left out: their logarithm is never taken.
double OneBlockLogLikelihood(const LogitModel& model, const LogitWork& work)
{
    const std::vector<double>& P = work.probability[0];
    RowSum sum;
    for (std::size_t i = 0; i < P.size(); ++i) {
        const double y = model.response[i];
        const double trials = model.IsBinomial() ? model.caseWeights[i] : 1.0;
        const double weight = model.secondWeights[i] * (model.IsBinomial() ? 1.0 : model.caseWeights[i]);
        const double failed = trials - y;
        double term = 0.0;
        if (failed != 0.0) term += failed * std::log(1.0 - P[i]);
        if (y != 0.0) term += y * std::log(P[i]);
        sum.Add(weight * term);
    }
    return sum.Total();
}

double SeveralBlockLogLikelihood(const LogitModel& model, const LogitWork& work)
{
    RowSum sum;
    for (std::size_t i = 0; i < work.reference.size(); ++i) {
        double term = 0.0;
        if (model.isReference[i] == 1.0) {
            term = std::log(work.reference[i]);
        } else {
            for (std::size_t k = 0; k < work.probability.size(); ++k) {
                const double indicator = model.indicators[k][i];
                if (indicator != 0.0) term += indicator * std::log(work.probability[k][i]);
            }
        }
        sum.Add(model.caseWeights[i] * model.secondWeights[i] * term);
    }
    return sum.Total();
}

}  // namespace

void LogitProbabilities(const LogitModel& model, const matrix<double>& parameters, LogitWork& work)
{
    for (int k = 1; k <= model.layout.blocks; ++k) {
        PredictBlock(model, parameters, k, work.predictor[static_cast<std::size_t>(k - 1)]);
    }
    if (model.IsMultinomial()) {
        SeveralBlockProbabilities(model, parameters, work);
    } else {
        OneBlockProbabilities(model, parameters.vbget(model.layout.Mortality(1)), work);
    }
}

double LogitLogLikelihood(const LogitModel& model, const LogitWork& work)
{
    return model.IsMultinomial() ? SeveralBlockLogLikelihood(model, work)
                                 : OneBlockLogLikelihood(model, work);
}

}  // namespace korvenrg::logistic
