/** The owned objects of the records of a sample: each keeps a pointer to its record, copies of the scalars, and
 * matrix views of the arrays. They live for one call. The records must outlive them. */
#pragma once

#include <memory>
#include <string>

#include "core/matrix.h"
#include "kernel/datasets/owned_columns.h"
#include "kernel/datasets/records.h"

class cST_QualiInfo final
{
  public:
    ST_QualiInfo* record;
    std::int32_t maxCategories;
    std::int32_t minCategories;
    std::int32_t totalCategories;
    std::int32_t variables;
    std::unique_ptr<matrix<int>> categoryCounts;
    cST_MVect<std::wstring> categories;
    cST_MVect<double> frequencies;
    std::int32_t labelCount;
    std::unique_ptr<matrix<std::wstring>> labels;

    explicit cST_QualiInfo(ST_QualiInfo* source);

    /** Writes the scalars to the record. */
    void StoreScalars();
};

/** Members in the order of the record; they are built in this order and destroyed in reverse. */
class cST_DataSet final
{
  public:
    ST_DataSet* record;
    std::int64_t rows;
    std::int64_t identifier;
    cST_MVect<double> responses;
    std::int32_t responseFilterUsed;
    cST_MVect<short> responseFilter;
    std::int32_t pX;
    std::int32_t quantitativeOption;
    cST_MVect<double> quantitative;
    std::int32_t quantitativeFilterUsed;
    cST_MVect<short> quantitativeFilter;
    std::int32_t pQ;
    cST_MVect<std::wstring> qualitative;
    cST_MVect<short> qualitativeFilter;
    cST_MVect<std::wstring> secondQualitative;
    cST_MVect<short> secondFilter;
    matrix<int> factorTable;
    matrix<std::wstring> factorLabels;
    std::unique_ptr<matrix<double>> weights;
    std::unique_ptr<matrix<double>> secondWeights;
    cST_MVect<std::wstring> thirdQualitative;
    cST_QualiInfo qualitativeInfo;
    std::unique_ptr<matrix<short>> rowFilter;
    cST_MVect<double> indicators;
    cST_MVect<double> otherColumns;
    matrix<double> output;

    explicit cST_DataSet(ST_DataSet* source);

    /** Sets the number of observations, here and in the record. */
    void SetRows(std::int64_t count);
};

/** Positions, from 1, in the shapes of ST_TableFormats. */
enum class TableFormat : int
{
    kModelCategories = 1,       ///< frequency table of the categories of the model's sample
    kValidationCategories = 2,  ///< the same of the validation or prediction sample
};

/** Columns of a frequency table of categories. */
enum class CategoryColumn : int
{
    kVariable = 1,
    kCategory,
    kFrequency,
    kPercent,
    kCount = kPercent
};

class cST_TableFormats final
{
  public:
    ST_TableFormats* record;
    std::int32_t count;
    matrix<int> shapes;

    explicit cST_TableFormats(ST_TableFormats* source);

    /** Writes the shape of one table; a position without a row in `shapes` is dropped. */
    void SetShape(TableFormat format, int tableRows, int tableColumns);
};
