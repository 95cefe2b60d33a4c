#include "kernel/linalg/letter_groups.h"

#include <algorithm>
#include <bit>
#include <compare>
#include <cstdint>
#include <functional>
#include <optional>
#include <set>
#include <unordered_map>
#include <vector>

#include "core/limits.h"
#include "kernel/linalg/sorting.h"

namespace {

constexpr std::size_t kMostGroups = korvenrg::linalg::kMostLetterGroups;

/** A set of rows, from 0, as bits. The words compare as the rows do, the first row being the highest bit. */
class RowSet
{
  public:
    explicit RowSet(std::size_t rows) : words_((rows + kBits - 1) / kBits) {}

    bool Holds(std::size_t row) const
    {
        return (words_[row / kBits] & BitOf(row)) != 0;
    }
    void Put(std::size_t row, bool holds)
    {
        std::uint64_t& word = words_[row / kBits];
        word = holds ? word | BitOf(row) : word & ~BitOf(row);
    }
    void Add(std::size_t row)
    {
        Put(row, true);
    }
    void Remove(const RowSet& other)
    {
        for (std::size_t w = 0; w < words_.size(); ++w)
            words_[w] &= ~other.words_[w];
    }
    /** Takes out the row and all behind it. */
    void CutAt(std::size_t row)
    {
        words_[row / kBits] &= ~FromRow(row);
        std::fill(words_.begin() + static_cast<std::ptrdiff_t>(row / kBits) + 1, words_.end(), 0);
    }
    /** The first row of the set from `row` on; `end` when there is none before it. */
    std::size_t FirstFrom(std::size_t row, std::size_t end) const
    {
        for (; row < end; row = (row / kBits + 1) * kBits) {
            const std::uint64_t rest = words_[row / kBits] & FromRow(row);
            if (rest == 0) continue;
            const std::size_t first = row / kBits * kBits + static_cast<std::size_t>(std::countl_zero(rest));
            return std::min(first, end);
        }
        return end;
    }
    auto operator<=>(const RowSet&) const = default;

  private:
    static constexpr std::size_t kBits = 64;

    static constexpr std::uint64_t BitOf(std::size_t row)
    {
        return std::uint64_t{1} << (kBits - 1 - row % kBits);
    }
    /** The bits of the row's word from the row on. */
    static constexpr std::uint64_t FromRow(std::size_t row)
    {
        return BitOf(row) | (BitOf(row) - 1);
    }

    std::vector<std::uint64_t> words_;
};

/** Verdicts of all pairs of rows. */
class PairVerdicts
{
  public:
    explicit PairVerdicts(std::size_t rows) : tested_(rows, RowSet(rows)), significant_(rows, RowSet(rows)) {}

    /** @param verdict  1 significant, 0 not; below 0 the pair counts as untested */
    void Set(std::size_t i, std::size_t j, int verdict)
    {
        tested_[i].Put(j, verdict >= 0);
        tested_[j].Put(i, verdict >= 0);
        significant_[i].Put(j, verdict == 1);
        significant_[j].Put(i, verdict == 1);
    }
    bool Tested(std::size_t i, std::size_t j) const
    {
        return tested_[i].Holds(j);
    }
    /** The rows that differ from row i. */
    const RowSet& DifferentFrom(std::size_t i) const
    {
        return significant_[i];
    }

