/** Arrays for calls through the doors: pre-filled with a sentinel and surrounded by guard cells. */
#pragma once

#include <algorithm>
#include <cstddef>
#include <type_traits>
#include <vector>

#include "core/platform.h"

namespace korvenrg::test {

/** Guard cells on either side. */
inline constexpr std::ptrdiff_t kGuardCells = 16;

/** A value that no calculation gives. For strings a valid one, since doors may read what an output array
 * holds. */
template <typename T>
T SentinelOf()
{
    if constexpr (std::is_same_v<T, BSTR>) {
        static BSTR const untouched = SysAllocString(L"<untouched>");
        return untouched;
    } else if constexpr (std::is_floating_point_v<T>) {
        return T(-987654321.125);
    } else {
        static_assert(std::is_integral_v<T>);
        return T(sizeof(T) == 2 ? -21931 : -987654321);
    }
}

/** `size` cells between two runs of guard cells. Strings are compared as pointers: a rewritten string is a
 * change even when its text is the same. */
template <typename T>
class GuardedArray
{
  public:
    /** Every cell holds the sentinel. */
    explicit GuardedArray(std::size_t size)
        : cells_(size + 2 * kGuardCells, SentinelOf<T>()), start_(size, SentinelOf<T>())
    {
    }

    /** Cells with the given start values, for arrays that a door reads. */
    explicit GuardedArray(const std::vector<T>& values) : GuardedArray(values.size())
    {
        std::copy(values.begin(), values.end(), data());
        start_ = values;
    }

    T* data()
    {
        return cells_.data() + kGuardCells;
    }
    std::size_t size() const
    {
        return start_.size();
    }
    T& operator[](std::size_t i)
    {
        return data()[i];
    }
    const T& operator[](std::size_t i) const
    {
        return cells_[kGuardCells + i];
    }

    /** Whether nothing was written before the first or after the last cell. */
    bool IntactGuards() const
    {
        const auto isGuard = [](const T& cell) { return cell == SentinelOf<T>(); };
        return std::all_of(cells_.begin(), cells_.begin() + kGuardCells, isGuard) &&
               std::all_of(cells_.end() - kGuardCells, cells_.end(), isGuard);
    }

    /** Whether cell i, from 0, still holds the sentinel. */
    bool IsSentinel(std::size_t i) const
    {
        return (*this)[i] == SentinelOf<T>();
    }

    /** Number of cells that differ from what they held at the start. */
    std::size_t CountChanged() const
    {
        std::size_t changed = 0;
        for (std::size_t i = 0; i < size(); ++i) {
            if (!((*this)[i] == start_[i])) ++changed;
        }
        return changed;
    }

  private:
    std::vector<T> cells_;
    std::vector<T> start_;
};

}  // namespace korvenrg::test
