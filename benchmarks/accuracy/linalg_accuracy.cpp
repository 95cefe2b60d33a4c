// Prints, as Markdown, the largest scaled residual of each solver over sizes 1 to 200 and kinds of matrices: the
// residual over (norms of the operands, n, eps), which a backward stable method keeps at a few units whatever
// the condition. Norms are the largest absolute row sum.
//
// The command that builds and runs it stands in docs/accuracy.md. Matrices come from a fixed generator.

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <functional>
#include <map>
#include <string>
#include <vector>

#include "core/limits.h"
#include "kernel/linalg/cholesky.h"
#include "kernel/linalg/constrained_inverse.h"
#include "kernel/linalg/dense_block.h"
#include "kernel/linalg/eigen.h"
#include "kernel/linalg/elimination.h"
#include "kernel/linalg/g2_sweep.h"
#include "kernel/linalg/generalized_inverse.h"
#include "kernel/linalg/newton_step.h"
#include "kernel/linalg/projections.h"
#include "kernel/linalg/sweep.h"

namespace {

using namespace korvenrg;
using namespace korvenrg::linalg;

constexpr std::size_t kSizes[] = {1, 2, 3, 4, 5, 8, 13, 20, 31, 50, 100, 200};

/** A 64-bit mixing generator: the same sequence on every platform. */
class Draws
{
  public:
    double Uniform()
    {
        state_ += 0x9E3779B97F4A7C15u;
        std::uint64_t z = state_;
        z = (z ^ (z >> 30)) * 0xBF58476D1CE4E5B9u;
        z = (z ^ (z >> 27)) * 0x94D049BB133111EBu;
        z ^= z >> 31;
        return 2.0 * (static_cast<double>(z >> 11) * 0x1p-53) - 1.0;
    }

    DenseBlock Matrix(std::size_t n)
    {
        DenseBlock block(n, n);
        for (double& cell : block.cells) {
            cell = Uniform();
        }
        return block;
    }

