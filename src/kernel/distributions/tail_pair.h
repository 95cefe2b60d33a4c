/** What an incomplete function returns: both tails and the density that they share. */
#pragma once

namespace korvenrg::distributions {

/** Both tails of a distribution at one point of a positive variable v, with the derivatives that the
    quantiles use. */
struct TailPair
{
    double lower;
    double upper;
    double weight;    // d lower / d log v
    double slope;     // d log weight / d log v
    double deviance;  // -log weight but for a factor: known where the tails themselves underflow
};

/** A tail that is all but one may come out an ulp above it, which would make the other tail negative. */
inline double AtMostOne(double tail)
{
    return tail < 1 ? tail : 1;
}

}  // namespace korvenrg::distributions
