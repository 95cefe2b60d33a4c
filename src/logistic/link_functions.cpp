#include "logistic/link_functions.h"

#include <algorithm>

namespace korvenrg::logistic {

namespace {

constexpr double kSmallestReported = 1E-16;
constexpr double kLargestReported = 0.9999999999999999;

}  // namespace

LinkValues LogitLinkValues(int link, double eta)
{
    return WithLink(link, [&]<LinkCode kLink>() {
        return LinkValuesOf<kLink>(eta, LinkProbabilityOf<kLink>(eta));
    });
}

double LogitLinkCDF(int link, double eta, double mortality)
{
    const double F = WithLink(link, [&]<LinkCode kLink>() { return LinkProbabilityOf<kLink>(eta); });
    return std::clamp(mortality + (1.0 - mortality) * F, kSmallestReported, kLargestReported);
}

double LogitInverseLink(int form, int link, double probability)
{
    const bool alwaysLogit = form == kMultinomial;
    switch (alwaysLogit ? int{kLogit} : link) {
        case kProbit:
            return InvCDFNormalStd(probability);
        case kComplementaryLogLog:
            return std::log(-std::log1p(-probability));
        case kLogLog:
            return -std::log(-std::log(probability));
        default:
            return std::log(probability / (1.0 - probability));
    }
}

}  // namespace korvenrg::logistic
