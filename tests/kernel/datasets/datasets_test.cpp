#include <gtest/gtest.h>

#include <deque>
#include <string>
#include <vector>

#include "core/limits.h"
#include "kernel/datasets/category_information.h"
#include "kernel/datasets/error_info.h"
#include "kernel/datasets/sample_split.h"
#include "kernel/datasets/triangle.h"

namespace {

using Texts = std::vector<std::wstring>;
using Numbers = std::vector<double>;

/** Creates automation arrays and records over them, as a caller does, and frees the arrays at the end. */
class Caller
{
  public:
    ~Caller()
    {
        for (SAFEARRAY* array : arrays_) {
            array->fFeatures &= static_cast<unsigned short>(~FADF_FIXEDSIZE);
            SafeArrayDestroy(array);
        }
    }

    SAFEARRAY* Array(VARTYPE type, std::size_t count)
    {
        SAFEARRAYBOUND bound = {static_cast<decltype(bound.cElements)>(count), 1};
        arrays_.push_back(SafeArrayCreate(type, 1, &bound));
        return arrays_.back();
    }

    SAFEARRAY* Table(int rows, int cols)
    {
        SAFEARRAYBOUND bounds[] = {{static_cast<decltype(bounds->cElements)>(rows), 1},
                                   {static_cast<decltype(bounds->cElements)>(cols), 1}};
        arrays_.push_back(SafeArrayCreate(VT_I4, 2, bounds));
        return arrays_.back();
    }

    template <typename T>
    SAFEARRAY* Of(VARTYPE type, const std::vector<T>& values)
    {
        SAFEARRAY* array = Array(type, values.size());
        matrix<T> view(array);
        for (int i = 1; i <= view.rows; ++i)
            view.vbset(i, values[static_cast<std::size_t>(i - 1)]);
        return array;
    }

    template <typename T>
    ST_MVect Block(VARTYPE type, const std::vector<std::vector<T>>& columns)
    {
        std::vector<SAFEARRAY*>& vectors = vectors_.emplace_back();
        for (const std::vector<T>& column : columns)
            vectors.push_back(Of(type, column));
        const int rows = columns.empty() ? 0 : static_cast<int>(columns.front().size());
        return {static_cast<int>(columns.size()), 0, 0, rows, nullptr, vectors.data(), nullptr};
    }

    /** Room for the categories of `variables` variables, `each` cells for each of them. */
    ST_QualiInfo Information(int variables, std::size_t each)
    {
        ST_QualiInfo info{};
        info.categoryCounts = Array(VT_I4, 0);
        info.categories =
            Block(VT_BSTR, std::vector<Texts>(static_cast<std::size_t>(variables), Texts(each, L"old")));
        info.frequencies =
            Block(VT_R8, std::vector<Numbers>(static_cast<std::size_t>(variables), Numbers(each, 99)));
        info.labels = Array(VT_BSTR, 0);
        return info;
    }

