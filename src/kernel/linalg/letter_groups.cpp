#include "kernel/linalg/letter_groups.h"

#include <algorithm>
#include <functional>
#include <optional>
#include <unordered_map>
#include <vector>

#include "core/limits.h"
#include "kernel/linalg/sorting.h"

namespace {

constexpr std::size_t kMostGroups = korvenrg::linalg::kMostLetterGroups;

/** Groups held on the way; the splits still to come can merge some of them again. */
constexpr std::size_t kMostGroupsOnTheWay = 1024;

/** Whether each row belongs. */
using Group = std::vector<bool>;

/** Verdicts of all pairs of rows. */
class PairVerdicts
{
  public:
    explicit PairVerdicts(std::size_t rows) : rows_(rows), cells_(rows * rows, kUntested) {}

    void Set(std::size_t i, std::size_t j, int verdict)
    {
        cells_[i * rows_ + j] = verdict;
        cells_[j * rows_ + i] = verdict;
    }
    bool Tested(std::size_t i, std::size_t j) const
    {
        return cells_[i * rows_ + j] >= 0;
    }
    bool Significant(std::size_t i, std::size_t j) const
    {
        return cells_[i * rows_ + j] == 1;
    }

  private:
    static constexpr int kUntested = -1;
    std::size_t rows_;
    std::vector<int> cells_;
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
    const int count = std::min(contrasts.rows, p * (p - 1) / 2);
    for (int k = 1; k <= count; ++k) {
        const auto first = rowOf.find(contrasts.vbget(k, ID1));
        const auto second = rowOf.find(contrasts.vbget(k, ID2));
        if (first == rowOf.end() || second == rowOf.end()) continue;
        verdicts.Set(first->second, second->second, signif.vbget(k));
    }
    return verdicts;
}

// The rows that have a mean.
std::vector<std::size_t> RowsWithMean(const matrix<double>& table, int p)
{
    std::vector<std::size_t> rows;
    for (int i = 1; i <= p; ++i) {
        if (!korvenrg::IsMissing(table.vbget(i, 1))) rows.push_back(static_cast<std::size_t>(i - 1));
    }
    return rows;
}

bool AllTested(const PairVerdicts& verdicts, const std::vector<std::size_t>& rows)
{
    for (const std::size_t i : rows) {
        for (const std::size_t j : rows) {
            if (i < j && !verdicts.Tested(i, j)) return false;
        }
    }
    return true;
}

bool LiesInside(const Group& inner, const Group& outer)
{
    for (std::size_t i = 0; i < inner.size(); ++i) {
        if (inner[i] && !outer[i]) return false;
    }
    return true;
}

// Adds a group unless it lies inside one that is there; drops those that lie inside it.
void InsertAndAbsorb(std::vector<Group>& groups, Group added)
{
    const auto holdsAdded = [&](const Group& group) { return LiesInside(added, group); };
    if (std::any_of(groups.begin(), groups.end(), holdsAdded)) return;
    std::erase_if(groups, [&](const Group& group) { return LiesInside(group, added); });
    groups.push_back(std::move(added));
}

// Every group with both i and j becomes two, one without i and one without j.
void Split(std::vector<Group>& groups, std::size_t i, std::size_t j)
{
    std::vector<Group> split;
    std::erase_if(groups, [&](const Group& group) {
        if (!group[i] || !group[j]) return false;
        split.push_back(group);
        return true;
    });
    for (const std::size_t without : {i, j}) {
        for (Group part : split) {
            part[without] = false;
            InsertAndAbsorb(groups, std::move(part));
        }
    }
}

std::optional<std::vector<Group>> FormGroups(const PairVerdicts& verdicts,
                                             const std::vector<std::size_t>& rows,
                                             std::size_t p)
{
    Group all(p, false);
    for (const std::size_t i : rows) {
        all[i] = true;
    }
    std::vector<Group> groups;
    if (!rows.empty()) groups.push_back(all);
    for (const std::size_t i : rows) {
        for (const std::size_t j : rows) {
            if (i < j && verdicts.Significant(i, j)) Split(groups, i, j);
            if (groups.size() > kMostGroupsOnTheWay) return std::nullopt;
        }
    }
    if (groups.size() > kMostGroups) return std::nullopt;
    std::sort(groups.begin(), groups.end(), std::greater<>());
    return groups;
}

void WriteLetters(const std::vector<Group>& groups, int p, matrix<std::wstring>& table)
{
    for (std::size_t g = 0; g < kMostGroups; ++g) {
        const std::wstring letters = korvenrg::linalg::GroupLetters(static_cast<int>(g) + 1);
        for (int i = 1; i <= p; ++i) {
            const bool member = g < groups.size() && groups[g][static_cast<std::size_t>(i - 1)];
            table.vbset(i, static_cast<int>(g) + 1, member ? letters : std::wstring());
        }
    }
}

}  // namespace

namespace korvenrg::linalg {

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
    const std::vector<std::size_t> rows = RowsWithMean(*iVect, p);
    const PairVerdicts verdicts = ReadVerdicts(*ContrastsStats, ID1, ID2, *Signif, *Ranks, p);
    std::optional<std::vector<Group>> groups;
    if (AllTested(verdicts, rows)) groups = FormGroups(verdicts, rows, static_cast<std::size_t>(p));
    const std::vector<Group> formed = groups.value_or(std::vector<Group>());
    WriteLetters(formed, p, *GTable);
    *pG = static_cast<int>(formed.size());
    return korvenrg::AsFlag(groups.has_value());
}
