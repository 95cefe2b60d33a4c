#include "kernel/contingency/contingency_table.h"

#include <algorithm>

namespace {

// An empty r x c table, in place of what `table` was.
void StartTable(matrix<double>*& table, int r, int c)
{
    if (table == nullptr) {
        table = new matrix<double>(r, c);
    } else if (table->rows != r || table->cols != c) {
        table->Redim(r, c);
    }
    std::fill_n(table->data, table->total, 0.0);
}

/** The category of a code, 1 to count, or 0. */
template <typename T>
int CategoryOf(T code, int count)
{
    if (!(code >= 1 && code <= count)) return 0;
    const auto category = static_cast<int>(code);
    return static_cast<T>(category) == code ? category : 0;
}

}  // namespace

template <typename T>
double BuildContTableW(matrix<T>* rowCodes,
                       int r,
                       matrix<T>* columnCodes,
                       int c,
                       int n,
                       matrix<double>* W,
                       matrix<double>*& table)
{
    StartTable(table, std::max(r, 0), std::max(c, 0));
    double total = 0.0;
    for (int k = 1; k <= n; ++k) {
        const int i = CategoryOf(rowCodes->vbget(k), r);
        const int j = CategoryOf(columnCodes->vbget(k), c);
        const double weight = W == nullptr ? 1.0 : W->vbget(k);
        if (i == 0 || j == 0 || !(weight > 0.0)) continue;
        table->vbset(i, j, table->vbget(i, j) + weight);
        total += weight;
    }
    return total;
}

template double
BuildContTableW(matrix<double>*, int, matrix<double>*, int, int, matrix<double>*, matrix<double>*&);
template double BuildContTableW(matrix<int>*, int, matrix<int>*, int, int, matrix<double>*, matrix<double>*&);
