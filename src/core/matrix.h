/**
 * matrix<T>: the one dense container of the library.
 *
 * Elements are stored column after column and counted from 1. Nothing fails on a bad index: a read outside
 * gives outOfRange and a write outside is dropped. Objects cross library boundaries by pointer, so the field
 * order, the two virtual slots and the meaning of each field are a contract: no base class, no derived class,
 * no virtual destructor.
 */
#pragma once

#include <algorithm>
#include <concepts>
#include <cstdint>
#include <string>
#include <type_traits>

#include "core/platform.h"

namespace korvenrg {

/** What a read outside a matrix gives, by element type. */
template <typename T>
T DefaultOutOfRange()
{
    if constexpr (std::same_as<T, double>) {
        return -1.0;
    } else if constexpr (std::same_as<T, int>) {
        return -1;
    } else {
        return T{};
    }
}

/** rows * cols in 32 bits. A negative dimension counts as no elements. */
constexpr std::uint32_t CountOfCells(int rows, int cols)
{
    if (rows < 0 || cols < 0) return 0;
    return static_cast<std::uint32_t>(rows) * static_cast<std::uint32_t>(cols);
}

/** Number of elements of an automation array, over all its dimensions. */
inline std::uint32_t CountOfCells(const SAFEARRAY& array)
{
    std::uint32_t count = 1;
    for (int d = 0; d < array.cDims; ++d) {
        count *= array.rgsabound[d].cElements;
    }
    return count;
}

/** The text of a platform string; null is the empty text. */
inline std::wstring TextOf(BSTR string)
{
    return string == nullptr ? std::wstring() : std::wstring(string, SysStringLen(string));
}

/** A new platform string. */
inline BSTR NewString(const std::wstring& text)
{
    return SysAllocStringLen(text.c_str(), static_cast<unsigned>(text.size()));
}

}  // namespace korvenrg

/**
 * Dense matrix by columns, in one of three ownership states:
 *
 *   owning    ownsData 1, safeArray null   data is freed with the object
 *   adopting  ownsData 0, safeArray null   data is the caller's
 *   attached  safeArray set                elements are written back to the array at destruction
 *
 * T is double, int, short or std::wstring.
 */
template <typename T>
class matrix final
{
  public:
    T outOfRange = korvenrg::DefaultOutOfRange<T>();  ///< what a read outside gives
    T fillValue = T{};                                ///< what Redim fills with
    std::int32_t ownsData = 1;                        ///< 1: data was allocated here
    // Side arrays of kernel operations: carried, copied and freed here, used by nothing in this library.
    double* colAux1 = nullptr;          ///< cols entries, copied when colAuxPresent is 1
    double* colAux2 = nullptr;          ///< cols entries, copied when colAuxPresent is 1
    double* aux3 = nullptr;             ///< never copied
    double* aux4 = nullptr;             ///< never copied
    double* rowAux = nullptr;           ///< rows entries
    double* colAux5 = nullptr;          ///< cols entries
    std::int32_t* colAuxInt = nullptr;  ///< cols entries
    std::int32_t colAuxPresent = 0;     ///< 1: colAux1 and colAux2 are present
    T* data = nullptr;                  ///< elements, column after column
    std::int32_t rows = 0;
    std::int32_t cols = 0;
    std::uint32_t total = 0;         ///< rows * cols, in 32 bits
    SAFEARRAY* safeArray = nullptr;  ///< the attached platform array, or null

    /** Owning, filled with fillValue (0, or empty). */
    matrix(int rowCount, int colCount) : matrix(rowCount, colCount, T{}) {}

    /** Owning, filled with `value`. fillValue keeps its default, so a later Redim fills with 0. */
    matrix(int rowCount, int colCount, const T& value)
        : rows(rowCount), cols(colCount), total(korvenrg::CountOfCells(rowCount, colCount))
    {
        data = new T[total];
        std::fill_n(data, total, value);
    }

    /** `adopt` true: a view onto the caller's elements. `adopt` false: an owning copy of them. */
    matrix(int rowCount, int colCount, T* pointer, bool adopt)
        : rows(rowCount), cols(colCount), total(korvenrg::CountOfCells(rowCount, colCount))
    {
        if (adopt) {
            ownsData = 0;
            data = pointer;
            return;
        }
        data = new T[total];
        std::copy_n(pointer, total, data);
    }