  private:
    std::vector<RowSet> tested_;
    std::vector<RowSet> significant_;
};

void SortByMean(matrix<double>* table,
                int nbcols,
                int p,
                matrix<double>* ranks,
                const short* sort,
                short down)
{
    if (sort == nullptr || *sort != korvenrg::kTrue) return;
    SortQ<double>(table, p, nbcols, 1, p, table, ranks, 1, down, korvenrg::kTrue);
}

PairVerdicts ReadVerdicts(const matrix<double>& contrasts,
                          int ID1,
                          int ID2,
                          const matrix<int>& signif,
                          const matrix<double>& ranks,
                          int p)
{
    std::unordered_map<double, std::size_t> rowOf;
    for (int i = 1; i <= p; ++i) {
        rowOf.try_emplace(ranks.vbget(i), static_cast<std::size_t>(i - 1));
    }
    PairVerdicts verdicts(static_cast<std::size_t>(p));
    const int count = std::min(contrasts.rows, korvenrg::linalg::CountOfPairs(p));
    for (int k = 1; k <= count; ++k) {
        const auto first = rowOf.find(contrasts.vbget(k, ID1));
        const auto second = rowOf.find(contrasts.vbget(k, ID2));
        if (first == rowOf.end() || second == rowOf.end()) continue;
        verdicts.Set(first->second, second->second, signif.vbget(k));
    }
    return verdicts;
}

bool AllTested(const PairVerdicts& verdicts, std::size_t p)
{
    for (std::size_t i = 0; i < p; ++i) {
        for (std::size_t j = i + 1; j < p; ++j) {
            if (!verdicts.Tested(i, j)) return false;
        }
    }
    return true;
}

// The rows that do not belong to the group and differ from none of it.
RowSet Joinable(const PairVerdicts& verdicts, const RowSet& group, std::size_t p)
{
    RowSet joinable(p);
    for (std::size_t v = 0; v < p; ++v)
        joinable.Add(v);
    joinable.Remove(group);
    for (std::size_t u = group.FirstFrom(0, p); u < p; u = group.FirstFrom(u + 1, p)) {
        joinable.Remove(verdicts.DifferentFrom(u));
    }
    return joinable;
}

// The group with each row that can still join it, the first rows first.
RowSet Completed(const PairVerdicts& verdicts, RowSet group, std::size_t p)
{
    RowSet joinable = Joinable(verdicts, group, p);
    for (std::size_t v = joinable.FirstFrom(0, p); v < p; v = joinable.FirstFrom(v + 1, p)) {
        group.Add(v);
        joinable.Remove(verdicts.DifferentFrom(v));
    }
    return group;
}

// The group's rows before j that do not differ from j, with j. None when j belongs to the group, or differs from none
// of those rows, or when another row before j could join.
std::optional<RowSet> TurnedAt(const PairVerdicts& verdicts,
                               const RowSet& group,
                               std::size_t j,
                               std::size_t p)
{
    if (group.Holds(j)) return std::nullopt;
    RowSet before = group;
    before.CutAt(j);
    RowSet turned = before;
    turned.Remove(verdicts.DifferentFrom(j));
    if (turned == before) return std::nullopt;
    turned.Add(j);
    if (Joinable(verdicts, turned, p).FirstFrom(0, j) < j) return std::nullopt;
    return turned;
}

// All groups to which no row can be added, those that hold the first rows first; none when there are too many.
std::optional<std::vector<RowSet>> FormGroups(const PairVerdicts& verdicts, std::size_t p)
{
    std::vector<RowSet> groups;
    std::set<RowSet, std::greater<>> found;
    if (p > 0) found.insert(Completed(verdicts, RowSet(p), p));
    while (!found.empty()) {
        if (groups.size() == kMostGroups) return std::nullopt;
        groups.push_back(*found.begin());
        found.erase(found.begin());
        for (std::size_t j = 0; j < p; ++j) {
            const std::optional<RowSet> turned = TurnedAt(verdicts, groups.back(), j, p);
            if (turned) found.insert(Completed(verdicts, *turned, p));
        }
    }
    return groups;
}

void WriteLetters(const std::vector<RowSet>& groups, int p, matrix<std::wstring>& table)
{
    for (std::size_t g = 0; g < kMostGroups; ++g) {
        const std::wstring letters = korvenrg::linalg::GroupLetters(static_cast<int>(g) + 1);
        for (int i = 1; i <= p; ++i) {
            const bool member = g < groups.size() && groups[g].Holds(static_cast<std::size_t>(i - 1));
            table.vbset(i, static_cast<int>(g) + 1, member ? letters : std::wstring());
        }
    }
}

}  // namespace

namespace korvenrg::linalg {

int CountOfPairs(int p)
{
    constexpr int kMostCategories = 65536;
    return p < 0 || p > kMostCategories ? 0 : static_cast<int>(std::int64_t{p} * (p - 1) / 2);
}

std::wstring GroupLetters(int number)
{
    std::wstring letters;
    for (; number > 0; number = (number - 1) / 26) {
        letters.insert(letters.begin(), static_cast<wchar_t>(L'A' + (number - 1) % 26));
    }
    return letters;
}

}  // namespace korvenrg::linalg

short BuildGroupingForDiffs(matrix<double>* iVect,
                            int nbcols,
                            matrix<double>* ContrastsStats,
                            int p,
                            matrix<int>* Signif,
                            matrix<std::wstring>* GTable,
                            int* pG,
                            matrix<double>* Ranks,
                            int ID1,
                            int ID2,
                            const short* iSort,
                            short iSortDown)
{
    p = std::max(p, 0);
    SortByMean(iVect, nbcols, p, Ranks, iSort, iSortDown);
    const PairVerdicts verdicts = ReadVerdicts(*ContrastsStats, ID1, ID2, *Signif, *Ranks, p);
    std::optional<std::vector<RowSet>> groups;
    const auto rows = static_cast<std::size_t>(p);
    if (AllTested(verdicts, rows)) groups = FormGroups(verdicts, rows);
    const std::vector<RowSet> formed = groups.value_or(std::vector<RowSet>());
    WriteLetters(formed, p, *GTable);
    *pG = static_cast<int>(formed.size());
    return korvenrg::AsFlag(groups.has_value());
}
