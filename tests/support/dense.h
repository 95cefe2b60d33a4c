/** Small dense matrices for tests: written row by row, multiplied plainly. */
#pragma once

#include <cmath>
#include <initializer_list>
#include <random>

#include "core/matrix.h"

namespace korvenrg::test {

/** A matrix from its cells row by row. */
inline matrix<double> ByRows(int rows, int cols, std::initializer_list<double> cells)
{
    matrix<double> result(rows, cols);
    int k = 0;
    for (const double cell : cells) {
        result.vbset(k / cols + 1, k % cols + 1, cell);
        k += 1;
    }
    return result;
}

inline matrix<double> Times(const matrix<double>& a, const matrix<double>& b)
{
    matrix<double> product(a.rows, b.cols);
    for (int i = 1; i <= a.rows; ++i) {
        for (int j = 1; j <= b.cols; ++j) {
            double sum = 0.0;
            for (int k = 1; k <= a.cols; ++k) {
                sum += a.vbget(i, k) * b.vbget(k, j);
            }
            product.vbset(i, j, sum);
        }
    }
    return product;
}

inline matrix<double> Transpose(const matrix<double>& a)
{
    matrix<double> transposed(a.cols, a.rows);
    for (int i = 1; i <= a.rows; ++i) {
        for (int j = 1; j <= a.cols; ++j) {
            transposed.vbset(j, i, a.vbget(i, j));
        }
    }
    return transposed;
}

inline matrix<double> IdentityOf(int n)
{
    matrix<double> identity(n, n);
    for (int i = 1; i <= n; ++i) {
        identity.vbset(i, i, 1.0);
    }
    return identity;
}

/** Largest absolute difference between two matrices of one shape; NaN when a cell is. */
inline double Distance(const matrix<double>& a, const matrix<double>& b)
{
    double largest = a.rows == b.rows && a.cols == b.cols ? 0.0 : HUGE_VAL;
    for (std::uint32_t i = 0; i < a.total && i < b.total; ++i) {
        const double difference = std::fabs(a.data[i] - b.data[i]);
        if (!(difference <= largest)) largest = difference;
    }
    return largest;
}

/** Largest absolute row sum. */
inline double RowNorm(const matrix<double>& a)
{
    double norm = 0.0;
    for (int i = 1; i <= a.rows; ++i) {
        double sum = 0.0;
        for (int j = 1; j <= a.cols; ++j) {
            sum += std::fabs(a.vbget(i, j));
        }
        norm = std::fmax(norm, sum);
    }
    return norm;
}

/** D M D with M = X'X / rows of a random X and D falling from 1 to `smallest`: positive definite. */
inline matrix<double> RandomDefinite(int n, double smallest, unsigned seed = 5)
{
    std::mt19937 generator(seed);
    std::normal_distribution<double> normal;
    const int rows = 3 * n;
    matrix<double> x(rows, n);
    for (int j = 1; j <= n; ++j) {
        const double scale = n > 1 ? std::pow(smallest, (j - 1.0) / (n - 1.0)) : 1.0;
        for (int i = 1; i <= rows; ++i) {
            x.vbset(i, j, scale * normal(generator) / std::sqrt(rows));
        }
    }
    return Times(Transpose(x), x);
}

}  // namespace korvenrg::test
