#include "kernel/linalg/fit_quality.h"

#include <cmath>

#include "core/limits.h"

double MAPE(matrix<double>* Y, matrix<double>* YPred, int n, matrix<double>* W, int flag)
{
    double errors = 0.0;
    double weights = 0.0;
    for (int r = 1; r <= n; ++r) {
        const double y = Y->vbget(r);
        const double w = W->vbget(r);
        if (y == 0.0 || w == 0.0) continue;
        errors += w * std::fabs((y - YPred->vbget(r)) / y);
        weights += w;
    }
    if (weights == 0.0) return korvenrg::kMissing;
    return (flag == 1 ? 100.0 : 1.0) * errors / weights;
}