  private:
    std::uint64_t state_ = 20240229;
};

DenseBlock Product(const DenseBlock& a, const DenseBlock& b)
{
    DenseBlock product(a.rows, b.cols);
    for (std::size_t j = 0; j < b.cols; ++j) {
        for (std::size_t k = 0; k < a.cols; ++k) {
            for (std::size_t i = 0; i < a.rows; ++i) {
                product(i, j) += a(i, k) * b(k, j);
            }
        }
    }
    return product;
}

DenseBlock Transposed(const DenseBlock& a)
{
    DenseBlock transposed(a.cols, a.rows);
    for (std::size_t j = 0; j < a.cols; ++j) {
        for (std::size_t i = 0; i < a.rows; ++i) {
            transposed(j, i) = a(i, j);
        }
    }
    return transposed;
}

DenseBlock Difference(DenseBlock a, const DenseBlock& b)
{
    for (std::size_t i = 0; i < a.cells.size(); ++i) {
        a.cells[i] -= b.cells[i];
    }
    return a;
}

double Norm(const DenseBlock& a)
{
    double norm = 0.0;
    for (std::size_t i = 0; i < a.rows; ++i) {
        double sum = 0.0;
        for (std::size_t j = 0; j < a.cols; ++j) {
            sum += std::fabs(a(i, j));
        }
        if (!(sum <= norm)) norm = sum;
    }
    return norm;
}

// (I - 2 v v' / square) A
void Mirror(DenseBlock& a, const std::vector<double>& v, double square)
{
    for (std::size_t j = 0; j < a.cols; ++j) {
        double* column = a.Column(j);
        double along = 0.0;
        for (std::size_t i = 0; i < a.rows; ++i) {
            along += v[i] * column[i];
        }
        for (std::size_t i = 0; i < a.rows; ++i) {
            column[i] -= 2.0 * along / square * v[i];
        }
    }
}

// Q diag(values) Q' with Q a product of n reflections in random directions.
DenseBlock WithEigenvalues(Draws& draws, const std::vector<double>& values)
{
    const std::size_t n = values.size();
    DenseBlock a(n, n);
    for (std::size_t i = 0; i < n; ++i) {
        a(i, i) = values[i];
    }
    for (std::size_t k = 0; k < n; ++k) {
        std::vector<double> v(n);
        double square = 0.0;
        for (double& cell : v) {
            cell = draws.Uniform();
            square += cell * cell;
        }
        Mirror(a, v, square);
        a = Transposed(a);
        Mirror(a, v, square);
    }
    Symmetrize(a);
    return a;
}

std::vector<double> Geometric(std::size_t n, double condition)
{
    std::vector<double> values(n);
    for (std::size_t i = 0; i < n; ++i) {
        const double share = n > 1 ? static_cast<double>(i) / static_cast<double>(n - 1) : 0.0;
        values[i] = std::pow(condition, -share);
    }
    return values;
}

enum class Kind
{
    kDefinite,      // positive definite
    kGraded,        // the same, of pivots below any absolute limit
    kIndefinite,    // symmetric and regular
    kSemidefinite,  // singular
    kGeneral        // regular, not symmetric
};

struct Sample
{
    Kind kind;
    DenseBlock cells;
};

// Symmetric matrices of every kind of size n, and general ones.
std::map<std::string, Sample> SamplesOf(std::size_t n, Draws& draws)
{
    std::map<std::string, Sample> samples;
    samples["condition 10"] = {Kind::kDefinite, WithEigenvalues(draws, Geometric(n, 1e1))};
    samples["condition 1e6"] = {Kind::kDefinite, WithEigenvalues(draws, Geometric(n, 1e6))};
    samples["condition 1e12"] = {Kind::kDefinite, WithEigenvalues(draws, Geometric(n, 1e12))};

    DenseBlock graded = WithEigenvalues(draws, Geometric(n, 1e3));
    const std::vector<double> scales = Geometric(n, 1e30);
    for (std::size_t j = 0; j < n; ++j) {
        for (std::size_t i = 0; i < n; ++i) {
            graded(i, j) *= scales[i] * scales[j];
        }
    }
    samples["scales 1 to 1e-30"] = {Kind::kGraded, graded};

    std::vector<double> repeated(n, 1.0);
    for (std::size_t i = 0; i < n; ++i) {
        if (i % 3 == 0) repeated[i] = 4.0;
    }
    samples["two repeated eigenvalues"] = {Kind::kDefinite, WithEigenvalues(draws, repeated)};

    std::vector<double> mixed = Geometric(n, 1e8);
    for (std::size_t i = 1; i < n; i += 2) {
        mixed[i] = -mixed[i];
    }
    samples["indefinite, condition 1e8"] = {Kind::kIndefinite, WithEigenvalues(draws, mixed)};
    DenseBlock exchange(n, n);
    for (std::size_t i = 0; i < n; ++i) {
        exchange(i, n - 1 - i) = 1.0;
    }
    samples["exchange"] = {Kind::kIndefinite, exchange};

    samples["zero"] = {Kind::kSemidefinite, DenseBlock(n, n)};
    DenseBlock one(n, n);
    std::vector<double> v(n);
    for (double& cell : v) {
        cell = draws.Uniform();
    }
    for (std::size_t j = 0; j < n; ++j) {
        for (std::size_t i = 0; i < n; ++i) {
            one(i, j) = v[i] * v[j];
        }
    }
    samples["rank 1"] = {Kind::kSemidefinite, one};
    DenseBlock half = draws.Matrix(n);
    for (std::size_t j = 0; j < n; ++j) {
        if (j % 2 == 1) std::copy_n(half.Column(j - 1), n, half.Column(j));
    }
    samples["every column twice"] = {Kind::kSemidefinite, Product(Transposed(half), half)};
    samples["random"] = {Kind::kGeneral, draws.Matrix(n)};
    return samples;
}

using Measure = std::function<double(const DenseBlock&)>;

double Units(double residual, double scale, std::size_t n)
{
    if (residual == 0.0) return 0.0;
    return residual / (scale * static_cast<double>(n) * kEps);
}

matrix<double> MatrixOf(const DenseBlock& block)
{
    matrix<double> copy(static_cast<int>(block.rows), static_cast<int>(block.cols));
    StoreBlock(block, copy);
    return copy;
}

DenseBlock BlockOf(const matrix<double>& m)
{
    return LeadingBlock(m, m.rows, m.cols);
}

double InverseUnits(const DenseBlock& a, const DenseBlock& inverse)
{
    const DenseBlock residual = Difference(Product(a, inverse), Identity(a.rows));
    return Units(Norm(residual), Norm(a) * Norm(inverse), a.rows);
}

// A G A = A; a singular block.
double GeneralizedUnits(const DenseBlock& a, const DenseBlock& g)
{
    const DenseBlock residual = Difference(Product(Product(a, g), a), a);
    return Units(Norm(residual), Norm(a) * Norm(g) * Norm(a), a.rows);
}

double FactorUnits(const DenseBlock& a, const DenseBlock& factor)
{
    const DenseBlock residual = Difference(Product(factor, Transposed(factor)), a);
    return Units(Norm(residual), Norm(a), a.rows);
}

double OfGauss(const DenseBlock& a)
{
    matrix<double> A = MatrixOf(a);
    matrix<double> B(A.rows, 2, 1.0);
    for (int i = 1; i <= A.rows; ++i) {
        B.vbset(i, 2, 1.0 / i);
    }
    const DenseBlock b = BlockOf(B);
    if (M_Gauss(&A, A.rows, 2, &B, kTrue, kTrue) != 0) return HUGE_VAL;
    const DenseBlock x = BlockOf(B);
    return Units(Norm(Difference(Product(a, x), b)), Norm(a) * Norm(x), a.rows);
}

double OfInverseWithTolerance(const DenseBlock& a)
{
    matrix<double> A = MatrixOf(a);
    matrix<double>* inverse = nullptr;
    short failed = 0;
    if (InverseWithTolerance(&A, inverse, failed, 0.0) != 0) return HUGE_VAL;
    const double units = InverseUnits(a, BlockOf(*inverse));
    delete inverse;
    return units;
}

double OfConstrained(const DenseBlock& a, bool singular)
{
    matrix<double> A = MatrixOf(a);
    matrix<double> inverse(A.rows, A.rows);
    const int result = cCleanConstraintsAndInvert(A.rows, static_cast<matrix<int>*>(nullptr), &A, &inverse);
    if ((result != 0) != singular) return HUGE_VAL;
    return singular ? GeneralizedUnits(a, BlockOf(inverse)) : InverseUnits(a, BlockOf(inverse));
}

double OfGeneralized(const DenseBlock& a)
{
    matrix<double> A = MatrixOf(a);
    matrix<double> G(A.rows, A.rows);
    int rank = 0;
    if (M_InvGeneralized(&A, A.rows, &G, 1e-13, rank) != 0) return HUGE_VAL;
    return GeneralizedUnits(a, BlockOf(G));
}

double OfSelective(const DenseBlock& a)
{
    matrix<double> A = MatrixOf(a);
    matrix<double> G(A.rows, A.rows);
    matrix<int> all(A.rows, 1, 1);
    M_InverseG2Selective(&A, A.rows, &all, 1e-13, &G, kTrue);
    return GeneralizedUnits(a, BlockOf(G));
}

double OfCholesky(const DenseBlock& a)
{
    matrix<double> A = MatrixOf(a);
    matrix<double>* L = nullptr;
    const bool failed = M_CholDecomp(&A, A.rows, L) != 0;
    const double units = failed ? HUGE_VAL : FactorUnits(a, BlockOf(*L));
    delete L;
    return units;
}

double OfPivotedCholesky(const DenseBlock& a)
{
    matrix<double> A = MatrixOf(a);
    matrixSparse sparse(&A);
    matrixSparse L;
    if (M_CholDecompPrinc(&sparse, A.rows, &L, nullptr, kTrue) != 0) return HUGE_VAL;
    L.outputSparse(&A);
    return FactorUnits(a, BlockOf(A));
}

double OfSweep(const DenseBlock& a)
{
    const auto n = static_cast<int>(a.rows);
    matrix<double> packed(static_cast<int>(PackedSize(a.rows)), 1);
    for (int i = 1; i <= n; ++i) {
        for (int j = 1; j <= i; ++j) {
            packed.vbset(static_cast<int>(PackedPosition(i, j)),
                         a(static_cast<std::size_t>(i - 1), static_cast<std::size_t>(j - 1)));
        }
    }
    for (int k = 1; k <= n; ++k) {
        M_Sweep(&packed, n, k);
    }
    DenseBlock inverse(a.rows, a.cols);
    for (int i = 1; i <= n; ++i) {
        for (int j = 1; j <= n; ++j) {
            inverse(static_cast<std::size_t>(i - 1), static_cast<std::size_t>(j - 1)) =
                -packed.vbget(static_cast<int>(PackedPosition(i, j)));
        }
    }
    return InverseUnits(a, inverse);
}

double OfNewton(const DenseBlock& a)
{
    const auto n = static_cast<int>(a.rows);
    DenseBlock hessian = a;
    matrix<double> H = MatrixOf(hessian);
    matrix<double> beta(n, 1);
    matrix<double> gradient(n, 1);
    matrix<double> work(n, 1);
    matrix<double> inverse(n, n);
    for (int i = 1; i <= n; ++i) {
        gradient.vbset(i, 1.0 / i - 0.4);
    }
    const int result = cNewtonRaphson(&beta,
                                      n,
                                      static_cast<matrix<int>*>(nullptr),
                                      &gradient,
                                      &H,
                                      1e-6,
                                      &work,
                                      &inverse,
                                      0,
                                      0.5);
    if (result != 0) return HUGE_VAL;
    const DenseBlock moved = BlockOf(beta);  // minus the solution
    DenseBlock residual = Product(a, moved);
    for (std::size_t i = 0; i < residual.rows; ++i) {
        residual(i, 0) += gradient.vbget(static_cast<int>(i) + 1);
    }
    return Units(Norm(residual), Norm(a) * Norm(moved), a.rows);
}

double OfEigen(const DenseBlock& a, bool orthogonality)
{
    DenseBlock symmetric = a;
    Symmetrize(symmetric);
    EigenPairs pairs;
    if (DecomposeSymmetric(symmetric, EigenOrder::kByValue, pairs) != 0) return HUGE_VAL;
    if (orthogonality) {
        const DenseBlock form = Product(Transposed(pairs.vectors), pairs.vectors);
        return Units(Norm(Difference(form, Identity(a.rows))), 1.0, a.rows);
    }
    DenseBlock scaled = pairs.vectors;
    for (std::size_t j = 0; j < scaled.cols; ++j) {
        for (std::size_t i = 0; i < scaled.rows; ++i) {
            scaled(i, j) *= pairs.values[j];
        }
    }
    const DenseBlock residual = Difference(Product(symmetric, pairs.vectors), scaled);
    return Units(Norm(residual), Norm(symmetric), a.rows);
}

double OfSquareRoot(const DenseBlock& a)
{
    matrix<double> A = MatrixOf(a);
    matrixSparse sparse(&A);
    matrix<double> root(A.rows, A.rows);
    if (M_SquareRoot(&sparse, A.rows, &root) != 0) return HUGE_VAL;
    const DenseBlock s = BlockOf(root);
    return Units(Norm(Difference(Product(s, s), a)), Norm(a), a.rows);
}

struct Row
{
    const char* operation;
    const char* residual;
    std::vector<Kind> kinds;
    Measure measure;
};

std::vector<Row> Rows()
{
    using enum Kind;
    const std::vector<Kind> definite = {kDefinite, kGraded};
    const std::vector<Kind> symmetric = {kDefinite, kGraded, kIndefinite};
    const std::vector<Kind> regular = {kDefinite, kGraded, kIndefinite, kGeneral};
    const std::vector<Kind> every = {kDefinite, kGraded, kIndefinite, kSemidefinite, kGeneral};
    const std::vector<Kind> semidefinite = {kDefinite, kGraded, kSemidefinite};
    return {
        {"M_Gauss", "A X - B", regular, OfGauss},
        {"InverseWithTolerance, smallest limit",
         "A X - I",
         {kDefinite, kIndefinite, kGeneral},
         OfInverseWithTolerance},
        {"cCleanConstraintsAndInvert",
         "A X - I",
         symmetric,
         [](const DenseBlock& a) { return OfConstrained(a, false); }},
        {"cCleanConstraintsAndInvert, singular",
         "A G A - A",
         {kSemidefinite},
         [](const DenseBlock& a) { return OfConstrained(a, true); }},
        {"cNewtonRaphson", "H step - g", symmetric, OfNewton},
        {"M_InvGeneralized", "A G A - A", every, OfGeneralized},
        {"M_InverseG2Selective", "A G A - A", semidefinite, OfSelective},
        {"M_Sweep of all columns", "A X - I", definite, OfSweep},
        {"M_CholDecomp", "L L' - A", definite, OfCholesky},
        {"M_CholDecompPrinc", "L L' - A", semidefinite, OfPivotedCholesky},
        {"M_SquareRoot", "S S - A", semidefinite, OfSquareRoot},
        {"M_Eigen", "A V - V D", every, [](const DenseBlock& a) { return OfEigen(a, false); }},
        {"M_Eigen", "V'V - I", every, [](const DenseBlock& a) { return OfEigen(a, true); }},
    };
}

}  // namespace

int main()
{
    std::printf("| operation | residual | worst, in units | at |\n|---|---|---|---|\n");
    bool good = true;
    std::vector<std::pair<std::size_t, std::map<std::string, Sample>>> samples;
    Draws draws;
    for (const std::size_t n : kSizes) {
        samples.emplace_back(n, SamplesOf(n, draws));
    }
    for (const Row& row : Rows()) {
        double worst = 0.0;
        std::string where = "-";
        for (const auto& [n, named] : samples) {
            for (const auto& [name, sample] : named) {
                if (std::ranges::find(row.kinds, sample.kind) == row.kinds.end()) continue;
                if (n == 1 && (name == "every column twice" || name == "rank 1")) continue;  // regular
                const double units = row.measure(sample.cells);
                if (!(units <= worst)) {
                    worst = units;
                    where = name + ", n = " + std::to_string(n);
                }
            }
        }
        std::printf("| %s | %s | %.2f | %s |\n", row.operation, row.residual, worst, where.c_str());
        std::fflush(stdout);
        good = good && worst < 30.0;
    }
    return good ? 0 : 1;
}
