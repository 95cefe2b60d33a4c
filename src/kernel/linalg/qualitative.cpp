#include "kernel/linalg/qualitative.h"

#include <algorithm>
#include <map>
#include <string_view>
#include <unordered_map>

#include "core/limits.h"
#include "kernel/linalg/outputs.h"

namespace {

constexpr int kQualitative = 2;
constexpr int kQualitativeInteraction = 4;
constexpr int kMixedInteraction = 5;

constexpr int kSumOfEffects = 2;
constexpr int kWeightedSum = 3;

constexpr int kMarksUnknown = 1;

// A row without a category, in the columns of one variable.
void MarkUnknown(matrix<double>& out, int row, int before, int count)
{
    for (int j = 1; j <= count; ++j) {
        out.vbset(row, before + j, korvenrg::kMissing);
    }
}

// What a row of the last category gets in the column of category j.
double FoldedCell(int constraint, const matrix<double>& freq, int variable, int j, int last)
{
    if (constraint == kSumOfEffects) return -1.0;
    return -(freq.vbget(variable, j) / freq.vbget(variable, last));
}

// Categories of a column with their weighted frequencies, sorted.
using Frequencies = std::map<std::wstring, double>;

Frequencies FrequenciesOf(const matrix<std::wstring>& Q,
                          int n,
                          int variable,
                          const matrix<double>* W,
                          bool weightedOnly)
{
    Frequencies frequencies;
    for (int r = 1; r <= n; ++r) {
        const double weight = W == nullptr ? 1.0 : W->vbget(r);
        if (weightedOnly && !(weight > 0.0)) continue;
        frequencies[Q.vbget(r, variable)] += weight;
    }
    return frequencies;
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
                           int mode)
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
            if (category == 0) {
                if (mode == kMarksUnknown) MarkUnknown(out, r, before, count);
                continue;
            }
            out.vbset(r, before + category, 1.0);
            if (!folds || category != count) continue;
            for (int j = 1; j < count; ++j) {
                out.vbset(r, before + j, FoldedCell(constraint, freq, v, j, count));
            }
        }
        before += count;
    }
}

void M_InfoQuali(matrix<std::wstring>* Q,
                 int n,
                 int q,
                 matrix<std::wstring>*& labels,
                 matrix<double>*& freq,
                 matrix<int>*& counts,
                 matrix<std::wstring>*& allLabels,
                 matrix<double>*& allFreq,
                 matrix<double>* W,
                 int* maxCat,
                 short weightedOnly)
{
    using korvenrg::linalg::EnsureShape;
    std::vector<Frequencies> variables;
    std::size_t most = 0;
    std::size_t total = 0;
    for (int v = 1; v <= q; ++v) {
        variables.push_back(FrequenciesOf(*Q, n, v, W, weightedOnly == korvenrg::kTrue));
        most = std::max(most, variables.back().size());
        total += variables.back().size();
    }
    *maxCat = static_cast<int>(most);
    EnsureShape(labels, q, *maxCat);
    EnsureShape(freq, q, *maxCat);
    EnsureShape(counts, q, 1);
    EnsureShape(allLabels, static_cast<int>(total), 1);
    EnsureShape(allFreq, static_cast<int>(total), 1);
    std::fill_n(labels->data, labels->total, std::wstring());
    std::fill_n(freq->data, freq->total, 0.0);

    int position = 0;
    for (int v = 1; v <= q; ++v) {
        const Frequencies& categories = variables[static_cast<std::size_t>(v - 1)];
        counts->vbset(v, static_cast<int>(categories.size()));
        int category = 0;
        for (const auto& [label, frequency] : categories) {
            ++category;
            ++position;
            labels->vbset(v, category, label);
            freq->vbset(v, category, frequency);
            allLabels->vbset(position, label);
            allFreq->vbset(position, frequency);
        }
    }
}

void M_ReplaceCatByCodes(matrix<std::wstring>* Q,
                         int n,
                         int q,
                         matrix<std::wstring>* labels,
                         matrix<int>* counts,
                         matrix<int>*& codes)
{
    korvenrg::linalg::EnsureShape(codes, n, q);
    for (int v = 1; v <= q; ++v) {
        const std::vector<int> numbers = korvenrg::linalg::CategoryCodes(*Q, n, v, *labels, counts->vbget(v));
        for (int r = 1; r <= n; ++r) {
            codes->vbset(r, v, numbers[static_cast<std::size_t>(r - 1)]);
        }
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
