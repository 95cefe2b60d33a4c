/** Result tables for calls through the doors: guarded cells, read by row and column. */
#pragma once

#include <cstring>
#include <vector>

#include "support/guarded_array.h"

namespace korvenrg::test {

using Vector = std::vector<double>;
using Integers = std::vector<int>;

/** Position of a count from 1. */
constexpr size_t At(int i)
{
    return static_cast<size_t>(i - 1);
}

/** A result table behind guards, cells from 1. */
struct Table
{
    int rows, cols;
    GuardedArray<double> cells;

    Table(int r, int c) : rows(r), cols(c), cells(static_cast<size_t>(r * c)) {}
    size_t Position(int r, int c) const
    {
        return At(rows * (c - 1) + r);
    }
    double operator()(int r, int c = 1) const
    {
        return cells[Position(r, c)];
    }
    bool Kept(int r, int c = 1) const
    {
        return cells.IsSentinel(Position(r, c));
    }
    Vector Column(int c) const
    {
        Vector column;
        for (int r = 1; r <= rows; ++r)
            column.push_back((*this)(r, c));
        return column;
    }
};

inline Vector CellsOf(const Table& table)
{
    Vector cells;
    for (int c = 1; c <= table.cols; ++c)
        for (const double cell : table.Column(c))
            cells.push_back(cell);
    return cells;
}

template <class T>
bool SameBytes(const std::vector<T>& a, const std::vector<T>& b)
{
    return a.size() == b.size() && (a.empty() || std::memcmp(a.data(), b.data(), a.size() * sizeof(T)) == 0);
}

}  // namespace korvenrg::test
