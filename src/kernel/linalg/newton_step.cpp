#include "kernel/linalg/newton_step.h"

#include <algorithm>
#include <cmath>
#include <vector>

#include "core/limits.h"
#include "kernel/linalg/dense_block.h"
#include "kernel/linalg/free_block.h"

using namespace korvenrg::linalg;

namespace {

enum StepResult
{
    kNoStep = -1,
    kRegular = 0,
    kDegenerate = 1,
    kStop = 2
};

using Positions = std::vector<std::size_t>;
using Cells = std::vector<double>;

DenseBlock FreeHessian(const matrix<double>& hessian, const Positions& free)
{
    DenseBlock block(free.size(), free.size());
    for (std::size_t j = 0; j < free.size(); ++j) {
        for (std::size_t i = 0; i < free.size(); ++i) {
            block(i, j) = hessian.getElement(static_cast<int>(free[i]), static_cast<int>(free[j]));
        }
    }
    Symmetrize(block);
    return block;
}

Cells CellsAt(const matrix<double>& vector, const Positions& positions)
{
    Cells cells;
    for (const std::size_t i : positions) {
        cells.push_back(vector.vbget(static_cast<int>(i) + 1));
    }
    return cells;
}

Cells Times(const DenseBlock& block, const Cells& v)
{
    Cells product(block.rows, 0.0);
    for (std::size_t j = 0; j < block.cols; ++j) {
        for (std::size_t i = 0; i < block.rows; ++i) {
            product[i] += block(i, j) * v[j];
        }
    }
    return product;
}

// H^-1 g, refined once by the inverse of the residual.
Cells SolveRefined(const DenseBlock& hessian, const DenseBlock& inverse, const Cells& gradient)
{
    Cells solution = Times(inverse, gradient);
    Cells residual = Times(hessian, solution);
    for (std::size_t i = 0; i < residual.size(); ++i) {
        residual[i] = gradient[i] - residual[i];
    }
    const Cells correction = Times(inverse, residual);
    for (std::size_t i = 0; i < solution.size(); ++i) {
        solution[i] += correction[i];
    }
    return solution;
}

DenseBlock Damped(DenseBlock hessian, double ridge)
{
    const double factor = ridge > 0.0 && std::isfinite(ridge) ? 1.0 + ridge : 1.0;
    for (std::size_t i = 0; i < hessian.rows; ++i) {
        hessian(i, i) *= factor;
    }
    return hessian;
}

// The damped step; parameters that the damped block refuses stay put.
Cells DampedSolution(const DenseBlock& hessian, double ridge, const Cells& gradient)
{
    const DenseBlock damped = Damped(hessian, ridge);
    const FreeInverse result = InvertFreeBlock(damped);
    Cells usedGradient;
    for (const std::size_t i : result.used) {
        usedGradient.push_back(gradient[i]);
    }
    const Cells part = SolveRefined(PrincipalBlock(damped, result.used), result.inverse, usedGradient);
    Cells solution(gradient.size(), 0.0);
    for (std::size_t i = 0; i < part.size(); ++i) {
        solution[result.used[i]] = part[i];
    }
    return solution;
}

double Decrement(const DenseBlock& inverse, const Cells& gradient)
{
    const Cells product = Times(inverse, gradient);
    double sum = 0.0;
    for (std::size_t i = 0; i < gradient.size(); ++i) {
        sum += gradient[i] * product[i];
    }
    return std::fabs(sum);
}

bool AllFinite(const Cells& cells)
{
    return std::ranges::all_of(cells, [](double cell) { return std::isfinite(cell); });
}

void ClearOutputs(int n, matrix<double>& work, matrix<double>& inverse)
{
    for (int j = 1; j <= n; ++j) {
        work.vbset(j, 0.0);
        for (int i = 1; i <= n; ++i) {
            inverse.vbset(i, j, 0.0);
        }
    }
}

void StoreInverse(const DenseBlock& block,
                  const Positions& used,
                  matrix<double>& work,
                  matrix<double>& inverse)
{
    for (std::size_t j = 0; j < used.size(); ++j) {
        const int col = static_cast<int>(used[j]) + 1;
        work.vbset(col, -block(j, j));
        for (std::size_t i = 0; i < used.size(); ++i) {
            inverse.vbset(static_cast<int>(used[i]) + 1, col, block(i, j));
        }
    }
}

}  // namespace

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
                   double ridge)
{
    const Positions free = UnmarkedPositions(fixed, n);
    const DenseBlock freeHessian = FreeHessian(*hessian, free);
    const Cells freeGradient = CellsAt(*gradient, free);
    ClearOutputs(n, *work, *inverse);
    if (free.empty()) return kStop;

    const FreeInverse result = InvertFreeBlock(freeHessian);
    if (!result.finite || result.used.empty() || !AllFinite(freeGradient)) return kNoStep;
    Positions used;
    Cells usedGradient;
    for (const std::size_t i : result.used) {
        used.push_back(free[i]);
        usedGradient.push_back(freeGradient[i]);
    }

    const DenseBlock usedHessian = PrincipalBlock(freeHessian, result.used);
    const Cells step = flag == korvenrg::kTrue ? DampedSolution(usedHessian, ridge, usedGradient)
                                               : SolveRefined(usedHessian, result.inverse, usedGradient);
    Cells updated = CellsAt(*beta, used);
    for (std::size_t i = 0; i < updated.size(); ++i) {
        updated[i] -= step[i];
    }
    if (!AllFinite(updated)) return kNoStep;

    for (std::size_t i = 0; i < used.size(); ++i) {
        beta->vbset(static_cast<int>(used[i]) + 1, updated[i]);
    }
    StoreInverse(result.inverse, used, *work, *inverse);
    if (used.size() < free.size()) return kDegenerate;
    return Decrement(result.inverse, usedGradient) <= korvenrg::kEps * std::max(tol, 0.0) ? kStop : kRegular;
}

template int cNewtonRaphson(matrix<double>*,
                            int,
                            matrix<double>*,
                            matrix<double>*,
                            matrix<double>*,
                            double,
                            matrix<double>*,
                            matrix<double>*,
                            short,
                            double);
template int cNewtonRaphson(matrix<double>*,
                            int,
                            matrix<int>*,
                            matrix<double>*,
                            matrix<double>*,
                            double,
                            matrix<double>*,
                            matrix<double>*,
                            short,
                            double);
