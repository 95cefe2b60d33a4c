/** Scalar mathematics under the names of the script language. */
#pragma once

/** The square root of x, not its square: the name is the script language's. Negative x gives NaN. */
double sqr(double x);

/** Logarithm to base 10: 0 gives -infinity, negative x gives NaN. */
double Log10(double x);

/** The ratio of a circle's circumference to its diameter. */
double Pi();

/** The smaller of two numbers; a when either is NaN or both are equal. */
double Min(double a, double b);

/** The larger of two numbers; a when either is NaN or both are equal. */
double Max(double a, double b);

/** The sign of x: -1, 0 or 1; NaN gives 0. */
double FSgn(double x);

/** The number of subsets of k among n objects: exact while it is below 2^53, correctly rounded or one ulp
    off beyond, infinity beyond the double range. k below 0 or above n gives 0. */
double Cnk(int n, int k);

/** Exchanges two numbers. */
void SwapDbl(double& a, double& b);
