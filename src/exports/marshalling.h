/**
 * The three ways in which a door hands the caller's flat arrays to a worker, one line per array.
 *
 *   adopted(A, r, c)          the worker reads and writes the caller's memory
 *   copied(A, r, c)           the worker gets a copy that is thrown away
 *   copiedBack(A, r, c)       the worker gets a copy, and all its elements as they stand after the call go
 * back
 *
 * Each makes an object that lives until the end of the call expression and turns into the matrix pointer that
 * the worker takes. Forwarding doors pass their arguments straight on and need none of this.
 */
#pragma once

#include <algorithm>
#include <concepts>
#include <string>

#include "core/matrix.h"

namespace korvenrg::exports {

/** Owner of the matrix of one argument. */
template <typename T>
class Argument
{
  public:
    template <typename... Arguments>
    explicit Argument(Arguments... arguments) : matrix_(arguments...)
    {
    }

    Argument(const Argument&) = delete;
    Argument& operator=(const Argument&) = delete;

    operator matrix<T>*()
    {
        return &matrix_;
    }

  protected:
    matrix<T> matrix_;
};

/** An argument whose elements are copied to the caller's array when the call is over. */
template <typename T, typename Element>
class ReturnedArgument : public Argument<T>
{
  public:
    template <typename... Arguments>
    explicit ReturnedArgument(Element* target, Arguments... arguments)
        : Argument<T>(arguments...), target_(target)
    {
    }

    ~ReturnedArgument()
    {
        if (target_ == nullptr) return;
        if constexpr (std::same_as<T, std::wstring>) {
            this->matrix_.ExportStrings(target_);
        } else {
            std::copy_n(this->matrix_.data, this->matrix_.total, target_);
        }
    }

  private:
    Element* target_;
};

/** A view onto the caller's array; a null array is an empty one. */
template <typename T>
Argument<T> adopted(T* array, int rows, int cols)
{
    const bool none = array == nullptr;
    return Argument<T>(none ? 0 : rows, none ? 0 : cols, array, true);
}

/** A copy of the caller's numbers. A null array, or one without elements, becomes a 1 x 1 dummy. */
template <typename T>
Argument<T> copied(T* array, int rows, int cols)
{
    return array == nullptr || CountOfCells(rows, cols) == 0 ? Argument<T>(1, 1)
                                                             : Argument<T>(rows, cols, array, false);
}

/** A copy of the caller's texts. A null array, or one without elements, becomes a 1 x 1 dummy. */
inline Argument<std::wstring> copied(BSTR* array, int rows, int cols)
{
    return array == nullptr || CountOfCells(rows, cols) == 0 ? Argument<std::wstring>(1, 1)
                                                             : Argument<std::wstring>(rows, cols, array);
}

/** A copy of the caller's numbers that goes back. */
template <typename T>
ReturnedArgument<T, T> copiedBack(T* array, int rows, int cols)
{
    using Returned = ReturnedArgument<T, T>;
    T* const none = nullptr;
    return array == nullptr || CountOfCells(rows, cols) == 0 ? Returned(none, 1, 1)
                                                             : Returned(array, rows, cols, array, false);
}

/** Empty texts that go back as new strings. What the array holds is neither read nor freed. */
inline ReturnedArgument<std::wstring, BSTR> copiedBack(BSTR* array, int rows, int cols)
{
    return ReturnedArgument<std::wstring, BSTR>(array, rows, cols);
}

}  // namespace korvenrg::exports
