#include "kernel/linalg/row_forms.h"

#include <algorithm>
#include <cmath>
#include <optional>
#include <vector>

#include "kernel/linalg/lanes.h"

namespace korvenrg::linalg {

namespace {

// Rows of one block; its centred columns stay in the cache.
constexpr std::size_t kBlockRows = 128;

// Columns of the factor are padded with zero columns to a multiple of this, the widest tile.
constexpr std::size_t kTile = 4;

// F, by columns, of padded x padded cells; z' M z is the sum of (F'z)_j^2 for a triangular F with M = F F',
// and the sum of z_j (F'z)_j for F = M itself.
struct Factor
{
    std::size_t size;
    std::size_t padded;
    bool triangular;
    std::vector<double> cells;
};

// Lower Cholesky factor of the leading q x q cells, or nothing when a pivot is not positive.
std::optional<std::vector<double>> CholeskyFactor(const double* form, std::size_t q, std::size_t padded)
{
    std::vector<double> factor(padded * padded);
    for (std::size_t j = 0; j < q; ++j) {
        double* column = factor.data() + j * padded;
        std::copy(form + j * q + j, form + (j + 1) * q, column + j);
        for (std::size_t k = 0; k < j; ++k) {
            const double* earlier = factor.data() + k * padded;
            const double multiplier = earlier[j];
            for (std::size_t i = j; i < q; ++i) {
                column[i] -= multiplier * earlier[i];
            }
        }
        if (!(column[j] > 0.0) || !std::isfinite(column[j])) return std::nullopt;
        const double scale = std::sqrt(column[j]);
        for (std::size_t i = j; i < q; ++i) {
            column[i] /= scale;
        }
    }
    return factor;
}

bool IsSymmetric(const double* form, std::size_t q)
{
    for (std::size_t j = 0; j < q; ++j) {
        for (std::size_t i = 0; i < j; ++i) {
            if (form[j * q + i] != form[i * q + j]) return false;
        }
    }
    return true;
}

Factor FactorOf(const double* form, std::size_t q)
{
    const std::size_t padded = RoundUp(q, kTile);
    if (IsSymmetric(form, q)) {
        if (auto cells = CholeskyFactor(form, q, padded)) return {q, padded, true, std::move(*cells)};
    }
    std::vector<double> cells(padded * padded);
    for (std::size_t j = 0; j < q; ++j) {
        std::copy(form + j * q, form + (j + 1) * q, cells.data() + j * padded);
    }
    return {q, padded, false, std::move(cells)};
}

// For the rows of kDepth lanes from `row` on: adds kWidth terms of the form, those of factor columns j and
// following.
template <std::size_t kWidth, std::size_t kDepth>
[[gnu::always_inline]] inline void AddTerms(const double* block,
                                            const Factor& factor,
                                            std::size_t j,
                                            double* forms)
{
    Lanes terms[kWidth][kDepth] = {};
    for (std::size_t i = factor.triangular ? j : 0; i < factor.size; ++i) {
        Lanes cells[kDepth];
        for (std::size_t d = 0; d < kDepth; ++d) {
            cells[d] = LoadLanes(block + i * kBlockRows + d * kLanes);
        }
        for (std::size_t k = 0; k < kWidth; ++k) {
            const double multiplier = factor.cells[(j + k) * factor.padded + i];
            for (std::size_t d = 0; d < kDepth; ++d) {
                terms[k][d] += multiplier * cells[d];
            }
        }
    }
    for (std::size_t k = 0; k < kWidth; ++k) {
        for (std::size_t d = 0; d < kDepth; ++d) {
            const Lanes other =
                factor.triangular ? terms[k][d] : LoadLanes(block + (j + k) * kBlockRows + d * kLanes);
            StoreLanes(LoadLanes(forms + d * kLanes) + terms[k][d] * other, forms + d * kLanes);
        }
    }
}

template <std::size_t kWidth, std::size_t kDepth>
[[gnu::always_inline]] inline void FormsOfBlock(Columns columns,
                                                std::size_t first,
                                                std::size_t n,
                                                const double* centres,
                                                const Factor& factor,
                                                double* block,
                                                double* out)
{
    double forms[kBlockRows] = {};
    for (std::size_t j = 0; j < factor.size; ++j) {
        const double* column = columns[j] + first;
        for (std::size_t row = 0; row < n; ++row) {
            block[j * kBlockRows + row] = column[row] - centres[j];
        }
    }
    for (std::size_t row = 0; row < n; row += kDepth * kLanes) {
        for (std::size_t j = 0; j < factor.padded; j += kWidth) {
            AddTerms<kWidth, kDepth>(block + row, factor, j, forms + row);
        }
    }
    std::copy(forms, forms + n, out + first);
}

using FormsFunction = void(Columns, std::size_t, std::size_t, const double*, const Factor&, double*, double*);

KORVEN_FOR_AVX512 void FormsAvx512(Columns columns,
                                   std::size_t first,
                                   std::size_t n,
                                   const double* centres,
                                   const Factor& factor,
                                   double* block,
                                   double* out)
{
    FormsOfBlock<4, 4>(columns, first, n, centres, factor, block, out);
}

KORVEN_FOR_AVX2 void FormsAvx2(Columns columns,
                               std::size_t first,
                               std::size_t n,
                               const double* centres,
                               const Factor& factor,
                               double* block,
                               double* out)
{
    FormsOfBlock<4, 1>(columns, first, n, centres, factor, block, out);
}

void FormsBaseline(Columns columns,
                   std::size_t first,
                   std::size_t n,
                   const double* centres,
                   const Factor& factor,
                   double* block,
                   double* out)
{
    FormsOfBlock<2, 1>(columns, first, n, centres, factor, block, out);
}

FormsFunction* BestForms()
{
    switch (BestInstructionSet()) {
        case InstructionSet::kAvx512:
            return FormsAvx512;
        case InstructionSet::kAvx2:
            return FormsAvx2;
        default:
            return FormsBaseline;
    }
}

// Adds kCombined columns at a time, one after the other in each row, so that the sum is that of single columns.
[[gnu::always_inline]] inline void CombineBody(Columns columns,
                                               std::size_t first,
                                               std::size_t rows,
                                               const double* coefficients,
                                               double* out)
{
    constexpr std::size_t kCombined = 4;
    std::size_t j = 0;
    for (; j + kCombined <= columns.size(); j += kCombined) {
        const double* x0 = columns[j] + first;
        const double* x1 = columns[j + 1] + first;
        const double* x2 = columns[j + 2] + first;
        const double* x3 = columns[j + 3] + first;
        for (std::size_t row = 0; row < rows; ++row) {
            double sum = out[row] + x0[row] * coefficients[j];
            sum += x1[row] * coefficients[j + 1];
            sum += x2[row] * coefficients[j + 2];
            out[row] = sum + x3[row] * coefficients[j + 3];
        }
    }
    for (; j < columns.size(); ++j) {
        const double* column = columns[j] + first;
        for (std::size_t row = 0; row < rows; ++row) {
            out[row] += column[row] * coefficients[j];
        }
    }
}

using CombineFunction = void(Columns, std::size_t, std::size_t, const double*, double*);

KORVEN_FOR_AVX512 void CombineAvx512(Columns columns,
                                     std::size_t first,
                                     std::size_t rows,
                                     const double* coefficients,
                                     double* out)
{
    CombineBody(columns, first, rows, coefficients, out);
}

KORVEN_FOR_AVX2 void CombineAvx2(Columns columns,
                                 std::size_t first,
                                 std::size_t rows,
                                 const double* coefficients,
                                 double* out)
{
    CombineBody(columns, first, rows, coefficients, out);
}

void CombineBaseline(Columns columns,
                     std::size_t first,
                     std::size_t rows,
                     const double* coefficients,
                     double* out)
{
    CombineBody(columns, first, rows, coefficients, out);
}

CombineFunction* BestCombine()
{
    switch (BestInstructionSet()) {
        case InstructionSet::kAvx512:
            return CombineAvx512;
        case InstructionSet::kAvx2:
            return CombineAvx2;
        default:
            return CombineBaseline;
    }
}

}  // namespace

void LinearCombination(Columns columns, int n, const double* coefficients, double constant, double* out)
{
    const auto rows = static_cast<std::size_t>(std::max(n, 0));
    CombineFunction* combine = BestCombine();
    for (std::size_t first = 0; first < rows; first += kBlockRows) {
        const std::size_t count = std::min(kBlockRows, rows - first);
        std::fill_n(out + first, count, constant);
        combine(columns, first, count, coefficients, out + first);
    }
}

void QuadraticForms(Columns columns, int n, const double* centres, const double* form, double* out)
{
    const auto rows = static_cast<std::size_t>(std::max(n, 0));
    const Factor factor = FactorOf(form, columns.size());
    std::vector<double> block(factor.padded * kBlockRows);
    FormsFunction* formsOfBlock = BestForms();
    for (std::size_t first = 0; first < rows; first += kBlockRows) {
        formsOfBlock(columns, first, std::min(kBlockRows, rows - first), centres, factor, block.data(), out);
    }
}

}  // namespace korvenrg::linalg
