#include "kernel/linalg/letter_groups.h"

#include <algorithm>
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

// Whether row v differs from a member of the group.
bool Differs(const PairVerdicts& verdicts, const Group& group, std::size_t v)
{
    for (std::size_t u = 0; u < group.size(); ++u) {
        if (group[u] && verdicts.Significant(u, v)) return true;
    }
    return false;
}

// The first row from `start` on, and before `end`, that could join the group; end when there is none.
std::size_t NextToJoin(const PairVerdicts& verdicts, const Group& group, std::size_t start, std::size_t end)
{
    while (start < end && (group[start] || Differs(verdicts, group, start))) {
        ++start;
    }
    return start;
}

// The group with each row that can still join it, the first rows first.
Group Completed(const PairVerdicts& verdicts, Group group)
{
    const std::size_t p = group.size();
    for (std::size_t v = NextToJoin(verdicts, group, 0, p); v < p; v = NextToJoin(verdicts, group, v + 1, p))
    {
        group[v] = true;
    }
    return group;
}

// The group's rows before j that do not differ from j, with j. Empty when j belongs to the group, or differs from none
// of those rows, or when another row before j could join.
Group TurnedAt(const PairVerdicts& verdicts, const Group& group, std::size_t j)
{
    Group turned(group.size(), false);
    bool differs = false;
    for (std::size_t u = 0; u < j && !group[j]; ++u) {
        if (!group[u]) continue;
        turned[u] = !verdicts.Significant(u, j);
        differs = differs || !turned[u];
    }
    if (!differs) return Group();
    turned[j] = true;
    return NextToJoin(verdicts, turned, 0, j) == j ? turned : Group();
}

// All groups to which no row can be added, those that hold the first rows first; none when there are too many.
std::optional<std::vector<Group>> FormGroups(const PairVerdicts& verdicts, std::size_t p)
{
    std::vector<Group> groups;
    std::set<Group, std::greater<>> found;
    if (p > 0) found.insert(Completed(verdicts, Group(p, false)));
    while (!found.empty()) {
        if (groups.size() == kMostGroups) return std::nullopt;
        groups.push_back(*found.begin());
        found.erase(found.begin());
        for (std::size_t j = 0; j < p; ++j) {
            const Group turned = TurnedAt(verdicts, groups.back(), j);
            if (!turned.empty()) found.insert(Completed(verdicts, turned));
        }
    }
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
    std::optional<std::vector<Group>> groups;
    const auto rows = static_cast<std::size_t>(p);
    if (AllTested(verdicts, rows)) groups = FormGroups(verdicts, rows);
    const std::vector<Group> formed = groups.value_or(std::vector<Group>());
    WriteLetters(formed, p, *GTable);
    *pG = static_cast<int>(formed.size());
    return korvenrg::AsFlag(groups.has_value());
}
