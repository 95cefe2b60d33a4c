#include "kernel/linalg/qualitative.h"

#include <algorithm>
#include <string_view>
#include <unordered_map>

#include "core/limits.h"

namespace {

constexpr int kQualitative = 2;
constexpr int kQualitativeInteraction = 4;
constexpr int kMixedInteraction = 5;

constexpr int kSumOfEffects = 2;
constexpr int kWeightedSum = 3;

// What a row of the last category gets in the column of category j.
double FoldedCell(int constraint, const matrix<double>& freq, int variable, int j, int last)
{
    if (constraint == kSumOfEffects) return -1.0;
    return -(freq.vbget(variable, j) / freq.vbget(variable, last));
}

}  // namespace

int isQuali(int FactType)
{
    return korvenrg::AsFlag(FactType == kQualitative || FactType == kQualitativeInteraction ||
                            FactType == kMixedInteraction);
}

int isQualiPure(int FactType)
{
    return korvenrg::AsFlag(FactType == kQualitative || FactType == kQualitativeInteraction);
}

void BuildDisjunctiveTable(matrix<std::wstring>& Q,
                           int n,
                           int q,
                           int maxCat,
                           matrix<int>& nbCat,
                           matrix<std::wstring>& cats,
                           matrix<double>& freq,
                           matrix<double>& out,
                           int constraint,
                           [[maybe_unused]] int mode)
{
    const bool folds = constraint == kSumOfEffects || constraint == kWeightedSum;
    std::fill_n(out.data, out.total, 0.0);
    int before = 0;  // columns of the variables so far
    for (int v = 1; v <= q; ++v) {
        const int count = std::max(nbCat.vbget(v), 0);
        const std::vector<int> codes =
            korvenrg::linalg::CategoryCodes(Q, n, v, cats, std::min(count, maxCat));
        for (int r = 1; r <= n; ++r) {
            const int category = codes[static_cast<std::size_t>(r - 1)];
            if (category == 0) continue;
            out.vbset(r, before + category, 1.0);
            if (!folds || category != count) continue;
            for (int j = 1; j < count; ++j) {
                out.vbset(r, before + j, FoldedCell(constraint, freq, v, j, count));
            }
        }
        before += count;
    }
}

namespace korvenrg::linalg {

namespace {

// Text of a cell without a copy; empty outside the matrix.
std::wstring_view TextAt(const matrix<std::wstring>& texts, int i, int j)
{
    const std::uint32_t position =
        static_cast<std::uint32_t>(texts.rows) * static_cast<std::uint32_t>(j - 1) +
        static_cast<std::uint32_t>(i - 1);
    return position < texts.total ? std::wstring_view(texts.data[position]) : std::wstring_view();
}

}  // namespace

std::vector<int> CategoryCodes(const matrix<std::wstring>& Q,
                               int n,
                               int variable,
                               const matrix<std::wstring>& cats,
                               int count)
{
    std::unordered_map<std::wstring_view, int> numbers;
    for (int j = 1; j <= count; ++j) {
        numbers.try_emplace(TextAt(cats, variable, j), j);
    }
    std::vector<int> codes(static_cast<std::size_t>(std::max(n, 0)));
    for (int r = 1; r <= n; ++r) {
        const auto found = numbers.find(TextAt(Q, r, variable));
        if (found != numbers.end()) codes[static_cast<std::size_t>(r - 1)] = found->second;
    }
    return codes;
}

}  // namespace korvenrg::linalg
