#include "linear/type_iii_estimable.h"

#include <algorithm>
#include <cmath>
#include <vector>

#include "core/limits.h"
#include "kernel/linalg/elimination.h"
#include "kernel/linalg/g2_sweep.h"
#include "kernel/linalg/inverse_products.h"
#include "kernel/linalg/products.h"
#include "linear/factor_description.h"
#include "linear/type_table_rows.h"

namespace korvenrg::linear {

namespace {

// Pivots below this are refused by the g2 inverse.
constexpr double kSmallestPivot = 1E-6;

// Diagonal cells of G and multipliers at or below this count as 0.
constexpr double kNothing = 1E-12;

struct Factors
{
    int count;
    const matrix<int>& active;
    const matrix<double>& askedFor;
    const matrix<int>& type;
    const matrix<int>& nbVars;
    const matrix<int>& listVars;
    const matrix<int>& parents;
};

bool ListsFirstVariableOf(const Factors& factors, int g, int f)
{
    for (int v = 1; v <= factors.nbVars.vbget(g); ++v) {
        if (factors.listVars.vbget(g, v) == factors.listVars.vbget(f, 1)) return true;
    }
    return false;
}

// Whether a later factor of the model as asked for shares the first variable of f.
bool MayBeContained(const Factors& factors, int f)
{
    for (int g = f + 1; g <= factors.count; ++g) {
        if (factors.askedFor.vbget(g) == 1.0 && ListsFirstVariableOf(factors, g, f)) return true;
    }
    return false;
}

bool Contains(const Factors& factors, int g, int f)
{
    const int typeF = factors.type.vbget(f);
    const int typeG = factors.type.vbget(g);
    const bool isQualitative = typeF == kQualitative || typeF == kQualitativeInteraction;
    const bool kindsMatch = isQualitative ? typeG == kQualitativeInteraction : typeG == kMixedInteraction;
    return kindsMatch && factors.nbVars.vbget(g) > factors.nbVars.vbget(f) &&
           ListsFirstVariableOf(factors, g, f);
}

// The columns in the order that puts f behind what is unrelated to it and before what contains it.
struct ColumnOrder
{
    std::vector<int> positions;  // in the cross-products, from 1: the intercept first, the response last
    int unrelated = 0;
    int ofFactor = 0;
};

ColumnOrder OrderFor(const Factors& factors, int p, int f)
{
    std::vector<int> unrelated;
    std::vector<int> own;
    std::vector<int> containing;
    for (int j = 1; j <= p; ++j) {
        const int g = factors.parents.vbget(j);
        std::vector<int>& group = g == f ? own : Contains(factors, g, f) ? containing : unrelated;
        group.push_back(j + 1);
    }
    ColumnOrder order{.positions = {1},
                      .unrelated = static_cast<int>(unrelated.size()),
                      .ofFactor = static_cast<int>(own.size())};
    for (const std::vector<int>* group : {&unrelated, &own, &containing}) {
        order.positions.insert(order.positions.end(), group->begin(), group->end());
    }
    order.positions.push_back(p + 2);
    return order;
}

matrix<double> Reordered(const matrix<double>& crossProducts, const ColumnOrder& order)
{
    const int size = static_cast<int>(order.positions.size());
    matrix<double> A(size, size);
    for (int j = 1; j <= size; ++j) {
        for (int i = 1; i <= size; ++i) {
            A.vbset(i,
                    j,
                    crossProducts.vbget(order.positions[static_cast<std::size_t>(i - 1)],
                                        order.positions[static_cast<std::size_t>(j - 1)]));
        }
    }
    return A;
}

// A g2 inverse of all columns but the response, and the solution that it leaves in the response's column.
struct Solution
{
    matrix<double> inverse;       // (p+2) x (p+2), row and column of the response 0
    matrix<double> coefficients;  // p+1
};

Solution Solve(matrix<double>& A)
{
    const int size = A.rows;
    matrix<int> selection(size, 1, 1);
    selection.vbset(size, 0);
    Solution solution{{size, size}, {size - 1, 1}};
    M_InverseG2Selective(&A, size, &selection, kSmallestPivot, &solution.inverse, kFalse);
    for (int i = 1; i < size; ++i) {
        solution.coefficients.vbset(i, solution.inverse.vbget(i, size));
    }
    for (int i = 1; i <= size; ++i) {
        solution.inverse.vbset(i, size, 0.0);
        solution.inverse.vbset(size, i, 0.0);
    }
    return solution;
}

// Functions of the coefficients, one row each: first those of f, then those of the factors that contain it.
struct Functions
{
    matrix<double> rows;  // (at most p) x (p+1)
    int ofFactor = 0;
    int ofContaining = 0;
};

// Row j of H = G A from the diagonal on, for each column j behind the unrelated ones that G has inverted.
Functions GenerateFunctions(const matrix<double>& A, const Solution& solution, const ColumnOrder& order)
{
    const int last = A.rows - 1;  // the last column before the response
    Functions functions{.rows = {last, last}};
    int row = 0;
    for (int j = order.unrelated + 2; j <= last; ++j) {
        if (!(std::fabs(solution.inverse.vbget(j, j)) > kNothing)) continue;
        row += 1;
        for (int c = j; c <= last; ++c) {
            double cell = 0.0;
            for (int k = 1; k <= last; ++k) {
                cell += solution.inverse.vbget(j, k) * A.vbget(k, c);
            }
            functions.rows.vbset(row, c, cell);
        }
        const bool isOwn = j <= order.unrelated + 1 + order.ofFactor;
        (isOwn ? functions.ofFactor : functions.ofContaining) += 1;
    }
    return functions;
}

// Product of two rows over the columns from the one on that belongs to the later row.
double ProductOfRows(const matrix<double>& L, int a, int b, int unrelated)
{
    double sum = 0.0;
    for (int c = std::max(a, b) + unrelated + 1; c <= L.cols; ++c) {
        sum += L.vbget(a, c) * L.vbget(b, c);
    }
    return sum;
}

// Takes out of the rows of f what they share with the rows of the containing factors.
void OrthogonaliseFunctions(Functions& functions, int unrelated)
{
    const int nf = functions.ofFactor;
    const int nc = functions.ofContaining;
    if (nc == 0) return;
    matrix<double>& L = functions.rows;
    matrix<double> K(nc, nc);
    matrix<double> multipliers(nc, std::max(nf, 1));
    for (int a = 1; a <= nc; ++a) {
        for (int b = 1; b <= nc; ++b) {
            K.vbset(a, b, ProductOfRows(L, nf + a, nf + b, unrelated));
        }
        for (int i = 1; i <= nf; ++i) {
            multipliers.vbset(a, i, -ProductOfRows(L, i, nf + a, unrelated));
        }
    }
    if (M_Gauss(&K, nc, nf, &multipliers, kTrue, kTrue) != 0) return;
    for (int i = 1; i <= nf; ++i) {
        for (int a = 1; a <= nc; ++a) {
            const double multiplier = multipliers.vbget(a, i);
            if (!(std::fabs(multiplier) > kNothing)) continue;
            for (int c = std::max(i, nf + a) + unrelated + 1; c <= L.cols; ++c) {
                L.vbset(i, c, L.vbget(i, c) + multiplier * L.vbget(nf + a, c));
            }
        }
    }
}

// (L b)' (L G L')^-1 (L b), in units of the standardised response.
double QuadraticForm(Functions& functions, Solution& solution)
{
    const int nf = functions.ofFactor;
    const int columns = functions.rows.cols;
    matrix<double> covariance(nf, nf);
    matrix<double> values(nf, 1);
    M_ProductABTrA(&functions.rows, nf, columns, &solution.inverse, kTrue, &covariance);
    M_ProductBV(&functions.rows, nf, columns, &solution.coefficients, &values);
    return M_ProductTrVinvBV(&values, nf, &covariance);
}

}  // namespace

}  // namespace korvenrg::linear

