#include "logistic/profile_intervals.h"

#include <algorithm>
#include <cmath>
#include <optional>

#include "core/limits.h"
#include "kernel/distributions/chi_square.h"
#include "kernel/linalg/products.h"
#include "logistic/logit_derivatives.h"
#include "logistic/logit_fit.h"

namespace korvenrg::logistic {

namespace {

constexpr int kPasses = 21;
// A negative squared distance down to this is rounding.
constexpr double kRoundedDistance = -1E-6;
// Half the largest move of a parameter in one pass is cut to 1.
constexpr double kStepShare = 0.5;
constexpr double kCloseToCritical = 1E-5;

// The likelihood at a point on the way to a bound.
struct Point
{
    LogitFit at;
    LogitWork& work;
    double logLikelihood = 0.0;

    // False when the Hessian has no inverse.
    bool Evaluate(const LogitModel& model, const FitOptions& options)
    {
        logLikelihood = EvaluateLogitModel(model, options, at, work);
        const int length = at.layout.Length();
        for (int i = 1; i <= length; ++i) {
            if (!at.IsFree(i)) at.gradient.vbset(i, 0.0);
        }
        return InvertOverFree(length, at.fixedMask, at.hessian, at.covariance);
    }
};

// The move towards the bound of parameter j: V (-g - side sqrt(2 q) e_j), with q the distance of the likelihood's
// quadratic model from its critical value. Nothing when the likelihood there is below it already.
std::optional<matrix<double>> MoveTowards(Point& point, int j, double side, double critical)
{
    LogitFit& at = point.at;
    const int length = at.layout.Length();
    const double gain = 0.5 * M_ProductTrVBV(&at.gradient, length, &at.covariance);
    double q = (gain + critical - point.logLikelihood) / at.covariance.vbget(j, j);
    if (!(q >= kRoundedDistance)) return std::nullopt;
    q = std::max(q, 0.0);
    matrix<double> direction(length, 1);
    for (int i = 1; i <= at.layout.columns + 1; ++i) {
        direction.vbset(i, -at.gradient.vbget(i) - (i == j ? side * std::sqrt(2.0 * q) : 0.0));
    }
    matrix<double> step(length, 1);
    M_ProductBV(&at.covariance, length, length, &direction, &step);
    double largest = 0.0;
    for (int i = 1; i <= length; ++i) {
        largest = std::max(largest, std::fabs(step.vbget(i)));
    }
    const double cut = kStepShare * largest;
    if (cut > 1.0) std::for_each(step.data, step.data + step.total, [cut](double& cell) { cell /= cut; });
    return step;
}

// |0.5 step'H step + g'step + L - critical| < 1E-5.
bool IsAtBound(Point& point, matrix<double>& step, double critical)
{
    const int length = point.at.layout.Length();
    const double change = 0.5 * M_ProductTrVBV(&step, length, &point.at.hessian) +
                          V_ProductTrV1V2(&point.at.gradient, length, &step);
    return std::fabs(change + point.logLikelihood - critical) < kCloseToCritical;
}

double FindBound(const LogitModel& model,
                 const FitOptions& options,
                 const Point& start,
                 int j,
                 double side,
                 double critical)
{
    Point point(start);
    for (int pass = 1; pass <= kPasses; ++pass) {
        std::optional<matrix<double>> step = MoveTowards(point, j, side, critical);
        if (!step) return kMissing;
        for (int i = 1; i <= point.at.layout.Length(); ++i) {
            if (point.at.IsFree(i)) point.at.parameters(i) += step->vbget(i);
        }
        if (!point.Evaluate(model, options)) return kMissing;
        if (IsAtBound(point, *step, critical)) return point.at.parameters.vbget(j);
    }
    return kMissing;
}

}  // namespace

ProfileBounds LogitProfileIntervals(const LogitModel& model,
                                    const FitOptions& options,
                                    const LogitFit& fit,
                                    double alpha)
{
    const int p = model.layout.columns;
    const std::vector<double> none(static_cast<std::size_t>(p) + 1, kMissing);
    ProfileBounds bounds{none, none};
    LogitWork work(model.n, model.layout.blocks);
    Point start{fit, work};
    for (int j = 1; j <= p; ++j) {
        if (!start.at.IsFree(j)) start.at.RemoveColumn(j);
    }
    if (!start.Evaluate(model, options)) return bounds;
    const double critical = start.logLikelihood - InvCDFChiSq(1.0 - alpha, 1.0) / 2.0;
    for (int j = 1; j <= p + 1; ++j) {
        if (!start.at.IsFree(j)) continue;
        const auto position = static_cast<std::size_t>(j - 1);
        bounds.lower[position] = FindBound(model, options, start, j, -1.0, critical);
        bounds.upper[position] = FindBound(model, options, start, j, 1.0, critical);
    }
    return bounds;
}

}  // namespace korvenrg::logistic
