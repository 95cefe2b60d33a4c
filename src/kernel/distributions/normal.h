/** The standard normal distribution. NaN gives NaN throughout. */
#pragma once

/** P(Z <= z) with lower other than 0, P(Z > z) with lower = 0. Relative error about 1e-15 in both tails,
    down to the smallest doubles (|z| about 38.5). -infinity and +infinity give 0 and 1. */
double CDFNormalStd(double z, short lower = -1);

/** The upper tail P(Z > z). */
double pValNormalStd(double z);

/** z with P(Z <= z) = p. 0 gives -infinity, 1 gives +infinity, p outside 0..1 gives NaN. */
double InvCDFNormalStd(double p);

/** The density exp(-z^2/2) / sqrt(2 pi). */
double PDFNormalStd(double z);
