#include "kernel/datasets/sample_split.h"

#include <algorithm>
#include <memory>
#include <vector>

namespace {

using korvenrg::datasets::GrowVector;

// Which rows of the sample move.
struct Split
{
    std::vector<char> moves;
    int moved = 0;
};

Split SplitBy(const matrix<double>& indicator, int n)
{
    Split split;
    for (int i = 1; i <= n; ++i) {
        const bool isMarked = indicator.vbget(i) == 1.0;
        split.moves.push_back(isMarked ? 1 : 0);
        split.moved += isMarked ? 1 : 0;
    }
    return split;
}

// Parts one column. The model's cells only move towards the front, so one pass does it in place.
template <typename T>
void SplitVector(const Split& split, matrix<T>& model, std::unique_ptr<matrix<T>>* validation)
{
    if (model.total == 0) return;
    if (validation != nullptr) GrowVector(*validation, split.moved);
    int kept = 0;
    int moved = 0;
    const int held = std::min(static_cast<int>(split.moves.size()), model.rows);
    for (int i = 1; i <= held; ++i) {
        if (split.moves[static_cast<std::size_t>(i - 1)] != 0) {
            ++moved;
            if (validation != nullptr) (*validation)->vbset(moved, model.vbget(i));
            continue;
        }
        ++kept;
        if (kept != i) model.vbset(kept, model.vbget(i));
    }
}

template <typename T>
void SplitBlock(const Split& split, cST_MVect<T>& model, cST_MVect<T>& validation)
{
    for (std::size_t j = 0; j < model.vectors.size(); ++j) {
        const bool isPaired = j < validation.vectors.size();
        SplitVector(split, *model.vectors[j], isPaired ? &validation.vectors[j] : nullptr);
    }
    model.SetRows(static_cast<int>(split.moves.size()) - split.moved);
    validation.SetRows(split.moved);
}

}  // namespace

int ExtractModelAndValidSamples_ST(cST_DataSet* model,
                                   cST_DataSet* validation,
                                   matrix<double>* indicator,
                                   int n)
{
    const Split split = SplitBy(*indicator, n);
    SplitBlock(split, model->responses, validation->responses);
    SplitBlock(split, model->responseFilter, validation->responseFilter);
    SplitBlock(split, model->quantitative, validation->quantitative);
    SplitBlock(split, model->quantitativeFilter, validation->quantitativeFilter);
    SplitBlock(split, model->qualitative, validation->qualitative);
    SplitBlock(split, model->qualitativeFilter, validation->qualitativeFilter);
    SplitBlock(split, model->secondQualitative, validation->secondQualitative);
    SplitBlock(split, model->secondFilter, validation->secondFilter);
    SplitBlock(split, model->thirdQualitative, validation->thirdQualitative);
    SplitVector(split, *model->weights, &validation->weights);
    SplitVector(split, *model->secondWeights, &validation->secondWeights);
    SplitVector(split, *model->rowFilter, &validation->rowFilter);
    model->SetRows(n - split.moved);
    validation->SetRows(split.moved);
    return split.moved;
}
