#include "kernel/linalg/columns.h"

namespace korvenrg::linalg {

ColumnsOf::ColumnsOf(const matrix<double>& source, int n, int count)
{
    if (n < 0 || count < 0) return;
    const auto height = static_cast<std::size_t>(n);
    const auto width = static_cast<std::size_t>(count);
    pointers_.resize(width);
    if (n <= source.rows && count <= source.cols) {
        for (std::size_t j = 0; j < width; ++j) {
            pointers_[j] = source.data + j * static_cast<std::size_t>(source.rows);
        }
        return;
    }
    copy_.resize(height * width);
    for (std::size_t j = 0; j < width; ++j) {
        pointers_[j] = copy_.data() + j * height;
        for (std::size_t i = 0; i < height; ++i) {
            copy_[j * height + i] = source.vbget(static_cast<int>(i) + 1, static_cast<int>(j) + 1);
        }
    }
}

}  // namespace korvenrg::linalg
