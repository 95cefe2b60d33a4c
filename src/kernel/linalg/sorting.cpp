#include "kernel/linalg/sorting.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cmath>
#include <cstdint>
#include <numeric>
#include <span>
#include <type_traits>
#include <utility>

#include "core/limits.h"

namespace {

/**
 * Half a key and the place that it came from, in one number: 32 bits of the key above 32 bits of place.
 * Numbers in ascending order are keys in ascending order, equal ones by place.
 */
using Entry = std::uint64_t;
using Entries = std::span<Entry>;

Entry Packed(std::uint64_t halfKey, std::uint64_t place)
{
    return halfKey << 32 | place;
}

std::uint32_t HalfKey(Entry entry)
{
    return static_cast<std::uint32_t>(entry >> 32);
}

int Place(Entry entry)
{
    return static_cast<int>(static_cast<std::uint32_t>(entry));
}

/** Below this many entries comparisons are faster than counting digits. */
constexpr std::size_t kFewEntries = 1500;

constexpr int kDigitBits = 11;
constexpr std::size_t kDigits = std::size_t{1} << kDigitBits;
constexpr int kPasses = 3;  // 3 x 11 bits cover 32

/** Behind every number, in both directions. */
constexpr std::uint64_t kLast = ~std::uint64_t{0};

// Bits whose unsigned order is the order wanted. Negative numbers have all bits turned, the others the sign
// bit: unsigned order is then numeric order. Adding 0.0 turns -0 into +0.
std::uint64_t OrderedBits(double value, bool descending)
{
    if (std::isnan(value)) return kLast;
    const auto bits = std::bit_cast<std::uint64_t>(value + 0.0);
    const std::uint64_t sign = std::uint64_t{1} << 63;
    const std::uint64_t ascending = (bits & sign) != 0 ? ~bits : bits | sign;
    return descending ? ~ascending : ascending;
}

std::uint64_t OrderedBits(int value, bool descending)
{
    const std::uint32_t ascending = static_cast<std::uint32_t>(value) ^ 0x80000000U;
    return std::uint64_t{descending ? ~ascending : ascending} << 32;
}

std::size_t Digit(Entry entry, int pass)
{
    return HalfKey(entry) >> (pass * kDigitBits) & (kDigits - 1);
}

// Stable passes over the digits of the half keys, from the last digit to the first.
void SortByDigits(Entries entries, Entries spare)
{
    std::array<std::array<std::uint32_t, kDigits>, kPasses> counts{};
    for (const Entry entry : entries) {
        for (int pass = 0; pass < kPasses; ++pass) {
            counts[static_cast<std::size_t>(pass)][Digit(entry, pass)] += 1;
        }
    }
    Entries from = entries;
    Entries to = spare.first(entries.size());
    for (int pass = 0; pass < kPasses; ++pass) {
        auto& starts = counts[static_cast<std::size_t>(pass)];
        if (starts[Digit(from.front(), pass)] == from.size()) continue;  // all have this digit in common
        std::exclusive_scan(starts.begin(), starts.end(), starts.begin(), 0U);
        for (const Entry entry : from) {
            to[starts[Digit(entry, pass)]++] = entry;
        }
        std::swap(from, to);
    }
    if (from.data() != entries.data()) std::copy(from.begin(), from.end(), entries.begin());
}

bool DescendsByKey(Entries entries)
{
    const auto isHigher = [](Entry a, Entry b) { return HalfKey(a) > HalfKey(b); };
    return std::is_sorted(entries.begin(), entries.end(), isHigher);
}

// Turns a descending order round; entries of equal keys keep the order of their places.
void TurnRound(Entries entries)
{
    std::reverse(entries.begin(), entries.end());
    for (auto start = entries.begin(); start != entries.end();) {
        const std::uint32_t key = HalfKey(*start);
        const auto end =
            std::find_if(start, entries.end(), [key](Entry entry) { return HalfKey(entry) != key; });
        std::reverse(start, end);
        start = end;
    }
}

// Sorts entries that stand in the order of their places.
void SortHalfKeys(Entries entries, Entries spare)
{
    if (std::is_sorted(entries.begin(), entries.end())) return;
    if (DescendsByKey(entries)) {
        TurnRound(entries);
        return;
    }
    if (entries.size() < kFewEntries) {
        std::sort(entries.begin(), entries.end());
    } else {
        SortByDigits(entries, spare);
    }
}

/** How keys stand: in the order wanted, each strictly behind its successor, or neither. */
enum class Arrangement
{
    kSorted,
    kReversed,
    kMixed
};

/** Rows from `first` on, counted from 1, in the order that they are to get. */
struct RowOrder
{
    int first;
    int count;
    Arrangement before;
    std::vector<Entry> entries;  ///< of mixed keys; Place: the row counted from `first`
    std::vector<Entry> spare;    ///< as many cells, for the steps that need a second array
};

template <typename BitsOf>
Arrangement ArrangementOf(int count, const BitsOf& bitsOf)
{
    bool sorted = true;
    bool reversed = true;
    std::uint64_t before = count > 0 ? bitsOf(0) : 0;
    for (int k = 1; k < count && (sorted || reversed); ++k) {
        const std::uint64_t bits = bitsOf(k);
        sorted = sorted && before <= bits;
        reversed = reversed && before > bits;
        before = bits;
    }
    return sorted ? Arrangement::kSorted : reversed ? Arrangement::kReversed : Arrangement::kMixed;
}

// The order of count keys; bitsOf(k) are the ordered bits of the k-th, from 0. Sorted by the upper half of
// the keys first; runs that have it in common are then sorted by the lower half.
template <typename BitsOf>
RowOrder SortedKeys(int first, int count, const BitsOf& bitsOf)
{
    const auto size = static_cast<std::size_t>(std::max(count, 0));
    RowOrder order{first,
                   std::max(count, 0),
                   Arrangement::kMixed,
                   std::vector<Entry>(size),
                   std::vector<Entry>(size)};
    for (int k = 0; k < count; ++k) {
        order.entries[static_cast<std::size_t>(k)] = Packed(bitsOf(k) >> 32, static_cast<std::uint64_t>(k));
    }
    SortHalfKeys(order.entries, order.spare);
    for (std::size_t start = 0, end = 0; start < size; start = end) {
        const std::uint32_t upper = HalfKey(order.entries[start]);
        end = start + 1;
        while (end < size && HalfKey(order.entries[end]) == upper) {
            ++end;
        }
        if (end == start + 1) continue;
        const Entries run(order.entries.data() + start, end - start);
        for (Entry& entry : run) {
            entry = Packed(bitsOf(Place(entry)) & 0xFFFFFFFFU, entry & 0xFFFFFFFFU);
        }
        SortHalfKeys(run, order.spare);
    }
    return order;
}

// The order of rows first..last, cut to 1..n, by column `col` of the key table of n rows.
template <typename T>
RowOrder OrderOfRows(const matrix<T>& key, int n, int col, int first, int last, bool descending)
{
    first = std::max(first, 1);
    const int count = std::min(last, n) - first + 1;
    const auto bitsOf = [&](int k) { return OrderedBits(key.vbget(first + k, col), descending); };
    const Arrangement before = ArrangementOf(count, bitsOf);
    if (before == Arrangement::kMixed) return SortedKeys(first, count, bitsOf);
    return {first, std::max(count, 0), before, {}, {}};
}

std::uint64_t CellBits(double value)
{
    return std::bit_cast<std::uint64_t>(value);
}

std::uint64_t CellBits(int value)
{
    return static_cast<std::uint32_t>(value);
}

template <typename T>
T CellOf(std::uint64_t bits)
{
    if constexpr (std::is_same_v<T, double>) {
        return std::bit_cast<double>(bits);
    } else {
        return static_cast<T>(static_cast<std::uint32_t>(bits));
    }
}

template <typename T>
void ReverseRows(matrix<T>& table, int cols, int first, int count)
{
    for (int j = 1; j <= cols; ++j) {
        for (int low = first, high = first + count - 1; low < high; ++low, --high) {
            const T cell = table.vbget(low, j);
            table.vbset(low, j, table.vbget(high, j));
            table.vbset(high, j, cell);
        }
    }
}

// A column at a time: its cells in their new order go into the spare array, and back.
template <typename T>
void MoveRows(matrix<T>* table, int cols, RowOrder& order)
{
    if (table == nullptr || order.before == Arrangement::kSorted) return;
    if (order.before == Arrangement::kReversed) {
        ReverseRows(*table, cols, order.first, order.count);
        return;
    }
    for (int j = 1; j <= cols; ++j) {
        for (std::size_t k = 0; k < order.spare.size(); ++k) {
            order.spare[k] = CellBits(table->vbget(order.first + Place(order.entries[k]), j));
        }
        for (std::size_t k = 0; k < order.spare.size(); ++k) {
            table->vbset(order.first + static_cast<int>(k), j, CellOf<T>(order.spare[k]));
        }
    }
}

// Whether row a comes before row b by the first column in which they differ; equal rows by their place.
bool RowComesFirst(const matrix<int>& table, int cols, int a, int b, bool descending)
{
    for (int j = 1; j <= cols; ++j) {
        const int left = table.vbget(a, j);
        const int right = table.vbget(b, j);
        if (left != right) return descending ? right < left : left < right;
    }
    return a < b;
}

}  // namespace