    /** Owning copy of a flat array of platform strings; null becomes empty. */
    matrix(int rowCount, int colCount, BSTR* strings) requires std::same_as<T, std::wstring>
        : matrix(rowCount, colCount)
    {
        std::transform(strings, strings + total, data, korvenrg::TextOf);
    }

    /** Owning copy of elements and side arrays; outOfRange and fillValue get their defaults, not the
     * source's. */
    matrix(const matrix& source) : matrix(source.rows, source) {}

    /** The copy with `rowCount` rows: rowCount * source.cols elements from the start of the source; cells
     * that the source does not have get 0. With a product of 0 nothing is allocated. */
    matrix(int rowCount, const matrix& source)
        : rows(rowCount), cols(source.cols), total(korvenrg::CountOfCells(rowCount, source.cols))
    {
        if (total > 0) {
            data = new T[total]();
            std::copy_n(source.data, std::min(total, source.total), data);
        }
        CopySideArrays(source);
    }

    /** Attaches to an automation array whose elements are T. One dimension gives one column; with two or
     * more, rows and cols are its first two extents. A null array gives an empty owning matrix. Strings are
     * converted into an owned element array. */
    explicit matrix(SAFEARRAY* array)
    {
        if (array == nullptr) return;
        safeArray = array;
        const bool oneDimension = array->cDims < 2;
        rows = static_cast<std::int32_t>(array->rgsabound[oneDimension ? 0 : 1].cElements);
        cols = oneDimension ? 1 : static_cast<std::int32_t>(array->rgsabound[0].cElements);
        total = korvenrg::CountOfCells(rows, cols);
        if constexpr (std::same_as<T, std::wstring>) {
            data = new T[total];
            auto** strings = static_cast<BSTR*>(array->pvData);
            std::transform(strings, strings + total, data, korvenrg::TextOf);
        } else {
            ownsData = 0;
            data = static_cast<T*>(array->pvData);
        }
    }

    matrix& operator=(const matrix&) = delete;

    /** Write-back to an attached array, then the elements, then the side arrays. Not virtual. */
    ~matrix()
    {
        if (safeArray != nullptr) WriteBack();
        if (ownsData == 1) delete[] data;
        delete[] colAux1;
        delete[] colAux2;
        delete[] aux3;
        delete[] aux4;
        delete[] rowAux;
        delete[] colAux5;
        delete[] colAuxInt;
    }

    /** Slot 0. Element by linear index from 1; outside, the shared outOfRange cell itself, so that an
     * assignment through it changes what later reads outside give. */
    virtual T& operator()(int i)
    {
        const std::uint32_t position = LinearPosition(i);
        return position < total ? data[position] : outOfRange;
    }

    /** Slot 1. Element (i, j) from 1. Only the linear position is tested: an i past the last row reads on
     * into the next column. */
    virtual T& operator()(int i, int j)
    {
        const std::uint32_t position = LinearPosition(i, j);
        return position < total ? data[position] : outOfRange;
    }

    /** Element by linear index from 1. */
    T vbget(int i) const
    {
        const std::uint32_t position = LinearPosition(i);
        return position < total ? data[position] : outOfRange;
    }

    /** Element (i, j) from 1. */
    T vbget(int i, int j) const
    {
        const std::uint32_t position = LinearPosition(i, j);
        return position < total ? data[position] : outOfRange;
    }

    /** Element (i, j) from 0. */
    T getElement(int i, int j) const
    {
        return vbget(i + 1, j + 1);
    }

    /** Writes by linear index from 1; outside, nothing happens. */
    void vbset(int i, const T& value)
    {
        const std::uint32_t position = LinearPosition(i);
        if (position < total) data[position] = value;
    }

    /** Writes (i, j) from 1; outside, nothing happens. */
    void vbset(int i, int j, const T& value)
    {
        const std::uint32_t position = LinearPosition(i, j);
        if (position < total) data[position] = value;
    }

    // The three forms of Redim differ in when they take a new block: the first when either dimension changes,
    // the other two only when both do. Callers rely on it. Pinned by Matrix.RedimTakesANewBlock.

    /** New shape, filled with fillValue. On an adopting matrix the shape stays and the old block is filled.
     */
    void Redim(int rowCount, int colCount) requires std::same_as<T, double>
    {
        RedimAttached(rowCount, colCount);
        if (ownsData == 1 && (rowCount != rows || colCount != cols)) Reallocate(rowCount, colCount);
        std::fill_n(data, total, fillValue);
    }

