/** Columns of a matrix as contiguous raw pointers, for the loops that run over many rows. */
#pragma once

#include <span>
#include <vector>

#include "core/matrix.h"

namespace korvenrg::linalg {

/** One pointer per column; each column is contiguous. */
using Columns = std::span<const double* const>;

/**
 * The leading n rows and `count` columns of a matrix. Points into the matrix when it has them; otherwise
 * holds a copy in which cells outside the matrix read as its outOfRange value.
 */
class ColumnsOf
{
  public:
    ColumnsOf(const matrix<double>& source, int n, int count);

    ColumnsOf(const ColumnsOf&) = delete;
    ColumnsOf& operator=(const ColumnsOf&) = delete;

    operator Columns() const
    {
        return pointers_;
    }

    const double* operator[](std::size_t column) const
    {
        return pointers_[column];
    }

    /** Puts one more column behind the others. It must outlive this object. */
    void Append(const double* column)
    {
        pointers_.push_back(column);
    }

  private:
    std::vector<const double*> pointers_;
    std::vector<double> copy_;
};

}  // namespace korvenrg::linalg
