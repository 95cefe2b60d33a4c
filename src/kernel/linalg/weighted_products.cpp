#include "kernel/linalg/weighted_products.h"

#include <algorithm>

#include "kernel/linalg/lanes.h"

namespace korvenrg::linalg {

namespace {

constexpr std::size_t kBlockRows = 256;
// Columns are padded with zero columns to a multiple of this, the widest tile.
constexpr std::size_t kTile = 4;

// One block of rows: pointers to the columns, those of the caller or padded copies, and the columns times v.
struct Block
{
    std::size_t rows;                    // whole lanes
    std::vector<const double*> columns;  // padded
    std::vector<double> weighted;        // padded columns, kBlockRows apart
    const double* u;
    const double* v;
};

// Sum of x v over whole lanes.
[[gnu::always_inline]] inline double LaneProduct(const double* x, const double* v, std::size_t rows)
{
    Lanes even = {};
    Lanes odd = {};
    std::size_t row = 0;
    for (; row + 2 * kLanes <= rows; row += 2 * kLanes) {
        even += LoadLanes(x + row) * LoadLanes(v + row);
        odd += LoadLanes(x + row + kLanes) * LoadLanes(v + row + kLanes);
    }
    if (row < rows) even += LoadLanes(x + row) * LoadLanes(v + row);
    return FoldLanes(even + odd);
}

// The column times v, with the sums of it and, if wanted, of the column times u. The same rows of the next block are
// fetched meanwhile, so that they arrive while this block is multiplied.
template <bool kWithSlopes>
[[gnu::always_inline]] inline void WeighColumn(const double* x,
                                               const Block& block,
                                               double* weighted,
                                               double* slope,
                                               double* constant)
{
    Lanes slopes = {};
    Lanes constants = {};
    for (std::size_t row = 0; row < block.rows; row += kLanes) {
        __builtin_prefetch(x + row + kBlockRows);
        const Lanes cells = LoadLanes(x + row);
        const Lanes product = cells * LoadLanes(block.v + row);
        StoreLanes(product, weighted + row);
        constants += product;
        if constexpr (kWithSlopes) slopes += cells * LoadLanes(block.u + row);
    }
    *constant += FoldLanes(constants);
    if constexpr (kWithSlopes) *slope += FoldLanes(slopes);
}

template <std::size_t kWidth>
[[gnu::always_inline]] inline void MultiplyTile(const double* const* left,
                                                const double* right,
                                                std::size_t rows,
                                                std::size_t stride,
                                                double* corner)
{
    Lanes sums[kWidth][kWidth] = {};
    for (std::size_t row = 0; row < rows; row += kLanes) {
        Lanes leftCells[kWidth];
        for (std::size_t i = 0; i < kWidth; ++i) {
            leftCells[i] = LoadLanes(left[i] + row);
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

template <std::size_t kWidth>
[[gnu::always_inline]] inline void AddBlockBody(Block& block,
                                                std::size_t q,
                                                const WeightedSums& sums,
                                                double* tiles)
{
    const std::size_t padded = block.columns.size();
    for (std::size_t j = 0; j < q; ++j) {
        double* weighted = block.weighted.data() + j * kBlockRows;
        if (sums.slopes != nullptr) {
            WeighColumn<true>(block.columns[j], block, weighted, sums.slopes + j, sums.constants + j);
        } else {
            WeighColumn<false>(block.columns[j], block, weighted, nullptr, sums.constants + j);
        }
    }
    for (std::size_t j = 0; j < padded; j += kWidth) {
        for (std::size_t i = j; i < padded; i += kWidth) {
            MultiplyTile<kWidth>(block.columns.data() + i,
                                 block.weighted.data() + j * kBlockRows,
                                 block.rows,
                                 padded,
                                 tiles + j * padded + i);
        }
    }
}

using AddBlock = void(Block&, std::size_t, const WeightedSums&, double*);

KORVEN_FOR_AVX512 void AddBlockAvx512(Block& block, std::size_t q, const WeightedSums& sums, double* tiles)
{
    AddBlockBody<4>(block, q, sums, tiles);
}

KORVEN_FOR_AVX2 void AddBlockAvx2(Block& block, std::size_t q, const WeightedSums& sums, double* tiles)
{
    AddBlockBody<2>(block, q, sums, tiles);
}

void AddBlockBaseline(Block& block, std::size_t q, const WeightedSums& sums, double* tiles)
{
    AddBlockBody<2>(block, q, sums, tiles);
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

[[gnu::always_inline]] inline void AddColumnsBody(Columns columns,
                                                  std::size_t first,
                                                  std::size_t rows,
                                                  const double* v,
                                                  double* out)
{
    for (std::size_t j = 0; j < columns.size(); ++j) {
        out[j] += LaneProduct(columns[j] + first, v + first, rows);
    }
}

using AddColumns = void(Columns, std::size_t, std::size_t, const double*, double*);

KORVEN_FOR_AVX512 void AddColumnsAvx512(Columns columns,
                                        std::size_t first,
                                        std::size_t rows,
                                        const double* v,
                                        double* out)
{
    AddColumnsBody(columns, first, rows, v, out);
}

KORVEN_FOR_AVX2 void AddColumnsAvx2(Columns columns,
                                    std::size_t first,
                                    std::size_t rows,
                                    const double* v,
                                    double* out)
{
    AddColumnsBody(columns, first, rows, v, out);
}

void AddColumnsBaseline(Columns columns, std::size_t first, std::size_t rows, const double* v, double* out)
{
    AddColumnsBody(columns, first, rows, v, out);
}

AddColumns* BestAddColumns()
{
    switch (BestInstructionSet()) {
        case InstructionSet::kAvx512:
            return AddColumnsAvx512;
        case InstructionSet::kAvx2:
            return AddColumnsAvx2;
        default:
            return AddColumnsBaseline;
    }
}

// The last rows, fewer than a block, copied behind each other and padded with zeros.
struct PaddedRows
{
    std::vector<double> cells;

    PaddedRows(Columns columns, std::size_t first, std::size_t rows) : cells(columns.size() * kBlockRows)
    {
        for (std::size_t j = 0; j < columns.size(); ++j) {
            std::copy_n(columns[j] + first, rows, cells.data() + j * kBlockRows);
        }
    }

    const double* operator[](std::size_t j) const
    {
        return cells.data() + j * kBlockRows;
    }
};

}  // namespace

void ColumnProducts(Columns columns, int n, const double* v, double* out)
{
    const auto rows = static_cast<std::size_t>(std::max(n, 0));
    const std::size_t whole = rows / kLanes * kLanes;
    AddColumns* addColumns = BestAddColumns();
    std::fill_n(out, columns.size(), 0.0);
    for (std::size_t first = 0; first < whole; first += kBlockRows) {
        addColumns(columns, first, std::min(kBlockRows, whole - first), v, out);
    }
    for (std::size_t j = 0; j < columns.size(); ++j) {
        for (std::size_t row = whole; row < rows; ++row) {
            out[j] += columns[j][row] * v[row];
        }
    }
}

void WeightedProducts(Columns columns, int n, const double* u, const double* v, const WeightedSums& sums)
{
    const std::size_t q = columns.size();
    const auto rows = static_cast<std::size_t>(std::max(n, 0));
    const std::size_t padded = RoundUp(q, kTile);
    const std::vector<double> zeros(kBlockRows);
    std::vector<double> tiles(padded * padded);
    Block block{.rows = kBlockRows,
                .columns = std::vector<const double*>(padded, zeros.data()),
                .weighted = std::vector<double>(padded * kBlockRows),
                .u = nullptr,
                .v = nullptr};
    if (sums.slopes != nullptr) std::fill_n(sums.slopes, q, 0.0);
    std::fill_n(sums.constants, q, 0.0);

    AddBlock* addBlock = BestAddBlock();
    std::size_t first = 0;
    for (; first + kBlockRows <= rows; first += kBlockRows) {
        for (std::size_t j = 0; j < q; ++j) {
            block.columns[j] = columns[j] + first;
        }
        block.u = u == nullptr ? nullptr : u + first;
        block.v = v + first;
        addBlock(block, q, sums, tiles.data());
    }
    if (first < rows) {
        const PaddedRows rest(columns, first, rows - first);
        const double* const vectors[] = {u == nullptr ? v : u, v};
        const PaddedRows weights(vectors, first, rows - first);
        for (std::size_t j = 0; j < q; ++j) {
            block.columns[j] = rest[j];
        }
        block.rows = RoundUp(rows - first, kLanes);
        block.u = weights[0];
        block.v = weights[1];
        addBlock(block, q, sums, tiles.data());
    }
    for (std::size_t j = 0; j < q; ++j) {
        for (std::size_t i = j; i < q; ++i) {
            sums.products[j * q + i] = tiles[j * padded + i];
            sums.products[i * q + j] = tiles[j * padded + i];
        }
    }
}

}  // namespace korvenrg::linalg
