#include "kernel/linalg/dense_product.h"

#include <algorithm>
#include <utility>
#include <vector>

#include "kernel/linalg/lanes.h"

namespace korvenrg::linalg {

namespace {

// Inner indices of one block: a panel of the left factor stays in the first-level cache.
constexpr std::size_t kInnerBlock = 256;

// Columns of the right factor that are packed at once: a block of them stays in the second-level cache.
constexpr std::size_t kColumnBlock = 512;

// The widest register tile: rows and columns are padded with zeros to it.
constexpr std::size_t kTileRows = 2 * kLanes;
constexpr std::size_t kTileColumns = 8;

// A block of the right operand in panels of kTileColumns columns, inner index after inner index.
void PackRight(const DenseOperand& right,
               std::size_t firstInner,
               std::size_t inner,
               std::size_t firstColumn,
               std::size_t columns,
               double* packed)
{
    const std::size_t columnStep = right.ColumnStep();
    const double* corner = right.Data() + firstInner * right.RowStep() + firstColumn * columnStep;
    for (std::size_t panel = 0; panel < columns; panel += kTileColumns) {
        const std::size_t width = std::min(kTileColumns, columns - panel);
        for (std::size_t k = 0; k < inner; ++k) {
            const double* row = corner + k * right.RowStep() + panel * columnStep;
            for (std::size_t j = 0; j < width; ++j) {
                packed[j] = row[j * columnStep];
            }
            std::fill(packed + width, packed + kTileColumns, 0.0);
            packed += kTileColumns;
        }
    }
}

// A panel of kTileRows rows of the left operand, inner index after inner index.
void PackLeft(const DenseOperand& left,
              std::size_t firstRow,
              std::size_t rows,
              std::size_t firstInner,
              std::size_t inner,
              double* packed)
{
    const std::size_t rowStep = left.RowStep();
    const double* corner = left.Data() + firstRow * rowStep + firstInner * left.ColumnStep();
    for (std::size_t k = 0; k < inner; ++k) {
        const double* column = corner + k * left.ColumnStep();
        for (std::size_t i = 0; i < rows; ++i) {
            packed[i] = column[i * rowStep];
        }
        std::fill(packed + rows, packed + kTileRows, 0.0);
        packed += kTileRows;
    }
}

// Adds one register tile, kRowLanes lanes high and kColumns wide, to `tile` (kTileRows x kTileColumns).
template <std::size_t kRowLanes, std::size_t kColumns>
[[gnu::always_inline]] inline void MultiplyTile(const double* left,
                                                const double* right,
                                                std::size_t inner,
                                                double* tile)
{
    Lanes sums[kColumns][kRowLanes] = {};
    for (std::size_t k = 0; k < inner; ++k) {
        Lanes cells[kRowLanes];
        for (std::size_t i = 0; i < kRowLanes; ++i) {
            cells[i] = LoadLanes(left + k * kTileRows + i * kLanes);
        }
        for (std::size_t j = 0; j < kColumns; ++j) {
            const double multiplier = right[k * kTileColumns + j];
            for (std::size_t i = 0; i < kRowLanes; ++i) {
                sums[j][i] += cells[i] * multiplier;
            }
        }
    }
    for (std::size_t j = 0; j < kColumns; ++j) {
        for (std::size_t i = 0; i < kRowLanes; ++i) {
            StoreLanes(sums[j][i], tile + j * kTileRows + i * kLanes);
        }
    }
}

// One tile of the widest size out of register tiles of a target's own size.
template <std::size_t kRowLanes, std::size_t kColumns>
[[gnu::always_inline]] inline void MultiplyPanelBody(const double* left,
                                                     const double* right,
                                                     std::size_t inner,
                                                     double* tile)
{
    for (std::size_t j = 0; j < kTileColumns; j += kColumns) {
        for (std::size_t i = 0; i < kTileRows; i += kRowLanes * kLanes) {
            MultiplyTile<kRowLanes, kColumns>(left + i, right + j, inner, tile + j * kTileRows + i);
        }
    }
}

using MultiplyPanel = void(const double*, const double*, std::size_t, double*);

KORVEN_FOR_AVX512 void MultiplyPanelAvx512(const double* left,
                                           const double* right,
                                           std::size_t inner,
                                           double* tile)
{
    MultiplyPanelBody<2, 8>(left, right, inner, tile);
}

KORVEN_FOR_AVX2 void MultiplyPanelAvx2(const double* left,
                                       const double* right,
                                       std::size_t inner,
                                       double* tile)
{
    MultiplyPanelBody<1, 4>(left, right, inner, tile);
}

void MultiplyPanelBaseline(const double* left, const double* right, std::size_t inner, double* tile)
{
    MultiplyPanelBody<1, 2>(left, right, inner, tile);
}

MultiplyPanel* BestMultiplyPanel()
{
    switch (BestInstructionSet()) {
        case InstructionSet::kAvx512:
            return MultiplyPanelAvx512;
        case InstructionSet::kAvx2:
            return MultiplyPanelAvx2;
        default:
            return MultiplyPanelBaseline;
    }
}

// Adds a tile to the product, but for the padding.
void AddTile(const double* tile,
             std::size_t firstRow,
             std::size_t rows,
             std::size_t firstColumn,
             std::size_t columns,
             std::size_t stride,
             double* out)
{
    const std::size_t height = std::min(kTileRows, rows - firstRow);
    const std::size_t width = std::min(kTileColumns, columns - firstColumn);
    for (std::size_t j = 0; j < width; ++j) {
        double* target = out + (firstColumn + j) * stride + firstRow;
        for (std::size_t i = 0; i < height; ++i) {
            target[i] += tile[j * kTileRows + i];
        }
    }
}

void MirrorLowerTriangle(std::size_t n, double* square)
{
    for (std::size_t j = 0; j < n; ++j) {
        for (std::size_t i = j + 1; i < n; ++i) {
            square[i * n + j] = square[j * n + i];
        }
    }
}

}  // namespace

DenseOperand::DenseOperand(const matrix<double>& source, int rows, int cols)
    : rows_(static_cast<std::size_t>(std::max(rows, 0))), cols_(static_cast<std::size_t>(std::max(cols, 0)))
{
    if (rows <= source.rows && cols <= source.cols) {
        view_ = source.data;
        stride_ = static_cast<std::size_t>(source.rows);
        return;
    }
    stride_ = rows_;
    copy_.reserve(rows_ * cols_);
    for (int j = 1; j <= cols; ++j) {
        for (int i = 1; i <= rows; ++i) {
            copy_.push_back(source.vbget(i, j));
        }
    }
}

DenseOperand::DenseOperand(std::vector<double> cells, int rows, int cols)
    : rows_(static_cast<std::size_t>(std::max(rows, 0))),
      cols_(static_cast<std::size_t>(std::max(cols, 0))),
      stride_(rows_),
      copy_(std::move(cells))
{
}

DenseOperand DenseOperand::Transposed() const
{
    DenseOperand transpose = *this;
    transpose.transposed_ = !transposed_;
    return transpose;
}

void MultiplyDense(const DenseOperand& left, const DenseOperand& right, ProductShape shape, double* out)
{
    const std::size_t rows = left.Rows();
    const std::size_t inner = left.Cols();
    const std::size_t cols = right.Cols();
    const bool symmetric = shape == ProductShape::kSymmetric;
    MultiplyPanel* multiplyPanel = BestMultiplyPanel();
    std::fill_n(out, rows * cols, 0.0);
    std::vector<double> packedRight(RoundUp(std::min(cols, kColumnBlock), kTileColumns) *
                                    std::min(inner, kInnerBlock));
    std::vector<double> packedLeft(kTileRows * std::min(inner, kInnerBlock));
    double tile[kTileRows * kTileColumns];

    for (std::size_t firstColumn = 0; firstColumn < cols; firstColumn += kColumnBlock) {
        const std::size_t columns = std::min(kColumnBlock, cols - firstColumn);
        for (std::size_t k = 0; k < inner; k += kInnerBlock) {
            const std::size_t depth = std::min(kInnerBlock, inner - k);
            PackRight(right, k, depth, firstColumn, columns, packedRight.data());
            for (std::size_t row = 0; row < rows; row += kTileRows) {
                if (symmetric && row + kTileRows <= firstColumn) continue;
                PackLeft(left, row, std::min(kTileRows, rows - row), k, depth, packedLeft.data());
                for (std::size_t j = 0; j < columns; j += kTileColumns) {
                    const std::size_t column = firstColumn + j;
                    if (symmetric && column >= row + kTileRows) break;
                    multiplyPanel(packedLeft.data(), packedRight.data() + j * depth, depth, tile);
                    AddTile(tile, row, rows, column, cols, rows, out);
                }
            }
        }
    }
    if (symmetric) MirrorLowerTriangle(rows, out);
}

}  // namespace korvenrg::linalg
