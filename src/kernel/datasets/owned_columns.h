/** cST_MVect<T>: the owned object of a table that is held column by column. */
#pragma once

#include <memory>
#include <string>
#include <type_traits>
#include <vector>

#include "core/matrix.h"
#include "kernel/datasets/records.h"

namespace korvenrg::datasets {

/** The array itself when its elements have the size of T's and are texts where T is, else null, so that it is taken as
 * empty. */
template <typename T>
SAFEARRAY* ArrayOf(SAFEARRAY* array)
{
    constexpr bool kOfTexts = std::is_same_v<T, std::wstring>;
    if (array == nullptr) return nullptr;
    const bool holdsTexts = (array->fFeatures & FADF_BSTR) != 0;
    const bool fits = array->cbElements == (kOfTexts ? sizeof(BSTR) : sizeof(T));
    return fits && holdsTexts == kOfTexts ? array : nullptr;
}

/**
 * Gives an attached vector `count` elements where it has fewer. The matrix is written back and attached anew, so
 * references to its elements end. A locked or fixed array keeps its size: writes that it has no room for vanish.
 */
template <typename T>
void GrowVector(std::unique_ptr<matrix<T>>& vector, int count);

}  // namespace korvenrg::datasets

/**
 * Owns one matrix view for each array of an ST_MVect. T is double, short or std::wstring. The destructor writes
 * texts back and frees the views, never the caller's arrays.
 */
template <typename T>
class cST_MVect final
{
  public:
    std::int32_t isConstructed = 1;
    std::int32_t columns;
    std::int32_t secondDimension;
    std::int32_t thirdCount;
    std::int32_t rows;
    ST_MVect* record;
    std::vector<std::unique_ptr<matrix<T>>> vectors;  ///< one for each column
    matrix<int> table;
    matrix<std::wstring> labels;
    std::int64_t lastWord = 0;

    /** @param source  the caller's record, which must outlive the object */
    explicit cST_MVect(ST_MVect* source);

    /** Column j, from 1; null when there is none. */
    matrix<T>* Column(int j) const;

    /** Sets the number of rows in use, here and in the record. The columns keep their length. */
    void SetRows(int count);
};
