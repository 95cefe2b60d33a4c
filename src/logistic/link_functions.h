/** The four links as functions of one number. */
#pragma once

#include <cmath>

#include "kernel/distributions/normal.h"
#include "logistic/logit_model.h"

namespace korvenrg::logistic {

/** Linear predictors are cut to this size before a link, as is exp of them in the two log-log links. */
inline constexpr double kLargestPredictor = 709.0;

/** F(eta) with its first three derivatives. */
struct LinkValues
{
    double probability;
    double density;
    double second;
    double third;
};

/** A value cut to 709 in size; NaN stays. */
inline double CutPredictor(double eta)
{
    return std::fabs(eta) > kLargestPredictor ? std::copysign(kLargestPredictor, eta) : eta;
}

/** F(eta). */
template <LinkCode kLink>
double LinkProbabilityOf(double eta)
{
    const double x = CutPredictor(eta);
    if constexpr (kLink == kProbit) return CDFNormalStd(x);
    if constexpr (kLink == kComplementaryLogLog) return -std::expm1(-CutPredictor(std::exp(x)));
    if constexpr (kLink == kLogLog) return std::exp(-CutPredictor(std::exp(-x)));
    return 1.0 / (1.0 + std::exp(-x));
}

/** F and its derivatives, with F = F(eta) given. */
template <LinkCode kLink>
LinkValues LinkValuesOf(double eta, double F)
{
    const double x = CutPredictor(eta);
    if constexpr (kLink == kProbit) {
        const double f = PDFNormalStd(x);
        return {F, f, -x * f, (x * x - 1.0) * f};
    }
    if constexpr (kLink == kComplementaryLogLog) {
        const double t = CutPredictor(std::exp(x));
        const double f = std::exp(-t) * t;
        return {F, f, (1.0 - t) * f, ((t - 3.0) * t + 1.0) * f};
    }
    if constexpr (kLink == kLogLog) {
        const double t = CutPredictor(std::exp(-x));
        const double f = F * t;
        return {F, f, (t - 1.0) * f, ((t - 3.0) * t + 1.0) * f};
    }
    const double f = F * (1.0 - F);
    return {F, f, (1.0 - 2.0 * F) * f, (1.0 - 6.0 * F + 6.0 * F * F) * f};
}

/** Calls `body` with the link as a template argument, body.operator()<kLink>(). Any other code counts as the logit. */
template <typename Body>
auto WithLink(int link, Body body)
{
    switch (link) {
        case kProbit:
            return body.template operator()<kProbit>();
        case kComplementaryLogLog:
            return body.template operator()<kComplementaryLogLog>();
        case kLogLog:
            return body.template operator()<kLogLog>();
        default:
            return body.template operator()<kLogit>();
    }
}

/** F(eta) and its derivatives for a link code. */
LinkValues LogitLinkValues(int link, double eta);

/** Probability at a linear predictor: the link, then the mortality, kept within 1E-16 and 0.9999999999999999. */
double LogitLinkCDF(int link, double eta, double mortality);

/**
 * The linear predictor at a probability: infinite at 0 and 1, NaN outside.
 *
 * @param form  ResponseForm; a multinomial response is always a logit
 */
double LogitInverseLink(int form, int link, double probability);

}  // namespace korvenrg::logistic
