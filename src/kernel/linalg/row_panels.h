/** A matrix cut into panels of eight rows, so that an operation on columns runs along the lanes. */
#pragma once

#include <cstddef>
#include <vector>

#include "kernel/linalg/lanes.h"

namespace korvenrg::linalg {

/** Panel p holds rows 8p .. 8p+7; within it each column is eight cells in one piece. Rows beyond the last are
 * kept as 0. */
class RowPanels
{
  public:
    RowPanels(std::size_t rowCount, std::size_t colCount)
        : cols_(colCount), panels_(RoundUp(rowCount, kLanes) / kLanes), cells_(panels_ * colCount * kLanes)
    {
    }

    std::size_t Panels() const
    {
        return panels_;
    }

    std::size_t Cols() const
    {
        return cols_;
    }

    double* Panel(std::size_t p)
    {
        return cells_.data() + p * cols_ * kLanes;
    }

    double& operator()(std::size_t i, std::size_t j)
    {
        return cells_[(i / kLanes * cols_ + j) * kLanes + i % kLanes];
    }

    double operator()(std::size_t i, std::size_t j) const
    {
        return cells_[(i / kLanes * cols_ + j) * kLanes + i % kLanes];
    }

  private:
    std::size_t cols_;
    std::size_t panels_;
    std::vector<double> cells_;
};

}  // namespace korvenrg::linalg
