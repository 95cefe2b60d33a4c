#include "kernel/linalg/sorting.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cmath>
#include <cstdint>
#include <numeric>
#include <utility>

#include "core/limits.h"

namespace {

/** A key as bits whose unsigned order is the order wanted, with the place that it came from. */
struct Entry
{
    std::uint64_t bits;
    int place;
};

/** Below this many entries comparisons are faster than counting digits. */
constexpr std::size_t kFewEntries = 1500;

constexpr int kDigitBits = 11;
constexpr std::size_t kDigits = std::size_t{1} << kDigitBits;
constexpr int kPasses = 6;  // 6 x 11 bits cover 64

/** Behind every number, in both directions. */
constexpr std::uint64_t kLast = ~std::uint64_t{0};

// Negative numbers have all bits turned, the others the sign bit: unsigned order is then numeric order.
// Adding 0.0 turns -0 into +0.
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
    const std::uint64_t ascending = static_cast<std::uint32_t>(value) ^ 0x80000000U;
    return descending ? 0xFFFFFFFFU - ascending : ascending;
}

std::size_t Digit(const Entry& entry, int pass)
{
    return entry.bits >> (pass * kDigitBits) & (kDigits - 1);
}

// One stable pass over one digit. Says whether anything was moved: a digit that all entries share moves none.
bool SortByDigit(const std::vector<Entry>& from,
                 std::vector<Entry>& to,
                 int pass,
                 std::array<std::uint32_t, kDigits>& counts)
{
    if (counts[Digit(from.front(), pass)] == from.size()) return false;
    std::uint32_t before = 0;
    for (std::uint32_t& count : counts) {
        before += std::exchange(count, before);
    }
    for (const Entry& entry : from) {
        to[counts[Digit(entry, pass)]++] = entry;
    }
    return true;
}

void RadixSort(std::vector<Entry>& entries)
{
    std::vector<std::array<std::uint32_t, kDigits>> counts(kPasses);
    for (const Entry& entry : entries) {
        for (int pass = 0; pass < kPasses; ++pass) {
            counts[static_cast<std::size_t>(pass)][Digit(entry, pass)] += 1;
        }
    }
    std::vector<Entry> other(entries.size());
    for (int pass = 0; pass < kPasses; ++pass) {
        if (SortByDigit(entries, other, pass, counts[static_cast<std::size_t>(pass)])) entries.swap(other);
    }
}

bool ComesFirst(const Entry& a, const Entry& b)
{
    return a.bits != b.bits ? a.bits < b.bits : a.place < b.place;
}

void SortEntries(std::vector<Entry>& entries)
{
    if (entries.size() < kFewEntries) {
        std::sort(entries.begin(), entries.end(), ComesFirst);
    } else {
        RadixSort(entries);
    }
}

// The sorted entries of count values; at(k) is the k-th value, from 0.
template <typename Values>
std::vector<Entry> SortedEntries(int count, bool descending, const Values& at)
{
    std::vector<Entry> entries(static_cast<std::size_t>(std::max(count, 0)));
    for (int k = 0; k < count; ++k) {
        entries[static_cast<std::size_t>(k)] = {OrderedBits(at(k), descending), k};
    }
    SortEntries(entries);
    return entries;
}

/** Rows first to last, from 1, in the order that they are to get. */
struct RowOrder
{
    int first;
    std::vector<Entry> entries;
};

// The order of rows first..last, cut to 1..n, by column `col` of the key table of n rows.
template <typename T>
RowOrder OrderOfRows(const matrix<T>& key, int n, int col, int first, int last, bool descending)
{
    first = std::max(first, 1);
    const int count = std::min(last, n) - first + 1;
    return {first, SortedEntries(count, descending, [&](int k) { return key.vbget(first + k, col); })};
}

template <typename T>
void MoveRows(matrix<T>* table, int cols, const RowOrder& order)
{
    if (table == nullptr) return;
    std::vector<T> moved(order.entries.size());
    for (int j = 1; j <= cols; ++j) {
        for (std::size_t k = 0; k < moved.size(); ++k) {
            moved[k] = table->vbget(order.first + order.entries[k].place, j);
        }
        for (std::size_t k = 0; k < moved.size(); ++k) {
            table->vbset(order.first + static_cast<int>(k), j, moved[k]);
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
    const RowOrder order = OrderOfRows(*key, n, 1, first, last, descending == korvenrg::kTrue);
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
    MoveRows(table, cols, OrderOfRows(*table, rows, keyCol, first, last, descending == korvenrg::kTrue));
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
    std::vector<int> places(static_cast<std::size_t>(rows));
    std::iota(places.begin(), places.end(), 1);
    std::sort(places.begin(), places.end(), [&](int a, int b) {
        return RowComesFirst(*table, cols, a, b, descending == korvenrg::kTrue);
    });
    RowOrder order{1, std::vector<Entry>(places.size())};
    for (std::size_t k = 0; k < places.size(); ++k) {
        order.entries[k].place = places[k] - 1;
    }
    MoveRows(table, cols, order);
}

namespace korvenrg::linalg {

template <typename T>
std::vector<int> SortedOrder(const T* values, int n, bool descending)
{
    const std::vector<Entry> entries = SortedEntries(n, descending, [&](int k) { return values[k]; });
    std::vector<int> order(entries.size());
    std::transform(entries.begin(), entries.end(), order.begin(), [](const Entry& e) { return e.place; });
    return order;
}

template std::vector<int> SortedOrder(const double*, int, bool);
template std::vector<int> SortedOrder(const int*, int, bool);

}  // namespace korvenrg::linalg
