#include "kernel/datasets/category_information.h"

#include <algorithm>
#include <vector>

#include "core/limits.h"
#include "kernel/datasets/error_info.h"
#include "kernel/linalg/qualitative.h"
#include "kernel/linalg/ranks.h"

namespace {

using korvenrg::datasets::GrowVector;

constexpr int kFailed = -789;
constexpr int kWarning = 48;

// Weight of each row: 0 where the filter, or a weight that is not positive, leaves it out.
std::vector<double> RowWeights(int n, const matrix<double>* weights, const matrix<short>* rowFilter)
{
    std::vector<double> rows;
    for (int i = 1; i <= n; ++i) {
        const bool isFiltered = rowFilter != nullptr && rowFilter->total > 0 && rowFilter->vbget(i) != 0;
        const double weight = weights == nullptr || weights->total == 0 ? 1.0 : weights->vbget(i);
        rows.push_back(isFiltered || !(weight > 0.0) ? 0.0 : weight);
    }
    return rows;
}

int RowsOf(const matrix<std::wstring>& column, int n)
{
    return std::clamp(n, 0, column.rows);
}

// Writes the first values of `source` and clears the cells behind them.
template <typename T>
void FillColumn(const matrix<T>& source, matrix<T>* target)
{
    if (target == nullptr) return;
    const int count = static_cast<int>(source.total);
    for (int k = 1; k <= target->rows; ++k)
        target->vbset(k, k <= count ? source.vbget(k) : T{});
}

// The j-th column of a block, with room for `count` cells.
template <typename T>
matrix<T>* GrownColumn(cST_MVect<T>& block, int j, int count)
{
    if (block.Column(j) == nullptr) return nullptr;
    GrowVector(block.vectors[static_cast<std::size_t>(j - 1)], count);
    return block.Column(j);
}

void StartInformation(cST_QualiInfo& info, int variables)
{
    info.variables = variables;
    info.maxCategories = 0;
    info.minCategories = 0;
    info.totalCategories = 0;
    GrowVector(info.categoryCounts, variables);
}

void AddCount(cST_QualiInfo& info, int variable, int count)
{
    info.categoryCounts->vbset(variable, count);
    info.maxCategories = std::max(info.maxCategories, count);
    info.minCategories = variable == 1 ? count : std::min(info.minCategories, count);
    info.totalCategories += count;
}

void FinishInformation(cST_QualiInfo& info)
{
    info.categories.SetRows(info.maxCategories);
    info.frequencies.SetRows(info.maxCategories);
    info.StoreScalars();
}

// Categories of all variables, variable after variable.
void ListLabels(cST_QualiInfo& info)
{
    GrowVector(info.labels, info.totalCategories);
    int position = 0;
    for (int v = 1; v <= info.variables; ++v) {
        const matrix<std::wstring>* column = info.categories.Column(v);
        for (int k = 1; k <= info.categoryCounts->vbget(v); ++k) {
            ++position;
            info.labels->vbset(position, column == nullptr ? std::wstring() : column->vbget(k));
        }
    }
    info.labelCount = position;
}

// The rows of a frequency table are the categories of the model, in the model's table and in a sample's.
void DescribeFrequencyTable(TableFormat format, int categories, cST_TableFormats& formats)
{
    formats.SetShape(format, categories, static_cast<int>(CategoryColumn::kCount));
}

// Categories of one column, sorted, with their weighted frequencies; each 1 x count.
struct Categories
{
    matrix<std::wstring> labels{1, 1};
    matrix<double> frequencies{1, 1};
    int count = 0;
};

// Rows of weight 0 give no category; a column that is not there has none.
void FindCategories(matrix<std::wstring>* column, std::vector<double>& rowWeights, Categories& found)
{
    matrix<std::wstring> none(0, 1), allLabels(1, 1);
    matrix<double> W(static_cast<int>(rowWeights.size()), 1, rowWeights.data(), true), allFrequencies(1, 1);
    matrix<int> counts(1, 1);
    matrix<std::wstring>*labelsOut = &found.labels, *allLabelsOut = &allLabels;
    matrix<double>*frequenciesOut = &found.frequencies, *allFrequenciesOut = &allFrequencies;
    matrix<int>* countsOut = &counts;
    if (column == nullptr) column = &none;
    M_InfoQuali(column,
                RowsOf(*column, W.rows),
                1,
                labelsOut,
                frequenciesOut,
                countsOut,
                allLabelsOut,
                allFrequenciesOut,
                &W,
                &found.count,
                korvenrg::kTrue);
}

// Sum of the weights of each category of the model in a sample; *hasUnknown when a row that counts has another text.
matrix<double> FrequenciesIn(const matrix<std::wstring>* column,
                             const std::vector<double>& rowWeights,
                             const matrix<std::wstring>& categories,
                             bool* hasUnknown)
{
    matrix<double> frequencies(categories.cols, 1);
    if (column == nullptr) return frequencies;
    const int n = RowsOf(*column, static_cast<int>(rowWeights.size()));
    const std::vector<int> codes =
        korvenrg::linalg::CategoryCodes(*column, n, 1, categories, categories.cols);
    for (std::size_t i = 0; i < codes.size(); ++i) {
        if (rowWeights[i] == 0.0) continue;
        if (codes[i] == 0) *hasUnknown = true;
        frequencies.vbset(codes[i], frequencies.vbget(codes[i]) + rowWeights[i]);
    }
    return frequencies;
}

// The categories of a variable of the model as one row.
matrix<std::wstring> CategoryRow(const cST_QualiInfo& model, int variable)
{
    const matrix<std::wstring>* column = model.categories.Column(variable);
    if (column == nullptr) return matrix<std::wstring>(1, 0);
    const int count = std::clamp(model.categoryCounts->vbget(variable), 0, column->rows);
    return matrix<std::wstring>(1, count, column->data, false);
}

}  // namespace

