#include "core/matrix.h"

#include <gtest/gtest.h>

#include <array>
#include <cstddef>
#include <numeric>
#include <string>
#include <vector>

namespace {

std::ptrdiff_t Distance(const void* object, const void* field)
{
    return static_cast<const char*>(field) - static_cast<const char*>(object);
}

// Byte positions of the fields in their order, then the size of the object.
template <typename T>
std::vector<std::ptrdiff_t> LayoutOf()
{
    const matrix<T> m(1, 1);
    return {Distance(&m, &m.outOfRange),
            Distance(&m, &m.fillValue),
            Distance(&m, &m.ownsData),
            Distance(&m, &m.colAux1),
            Distance(&m, &m.colAux2),
            Distance(&m, &m.aux3),
            Distance(&m, &m.aux4),
            Distance(&m, &m.rowAux),
            Distance(&m, &m.colAux5),
            Distance(&m, &m.colAuxInt),
            Distance(&m, &m.colAuxPresent),
            Distance(&m, &m.data),
            Distance(&m, &m.rows),
            Distance(&m, &m.cols),
            Distance(&m, &m.total),
            Distance(&m, &m.safeArray),
            static_cast<std::ptrdiff_t>(sizeof(m))};
}

// rows x cols with the values 1, 2, 3, ... in storage order.
std::vector<double> Counting(std::size_t count)
{
    std::vector<double> values(count);
    std::iota(values.begin(), values.end(), 1.0);
    return values;
}

std::vector<double> Elements(const matrix<double>& m)
{
    return {m.data, m.data + m.total};
}

SAFEARRAY* NewArray(VARTYPE type, std::vector<SAFEARRAYBOUND> bounds)
{
    return SafeArrayCreate(type, static_cast<unsigned>(bounds.size()), bounds.data());
}

std::wstring TextAt(SAFEARRAY* array, std::size_t position)
{
    return korvenrg::TextOf(static_cast<BSTR*>(array->pvData)[position]);
}

// The layout is shared with the owners of other libraries, who reach the fields at these positions.
TEST(Matrix, FieldsStandAtTheirBytePositions)
{
    using Layout = std::vector<std::ptrdiff_t>;
    EXPECT_EQ(LayoutOf<double>(),
              (Layout{8, 16, 24, 32, 40, 48, 56, 64, 72, 80, 88, 96, 104, 108, 112, 120, 128}));
    EXPECT_EQ(LayoutOf<int>(),
              (Layout{8, 12, 16, 24, 32, 40, 48, 56, 64, 72, 80, 88, 96, 100, 104, 112, 120}));
    EXPECT_EQ(LayoutOf<short>(),
              (Layout{8, 10, 12, 16, 24, 32, 40, 48, 56, 64, 72, 80, 88, 92, 96, 104, 112}));
    EXPECT_EQ(LayoutOf<std::wstring>(),
              (Layout{8, 40, 72, 80, 88, 96, 104, 112, 120, 128, 136, 144, 152, 156, 160, 168, 176}));
}

TEST(Matrix, VirtualSlotsAreLinearThenRowAndColumn)
{
    auto values = Counting(6);
    matrix<double> m(3, 2, values.data(), true);
    void** slots = *reinterpret_cast<void***>(&m);
    const auto linear = reinterpret_cast<double& (*)(void*, int)>(slots[0]);
    const auto cell = reinterpret_cast<double& (*)(void*, int, int)>(slots[1]);
    EXPECT_EQ(&linear(&m, 2), &values[1]);
    EXPECT_EQ(&cell(&m, 2, 2), &values[4]);
    EXPECT_EQ(&linear(&m, 0), &m.outOfRange);
    EXPECT_EQ(&cell(&m, 4, 2), &m.outOfRange);
}

TEST(Matrix, ReadsOutsideGiveTheDefaultOfTheType)
{
    const volatile int outside =
        5;  // unknown to the compiler, whose bounds warning is wrong in sanitizer builds
    EXPECT_EQ(matrix<double>(2, 2).vbget(outside), -1.0);
    EXPECT_EQ(matrix<int>(2, 2).vbget(outside), -1);
    EXPECT_EQ(matrix<short>(2, 2, 7).vbget(outside), 0);
    EXPECT_EQ(matrix<std::wstring>(2, 2, L"x").vbget(outside), L"");
    EXPECT_EQ(matrix<double>(2, 2).vbget(4), 0.0);
    EXPECT_EQ(matrix<int>(2, 2).vbget(4), 0);
}

// Only the linear position counts, in 32 bits: an index past its own bound reads the neighbour that the
// arithmetic points at.
TEST(Matrix, OnlyTheLinearPositionIsTested)
{
    auto values = Counting(6);
    matrix<double> m(3, 2, values.data(), true);
    struct Case
    {
        int i, j;
        double value;
    };
    for (const Case& c : {Case{1, 1, 1.0},
                          Case{3, 2, 6.0},
                          Case{4, 1, 4.0},
                          Case{6, 1, 6.0},
                          Case{0, 2, 3.0},
                          Case{-2, 2, 1.0},
                          Case{-3, 3, 3.0},
                          Case{4, 2, -1.0},
                          Case{1, 3, -1.0},
                          Case{0, 1, -1.0},
                          Case{1, 0, -1.0}})
    {
        EXPECT_EQ(m.vbget(c.i, c.j), c.value) << c.i << ", " << c.j;
        EXPECT_EQ(m(c.i, c.j), c.value) << c.i << ", " << c.j;
        EXPECT_EQ(m.getElement(c.i - 1, c.j - 1), c.value) << c.i << ", " << c.j;
    }
    EXPECT_EQ(m.vbget(6), 6.0);
    EXPECT_EQ(m.vbget(0), -1.0);
    EXPECT_EQ(m.vbget(7), -1.0);
    EXPECT_EQ(m.vbget(-1), -1.0);
}

TEST(Matrix, WritesOutsideAreDroppedByVbsetAndKeptByReference)
{
    matrix<double> m(2, 2);
    for (const int outside : {0, -1, 5}) {
        m.vbset(outside, 9.0);
    }
    m.vbset(3, 2, 9.0);
    m.vbset(1, 3, 9.0);
    EXPECT_EQ(Elements(m), std::vector<double>(4, 0.0));
    EXPECT_EQ(m.vbget(5), -1.0);

    m(3, 2) = 8.0;
    EXPECT_EQ(m.vbget(0), 8.0);
    m(0) = 7.0;
    EXPECT_EQ(m.vbget(1, 3), 7.0);
    EXPECT_EQ(Elements(m), std::vector<double>(4, 0.0));

    m.vbset(1, 2, 3.0);
    m.vbset(2, 4.0);
    EXPECT_EQ(Elements(m), (std::vector<double>{0.0, 4.0, 3.0, 0.0}));
}

TEST(Matrix, SizesWithoutElementsHoldNothing)
{
    struct Case
    {
        int rows, cols;
    };
    for (const Case& c : {Case{0, 3}, Case{3, 0}, Case{-1, 3}, Case{3, -1}, Case{-2, -2}}) {
        double untouched = 5.0;
        matrix<double> owning(c.rows, c.cols, 4.0);
        matrix<double> copying(c.rows, c.cols, &untouched, false);
        matrix<double> adopting(c.rows, c.cols, &untouched, true);
        for (matrix<double>* m : {&owning, &copying, &adopting}) {
            EXPECT_EQ(m->total, 0U) << c.rows << " x " << c.cols;
            m->vbset(1, 9.0);
            m->vbset(1, 1, 9.0);
            EXPECT_EQ(m->vbget(1), -1.0) << c.rows << " x " << c.cols;
        }
        adopting.Redim(c.rows, c.cols);
        EXPECT_EQ(untouched, 5.0);
        owning.Redim(2, 1);
        EXPECT_EQ(Elements(owning), (std::vector<double>{0.0, 0.0}));
    }
}

TEST(Matrix, AdoptingSharesTheArrayAndCopyingDoesNot)
{
    auto values = Counting(6);
    {
        matrix<double> first(3, 2, values.data(), true);
        matrix<double> second(2, 3, values.data(), true);
        matrix<double> copy(3, 2, values.data(), false);
        first.vbset(1, 2, 40.0);
        EXPECT_EQ(second.vbget(2, 2), 40.0);
        EXPECT_EQ(copy.vbget(1, 2), 4.0);
        copy.vbset(1, 99.0);

        first.Redim(5, 5);  // the change of shape is dropped, the block is filled
        EXPECT_EQ(first.rows, 3);
        EXPECT_EQ(first.cols, 2);
        EXPECT_EQ(first.data, values.data());
        EXPECT_EQ(values, std::vector<double>(6, 0.0));
        second.Redim(9, 9, 2.0);
        EXPECT_EQ(second.total, 6U);
    }
    EXPECT_EQ(values, std::vector<double>(6, 2.0));
}

TEST(Matrix, CopiesAreDeepAndTakeTheDefaults)
{
    auto values = Counting(6);
    matrix<double> source(3, 2, values.data(), true);
    source.outOfRange = 77.0;
    source.fillValue = 88.0;

    const matrix<double> copy(source);
    EXPECT_EQ(Elements(copy), values);
    EXPECT_NE(copy.data, source.data);
    EXPECT_EQ(copy.ownsData, 1);
    EXPECT_EQ(copy.vbget(0), -1.0);
    EXPECT_EQ(copy.fillValue, 0.0);

    // Other row counts take elements from the start of the source, not rows of it.
    const matrix<double> shorter(2, source);
    EXPECT_EQ(shorter.cols, 2);
    EXPECT_EQ(Elements(shorter), (std::vector<double>{1.0, 2.0, 3.0, 4.0}));
    const matrix<double> longer(4, source);
    EXPECT_EQ(Elements(longer), (std::vector<double>{1.0, 2.0, 3.0, 4.0, 5.0, 6.0, 0.0, 0.0}));
    const matrix<double> empty(0, source);
    EXPECT_EQ(empty.data, nullptr);
    EXPECT_EQ(empty.cols, 2);
    EXPECT_EQ(empty.vbget(1), -1.0);
}

TEST(Matrix, SideArraysFollowTheirRules)
{
    const auto filled = [](std::size_t count, double start) {
        auto* values = new double[count];
        std::iota(values, values + count, start);
        return values;
    };
    matrix<double> source(2, 3);
    source.colAux1 = filled(3, 10.0);
    source.colAux2 = filled(3, 20.0);
    source.aux3 = filled(1, 30.0);
    source.aux4 = filled(1, 40.0);
    source.rowAux = filled(2, 50.0);
    source.colAux5 = filled(3, 60.0);
    source.colAuxInt = new std::int32_t[3]{7, 8, 9};

    const matrix<double> without(source);
    EXPECT_EQ(without.colAux1, nullptr);
    EXPECT_EQ(without.colAux2, nullptr);
    EXPECT_EQ(without.colAuxPresent, 0);

    source.colAuxPresent = 1;
    const matrix<double> copy(source);
    EXPECT_EQ(copy.colAuxPresent, 1);
    EXPECT_EQ(copy.aux3, nullptr);
    EXPECT_EQ(copy.aux4, nullptr);
    EXPECT_NE(copy.colAux1, source.colAux1);
    EXPECT_EQ(copy.colAux1[2], 12.0);
    EXPECT_EQ(copy.colAux2[2], 22.0);
    EXPECT_EQ(copy.rowAux[1], 51.0);
    EXPECT_EQ(copy.colAux5[2], 62.0);
    EXPECT_EQ(copy.colAuxInt[2], 9);
}

// The first form takes a new block when either dimension changes, the other two only when both do.
TEST(Matrix, RedimTakesANewBlock)
{
    struct Case
    {
        const char* form;
        int rows, cols;
        int newRows, newCols;
    };
    for (const Case& c : {Case{"plain", 3, 4, 3, 4},
                          Case{"plain", 3, 2, 3, 2},
                          Case{"plain", 5, 4, 5, 4},
                          Case{"plain", 4, 3, 4, 3},
                          Case{"value", 3, 4, 3, 4},
                          Case{"value", 3, 2, 3, 4},
                          Case{"value", 5, 4, 3, 4},
                          Case{"value", 5, 2, 5, 2}})
    {
        matrix<double> m(3, 4, 5.0);
        const bool plain = std::string(c.form) == "plain";
        plain ? m.Redim(c.rows, c.cols) : m.Redim(c.rows, c.cols, 1.5);
        const std::string name = c.form + std::to_string(c.rows) + "x" + std::to_string(c.cols);
        EXPECT_EQ(m.rows, c.newRows) << name;
        EXPECT_EQ(m.cols, c.newCols) << name;
        EXPECT_EQ(Elements(m),
                  std::vector<double>(static_cast<std::size_t>(c.newRows * c.newCols), plain ? 0.0 : 1.5))
            << name;
    }
    struct IntCase
    {
        int fromRows, fromCols, rows, newRows, newCols;
    };
    for (const IntCase& c :
         {IntCase{3, 4, 5, 5, 1}, IntCase{3, 4, 3, 3, 4}, IntCase{3, 1, 5, 3, 1}, IntCase{3, 1, 3, 3, 1}})
    {
        matrix<int> m(c.fromRows, c.fromCols, 6);
        m.fillValue = 9;
        m.Redim(c.rows);
        EXPECT_EQ(m.rows, c.newRows);
        EXPECT_EQ(m.cols, c.newCols);
        EXPECT_EQ(std::vector<int>(m.data, m.data + m.total),
                  std::vector<int>(static_cast<std::size_t>(c.newRows * c.newCols), 0));
    }
    matrix<double> filled(2, 1);
    filled.fillValue = 9.0;
    filled.Redim(3, 1);
    EXPECT_EQ(Elements(filled), std::vector<double>(3, 9.0));
}

TEST(Matrix, AttachesToArraysByTheirBounds)
{
    matrix<double> null(static_cast<SAFEARRAY*>(nullptr));
    EXPECT_EQ(null.total, 0U);
    EXPECT_EQ(null.ownsData, 1);
    EXPECT_EQ(null.vbget(1), -1.0);

    SAFEARRAY* vector = NewArray(VT_I4, {{5, -2}});
    SAFEARRAY* table = NewArray(VT_R8, {{2, 1}, {3, 10}});
    {
        matrix<int> column(vector);
        EXPECT_EQ(column.rows, 5);
        EXPECT_EQ(column.cols, 1);
        column.vbset(5, 55);

        matrix<double> m(table);
        EXPECT_EQ(m.rows, 2);
        EXPECT_EQ(m.cols, 3);
        EXPECT_EQ(m.ownsData, 0);
        m.vbset(2, 3, 6.0);
        m.vbset(1, 2, 3.0);
    }
    EXPECT_EQ(static_cast<int*>(vector->pvData)[4], 55);
    double value = 0.0;
    std::array<LONG, 2> index{2, 12};
    EXPECT_EQ(SafeArrayGetElement(table, index.data(), &value), S_OK);
    EXPECT_EQ(value, 6.0);
    index = {1, 11};
    EXPECT_EQ(SafeArrayGetElement(table, index.data(), &value), S_OK);
    EXPECT_EQ(value, 3.0);
    EXPECT_EQ(SafeArrayDestroy(vector), S_OK);
    EXPECT_EQ(SafeArrayDestroy(table), S_OK);
}

TEST(Matrix, RedimResizesAnAttachedArray)
{
    struct Case
    {
        const char* name;
        std::vector<SAFEARRAYBOUND> bounds;
        int rows, cols;
        bool locked;
        int newRows, newCols;
        std::uint32_t lastCount;
    };
    const std::vector<Case> cases{
        {"vector grows", {{3, 4}}, 5, 1, false, 5, 1, 5},
        {"vector shrinks", {{3, 4}}, 2, 1, false, 2, 1, 2},
        {"vector to table", {{3, 4}}, 2, 4, false, 2, 4, 8},
        {"table grows", {{2, 1}, {3, 4}}, 2, 5, false, 2, 5, 5},
        {"table shrinks", {{2, 1}, {3, 4}}, 2, 1, false, 2, 1, 1},
        {"empty table grows", {{2, 1}, {0, 4}}, 2, 3, false, 2, 3, 3},
        {"count of the last dimension alone", {{2, 1}, {3, 4}}, 3, 1, false, 2, 3, 3},
        {"locked", {{3, 4}}, 5, 1, true, 3, 1, 3}};
    for (const Case& c : cases) {
        SAFEARRAY* array = NewArray(VT_R8, c.bounds);
        if (c.locked) SafeArrayLock(array);
        {
            matrix<double> m(array);
            m.Redim(c.rows, c.cols, 2.5);
            EXPECT_EQ(m.rows, c.newRows) << c.name;
            EXPECT_EQ(m.cols, c.newCols) << c.name;
            EXPECT_EQ(m.data, array->pvData) << c.name;
            EXPECT_EQ(m.ownsData, 0) << c.name;
            EXPECT_EQ(Elements(m), std::vector<double>(static_cast<std::size_t>(c.newRows * c.newCols), 2.5))
                << c.name;
        }
        EXPECT_EQ(array->rgsabound[0].cElements, c.lastCount) << c.name;
        EXPECT_EQ(array->rgsabound[0].lLbound, 4) << c.name;
        if (c.locked) SafeArrayUnlock(array);
        EXPECT_EQ(SafeArrayDestroy(array), S_OK);
    }

    SAFEARRAY* integers = NewArray(VT_I4, {{2, 1}});
    {
        matrix<int> m(integers);
        m.Redim(4);
        EXPECT_EQ(m.rows, 4);
        EXPECT_EQ(m.vbget(4), 0);
    }
    EXPECT_EQ(integers->rgsabound[0].cElements, 4U);
    EXPECT_EQ(SafeArrayDestroy(integers), S_OK);
}

// The elements go back to the array before the block is freed.
TEST(Matrix, DestructionWritesBackThenFrees)
{
    SAFEARRAY* array = NewArray(VT_R8, {{3, 1}});
    {
        matrix<double> m(array);
        m.data = new double[3]{1.0, 2.0, 3.0};
        m.ownsData = 1;
    }
    EXPECT_EQ(static_cast<double*>(array->pvData)[2], 3.0);
    EXPECT_EQ(SafeArrayDestroy(array), S_OK);
}

TEST(Matrix, StringsTravelBothWays)
{
    std::array<BSTR, 4> strings{SysAllocString(L"a"),
                                nullptr,
                                SysAllocString(L""),
                                SysAllocStringLen(L"b\0c", 3)};
    {
        matrix<std::wstring> m(2, 2, strings.data());
        EXPECT_EQ(m.vbget(1, 1), L"a");
        EXPECT_EQ(m.vbget(2, 1), L"");
        EXPECT_EQ(m.vbget(1, 2), L"");
        EXPECT_EQ(m.vbget(2, 2), std::wstring(L"b\0c", 3));
        m.vbset(1, L"changed");
        EXPECT_EQ(korvenrg::TextOf(strings[0]), L"a");

        std::array<BSTR, 4> exported = strings;
        m.ExportStrings(exported.data());
        EXPECT_EQ(korvenrg::TextOf(exported[0]), L"changed");
        EXPECT_EQ(SysStringLen(exported[3]), 3U);
        for (std::size_t i = 0; i < exported.size(); ++i) {
            EXPECT_NE(exported[i], strings[i]) << i;
            SysFreeString(exported[i]);
        }
    }

    SAFEARRAY* array = NewArray(VT_BSTR, {{4, 0}});
    std::copy(strings.begin(), strings.end(), static_cast<BSTR*>(array->pvData));
    {
        matrix<std::wstring> m(array);
        EXPECT_EQ(m.vbget(1), L"a");
        m.vbset(1, L"new");
        m.vbset(2, std::wstring(L"x\0y", 3));
        m.vbset(5, L"dropped");
        EXPECT_EQ(TextAt(array, 0), L"a");
    }
    EXPECT_EQ(TextAt(array, 0), L"new");
    EXPECT_EQ(TextAt(array, 1), std::wstring(L"x\0y", 3));
    EXPECT_EQ(TextAt(array, 3), std::wstring(L"b\0c", 3));
    EXPECT_EQ(SafeArrayDestroy(array), S_OK);
}

}  // namespace
