/** One Newton-Raphson step on a log-likelihood with held parameters. */
#pragma once

#include "core/matrix.h"

/**
 * One step of Newton and Raphson towards the maximum of a log-likelihood: new = old - H^-1 g over the free
 * parameters. Held ones are untouched and their cells of gradient and Hessian are not read.
 *
 * The Hessian is that of the log-likelihood itself, negative definite at a maximum; an indefinite one that is
 * well conditioned makes the plain Newton step too. The free block is scaled to a diagonal of 1 in absolute value;
 * pivots at rounding level (8 n eps of the scaled block, whatever `tol` is) are refused in natural order, so
 * that of an aliased set the later parameters are left out (korvenrg::linalg::InvertFreeBlock). The others
 * make the step of the problem without the refused ones, which is the step of a g2 inverse. The solution is
 * refined once against its residual.
 *
 * With `flag` true the step is damped: the diagonal of the block is multiplied by 1 + `ridge` (Marquardt 1963,
 * "An algorithm for least-squares estimation of nonlinear parameters"), which shortens the step and turns it
 * towards the scaled gradient. `inverse` and `work` still come from the undamped Hessian.
 *
 * Results, the first that holds counts:
 *  - -1: no step. Every free pivot was refused, a cell among the free ones is not finite, or the step or a parameter
 *    that it moves is not: with an infinite start, such as the intercept of a category without rows, there is no fit.
 *    A caller whose models may start at an infinite threshold cuts it to the clip of its predictor before.
 *    `beta` is unchanged, `inverse` and `work` are 0. Callers give up at the first pass, and later end the
 *    iteration with the iterate that stands.
 *  - 1: degenerate. Some free pivots were refused. The step is sound, but the refused parameters stay where
 *    they are for good, and the likelihood has a ridge along them; callers allow ten iterations. Those that
 *    fix one more parameter take the last free one, in line with the order of refusal. This result comes
 *    before the next: no caller has a use for hearing the other first, since each of them watches its
 *    likelihood too.
 *  - 2: stop at once. There is no free parameter, or the Newton decrement |g' H^-1 g| is at most eps times
 *    `tol`. The decrement is twice the gain that the quadratic model promises, so what can still be gained is
 *    below the rounding of the caller's convergence limit. The step is made all the same. Values of `tol`
 *    below 0 count as 0.
 *  - 0: a regular step.
 *
 * @param beta      n parameters, in and out
 * @param n         parameters
 * @param fixed     n marks: 0 free, anything else held; null holds none
 * @param gradient  n cells
 * @param hessian   n x n, symmetric; the mean of mirrored cells counts
 * @param tol       convergence limit of the caller, on the log-likelihood
 * @param work      n cells, out: the variance -inverse(i, i) of a usable parameter, 0 of a held or refused
 *                  one. A cell that is not above 0 means that the parameter has no variance.
 * @param inverse   n x n, out, supplied by the caller: H^-1 over the usable parameters, rows and columns of
 *                  held and refused ones 0. It carries the sign of the Hessian.
 * @param flag      -1: damped step
 * @param ridge     read with `flag` true alone; what is not above 0 or not finite counts as 0
 */
template <typename T>
int cNewtonRaphson(matrix<double>* beta,
                   int n,
                   matrix<T>* fixed,
                   matrix<double>* gradient,
                   matrix<double>* hessian,
                   double tol,
                   matrix<double>* work,
                   matrix<double>* inverse,
                   short flag,
                   double ridge);

extern template int cNewtonRaphson(matrix<double>*,
                                   int,
                                   matrix<double>*,
                                   matrix<double>*,
                                   matrix<double>*,
                                   double,
                                   matrix<double>*,
                                   matrix<double>*,
                                   short,
                                   double);
extern template int cNewtonRaphson(matrix<double>*,
                                   int,
                                   matrix<int>*,
                                   matrix<double>*,
                                   matrix<double>*,
                                   double,
                                   matrix<double>*,
                                   matrix<double>*,
                                   short,
                                   double);
