/** What an incomplete function returns: both tails and the density that they share. */
#pragma once

namespace korvenrg::distributions {

/** Both tails of a distribution at one point of a positive variable v, with the derivatives that the quantiles use. */
struct TailPair
{
    double lower;
    double upper;
    double weight;  // d lower / d log v
    double slope;   // d log weight / d log v
};

}  // namespace korvenrg::distributions
