#include "logistic/logit_model.h"

#include <algorithm>

namespace korvenrg::logistic {

namespace {

template <typename T>
void CopyCells(const matrix<T>& source, matrix<T>& target)
{
    std::copy_n(source.data, std::min(source.total, target.total), target.data);
}

}  // namespace

void CopyFit(const LogitFit& source, LogitFit& target)
{
    CopyCells(source.parameters, target.parameters);
    CopyCells(source.fixedMask, target.fixedMask);
    CopyCells(source.gradient, target.gradient);
    CopyCells(source.hessian, target.hessian);
    CopyCells(source.covariance, target.covariance);
    CopyCells(source.variances, target.variances);
    target.intercepts = source.intercepts;
    target.mortality = source.mortality;
    target.statistics = source.statistics;
}

LogitWork::LogitWork(const LogitModel& model)
{
    const auto n = static_cast<std::size_t>(std::max(model.n, 0));
    const auto blocks = static_cast<std::size_t>(model.layout.blocks);
    predictor.assign(blocks, std::vector<double>(n));
    probability.assign(blocks, std::vector<double>(n));
    if (model.IsMultinomial()) {
        reference.resize(n);
    } else {
        natural.resize(n);
        density.resize(n);
    }
}

}  // namespace korvenrg::logistic
