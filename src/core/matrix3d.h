/**
 * matrix3D<T>: an array of owned blocks, each a matrix<double> or a sparse matrix.
 *
 * Block numbers count from 1 and are not checked; inside a block its own rules for indices outside hold.
 */
#pragma once

#include <concepts>
#include <cstddef>
#include <cstdint>

#include "core/matrix.h"

template <typename T>
class matrix3D
{
  public:
    static constexpr bool kDense = std::same_as<T, matrix<double>>;

    std::int32_t count = 0;
    T** elements = nullptr;  ///< count pointers, owned, each block owned

    /** `blockCount` null pointers: the caller puts the blocks in. */
    explicit matrix3D(int blockCount) requires(!kDense)
        : count(blockCount), elements(new T*[SlotCount(blockCount)]())
    {
    }

    /** `blockCount` blocks of rowCount x colCount, each filled with `fill`. */
    matrix3D(int blockCount, int rowCount, int colCount, double fill)
        : count(blockCount), elements(new T*[SlotCount(blockCount)]())
    {
        for (int k = 1; k <= count; ++k) {
            Slot(k) = new T(rowCount, colCount, fill);
        }
    }

    /** Block k is square, sizes(k) x sizes(k), filled with `fill`. */
    matrix3D(int blockCount, matrix<int>* sizes, double fill)
        : count(blockCount), elements(new T*[SlotCount(blockCount)]())
    {
        for (int k = 1; k <= count; ++k) {
            Slot(k) = new T(sizes->vbget(k), sizes->vbget(k), fill);
        }
    }

    /** Deletes each block that is not null, then the pointer array. */
    ~matrix3D()
    {
        for (int k = 1; k <= count; ++k) {
            delete Slot(k);
        }
        delete[] elements;
    }

    matrix3D(const matrix3D&) = delete;

    /** Shallow: afterwards both objects share the source's blocks, and the target's old blocks are not freed.
     * One of the two must be emptied (count 0, elements null) before both are destroyed. */
    matrix3D& operator=(const matrix3D& source)
    {
        count = source.count;
        elements = source.elements;
        return *this;
    }

    /** Reference to element (i, j) of block k, through the block's slot 1. */
    double& operator()(int k, int i, int j) requires kDense
    {
        return (*Slot(k))(i, j);
    }

    /** Element (i, j) of block k. */
    double vbget(int k, int i, int j) const
    {
        return Slot(k)->vbget(i, j);
    }

    /** Element i of block k, by linear index. */
    double vbget(int k, int i) const
    {
        return Slot(k)->vbget(i);
    }

    /** Writes (i, j) of block k. */
    void vbset(int k, int i, int j, double value)
    {
        Slot(k)->vbset(i, j, value);
    }

    /** Writes element i of block k, by linear index. */
    void vbset(int k, int i, double value)
    {
        Slot(k)->vbset(i, value);
    }

    /** Block k, counted from 1. */
    T* vbget(int k) const
    {
        return Slot(k);
    }

    /** Block at position k counted from 0: the one operation of the class that counts so. */
    T* getElement(int k) const requires(!kDense)
    {
        return elements[k];
    }

  private:
    static std::size_t SlotCount(int blockCount)
    {
        return blockCount > 0 ? static_cast<std::size_t>(blockCount) : 0;
    }

    T*& Slot(int k) const
    {
        return elements[k - 1];
    }
};

extern template class KORVENRG_API matrix3D<matrix<double>>;
