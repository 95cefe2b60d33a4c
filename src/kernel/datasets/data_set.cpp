#include "kernel/datasets/data_set.h"

using korvenrg::datasets::ArrayOf;

namespace {

enum ShapeColumn : int
{
    kRows = 1,
    kColumns = 2
};

template <typename T>
std::unique_ptr<matrix<T>> ViewOf(SAFEARRAY* array)
{
    return std::make_unique<matrix<T>>(ArrayOf<T>(array));
}

}  // namespace

cST_QualiInfo::cST_QualiInfo(ST_QualiInfo* source)
    : record(source),
      maxCategories(source->maxCategories),
      minCategories(source->minCategories),
      totalCategories(source->totalCategories),
      variables(source->variables),
      categoryCounts(ViewOf<int>(source->categoryCounts)),
      categories(&source->categories),
      frequencies(&source->frequencies),
      labelCount(source->labelCount),
      labels(ViewOf<std::wstring>(source->labels))
{
}

void cST_QualiInfo::StoreScalars()
{
    record->maxCategories = maxCategories;
    record->minCategories = minCategories;
    record->totalCategories = totalCategories;
    record->variables = variables;
    record->labelCount = labelCount;
}

cST_DataSet::cST_DataSet(ST_DataSet* source)
    : record(source),
      rows(source->rows),
      identifier(source->identifier),
      responses(&source->responses),
      responseFilterUsed(source->responseFilterUsed),
      responseFilter(&source->responseFilter),
      pX(source->pX),
      quantitativeOption(source->quantitativeOption),
      quantitative(&source->quantitative),
      quantitativeFilterUsed(source->quantitativeFilterUsed),
      quantitativeFilter(&source->quantitativeFilter),
      pQ(source->pQ),
      qualitative(&source->qualitative),
      qualitativeFilter(&source->qualitativeFilter),
      secondQualitative(&source->secondQualitative),
      secondFilter(&source->secondFilter),
      factorTable(ArrayOf<int>(source->factorTable)),
      factorLabels(ArrayOf<std::wstring>(source->factorLabels)),
      weights(ViewOf<double>(source->weights)),
      secondWeights(ViewOf<double>(source->secondWeights)),
      thirdQualitative(&source->thirdQualitative),
      qualitativeInfo(&source->qualitativeInfo),
      rowFilter(ViewOf<short>(source->rowFilter)),
      indicators(&source->indicators),
      otherColumns(&source->otherColumns),
      output(ArrayOf<double>(source->output))
{
}

void cST_DataSet::SetRows(std::int64_t count)
{
    rows = count;
    record->rows = count;
}

cST_TableFormats::cST_TableFormats(ST_TableFormats* source)
    : record(source), count(source->count), shapes(ArrayOf<int>(source->shapes))
{
}

void cST_TableFormats::SetShape(TableFormat format, int tableRows, int tableColumns)
{
    const int position = static_cast<int>(format);
    if (position > count || position > shapes.rows) return;
    shapes.vbset(position, kRows, tableRows);
    shapes.vbset(position, kColumns, tableColumns);
}