int Cpp_GetMaxCat_ST(ST_MVectStr* texts, int n, ST_QualiInfo* info)
{
    const cST_MVect<std::wstring> columns(texts);
    ST_QualiInfo unused{};
    cST_QualiInfo counts(info == nullptr ? &unused : info);
    StartInformation(counts, columns.columns);
    for (int v = 1; v <= columns.columns; ++v) {
        matrix<std::wstring>* column = columns.Column(v);
        AddCount(counts, v, column == nullptr ? 0 : V_NbDistinct(column, RowsOf(*column, n)));
    }
    counts.StoreScalars();
    return counts.maxCategories;
}

void GetQualiDataInfo_ST(cST_MVect<std::wstring>* texts,
                         int n,
                         matrix<double>* weights,
                         matrix<short>* rowFilter,
                         cST_QualiInfo* info,
                         cST_TableFormats* formats)
{
    std::vector<double> rowWeights = RowWeights(n, weights, rowFilter);
    Categories found;
    StartInformation(*info, texts->columns);
    for (int v = 1; v <= texts->columns; ++v) {
        FindCategories(texts->Column(v), rowWeights, found);
        AddCount(*info, v, found.count);
        FillColumn(found.labels, GrownColumn(info->categories, v, found.count));
        FillColumn(found.frequencies, GrownColumn(info->frequencies, v, found.count));
    }
    ListLabels(*info);
    FinishInformation(*info);
    DescribeFrequencyTable(TableFormat::kModelCategories, info->totalCategories, *formats);
}

void GetQualiDataInfoValid_ST(cST_MVect<std::wstring>* texts,
                              int n,
                              matrix<double>* weights,
                              matrix<short>* rowFilter,
                              cST_QualiInfo* model,
                              cST_QualiInfo* sample,
                              cST_TableFormats* formats,
                              short* unknown)
{
    const std::vector<double> rowWeights = RowWeights(n, weights, rowFilter);
    bool hasUnknown = false;
    if (sample != nullptr) StartInformation(*sample, model->variables);
    for (int v = 1; v <= model->variables; ++v) {
        const matrix<std::wstring> categories = CategoryRow(*model, v);
        const matrix<double> frequencies =
            FrequenciesIn(texts->Column(v), rowWeights, categories, &hasUnknown);
        if (sample == nullptr) continue;
        AddCount(*sample, v, categories.cols);
        FillColumn(categories, GrownColumn(sample->categories, v, categories.cols));
        FillColumn(frequencies, GrownColumn(sample->frequencies, v, categories.cols));
    }
    if (sample != nullptr) {
        ListLabels(*sample);
        FinishInformation(*sample);
    }
    DescribeFrequencyTable(TableFormat::kValidationCategories, model->totalCategories, *formats);
    *unknown = korvenrg::AsFlag(hasUnknown);
}

int VerifyQuali(cST_QualiInfo* info,
                const std::wstring& title,
                const std::wstring& message,
                const std::wstring& code,
                ErrorInfo& error)
{
    for (int v = 1; v <= info->variables; ++v) {
        if (info->categoryCounts->vbget(v) != 0) continue;
        LoadErrorInfo_ST(title, message, code, 0, 0, 0, kFailed, kWarning, L"", v, 0, 0, L"", error);
        return v;
    }
    return 0;
}