  private:
    std::vector<SAFEARRAY*> arrays_;
    std::deque<std::vector<SAFEARRAY*>> vectors_;
};

template <typename T>
std::vector<T> CellsOf(SAFEARRAY* array)
{
    const matrix<T> view(array);
    return {view.data, view.data + view.total};
}

TEST(Datasets, ViewsWriteThroughAndLeaveTheArraysAlone)
{
    Caller caller;
    ST_MVect numbers = caller.Block<double>(VT_R8, {{1, 2}, {3, 4}});
    ST_MVect texts = caller.Block<std::wstring>(VT_BSTR, {{L"a", L"b"}});
    numbers.labels = caller.Of<std::wstring>(VT_BSTR, {L"x", L"y"});
    numbers.table = caller.Of<int>(VT_I4, {7, 8});
    {
        const cST_MVect<double> owned(&numbers);
        const cST_MVect<std::wstring> ownedTexts(&texts);
        const cST_MVect<short> misread(&numbers);
        owned.Column(2)->vbset(1, 30);
        ownedTexts.Column(1)->vbset(2, L"changed");
        EXPECT_EQ(owned.labels.vbget(2), L"y");
        EXPECT_EQ(owned.table.vbget(1), 7);
        EXPECT_EQ(owned.Column(0), nullptr);
        EXPECT_EQ(owned.Column(3), nullptr);
        EXPECT_EQ(cST_MVect<double>(&texts).Column(1)->total, 0U) << "texts are no numbers of the same size";
        EXPECT_EQ(cST_MVect<std::wstring>(&numbers).Column(1)->total, 0U);
        EXPECT_EQ(misread.Column(1)->total, 0U) << "elements of another size are not taken for flags";
    }
    EXPECT_EQ(CellsOf<double>(numbers.vectors[1]), (Numbers{30, 4}));
    EXPECT_EQ(CellsOf<std::wstring>(texts.vectors[0]), (Texts{L"a", L"changed"}));
    ST_MVect none{};
    none.columns = 2;
    EXPECT_EQ(cST_MVect<double>(&none).Column(1), nullptr);
}

/** Two text columns of six rows: row 3 is filtered, row 5 has no weight, row 6 lies behind the rows read. */
struct Sample
{
    Caller caller;
    ST_MVect record = caller.Block<std::wstring>(
        VT_BSTR,
        {{L"b", L"a", L"only here", L"b", L"nor here", L"z"}, {L"", L"u", L"u", L"v", L"u", L"z"}});
    double w[6] = {1.5, 2, 1, 4, 0, 1};
    short filter[6] = {0, 0, 1, 0, 0, 0};
    matrix<double> weights{6, 1, w, true};
    matrix<short> rowFilter{6, 1, filter, true};
    cST_MVect<std::wstring> texts{&record};
    ST_TableFormats formatsRecord{2, caller.Table(2, 2)};
    cST_TableFormats formats{&formatsRecord};
};

TEST(Datasets, CategoriesAndFrequenciesOfTheRowsThatCount)
{
    for (const std::size_t room : {1, 4}) {
        Sample sample;
        ST_QualiInfo record = sample.caller.Information(2, room);
        {
            cST_QualiInfo info(&record);
            GetQualiDataInfo_ST(&sample.texts, 5, &sample.weights, &sample.rowFilter, &info, &sample.formats);
        }
        EXPECT_EQ(record.variables, 2);
        EXPECT_EQ(record.maxCategories, 3);
        EXPECT_EQ(record.minCategories, 2);
        EXPECT_EQ(record.totalCategories, 5);
        EXPECT_EQ(record.labelCount, 5);
        EXPECT_EQ(record.categories.rows, 3);
        EXPECT_EQ(record.frequencies.rows, 3);
        EXPECT_EQ(CellsOf<int>(record.categoryCounts), (std::vector<int>{2, 3}));
        EXPECT_EQ(CellsOf<std::wstring>(record.labels), (Texts{L"a", L"b", L"", L"u", L"v"}));
        const bool isWide = room == 4;
        EXPECT_EQ(CellsOf<std::wstring>(record.categories.vectors[0]),
                  (isWide ? Texts{L"a", L"b", L"", L""} : Texts{L"a", L"b"}));
        EXPECT_EQ(CellsOf<double>(record.frequencies.vectors[0]),
                  (isWide ? Numbers{2, 5.5, 0, 0} : Numbers{2, 5.5}));
        EXPECT_EQ(CellsOf<double>(record.frequencies.vectors[1]),
                  (isWide ? Numbers{1.5, 2, 4, 0} : Numbers{1.5, 2, 4}));
        EXPECT_EQ(CellsOf<int>(sample.formatsRecord.shapes), (std::vector<int>{5, 0, 4, 0}));
    }
}

TEST(Datasets, ArraysThatMayNotGrowKeepTheirSize)
{
    Sample sample;
    ST_QualiInfo record = sample.caller.Information(1, 1);
    record.categories.vectors[0]->fFeatures |= FADF_FIXEDSIZE;
    ST_TableFormats oneTable{2, sample.caller.Table(1, 2)};
    cST_TableFormats formats(&oneTable);
    formats.SetShape(TableFormat::kValidationCategories, 8, 9);
    EXPECT_EQ(CellsOf<int>(oneTable.shapes), (std::vector<int>{0, 0})) << "no row for the second table";
    {
        cST_QualiInfo info(&record);
        GetQualiDataInfo_ST(&sample.texts, 6, nullptr, nullptr, &info, &sample.formats);
    }
    EXPECT_EQ(CellsOf<int>(record.categoryCounts), (std::vector<int>{5, 4})) << "every row counts";
    EXPECT_EQ(CellsOf<std::wstring>(record.categories.vectors[0]), (Texts{L"a"}));
    EXPECT_EQ(CellsOf<double>(record.frequencies.vectors[0]), (Numbers{1, 2, 1, 1, 1}));
}

TEST(Datasets, UnknownCategoriesOfAValidationSample)
{
    Sample sample;
    ST_QualiInfo modelRecord = sample.caller.Information(2, 1);
    ST_QualiInfo sampleRecord = sample.caller.Information(2, 1);
    cST_QualiInfo model(&modelRecord);
    GetQualiDataInfo_ST(&sample.texts, 5, &sample.weights, &sample.rowFilter, &model, &sample.formats);

    ST_MVect record =
        sample.caller.Block<std::wstring>(VT_BSTR, {{L"b", L"b", L"new", L"new"}, {L"v", L"v", L"u", L"u"}});
    cST_MVect<std::wstring> known(&record);
    short unknown = 1;
    {
        cST_QualiInfo frequencies(&sampleRecord);
        GetQualiDataInfoValid_ST(&known,
                                 4,
                                 &sample.weights,
                                 nullptr,
                                 &model,
                                 &frequencies,
                                 &sample.formats,
                                 &unknown);
    }
    EXPECT_EQ(unknown, korvenrg::kTrue);
    EXPECT_EQ(CellsOf<std::wstring>(sampleRecord.categories.vectors[0]), (Texts{L"a", L"b"}));
    EXPECT_EQ(CellsOf<double>(sampleRecord.frequencies.vectors[0]), (Numbers{0, 3.5}));
    EXPECT_EQ(CellsOf<double>(sampleRecord.frequencies.vectors[1]), (Numbers{0, 5, 3.5}));
    EXPECT_EQ(CellsOf<int>(sample.formatsRecord.shapes), (std::vector<int>{5, 5, 4, 4}));

    short onlyNew[] = {0, 0, -1, -1};
    matrix<short> filter(4, 1, onlyNew, true);
    GetQualiDataInfoValid_ST(&known, 4, nullptr, &filter, &model, nullptr, &sample.formats, &unknown);
    EXPECT_EQ(unknown, korvenrg::kFalse) << "rows that are left out do not count";
}

TEST(Datasets, CountsBeforeRoomIsMade)
{
    Sample sample;
    ST_QualiInfo info = sample.caller.Information(0, 0);
    EXPECT_EQ(Cpp_GetMaxCat_ST(&sample.record, 5, &info), 4);
    EXPECT_EQ(Cpp_GetMaxCat_ST(&sample.record, 100, nullptr), 5)
        << "rows that are not there give no category";
    EXPECT_EQ(CellsOf<int>(info.categoryCounts), (std::vector<int>{4, 3}));
    EXPECT_EQ(info.maxCategories, 4);
    EXPECT_EQ(info.minCategories, 3);
    EXPECT_EQ(info.totalCategories, 7);
    ST_MVectStr none{};
    EXPECT_EQ(Cpp_GetMaxCat_ST(&none, 5, nullptr), 0);
}

void FreeTexts(ErrorInfo& error)
{
    for (BSTR* text : {&error.title, &error.message, &error.code, &error.detail, &error.detailText})
        SysFreeString(*text);
}

TEST(Datasets, OutcomesReplaceEachOther)
{
    ErrorInfo error{};
    LoadErrorInfo_ST(L"first", L"long message", L"REGCST01", 1, 2, 3, 1, 64, L"d", 4, 5, -1, L"t", error);
    EXPECT_FALSE(korvenrg::datasets::HasFailed(error));
    EXPECT_EQ(error.detailFlag, -1);

    Sample sample;
    ST_QualiInfo record = sample.caller.Information(2, 1);
    cST_QualiInfo info(&record);
    GetQualiDataInfo_ST(&sample.texts, 5, nullptr, nullptr, &info, &sample.formats);
    EXPECT_EQ(VerifyQuali(&info, L"title", L"text", L"REGVAL", error), 0);
    EXPECT_EQ(error.status, 1) << "nothing is recorded";
    short onlyOne[] = {0, -1, -1, -1, -1};
    matrix<short> filter(5, 1, onlyOne, true);
    GetQualiDataInfo_ST(&sample.texts, 5, nullptr, &filter, &info, &sample.formats);
    EXPECT_EQ(info.maxCategories, 1);
    EXPECT_EQ(VerifyQuali(&info, L"title", L"text", L"REGVAL", error), 0) << "one category is enough";
    sample.texts.columns = 3;  // the third has no rows at all
    GetQualiDataInfo_ST(&sample.texts, 5, nullptr, nullptr, &info, &sample.formats);
    EXPECT_EQ(VerifyQuali(&info, L"title", L"text", L"REGVAL", error), 3);
    EXPECT_TRUE(korvenrg::datasets::HasFailed(error));
    EXPECT_EQ(reinterpret_cast<const std::int32_t*>(&error)[1], -789) << "the second word of the record";
    EXPECT_EQ(error.style, 48);
    EXPECT_EQ(error.detailNumbers[0], 3);
    EXPECT_EQ(korvenrg::TextOf(error.title), L"title");
    EXPECT_EQ(korvenrg::TextOf(error.message), L"text");
    EXPECT_EQ(korvenrg::TextOf(error.code), L"REGVAL");
    EXPECT_EQ(korvenrg::TextOf(error.detail), L"");
    FreeTexts(error);
}

// Rows 2 and 5 of five are marked. Every block carries the row number.
void CheckSplit(bool hasSecond)
{
    Caller caller;
    const Numbers rows = {1, 2, 3, 4, 5};
    const Texts texts = {L"1", L"2", L"3", L"4", L"5"};
    const std::vector<short> flags = {1, 2, 3, 4, 5};
    const auto fill = [&](ST_DataSet& data, bool isModel) {
        const auto block = [&](int columns, auto type, const auto& cells) {
            using Column = std::decay_t<decltype(cells)>;
            return caller.Block(
                type,
                std::vector<Column>(static_cast<std::size_t>(columns), isModel ? cells : Column{}));
        };
        data.responses = block(1, VT_R8, rows);
        data.responseFilter = block(1, VT_I2, flags);
        data.quantitative = block(isModel ? 2 : 1, VT_R8, rows);
        data.quantitativeFilter = block(2, VT_I2, flags);
        data.qualitative = block(1, VT_BSTR, texts);
        data.qualitativeFilter = block(1, VT_I2, flags);
        data.secondQualitative = block(1, VT_BSTR, texts);
        data.secondFilter = block(1, VT_I2, flags);
        data.thirdQualitative = block(1, VT_BSTR, texts);
        data.weights = caller.Of(VT_R8, isModel ? rows : Numbers{});
        data.secondWeights = isModel && !hasSecond ? nullptr : caller.Of(VT_R8, isModel ? rows : Numbers{});
        data.rowFilter = caller.Of(VT_I2, isModel ? flags : std::vector<short>{});
        data.indicators = caller.Block<double>(VT_R8, {{0, 1, 0, 2, 1}});
        data.rows = 5;
    };
    ST_DataSet model{}, validation{};
    fill(model, true);
    fill(validation, false);
    {
        cST_DataSet owned(&model), moved(&validation);
        EXPECT_EQ(ExtractModelAndValidSamples_ST(&owned, &moved, owned.indicators.Column(1), 5), 2);
    }
    EXPECT_EQ(model.rows, 3);
    EXPECT_EQ(validation.rows, 2);
    EXPECT_EQ(model.responses.rows, 3);
    EXPECT_EQ(validation.qualitative.rows, 2);

    const Numbers kept = {1, 3, 4, 4, 5}, out = {2, 5};
    for (const ST_MVect* block : {&model.responses, &model.quantitative})
        for (int j = 0; j < block->columns; ++j)
            EXPECT_EQ(CellsOf<double>(block->vectors[j]), kept);
    EXPECT_EQ(CellsOf<double>(model.weights), kept);
    for (const SAFEARRAY* array :
         {validation.responses.vectors[0], validation.quantitative.vectors[0], validation.weights})
        EXPECT_EQ(CellsOf<double>(const_cast<SAFEARRAY*>(array)), out);
    EXPECT_EQ(CellsOf<double>(validation.secondWeights), (hasSecond ? out : Numbers{}));

    for (const ST_MVect* block : {&model.qualitative, &model.secondQualitative, &model.thirdQualitative})
        EXPECT_EQ(CellsOf<std::wstring>(block->vectors[0]), (Texts{L"1", L"3", L"4", L"4", L"5"}));
    for (const ST_MVect* block :
         {&validation.qualitative, &validation.secondQualitative, &validation.thirdQualitative})
        EXPECT_EQ(CellsOf<std::wstring>(block->vectors[0]), (Texts{L"2", L"5"}));

    const std::vector<short> keptFlags = {1, 3, 4, 4, 5}, outFlags = {2, 5};
    for (SAFEARRAY* array : {model.responseFilter.vectors[0],
                             model.quantitativeFilter.vectors[1],
                             model.qualitativeFilter.vectors[0],
                             model.secondFilter.vectors[0],
                             model.rowFilter})
        EXPECT_EQ(CellsOf<short>(array), keptFlags);
    for (SAFEARRAY* array : {validation.responseFilter.vectors[0],
                             validation.quantitativeFilter.vectors[1],
                             validation.qualitativeFilter.vectors[0],
                             validation.secondFilter.vectors[0],
                             validation.rowFilter})
        EXPECT_EQ(CellsOf<short>(array), outFlags);
    EXPECT_EQ(CellsOf<double>(model.indicators.vectors[0]), (Numbers{0, 1, 0, 2, 1}))
        << "the sample as it was given";
}

TEST(Datasets, MarkedRowsMoveToTheValidation)
{
    for (const bool hasSecondWeights : {true, false})
        CheckSplit(hasSecondWeights);
}

TEST(Datasets, LowerTriangleAlone)
{
    Caller caller;
    ST_MVect source = caller.Block<double>(VT_R8, {{1, 2, 3}, {-1, 4, 5}, {-1, -1, 6}});
    ST_MVect target = caller.Block<double>(VT_R8, {{0, 0, 0}, {7, 0, 0}, {7, 7, 7}});
    cST_MVect<double> from(&source), to(&target);
    M_DuplicateMVDblTriang_ST(&from, 2, &to);
    EXPECT_EQ(CellsOf<double>(target.vectors[0]), (Numbers{1, 2, 0}));
    EXPECT_EQ(CellsOf<double>(target.vectors[1]), (Numbers{7, 4, 0}));
    M_DuplicateMVDblTriang_ST(&from, 4, &to);
    EXPECT_EQ(CellsOf<double>(target.vectors[1]), (Numbers{7, 4, 5}));
    EXPECT_EQ(CellsOf<double>(target.vectors[2]), (Numbers{7, 7, 6}));
}

}  // namespace
