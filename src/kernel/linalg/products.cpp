#include "kernel/linalg/products.h"

#include <vector>

int M_ProductBV(matrix<double>* B, int rows, int cols, matrix<double>* v, matrix<double>* out)
{
    for (int i = 1; i <= rows; ++i) {
        double sum = 0.0;
        for (int j = 1; j <= cols; ++j) {
            const double cell = B->vbget(i, j);
            if (cell != 0.0) sum += cell * v->vbget(j);
        }
        out->vbset(i, sum);
    }
    return 0;
}

double M_ProductTrVBV(matrix<double>* v, int n, matrix<double>* B)
{
    double form = 0.0;
    for (int j = 1; j <= n; ++j) {
        double product = 0.0;
        for (int i = 1; i <= n; ++i) {
            product += v->vbget(i) * B->vbget(i, j);
        }
        form += product * v->vbget(j);
    }
    return form;
}

void ComputeNewVar(matrix<double>* A,
                   int rows,
                   int cols,
                   matrix<double>* V,
                   matrix<double>* outDiag,
                   matrix<double>* outMat)
{
    matrix<double> mapped(cols, rows);  // V A'
    for (int i = 1; i <= rows; ++i) {
        for (int k = 1; k <= cols; ++k) {
            const double multiplier = A->vbget(i, k);
            if (multiplier == 0.0) continue;
            for (int j = 1; j <= cols; ++j) {
                mapped.vbset(j, i, mapped.vbget(j, i) + multiplier * V->vbget(j, k));
            }
        }
    }
    for (int j = 1; j <= rows; ++j) {
        for (int i = 1; i <= rows; ++i) {
            outMat->vbset(i, j, 0.0);
        }
    }
    for (int i = 1; i <= rows; ++i) {
        for (int k = 1; k <= cols; ++k) {
            const double multiplier = A->vbget(i, k);
            if (multiplier == 0.0) continue;
            for (int j = 1; j <= rows; ++j) {
                outMat->vbset(i, j, outMat->vbget(i, j) + multiplier * mapped.vbget(k, j));
            }
        }
    }
    for (int i = 1; i <= rows; ++i) {
        outDiag->vbset(i, outMat->vbget(i, i));
    }
}

void M_ProductDesignAB2(matrix<double>* A,
                        int rows,
                        int* colsA,
                        matrix<double>* B,
                        int colsB,
                        int capacity,
                        matrix<double>* work,
                        matrix<int>* states)
{
    const int old = *colsA;
    if (colsB < 1 || old < 1 || old > capacity / colsB) return;

    std::vector<int> statesB;
    for (int b = 1; b <= colsB; ++b) {
        statesB.push_back(states->vbget(old + b));
    }
    // From the last column down: a product never overwrites a column that is still to be read.
    for (int a = old; a >= 1; --a) {
        const int stateA = states->vbget(a);
        for (int r = 1; r <= rows; ++r) {
            work->vbset(r, A->vbget(r, a));
        }
        for (int b = 1; b <= colsB; ++b) {
            const int target = (a - 1) * colsB + b;
            for (int r = 1; r <= rows; ++r) {
                A->vbset(r, target, work->vbget(r) * B->vbget(r, b));
            }
            states->vbset(target, stateA != 0 ? stateA : statesB[static_cast<std::size_t>(b - 1)]);
        }
    }
    *colsA = old * colsB;
}
