#include "kernel/linalg/matrix_sparse.h"

#include <algorithm>
#include <cmath>
#include <numeric>
#include <utility>

#include "core/limits.h"

namespace {

// Inverts the n x n matrix `cells`, by columns, in place (Gauss-Jordan with row pivoting). False when a pivot
// is not above `tolerance`.
bool InvertInPlace(std::vector<double>& cells, std::size_t n, double tolerance)
{
    std::vector<std::size_t> pivotRows(n);
    const auto at = [&](std::size_t i, std::size_t j) -> double& { return cells[j * n + i]; };
    for (std::size_t k = 0; k < n; ++k) {
        std::size_t pivotRow = k;
        for (std::size_t i = k + 1; i < n; ++i) {
            if (std::fabs(at(i, k)) > std::fabs(at(pivotRow, k))) pivotRow = i;
        }
        if (!(std::fabs(at(pivotRow, k)) > tolerance)) return false;
        pivotRows[k] = pivotRow;
        for (std::size_t j = 0; j < n; ++j) {
            std::swap(at(k, j), at(pivotRow, j));
        }
        const double pivot = at(k, k);
        at(k, k) = 1.0;
        for (std::size_t j = 0; j < n; ++j) {
            at(k, j) /= pivot;
        }
        for (std::size_t i = 0; i < n; ++i) {
            const double multiplier = at(i, k);
            if (i == k || multiplier == 0.0) continue;
            at(i, k) = 0.0;
            for (std::size_t j = 0; j < n; ++j) {
                at(i, j) -= multiplier * at(k, j);
            }
        }
    }
    for (std::size_t k = n; k-- > 0;) {
        for (std::size_t i = 0; i < n; ++i) {
            std::swap(at(i, k), at(i, pivotRows[k]));
        }
    }
    return true;
}

}  // namespace

matrixSparse::matrixSparse(int rowCount, int colCount, double fill)
{
    Redim(rowCount, colCount, fill);
}

matrixSparse::matrixSparse(matrix<double>* dense)
{
    Redim(dense->rows, dense->cols, 0.0);
    for (int j = 0; j < Cols(); ++j) {
        for (int i = 0; i < rows_; ++i) {
            const double value = dense->getElement(i, j);
            if (value != 0.0) columns_[static_cast<std::size_t>(j)].push_back({i, value});
        }
    }
}

std::size_t matrixSparse::NonZeros() const
{
    return std::accumulate(columns_.begin(),
                           columns_.end(),
                           std::size_t{0},
                           [](std::size_t sum, const Column& column) { return sum + column.size(); });
}

double matrixSparse::getElement(int i, int j) const
{
    if (!Holds(i, j)) return korvenrg::DefaultOutOfRange<double>();
    const Column& column = columns_[static_cast<std::size_t>(j)];
    const auto cell = std::ranges::lower_bound(column, i, {}, &Cell::row);
    return cell != column.end() && cell->row == i ? cell->value : 0.0;
}

void matrixSparse::setElement(int i, int j, double value)
{
    if (!Holds(i, j)) return;
    Column& column = columns_[static_cast<std::size_t>(j)];
    const auto cell = std::ranges::lower_bound(column, i, {}, &Cell::row);
    const bool stored = cell != column.end() && cell->row == i;
    if (stored && value != 0.0) {
        cell->value = value;
    } else if (stored) {
        column.erase(cell);
    } else if (value != 0.0) {
        column.insert(cell, {i, value});
    }
}

void matrixSparse::PutColumn(int j, Column cells)
{
    std::erase_if(cells, [](const Cell& cell) { return cell.value == 0.0; });
    columns_[static_cast<std::size_t>(j)] = std::move(cells);
}

double matrixSparse::vbget(int i) const
{
    return rows_ > 0 && i > 0 ? getElement((i - 1) % rows_, (i - 1) / rows_)
                              : korvenrg::DefaultOutOfRange<double>();
}

void matrixSparse::vbset(int i, double value)
{
    if (rows_ > 0 && i > 0) setElement((i - 1) % rows_, (i - 1) / rows_, value);
}

void matrixSparse::Redim(int rowCount, int colCount, double fill)
{
    rows_ = std::max(rowCount, 0);
    columns_.assign(static_cast<std::size_t>(std::max(colCount, 0)), {});
    if (fill == 0.0) return;
    for (Column& column : columns_) {
        for (int i = 0; i < rows_; ++i) {
            column.push_back({i, fill});
        }
    }
}

void matrixSparse::ReInit()
{
    for (Column& column : columns_) {
        column.clear();
    }
}

std::vector<std::vector<int>> matrixSparse::LinkedBlocks() const
{
    std::vector<int> parent(columns_.size());
    std::iota(parent.begin(), parent.end(), 0);
    const auto root = [&parent](int i) {
        while (parent[static_cast<std::size_t>(i)] != i) {
            int& above = parent[static_cast<std::size_t>(i)];
            above = parent[static_cast<std::size_t>(above)];
            i = above;
        }
        return i;
    };
    for (int j = 0; j < Cols(); ++j) {
        for (const Cell& cell : columns_[static_cast<std::size_t>(j)]) {
            parent[static_cast<std::size_t>(root(cell.row))] = root(j);
        }
    }
    std::vector<std::vector<int>> groups(columns_.size());
    for (int j = 0; j < Cols(); ++j) {
        groups[static_cast<std::size_t>(root(j))].push_back(j);
    }
    std::erase_if(groups, [](const std::vector<int>& group) { return group.empty(); });
    return groups;
}

int matrixSparse::inverse1(matrixSparse* result, short& ok, double tolerance) const
{
    ok = korvenrg::kFalse;
    if (rows_ != Cols()) return -1;
    result->Redim(rows_, rows_, 0.0);
    bool isRegular = true;
    std::vector<std::size_t> positions(columns_.size());  // of an index within its block
    for (const std::vector<int>& block : LinkedBlocks()) {
        const std::size_t n = block.size();
        for (std::size_t k = 0; k < n; ++k) {
            positions[static_cast<std::size_t>(block[k])] = k;
        }
        std::vector<double> cells(n * n);
        for (std::size_t k = 0; k < n; ++k) {
            for (const Cell& cell : columns_[static_cast<std::size_t>(block[k])]) {
                cells[k * n + positions[static_cast<std::size_t>(cell.row)]] = cell.value;
            }
        }
        if (!InvertInPlace(cells, n, tolerance)) {
            isRegular = false;
            continue;
        }
        for (std::size_t k = 0; k < n; ++k) {
            Column& column = result->columns_[static_cast<std::size_t>(block[k])];
            for (std::size_t i = 0; i < n; ++i) {
                if (cells[k * n + i] != 0.0) column.push_back({block[i], cells[k * n + i]});
            }
        }
    }
    ok = korvenrg::AsFlag(isRegular);
    return isRegular ? 0 : -1;
}

void matrixSparse::outputSparse(matrix<double>* dense) const
{
    for (int j = 0; j < Cols(); ++j) {
        for (int i = 0; i < rows_; ++i) {
            if (i < dense->rows && j < dense->cols) dense->vbset(i + 1, j + 1, 0.0);
        }
        for (const Cell& cell : columns_[static_cast<std::size_t>(j)]) {
            if (cell.row < dense->rows && j < dense->cols) dense->vbset(cell.row + 1, j + 1, cell.value);
        }
    }
}

template class matrix3D<matrixSparse>;