using namespace korvenrg::linear;

// For each active factor that a later one may contain:
//   - reorder the cross-products
//   - solve by a g2 inverse
//   - generate the functions of the factor and of those that contain it
//   - make the first orthogonal to the second
//   - write the quadratic form of what is left
void OLSGetTypeIIIEstimable(matrix<double>* crossProducts,
                            int p,
                            double varY,
                            double dfE,
                            double MSE,
                            int NbFactors,
                            matrix<int>* FactActive,
                            matrix<double>* origActive,
                            matrix<int>* FactType,
                            matrix<int>* FactNbVars,
                            matrix<int>* FactListVars,
                            matrix<int>* FactSubParents,
                            matrix<double>* oTypeIIISSTable)
{
    const Factors
        factors{NbFactors, *FactActive, *origActive, *FactType, *FactNbVars, *FactListVars, *FactSubParents};
    TypeTable table{*oTypeIIISSTable};
    for (int f = 1; f <= NbFactors; ++f) {
        const bool isActive = factors.active.vbget(f) == 1;
        if (!isActive || !MayBeContained(factors, f)) {
            if (isActive || factors.askedFor.vbget(f) == 1.0) table.row += 1;  // keeps the row of Type II
            continue;
        }
        const ColumnOrder order = OrderFor(factors, p, f);
        matrix<double> A = Reordered(*crossProducts, order);
        Solution solution = Solve(A);
        Functions functions = GenerateFunctions(A, solution, order);
        OrthogonaliseFunctions(functions, order.unrelated);
        if (functions.ofFactor < 1) {
            table.WriteEmpty();
        } else {
            const double sumOfSquares = QuadraticForm(functions, solution) * varY;
            table.WriteTest(functions.ofFactor, sumOfSquares, dfE, MSE, korvenrg::kEps);
        }
    }
}
