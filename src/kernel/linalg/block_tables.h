/** Tables of matrices, one block after the other, and the flat arrays that doors pass for them. */
#pragma once

#include <algorithm>
#include <string>

#include "core/matrix.h"

/** Deletes `count` matrices and the array of pointers; null pointers are left out. T is double or wstring. */
template <typename T>
void deletecascade(matrix<T>** blocks, int count)
{
    if (blocks == nullptr) return;
    for (int b = 0; b < count; ++b) {
        delete blocks[b];
    }
    delete[] blocks;
}

/** Puts a new rows x cols matrix of zeros into each of `count` places; what they held before is not deleted. */
void iniSuperMat(matrix<double>** blocks, int count, int rows, int cols);

/**
 * Fills `count` places with new rows x cols matrices that hold the flat array's cells, block after block and each by
 * columns. What the places held before is not deleted.
 *
 * @param flat  count * rows * cols cells; platform strings for text, null being empty
 */
void loadSuperMat(matrix<double>** blocks, double* flat, int count, int rows, int cols);
void loadSuperMat(matrix<std::wstring>** blocks, BSTR* flat, int count, int rows, int cols);

/** The reverse: writes the leading rows x cols cells of each block into the flat array; cells that a block does not
 * have read as its outOfRange value. Strings are new ones, which the caller owns; what the array held is not freed. */
void unloadSuperMat(matrix<double>** blocks, double* flat, int count, int rows, int cols);
void unloadSuperMat(matrix<std::wstring>** blocks, BSTR* flat, int count, int rows, int cols);
