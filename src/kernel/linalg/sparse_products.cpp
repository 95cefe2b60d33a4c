#include "kernel/linalg/sparse_products.h"

#include <algorithm>
#include <utility>
#include <vector>

#include "core/limits.h"
#include "kernel/linalg/copies.h"

using korvenrg::kTrue;
using korvenrg::linalg::EnsureShape;

namespace {

using Cell = matrixSparse::Cell;
using Column = matrixSparse::Column;
using Columns = std::vector<Column>;

constexpr int kDone = 0;
constexpr int kBadSize = -1;

// The stored cells of column j that lie in the first `rows` rows; none when the column does not exist.
Column LeadingCells(const matrixSparse& matrix, int j, int rows)
{
    if (j >= matrix.Cols()) return {};
    Column cells = matrix.CellsOf(j);
    while (!cells.empty() && cells.back().row >= rows) {
        cells.pop_back();
    }
    return cells;
}

// Sums cells by row: a dense column of sums and the list of the rows that were met.
class ColumnSum
{
  public:
    explicit ColumnSum(int rows) : sums_(static_cast<std::size_t>(rows)), met_(static_cast<std::size_t>(rows))
    {
    }

    void Add(const Column& cells, double multiplier)
    {
        for (const Cell& cell : cells) {
            const auto row = static_cast<std::size_t>(cell.row);
            if (!met_[row]) rows_.push_back(cell.row);
            met_[row] = true;
            sums_[row] += multiplier * cell.value;
        }
    }

    // The cells so far, rows ascending; starts anew.
    Column Take()
    {
        std::ranges::sort(rows_);
        Column cells;
        for (const int row : rows_) {
            const auto position = static_cast<std::size_t>(row);
            cells.push_back({row, sums_[position]});
            sums_[position] = 0.0;
            met_[position] = false;
        }
        rows_.clear();
        return cells;
    }

  private:
    std::vector<double> sums_;
    std::vector<bool> met_;
    std::vector<int> rows_;
};

Columns LeadingColumns(const matrixSparse& matrix, int rows, int cols)
{
    Columns columns;
    for (int j = 0; j < cols; ++j) {
        columns.push_back(LeadingCells(matrix, j, rows));
    }
    return columns;
}

Columns TransposeOf(const Columns& columns, int rows)
{
    Columns transposed(static_cast<std::size_t>(rows));
    for (std::size_t j = 0; j < columns.size(); ++j) {
        for (const Cell& cell : columns[j]) {
            transposed[static_cast<std::size_t>(cell.row)].push_back({static_cast<int>(j), cell.value});
        }
    }
    return transposed;
}

// Left times right; column j of the product is the sum of left's columns, weighted by the cells of right's column j.
Columns ProductOf(const Columns& left, int rows, const Columns& right)
{
    ColumnSum sum(rows);
    Columns product;
    for (const Column& column : right) {
        for (const Cell& cell : column) {
            sum.Add(left[static_cast<std::size_t>(cell.row)], cell.value);
        }
        product.push_back(sum.Take());
    }
    return product;
}

// Makes a square exactly symmetric: what stands below the diagonal counts.
Columns MirroredLowerTriangle(const Columns& square)
{
    Columns lower;
    for (std::size_t j = 0; j < square.size(); ++j) {
        Column cells = square[j];
        std::erase_if(cells, [j](const Cell& cell) { return cell.row < static_cast<int>(j); });
        lower.push_back(std::move(cells));
    }
    Columns mirrored = TransposeOf(lower, static_cast<int>(square.size()));
    for (std::size_t j = 0; j < square.size(); ++j) {
        const bool hasDiagonal = !lower[j].empty() && lower[j].front().row == static_cast<int>(j);
        mirrored[j].insert(mirrored[j].end(), lower[j].begin() + (hasDiagonal ? 1 : 0), lower[j].end());
    }
    return mirrored;
}

void Write(Columns columns, int rows, matrixSparse* out)
{
    out->Redim(rows, static_cast<int>(columns.size()), 0.0);
    for (std::size_t j = 0; j < columns.size(); ++j) {
        out->PutColumn(static_cast<int>(j), std::move(columns[j]));
    }
}

void WriteOutput(Columns columns, int rows, matrixSparse*& out)
{
    if (out == nullptr) out = new matrixSparse();
    Write(std::move(columns), rows, out);
}

}  // namespace

int M_ProductAB(matrixSparse* A, int ra, int ca, matrixSparse* B, int cb, matrixSparse*& C)
{
    if (ra < 0 || ca < 0 || cb < 0) return kBadSize;
    WriteOutput(ProductOf(LeadingColumns(*A, ra, ca), ra, LeadingColumns(*B, ca, cb)), ra, C);
    return kDone;
}

int M_ProductAB(matrixSparse* A, int ra, int ca, matrix<double>* B, int cb, matrix<double>*& C)
{
    if (ra < 0 || ca < 0 || cb < 0) return kBadSize;
    const Columns left = LeadingColumns(*A, ra, ca);
    matrix<double> product(ra, cb);
    for (int j = 1; j <= cb; ++j) {
        for (int k = 1; k <= ca; ++k) {
            const double multiplier = B->vbget(k, j);
            for (const Cell& cell : left[static_cast<std::size_t>(k - 1)]) {
                product.vbset(cell.row + 1, j, product.vbget(cell.row + 1, j) + cell.value * multiplier);
            }
        }
    }
    EnsureShape(C, ra, cb);
    M_Duplicate(&product, ra, cb, C, 1, 1, 1, 1);
    return kDone;
}

