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

LogitWork::LogitWork(int n, int blocks)
{
    const auto rows = static_cast<std::size_t>(std::max(n, 0));
    const auto count = static_cast<std::size_t>(std::max(blocks, 0));
    ones.assign(rows, 1.0);
    predictor.assign(count, std::vector<double>(rows));
    probability.assign(count, std::vector<double>(rows));
    if (count > 1) {
        reference.resize(rows);
    } else {
        natural.resize(rows);
        density.resize(rows);
    }
}

}  // namespace korvenrg::logistic