template <typename T>
void SortQ(matrix<T>* table,
           int n,
           int cols,
           int first,
           int last,
           matrix<T>* key,
           matrix<T>* companion,
           int companionColumns,
           short descending,
           short sortKeyToo)
{
    if (key == nullptr) return;
    RowOrder order = OrderOfRows(*key, n, 1, first, last, descending == korvenrg::kTrue);
    MoveRows(table, cols, order);
    if (companion != table) MoveRows(companion, companionColumns, order);
    if (sortKeyToo == korvenrg::kTrue && key != table && key != companion) MoveRows(key, 1, order);
}

template void SortQ(matrix<double>*, int, int, int, int, matrix<double>*, matrix<double>*, int, short, short);
template void SortQ(matrix<int>*, int, int, int, int, matrix<int>*, matrix<int>*, int, short, short);

template <typename Table>
int SortQMatrixCol(Table* table, int rows, int cols, int keyCol, int first, int last, short descending)
{
    if (table == nullptr || keyCol < 1 || keyCol > cols) return -1;
    RowOrder order = OrderOfRows(*table, rows, keyCol, first, last, descending == korvenrg::kTrue);
    MoveRows(table, cols, order);
    return 0;
}

template int SortQMatrixCol(matrix<double>*, int, int, int, int, int, short);
template int SortQMatrixCol(matrix<int>*, int, int, int, int, int, short);

