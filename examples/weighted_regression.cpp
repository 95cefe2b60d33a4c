/**
 * A line through weighted points, with matrix objects and the worker behind the door.
 *
 * The points (0, 1), (1, 2), (2, 4) with case weights 1, 2, 1: slope 3 / 2, intercept 3 / 4, residual sum of
 * squares 1 / 4 on 4 - 2 degrees of freedom, standard error of the slope sqrt((1 / 8) / 2) = 1 / 4.
 */
#include <cmath>
#include <cstdio>

#include "core/matrix.h"
#include "linear/ols_run.h"

int main()
{
    const int n = 3;
    const int p = 1;
    double xValues[n] = {0.0, 1.0, 2.0};
    double yValues[n] = {1.0, 2.0, 4.0};
    double caseWeights[n] = {1.0, 2.0, 1.0};
    matrix<double> X(n, p, xValues, true);
    matrix<double> Y(n, 1, yValues, true);
    matrix<double> Wc(n, 1, caseWeights, true);
    matrix<double> Wr(n, 1, 1.0);

    // one quantitative factor with one column
    matrix<int> factType(1, 1, 1), factActive(1, 1, 1), factNbVars(1, 1, 1), factListVars(1, 1, 1);
    matrix<int> factNbSub(1, 1, 1), factSubParents(1, 1, 1), removed(1, 1, 0);
    matrix<double> design(p, p, 1.0);

    matrix<double> options(17, 1);
    options.vbset(3, 1E-4);   // tolerance
    options.vbset(5, -1.0);   // no selection
    options.vbset(11, 0.05);  // alpha of the intervals
    options.vbset(17, 1.0);   // covariance of the reported parameters

    int used = 0;
    int bestRow = 0;
    matrix<double> models(2 * p, 1 + 12), fit(15, 2), anova(3, 5);
    matrix<double> typeI(1, 5), typeII(1, 5), typeIII(1, 5);
    matrix<double> raw(p + 1, 1), reported(p + 1, 1), coefficients(p + 1, 6), standardised(p, 6);
    matrix<double> covariance(p + 1, p + 1), predictions(n, 1), intervals(n, 6), residuals(n, 3);
    matrix<double> cook(n, 1), adjusted(n, 1), swept(p + 1, p + 1), means(p + 1, 1), deviations(p + 1, 1);

    const int outcome = cRunOLS1(n,
                                 p,
                                 &Y,
                                 &X,
                                 &Wc,
                                 &Wr,
                                 1,
                                 1,
                                 &factType,
                                 &factActive,
                                 &factNbVars,
                                 &factListVars,
                                 &factNbSub,
                                 &factSubParents,
                                 &design,
                                 &options,
                                 &used,
                                 &models,
                                 &bestRow,
                                 &removed,
                                 &fit,
                                 &anova,
                                 &typeI,
                                 &typeII,
                                 &typeIII,
                                 &raw,
                                 &reported,
                                 &coefficients,
                                 &standardised,
                                 &covariance,
                                 &predictions,
                                 &intervals,
                                 &residuals,
                                 &cook,
                                 &adjusted,
                                 &swept,
                                 &means,
                                 &deviations);

    std::printf("y = %g + %g x, standard error of the slope %g, R squared %g\n",
                coefficients.vbget(1, 1),
                coefficients.vbget(2, 1),
                coefficients.vbget(2, 2),
                fit.vbget(4, 1));

    const auto isClose = [](double actual, double expected) { return std::fabs(actual - expected) <= 1E-12; };
    const bool right = outcome == 0 && used == 1 && isClose(coefficients.vbget(1, 1), 0.75) &&
                       isClose(coefficients.vbget(2, 1), 1.5) && isClose(coefficients.vbget(2, 2), 0.25) &&
                       isClose(anova.vbget(2, 2), 0.25) && isClose(fit.vbget(4, 1), 4.5 / 4.75);
    return right ? 0 : 1;
}
