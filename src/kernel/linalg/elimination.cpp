#include "kernel/linalg/elimination.h"

#include <algorithm>
#include <cmath>
#include <numeric>
#include <utility>

#include "core/limits.h"
#include "kernel/linalg/column_updates.h"
#include "kernel/linalg/outputs.h"

namespace korvenrg::linalg {

namespace {

std::size_t LargestRow(const double* column, std::size_t first, std::size_t n)
{
    std::size_t largest = first;
    for (std::size_t i = first + 1; i < n; ++i) {
        if (std::fabs(column[i]) > std::fabs(column[largest])) largest = i;
    }
    return largest;
}

void ExchangeRows(LuFactors& factors, std::size_t a, std::size_t b)
{
    if (a == b) return;
    for (std::size_t j = 0; j < factors.cells.cols; ++j) {
        std::swap(factors.cells(a, j), factors.cells(b, j));
    }
    std::swap(factors.rows[a], factors.rows[b]);
    factors.oddExchanges = !factors.oddExchanges;
}

void EliminateColumn(DenseBlock& cells, std::size_t k)
{
    double* pivotColumn = cells.Column(k);
    const std::size_t n = cells.rows;
    for (std::size_t i = k + 1; i < n; ++i) {
        pivotColumn[i] /= pivotColumn[k];
    }
    const auto subtract = BestSubtractMultiple();
    for (std::size_t j = k + 1; j < n; ++j) {
        double* column = cells.Column(j);
        const double multiplier = column[k];
        if (multiplier == 0.0) continue;
        subtract(column + k + 1, pivotColumn + k + 1, multiplier, n - k - 1);
    }
}

// n eps times the sum of |l u| that was taken out of pivot k.
double RoundingOfPivot(const DenseBlock& cells, std::size_t k)
{
    double sum = 0.0;
    for (std::size_t i = 0; i < k; ++i) {
        sum += std::fabs(cells(k, i)) * std::fabs(cells(i, k));
    }
    return static_cast<double>(cells.rows) * kEps * sum;
}

}  // namespace

LuFactors FactorLu(DenseBlock block, Pivoting pivoting, const PivotLimit& limit)
{
    LuFactors factors;
    factors.cells = std::move(block);
    const std::size_t n = factors.cells.rows;
    factors.rows.resize(n);
    std::iota(factors.rows.begin(), factors.rows.end(), std::size_t{0});
    for (std::size_t k = 0; k < n; ++k) {
        if (pivoting == Pivoting::kRows) {
            ExchangeRows(factors, k, LargestRow(factors.cells.Column(k), k, n));
        }
        const double least = limit.rounding ? RoundingOfPivot(factors.cells, k) : 0.0;
        if (!(std::fabs(factors.cells(k, k)) > std::max(limit.absolute, least))) return factors;
        EliminateColumn(factors.cells, k);
    }
    factors.regular = true;
    return factors;
}

void SolveLu(const LuFactors& factors, double* rightHandSide)
{
    const DenseBlock& cells = factors.cells;
    const std::size_t n = cells.rows;
    const auto subtract = BestSubtractMultiple();
    std::vector<double> x(n);
    for (std::size_t i = 0; i < n; ++i) {
        x[i] = rightHandSide[factors.rows[i]];
    }
    for (std::size_t k = 0; k < n; ++k) {
        if (x[k] != 0.0) subtract(x.data() + k + 1, cells.Column(k) + k + 1, x[k], n - k - 1);
    }
    for (std::size_t k = n; k-- > 0;) {
        x[k] /= cells(k, k);
        subtract(x.data(), cells.Column(k), x[k], k);
    }
    std::copy(x.begin(), x.end(), rightHandSide);
}

DenseBlock InverseOf(const LuFactors& factors)
{
    DenseBlock inverse = Identity(factors.cells.rows);
    for (std::size_t j = 0; j < inverse.cols; ++j) {
        SolveLu(factors, inverse.Column(j));
    }
    return inverse;
}

}  // namespace korvenrg::linalg

using namespace korvenrg::linalg;

int M_Gauss(matrix<double>* A, int n, int m, matrix<double>* B, short pivot, short keepA)
{
    const DenseBlock block = LeadingBlock(*A, n, n);
    DenseBlock solution = LeadingBlock(*B, n, m);
    if (!AllFinite(block) || !AllFinite(solution)) return -1;

    const Pivoting pivoting = pivot == korvenrg::kTrue ? Pivoting::kRows : Pivoting::kNone;
    const LuFactors factors = FactorLu(block, pivoting, {.absolute = 0.0, .rounding = true});
    if (keepA != korvenrg::kTrue) StoreBlock(factors.cells, *A);
    if (!factors.regular) return -1;
    for (std::size_t j = 0; j < solution.cols; ++j) {
        SolveLu(factors, solution.Column(j));
    }
    StoreBlock(solution, *B);
    return 0;
}

int InverseWithTolerance(matrix<double>* A, matrix<double>*& inverse, short& failed, double limit)
{
    constexpr double kLimitWhenAsked = 1E-8;
    failed = korvenrg::kTrue;
    if (A == nullptr || A->rows != A->cols) return -1;
    DenseBlock block = LeadingBlock(*A, A->rows, A->cols);
    if (!AllFinite(block)) return -1;

    const PivotLimit pivotLimit{limit > 0.0 ? kLimitWhenAsked : korvenrg::kEps, false};
    const LuFactors factors = FactorLu(std::move(block), Pivoting::kRows, pivotLimit);
    if (!factors.regular) return -1;
    EnsureShape(inverse, A->rows, A->cols);
    StoreBlock(InverseOf(factors), *inverse);
    failed = korvenrg::kFalse;
    return 0;
}

int M_ForwardDoolittle(matrix<double>* A, int n, double tol, matrix<double>*& U)
{
    DenseBlock work = LeadingBlock(*A, n, n);
    EnsureShape(U, n, n);
    DenseBlock rows(work.rows, work.cols);
    int accepted = 0;
    const bool finite = AllFinite(work);
    for (std::size_t k = 0; finite && k < work.cols; ++k) {
        const double pivot = work(k, k);
        const double diagonal = A->getElement(static_cast<int>(k), static_cast<int>(k));
        if (!(pivot > tol * diagonal) || pivot <= 0.0) continue;
        accepted += 1;
        rows(k, k) = 1.0;
        for (std::size_t j = k + 1; j < work.cols; ++j) {
            rows(k, j) = work(k, j) / pivot;
            for (std::size_t i = k + 1; i <= j; ++i) {
                work(i, j) -= work(k, i) * rows(k, j);
            }
        }
    }
    StoreBlock(rows, *U);
    return finite ? accepted : -1;
}
