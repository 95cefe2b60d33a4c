/** Outputs that an operation may create or resize: parameters of the form matrix<T>*&. */
#pragma once

#include <algorithm>

#include "core/matrix.h"

namespace korvenrg::linalg {

/**
 * Gives an output rows x cols cells.
 *
 * A null output is created with the new operator; the caller deletes it. One of another shape gets a new block, filled
 * with 0, in the same object. One of the right shape keeps its cells. An output that views the caller's memory, or is
 * attached to an automation array, keeps its shape: writes that it has no room for vanish.
 */
template <typename T>
void EnsureShape(matrix<T>*& output, int rows, int cols)
{
    rows = std::max(rows, 0);
    cols = std::max(cols, 0);
    if (output == nullptr) {
        output = new matrix<T>(rows, cols);
        return;
    }
    const bool fits = output->rows == rows && output->cols == cols;
    if (fits || output->ownsData != 1 || output->safeArray != nullptr) return;
    T* block = new T[CountOfCells(rows, cols)]();
    delete[] output->data;
    output->data = block;
    output->rows = rows;
    output->cols = cols;
    output->total = CountOfCells(rows, cols);
}

}  // namespace korvenrg::linalg
