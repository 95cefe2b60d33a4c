/**
 * Sorting of vectors and of the rows of tables.
 *
 * All sorts are stable: rows with equal keys keep their order, also in descending order. The order of doubles
 * is strict: -0 equals +0, and NaN stands last, in ascending and in descending order. Pairs of half a key and
 * its row are sorted by their digits (radix sort from the last digit on: Knuth 1998, "The Art of Computer
 * Programming", vol. 3, 5.2.5), or by comparisons when there are few; no order of the input makes it
 * quadratic. The rows of the tables are moved afterwards, column by column. The work space is 16 bytes a row.
 *
 * Rows are counted from 1. A range first..last is cut to 1..n; an empty one changes nothing.
 */
#pragma once

#include <vector>

#include "core/matrix.h"

/**
 * Moves the rows first..last of a table, and of a companion, into the order of the keys.
 *
 * @param table             n x cols, in/out; null when only companion or key are to be moved
 * @param n                 rows of table, key and companion
 * @param key               n x 1, the values sorted by; may be the table itself. Null does nothing
 * @param companion         n x companionColumns, in/out; null when there is none
 * @param descending        false (0) ascending, true (-1) descending
 * @param sortKeyToo        true (-1): the key is put in order as well; otherwise it stays, unless it is the
 *                          table or the companion
 */
template <typename T>
void SortQ(matrix<T>* table,
           int n,
           int cols,
           int first,
           int last,
           matrix<T>* key,
           matrix<T>* companion,
           int companionColumns,
           short descending,
           short sortKeyToo);

extern template void
SortQ(matrix<double>*, int, int, int, int, matrix<double>*, matrix<double>*, int, short, short);
extern template void SortQ(matrix<int>*, int, int, int, int, matrix<int>*, matrix<int>*, int, short, short);

/**
 * Sorts the rows first..last of a table by one of its columns, moving whole rows.
 *
 * @tparam Table      matrix<double> or matrix<int>
 * @param table       rows x cols, in/out
 * @param keyCol      the column sorted by, from 1
 * @param descending  false (0) ascending, true (-1) descending
 * @return 0; -1 when there is no such column, and the table stays
 */
template <typename Table>
int SortQMatrixCol(Table* table, int rows, int cols, int keyCol, int first, int last, short descending);

extern template int SortQMatrixCol(matrix<double>*, int, int, int, int, int, short);
extern template int SortQMatrixCol(matrix<int>*, int, int, int, int, int, short);

/** Sorts the cells first..last of a vector of n (double or int). */
template <typename T>
void SortQVector(matrix<T>* vector, int n, int first, int last, short descending);

extern template void SortQVector(matrix<double>*, int, int, int, short);
extern template void SortQVector(matrix<int>*, int, int, int, short);

/** Sorts the rows of a rows x cols table by column 1, rows equal there by column 2, and so on. `descending`
    (-1) turns the order of all columns. */
void SortMatrixSeqQ(matrix<int>* table, int rows, int cols, short descending);

namespace korvenrg::linalg {

/**
 * The order of values[0..n): position k of the result is the index, from 0, of the value that comes k-th. The
 * general rules above hold.
 */
template <typename T>
std::vector<int> SortedOrder(const T* values, int n, bool descending = false);

extern template std::vector<int> SortedOrder(const double*, int, bool);
extern template std::vector<int> SortedOrder(const int*, int, bool);

}  // namespace korvenrg::linalg
