#include "kernel/linalg/cross_products.h"

#include <algorithm>
#include <memory>
#include <new>

#include "kernel/linalg/lanes.h"

namespace korvenrg::linalg {

namespace {

// Rows of one block: fifty centred columns of a block fill a tenth of a usual second-level cache.
constexpr std::size_t kBlockRows = 256;

// Columns are padded with zero columns to a multiple of this, the widest tile.
constexpr std::size_t kTile = 4;

// Independent accumulators of a long sum, so that additions need not wait for each other.
constexpr std::size_t kStreams = 4;

// A block of centred columns in column order, kBlockRows apart, and the same times the weights.
struct Block
{
    std::size_t paddedColumns;
    std::size_t rows = 0;  // of the current block, rounded up to whole lanes
    std::vector<double> centred;
    std::vector<double> weighted;  // empty for weights of 1
    std::vector<double> sums;      // per column, of the weighted centred values, over all blocks so far

    const double* Weighted() const
    {
        return weighted.empty() ? centred.data() : weighted.data();
    }
};

// Index of the first row of non-zero weight, or n.
std::size_t FirstWeightedRow(std::size_t n, const double* weights)
{
    if (weights == nullptr) return 0;
    return static_cast<std::size_t>(std::find_if(weights, weights + n, [](double w) { return w != 0.0; }) -
                                    weights);
}

// Sum of w (x - shift) over n rows; rows of weight 0 add nothing even when x is not a number.
template <bool kUnitWeights>
[[gnu::always_inline]] inline double ShiftedSumBody(const double* x,
                                                    const double* w,
                                                    std::size_t n,
                                                    double shift)
{
    constexpr std::size_t kStride = kStreams * kLanes;
    Lanes sums[kStreams] = {};
    std::size_t row = 0;
    for (; row + kStride <= n; row += kStride) {
        for (std::size_t s = 0; s < kStreams; ++s) {
            const Lanes deviation = LoadLanes(x + row + s * kLanes) - shift;
            if constexpr (kUnitWeights) {
                sums[s] += deviation;
            } else {
                const Lanes weight = LoadLanes(w + row + s * kLanes);
                sums[s] += weight == 0.0 ? Lanes{} : weight * deviation;
            }
        }
    }
    double sum = FoldLanes((sums[0] + sums[2]) + (sums[1] + sums[3]));
    for (; row < n; ++row) {
        const double weight = kUnitWeights ? 1.0 : w[row];
        if (weight != 0.0) sum += weight * (x[row] - shift);
    }
    return sum;
}

KORVEN_FOR_AVX512 double ShiftedSumAvx512(const double* x, const double* w, std::size_t n, double shift)
{
    return w == nullptr ? ShiftedSumBody<true>(x, w, n, shift) : ShiftedSumBody<false>(x, w, n, shift);
}

KORVEN_FOR_AVX2 double ShiftedSumAvx2(const double* x, const double* w, std::size_t n, double shift)
{
    return w == nullptr ? ShiftedSumBody<true>(x, w, n, shift) : ShiftedSumBody<false>(x, w, n, shift);
}

double ShiftedSumBaseline(const double* x, const double* w, std::size_t n, double shift)
{
    return w == nullptr ? ShiftedSumBody<true>(x, w, n, shift) : ShiftedSumBody<false>(x, w, n, shift);
}

double TotalWeight(std::size_t n, const double* weights)
{
    if (weights == nullptr) return static_cast<double>(n);
    return ShiftedSumBaseline(weights, nullptr, n, 0.0);
}

// Centres one column of the block, (x - value) - correction, and gives the sum of its weighted cells.
template <bool kUnitWeights>
[[gnu::always_inline]] inline double CentreColumnBody(const double* x,
                                                      const double* w,
                                                      std::size_t n,
                                                      double value,
                                                      double correction,
                                                      double* centred,
                                                      double* weighted)
{
    Lanes sum = {};
    std::size_t row = 0;
    for (; row + kLanes <= n; row += kLanes) {
        Lanes cell = (LoadLanes(x + row) - value) - correction;
        if constexpr (kUnitWeights) {
            sum += cell;
        } else {
            const Lanes weight = LoadLanes(w + row);
            cell = weight == 0.0 ? Lanes{} : cell;
            const Lanes product = weight * cell;
            StoreLanes(product, weighted + row);
            sum += product;
        }
        StoreLanes(cell, centred + row);
    }
    double total = FoldLanes(sum);
    for (; row < n; ++row) {
        const double weight = kUnitWeights ? 1.0 : w[row];
        const double cell = weight == 0.0 ? 0.0 : (x[row] - value) - correction;
        centred[row] = cell;
        if constexpr (!kUnitWeights) weighted[row] = weight * cell;
        total += weight * cell;
    }
    return total;
}

template <bool kUnitWeights>
[[gnu::always_inline]] inline void CentreBlockBody(Columns columns,
                                                   std::size_t first,
                                                   std::size_t n,
                                                   const double* weights,
                                                   const Centres& centres,
                                                   Block& block)
{
    for (std::size_t j = 0; j < columns.size(); ++j) {
        double* centred = block.centred.data() + j * kBlockRows;
        double* weighted = kUnitWeights ? nullptr : block.weighted.data() + j * kBlockRows;
        block.sums[j] += CentreColumnBody<kUnitWeights>(columns[j] + first,
                                                        kUnitWeights ? nullptr : weights + first,
                                                        n,
                                                        centres.value[j],
                                                        centres.correction[j],
                                                        centred,
                                                        weighted);
        for (std::size_t row = n; row < block.rows; ++row) {
            centred[row] = 0.0;
            if constexpr (!kUnitWeights) weighted[row] = 0.0;
        }
    }
}

// Adds the cross-products of kWidth columns from `left` and kWidth columns from `right` to a corner of the
// result.
template <std::size_t kWidth>
[[gnu::always_inline]] inline void MultiplyTile(const double* left,
                                                const double* right,
                                                std::size_t rows,
                                                std::size_t stride,
                                                double* corner)
{
    Lanes sums[kWidth][kWidth] = {};
    for (std::size_t row = 0; row < rows; row += kLanes) {
        Lanes leftCells[kWidth];
        for (std::size_t i = 0; i < kWidth; ++i) {
            leftCells[i] = LoadLanes(left + i * kBlockRows + row);
        }
        for (std::size_t j = 0; j < kWidth; ++j) {
            const Lanes rightCells = LoadLanes(right + j * kBlockRows + row);
            for (std::size_t i = 0; i < kWidth; ++i) {
                sums[j][i] += leftCells[i] * rightCells;
            }
        }
    }
    for (std::size_t j = 0; j < kWidth; ++j) {
        for (std::size_t i = 0; i < kWidth; ++i) {
            corner[j * stride + i] += FoldLanes(sums[j][i]);
        }
    }
}

// Adds the block's cross-products to the lower triangle of tiles.
template <std::size_t kWidth>
[[gnu::always_inline]] inline void MultiplyBlock(const Block& block, double* products)
{
    const std::size_t stride = block.paddedColumns;
    for (std::size_t j = 0; j < stride; j += kWidth) {
        for (std::size_t i = j; i < stride; i += kWidth) {
            MultiplyTile<kWidth>(block.centred.data() + i * kBlockRows,
                                 block.Weighted() + j * kBlockRows,
                                 block.rows,
                                 stride,
                                 products + j * stride + i);
        }
    }
}

template <std::size_t kWidth>
[[gnu::always_inline]] inline void AddBlockBody(Columns columns,
                                                std::size_t first,
                                                std::size_t n,
                                                const double* weights,
                                                const Centres& centres,
                                                Block& block,
                                                double* products)
{
    block.rows = RoundUp(n, kLanes);
    if (weights == nullptr) {
        CentreBlockBody<true>(columns, first, n, weights, centres, block);
    } else {
        CentreBlockBody<false>(columns, first, n, weights, centres, block);
    }
    MultiplyBlock<kWidth>(block, products);
}

using AddBlock = void(Columns, std::size_t, std::size_t, const double*, const Centres&, Block&, double*);

KORVEN_FOR_AVX512 void AddBlockAvx512(Columns columns,
                                      std::size_t first,
                                      std::size_t n,
                                      const double* weights,
                                      const Centres& centres,
                                      Block& block,
                                      double* products)
{
    AddBlockBody<4>(columns, first, n, weights, centres, block, products);
}

KORVEN_FOR_AVX2 void AddBlockAvx2(Columns columns,
                                  std::size_t first,
                                  std::size_t n,
                                  const double* weights,
                                  const Centres& centres,
                                  Block& block,
                                  double* products)
{
    AddBlockBody<2>(columns, first, n, weights, centres, block, products);
}

void AddBlockBaseline(Columns columns,
                      std::size_t first,
                      std::size_t n,
                      const double* weights,
                      const Centres& centres,
                      Block& block,
                      double* products)
{
    AddBlockBody<2>(columns, first, n, weights, centres, block, products);
}

AddBlock* BestAddBlock()
{
    switch (BestInstructionSet()) {
        case InstructionSet::kAvx512:
            return AddBlockAvx512;
        case InstructionSet::kAvx2:
            return AddBlockAvx2;
        default:
            return AddBlockBaseline;
    }
}

auto BestShiftedSum()
{
    switch (BestInstructionSet()) {
        case InstructionSet::kAvx512:
            return ShiftedSumAvx512;
        case InstructionSet::kAvx2:
            return ShiftedSumAvx2;
        default:
            return ShiftedSumBaseline;
    }
}

}  // namespace

Centres ZeroCentres(std::size_t count)
{
    return {std::vector<double>(count, 0.0), std::vector<double>(count, 0.0)};
}

Centres WeightedMeans(Columns columns, int n, const double* weights)
{
    Centres means = ZeroCentres(columns.size());
    const auto rows = static_cast<std::size_t>(std::max(n, 0));
    const std::size_t first = FirstWeightedRow(rows, weights);
    if (first == rows) return means;

    const double total = TotalWeight(rows, weights);
    const auto shiftedSum = BestShiftedSum();
    for (std::size_t j = 0; j < columns.size(); ++j) {
        const double shift = columns[j][first];
        const double offset = shiftedSum(columns[j], weights, rows, shift) / total;
        // shift + offset without loss (Knuth 1997, The Art of Computer Programming 2, 4.2.2, theorem B)
        const double mean = shift + offset;
        const double shiftPart = mean - offset;
        const double offsetPart = mean - shiftPart;
        means.value[j] = mean;
        means.correction[j] = (shift - shiftPart) + (offset - offsetPart);
    }
    return means;
}

void CrossProducts(Columns columns,
                   int n,
                   const double* weights,
                   const Centres& centres,
                   bool corrected,
                   double* products)
{
    const std::size_t q = columns.size();
    const auto rows = static_cast<std::size_t>(std::max(n, 0));
    const std::size_t padded = RoundUp(q, kTile);
    Block block{.paddedColumns = padded,
                .centred = std::vector<double>(padded * kBlockRows),
                .weighted = std::vector<double>(weights == nullptr ? 0 : padded * kBlockRows),
                .sums = std::vector<double>(padded)};
    std::vector<double> tiles(padded * padded);

    AddBlock* addBlock = BestAddBlock();
    for (std::size_t first = 0; first < rows; first += kBlockRows) {
        addBlock(columns, first, std::min(kBlockRows, rows - first), weights, centres, block, tiles.data());
    }

    const double total = TotalWeight(rows, weights);
    for (std::size_t j = 0; j < q; ++j) {
        for (std::size_t i = j; i < q; ++i) {
            double sum = tiles[j * padded + i];
            if (corrected && total != 0.0) sum -= block.sums[i] * block.sums[j] / total;
            products[j * q + i] = sum;
            products[i * q + j] = sum;
        }
    }
}

}  // namespace korvenrg::linalg
