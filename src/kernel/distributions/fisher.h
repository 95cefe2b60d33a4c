/** Fisher's F distribution, real degrees of freedom above 0 (those below 1e-100 count as 1e-100).
    Infinite ones give the limits: chi-square / df1, the reciprocal of chi-square / df2, or 1 itself when
    both are infinite. Degrees of freedom of 0, negative or NaN give NaN; so does NaN F. */
#pragma once

/** P(F(df1, df2) <= F) with lower other than 0, P(F(df1, df2) > F) with lower = 0. Relative error below
    1e-13 in both tails. F <= 0 gives 0 and 1, F = +infinity gives 1 and 0. */
double CDFFisher(double F, double df1, double df2, short lower = -1);

/** The upper tail P(F(df1, df2) > F). */
double pValFisher(double F, double df1, double df2);

/** F with P(F(df1, df2) <= F) = p. 0 gives 0, 1 gives +infinity, p outside 0..1 gives NaN; a quantile
    outside the double range gives 0 or infinity. */
double InvCDFFisher(double p, double df1, double df2);