    /** New shape when both dimensions change; every element becomes `value`. */
    void Redim(int rowCount, int colCount, double value) requires std::same_as<T, double>
    {
        RedimAttached(rowCount, colCount);
        if (ownsData == 1 && rowCount != rows && colCount != cols) Reallocate(rowCount, colCount);
        std::fill_n(data, total, value);
    }

    /** A vector of `rowCount` zeros when the row count changes and the matrix was not one column; else all
     * zero. */
    void Redim(int rowCount) requires std::same_as<T, int>
    {
        RedimAttached(rowCount, 1);
        if (ownsData == 1 && rowCount != rows && cols != 1) Reallocate(rowCount, 1);
        std::fill_n(data, total, 0);
    }

    /** Fills a caller's flat array with new platform strings, which the caller owns. What the array held is
     * not freed. */
    void ExportStrings(BSTR* strings) const requires std::same_as<T, std::wstring>
    {
        std::transform(data, data + total, strings, korvenrg::NewString);
    }

  private:
    static std::uint32_t LinearPosition(int i)
    {
        return static_cast<std::uint32_t>(i) - 1U;
    }

    std::uint32_t LinearPosition(int i, int j) const
    {
        return static_cast<std::uint32_t>(rows) * (static_cast<std::uint32_t>(j) - 1U) +
               (static_cast<std::uint32_t>(i) - 1U);
    }

    void Reallocate(int rowCount, int colCount)
    {
        const std::uint32_t count = korvenrg::CountOfCells(rowCount, colCount);
        T* block = new T[count];
        delete[] data;
        data = block;
        rows = rowCount;
        cols = colCount;
        total = count;
    }

    // Resizes the attached platform array, when the element count asked for is not that of its first bound
    // record. The platform changes that record alone (the last dimension), so it is set to hold at least the
    // new shape; when it refuses, array and sizes stay.
    void RedimAttached(int rowCount, int colCount)
    {
        const std::uint32_t count = korvenrg::CountOfCells(rowCount, colCount);
        if (safeArray == nullptr || count == safeArray->rgsabound[0].cElements) return;
        const SAFEARRAYBOUND last = safeArray->rgsabound[0];
        const std::uint32_t leading = last.cElements > 0 ? korvenrg::CountOfCells(*safeArray) / last.cElements
                                                         : static_cast<std::uint32_t>(std::max(rowCount, 1));
        SAFEARRAYBOUND bounds[2] = {{leading > 0 ? (count + leading - 1) / leading : 0, last.lLbound}, {}};
        if (colCount > 1 && safeArray->cDims > 1) bounds[1] = safeArray->rgsabound[1];
        if (SafeArrayRedim(safeArray, bounds) != S_OK || korvenrg::CountOfCells(*safeArray) < count) return;
        data = static_cast<T*>(safeArray->pvData);
        ownsData = 0;
        rows = rowCount;
        cols = colCount;
        total = count;
    }

    void WriteBack()
    {
        const std::uint32_t count = std::min(total, korvenrg::CountOfCells(*safeArray));
        if constexpr (std::same_as<T, std::wstring>) {
            auto** strings = static_cast<BSTR*>(safeArray->pvData);
            for (std::uint32_t i = 0; i < count; ++i) {
                SysFreeString(strings[i]);
                strings[i] = korvenrg::NewString(data[i]);
            }
        } else {
            auto* target = static_cast<T*>(safeArray->pvData);
            if (target != data) std::copy_n(data, count, target);
        }
    }

    template <typename U>
    static U* CopyOf(const U* source, std::int32_t sourceCount, std::int32_t count)
    {
        if (source == nullptr || count < 0) return nullptr;
        U* copy = new U[static_cast<std::size_t>(count)]();
        std::copy_n(source, std::clamp(sourceCount, 0, count), copy);
        return copy;
    }

    void CopySideArrays(const matrix& source)
    {
        if (source.colAuxPresent == 1) {
            colAuxPresent = 1;
            colAux1 = CopyOf(source.colAux1, source.cols, cols);
            colAux2 = CopyOf(source.colAux2, source.cols, cols);
        }
        rowAux = CopyOf(source.rowAux, source.rows, rows);
        colAux5 = CopyOf(source.colAux5, source.cols, cols);
        colAuxInt = CopyOf(source.colAuxInt, source.cols, cols);
    }
};