int M_ProductATrB(matrixSparse* A, int ra, int ca, matrixSparse* B, int rb, matrixSparse*& C)
{
    if (ra < 0 || ca < 0 || rb < 0) return kBadSize;
    const Columns right = TransposeOf(LeadingColumns(*B, rb, ca), rb);
    WriteOutput(ProductOf(LeadingColumns(*A, ra, ca), ra, right), ra, C);
    return kDone;
}

int M_ProductTrAB(matrixSparse* A, int ra, int ca, matrixSparse* B, int cb, matrixSparse*& C)
{
    if (ra < 0 || ca < 0 || cb < 0) return kBadSize;
    const Columns left = TransposeOf(LeadingColumns(*A, ra, ca), ra);
    WriteOutput(ProductOf(left, ca, LeadingColumns(*B, ra, cb)), ca, C);
    return kDone;
}

int M_ProductATrA(matrixSparse* A, int ra, int ca, matrixSparse*& C)
{
    return M_ProductATrB(A, ra, ca, A, ra, C);
}

int M_ProductTrAA(matrixSparse* A, int ra, int ca, matrixSparse*& C)
{
    return M_ProductTrAB(A, ra, ca, A, ca, C);
}

int M_ProductABC(matrixSparse* A,
                 int ra,
                 int ca,
                 matrixSparse* B,
                 int cb,
                 matrixSparse* C,
                 int cc,
                 matrixSparse* D)
{
    if (ra < 0 || ca < 0 || cb < 0 || cc < 0) return kBadSize;
    const Columns left = ProductOf(LeadingColumns(*A, ra, ca), ra, LeadingColumns(*B, ca, cb));
    Write(ProductOf(left, ra, LeadingColumns(*C, cb, cc)), ra, D);
    return kDone;
}

int M_ProductABTrA(matrixSparse* A, int ra, int ca, matrixSparse* B, short flag, matrixSparse* C)
{
    if (ra < 0 || ca < 0) return kBadSize;
    const Columns map = LeadingColumns(*A, ra, ca);
    const Columns left = ProductOf(map, ra, LeadingColumns(*B, ca, ca));
    Columns product = ProductOf(left, ra, TransposeOf(map, ra));
    Write(flag == kTrue ? MirroredLowerTriangle(product) : std::move(product), ra, C);
    return kDone;
}

int M_ProductTrABA(matrixSparse* A, int ra, int ca, matrixSparse* B, short flag, matrixSparse* C)
{
    if (ra < 0 || ca < 0) return kBadSize;
    const Columns map = LeadingColumns(*A, ra, ca);
    const Columns left = ProductOf(TransposeOf(map, ra), ca, LeadingColumns(*B, ra, ra));
    Columns product = ProductOf(left, ca, map);
    Write(flag == kTrue ? MirroredLowerTriangle(product) : std::move(product), ca, C);
    return kDone;
}

int M_ProductBV(matrixSparse* B, int rows, int cols, matrix<double>* v, matrix<double>* out)
{
    if (rows < 0 || cols < 0) return kBadSize;
    std::vector<double> sums(static_cast<std::size_t>(rows));
    for (int j = 0; j < cols; ++j) {
        for (const Cell& cell : LeadingCells(*B, j, rows)) {
            sums[static_cast<std::size_t>(cell.row)] += cell.value * v->vbget(j + 1);
        }
    }
    for (int i = 1; i <= rows; ++i) {
        out->vbset(i, sums[static_cast<std::size_t>(i - 1)]);
    }
    return kDone;
}

int M_ProductTrBV(matrixSparse* B, int rows, int cols, matrix<double>* v, matrix<double>* out)
{
    if (rows < 0 || cols < 0) return kBadSize;
    std::vector<double> sums(static_cast<std::size_t>(cols));
    for (int j = 0; j < cols; ++j) {
        for (const Cell& cell : LeadingCells(*B, j, rows)) {
            sums[static_cast<std::size_t>(j)] += cell.value * v->vbget(cell.row + 1);
        }
    }
    for (int j = 1; j <= cols; ++j) {
        out->vbset(j, sums[static_cast<std::size_t>(j - 1)]);
    }
    return kDone;
}

double M_ProductTrVBV(matrix<double>* v, int n, matrixSparse* B)
{
    double form = 0.0;
    for (int j = 0; j < n; ++j) {
        double product = 0.0;
        for (const Cell& cell : LeadingCells(*B, j, n)) {
            product += v->vbget(cell.row + 1) * cell.value;
        }
        form += product * v->vbget(j + 1);
    }
    return form;
}

void M_ScalarsA(matrixSparse* A, int r, int c, double s, matrixSparse* out)
{
    Columns columns = LeadingColumns(*A, std::max(r, 0), std::max(c, 0));
    for (Column& column : columns) {
        for (Cell& cell : column) {
            cell.value *= s;
        }
    }
    Write(std::move(columns), r, out);
}

void M_ScalarsA2(matrixSparse* A, int r, int c, double s)
{
    for (int j = 0; j < std::min(c, A->Cols()); ++j) {
        Column cells = A->CellsOf(j);
        for (Cell& cell : cells) {
            if (cell.row < r) cell.value *= s;
        }
        A->PutColumn(j, std::move(cells));
    }
}

void M_Sums1As2B(matrixSparse* A, int r, int c, matrixSparse* B, double s1, double s2, matrixSparse*& C)
{
    const int rows = std::max(r, 0);
    ColumnSum sum(rows);
    Columns columns;
    for (int j = 0; j < c; ++j) {
        sum.Add(LeadingCells(*A, j, rows), s1);
        sum.Add(LeadingCells(*B, j, rows), s2);
        columns.push_back(sum.Take());
    }
    WriteOutput(std::move(columns), rows, C);
}