template <typename T>
void SortQVector(matrix<T>* vector, int n, int first, int last, short descending)
{
    SortQ<T>(nullptr, n, 0, first, last, vector, nullptr, 0, descending, korvenrg::kTrue);
}

template void SortQVector(matrix<double>*, int, int, int, short);
template void SortQVector(matrix<int>*, int, int, int, short);

void SortMatrixSeqQ(matrix<int>* table, int rows, int cols, short descending)
{
    if (table == nullptr || rows < 1) return;
    const auto size = static_cast<std::size_t>(rows);
    RowOrder order{1, rows, Arrangement::kMixed, std::vector<Entry>(size), std::vector<Entry>(size)};
    std::iota(order.entries.begin(), order.entries.end(), Entry{0});
    std::sort(order.entries.begin(), order.entries.end(), [&](Entry a, Entry b) {
        return RowComesFirst(*table, cols, Place(a) + 1, Place(b) + 1, descending == korvenrg::kTrue);
    });
    MoveRows(table, cols, order);
}

namespace korvenrg::linalg {

template <typename T>
std::vector<int> SortedOrder(const T* values, int n, bool descending)
{
    const RowOrder sorted = SortedKeys(0, n, [&](int k) { return OrderedBits(values[k], descending); });
    std::vector<int> order(sorted.entries.size());
    std::transform(sorted.entries.begin(), sorted.entries.end(), order.begin(), Place);
    return order;
}

template std::vector<int> SortedOrder(const double*, int, bool);
template std::vector<int> SortedOrder(const int*, int, bool);

}  // namespace korvenrg::linalg
