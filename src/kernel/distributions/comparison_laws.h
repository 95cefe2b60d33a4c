/**
 * The laws of multiple comparisons: p-values and critical values of the largest standardised difference
 * between means, on the scale of Student's t.
 *
 * Common to all. k means are compared; `lambda` holds at least k - 1 correlation factors, one for each mean other
 * than the first (the control), of which the first k - 1 are read. For group sizes n_0 (control) and n_i the
 * factor is sqrt(n_i / (n_0 + n_i)); equal sizes give 1 / sqrt(2). The differences are divided by one estimate
 * of the standard deviation with df degrees of freedom, real and above 0; those below 0.1 count as 0.1,
 * those from 1e20 on (infinity too) as infinite. With k = 2 all are Student's distribution.
 *
 *   range      (qmcav, pvmcav): all pairs of means, the studentized range divided by sqrt(2). Exact for
 *              equal factors of 1 / sqrt(2). Other factors give the means unequal variances,
 *              1 for the first and (1 - lambda_i^2) / lambda_i^2 for the others, and the law is that of their range
 *              over the root of twice the average variance.
 *   one-sided  (qmcbv, pvmcbv): the largest of k - 1 differences from a control, t_i with correlations
 *              lambda_i lambda_j (C. W. Dunnett 1955, A multiple comparison procedure for comparing several
 *              treatments with a control).
 *   two-sided  (qmccv, pvmccv): the largest of their absolute values, same correlations (C. W. Dunnett 1964,
 *              New tables for multiple comparisons with a control).
 *
 * Factors may be negative (their products count); an absolute value of 1 or more, and 0 for a range, gives
 * NaN, values between 0.99999 and 1 count as 0.99999. NaN results also from k < 2, df <= 0, NaN arguments, a null or
 * too short lambda, and a confidence outside 0..1. A confidence of 0 gives the lower end of the law (0;
 * -infinity for the one-sided one), 1 gives +infinity.
 *
 * Method: trapezoidal rule over the logarithm of the chi-distributed scale (studentized_tail.h) and over the
 * deviate that the comparisons share (normal_maxima.h). The upper tail is integrated itself, so small
 * p-values keep their digits; accuracy and speed are measured in docs/accuracy.md and docs/performance.md.
 */
#pragma once

#include "core/matrix.h"

/** Upper p-value of x among k means, range. x <= 0 gives 1. */
double pvmcav(int k, matrix<double>* lambda, double df, double x);

/** Critical value with P(largest difference <= value) = conf, range. */
double qmcav(int k, matrix<double>* lambda, double df, double conf);

/** One-sided p-value of x, any sign: P(largest t_i > x). */
double pvmcbv(int k, matrix<double>* lambda, double df, double x);

/** Two-sided p-value of x: P(largest |t_i| > x). x <= 0 gives 1. */
double pvmccv(int k, matrix<double>* lambda, double df, double x);

/**
 * One-sided critical value.
 *
 * @param reserved1, reserved2  callers pass 1.0; not read
 * @param conf    1 x 1, in: the confidence, 1 - level
 * @param result  1 x 1, out: the value with P(largest t_i <= value) = conf; nothing is written when null
 */
void qmcbv(int k,
           matrix<double>* lambda,
           double reserved1,
           double df,
           double reserved2,
           matrix<double>* conf,
           matrix<double>* result);

/**
 * Two-sided critical value.
 *
 * @param reserved  callers pass 1.0; not read
 * @param conf      1 x 1, in: the confidence, 1 - level
 * @param result    1 x 1, out: the value with P(largest |t_i| <= value) = conf; nothing is written when null
 */
void qmccv(int k,
           matrix<double>* lambda,
           double df,
           double reserved,
           matrix<double>* conf,
           matrix<double>* result);
