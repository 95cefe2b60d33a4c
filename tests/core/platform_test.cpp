#include "core/platform.h"

#include <gtest/gtest.h>

#include <array>
#include <cstdint>
#include <cstring>
#include <string>
#include <vector>

namespace {

// The number that stands `offset` bytes after (or before) an address.
template <typename T>
T At(const void* address, std::ptrdiff_t offset)
{
    T value;
    std::memcpy(&value, static_cast<const char*>(address) + offset, sizeof(value));
    return value;
}

SAFEARRAY* NewArray(VARTYPE type, std::vector<SAFEARRAYBOUND> bounds)
{
    return SafeArrayCreate(type, static_cast<unsigned>(bounds.size()), bounds.data());
}

void* AddressOf(SAFEARRAY* array, std::vector<LONG> indices)
{
    void* element = nullptr;
    return SafeArrayPtrOfIndex(array, indices.data(), &element) == S_OK ? element : nullptr;
}

TEST(PlatformStrings, ByteLengthStandsInFrontAndAZeroBehind)
{
    struct Case
    {
        BSTR string;
        std::wstring text;
    };
    const Case cases[] = {{SysAllocString(L"abc"), L"abc"},
                          {SysAllocString(L""), L""},
                          {SysAllocString(L"a\0b"), L"a"},
                          {SysAllocStringLen(L"a\0b", 3), std::wstring(L"a\0b", 3)},
                          {SysAllocStringLen(L"abcdef", 2), L"ab"},
                          {SysAllocStringLen(nullptr, 2), std::wstring(2, L'\0')}};
    for (const Case& c : cases) {
        ASSERT_NE(c.string, nullptr);
        EXPECT_EQ(std::wstring(c.string, SysStringLen(c.string)), c.text);
        EXPECT_EQ(At<std::uint32_t>(c.string, -4), c.text.size() * sizeof(OLECHAR));
        EXPECT_EQ(SysStringByteLen(c.string), c.text.size() * sizeof(OLECHAR));
        EXPECT_EQ(c.string[c.text.size()], L'\0');
        SysFreeString(c.string);
    }
}

TEST(PlatformStrings, NullIsTheEmptyString)
{
    EXPECT_EQ(SysAllocString(nullptr), nullptr);
    EXPECT_EQ(SysStringLen(nullptr), 0U);
    EXPECT_EQ(SysStringByteLen(nullptr), 0U);
    SysFreeString(nullptr);
}

TEST(PlatformStrings, ReallocationMayTakeFromTheOldString)
{
    BSTR string = SysAllocString(L"abcdef");
    EXPECT_EQ(SysReAllocStringLen(&string, string + 2, 3), 1);
    EXPECT_EQ(std::wstring(string), L"cde");
    EXPECT_EQ(SysStringLen(string), 3U);
    SysFreeString(string);
    string = nullptr;
    EXPECT_EQ(SysReAllocStringLen(&string, L"new", 3), 1);
    EXPECT_EQ(std::wstring(string), L"new");
    SysFreeString(string);
}

// a(1 To 2, 10 To 12): the bound records stand in reverse order, the elements with the leftmost index
// fastest.
TEST(PlatformArrays, DescriptorAndElementsOfATwoDimensionalArray)
{
    SAFEARRAY* array = NewArray(VT_R8, {{2, 1}, {3, 10}});
    ASSERT_NE(array, nullptr);
    EXPECT_EQ(At<std::uint16_t>(array, 0), 2);
    EXPECT_EQ(At<std::uint16_t>(array, 2), FADF_HAVEVARTYPE);
    EXPECT_EQ(At<std::uint32_t>(array, 4), 8U);
    EXPECT_EQ(At<std::uint32_t>(array, 8), 0U);
    EXPECT_EQ(At<void*>(array, 16), array->pvData);
    EXPECT_EQ(At<std::uint32_t>(array, 24), 3U);
    EXPECT_EQ(At<std::int32_t>(array, 28), 10);
    EXPECT_EQ(At<std::uint32_t>(array, 32), 2U);
    EXPECT_EQ(At<std::int32_t>(array, 36), 1);
    EXPECT_EQ(At<std::uint32_t>(array, -4), std::uint32_t{VT_R8});
    EXPECT_EQ(sizeof(SAFEARRAY), 32U);

    auto* first = static_cast<double*>(array->pvData);
    for (LONG i = 1; i <= 2; ++i) {
        for (LONG j = 10; j <= 12; ++j) {
            EXPECT_EQ(AddressOf(array, {i, j}), first + 2 * (j - 10) + (i - 1)) << i << ", " << j;
            EXPECT_EQ(*static_cast<double*>(AddressOf(array, {i, j})), 0.0);
        }
    }
    for (const auto& [i, j] : {std::array{0, 10}, std::array{3, 10}, std::array{1, 9}, std::array{1, 13}}) {
        EXPECT_EQ(AddressOf(array, {i, j}), nullptr) << i << ", " << j;
    }
    LONG bound = 0;
    EXPECT_EQ(SafeArrayGetLBound(array, 2, &bound), S_OK);
    EXPECT_EQ(bound, 10);
    EXPECT_EQ(SafeArrayGetUBound(array, 2, &bound), S_OK);
    EXPECT_EQ(bound, 12);
    EXPECT_EQ(SafeArrayGetUBound(array, 1, &bound), S_OK);
    EXPECT_EQ(bound, 2);
    EXPECT_EQ(SafeArrayDestroy(array), S_OK);
}

TEST(PlatformArrays, ElementSizesAndTypes)
{
    struct Case
    {
        VARTYPE type;
        unsigned bytes;
    };
    for (const Case& c : {Case{VT_UI1, 1},
                          Case{VT_I2, 2},
                          Case{VT_BOOL, 2},
                          Case{VT_I4, 4},
                          Case{VT_INT, 4},
                          Case{VT_R4, 4},
                          Case{VT_R8, 8},
                          Case{VT_BSTR, 8}})
    {
        SAFEARRAY* array = NewArray(c.type, {{3, 0}});
        VARTYPE type = 0;
        EXPECT_EQ(SafeArrayGetVartype(array, &type), S_OK);
        EXPECT_EQ(type, c.type);
        EXPECT_EQ(SafeArrayGetElemsize(array), c.bytes) << c.type;
        EXPECT_EQ(AddressOf(array, {2}), static_cast<char*>(array->pvData) + 2 * c.bytes) << c.type;
        EXPECT_EQ(SafeArrayDestroy(array), S_OK);
    }
}

TEST(PlatformArrays, RedimKeepsDataAndChangesTheRightmostDimension)
{
    SAFEARRAY* array = NewArray(VT_R8, {{2, 1}, {2, 1}});
    auto* values = static_cast<double*>(array->pvData);
    for (int i = 0; i < 4; ++i) {
        values[i] = i + 1.0;
    }
    SAFEARRAYBOUND grown{4, -3};
    EXPECT_EQ(SafeArrayRedim(array, &grown), S_OK);
    values = static_cast<double*>(array->pvData);
    EXPECT_EQ(std::vector<double>(values, values + 8), (std::vector<double>{1, 2, 3, 4, 0, 0, 0, 0}));
    EXPECT_EQ(AddressOf(array, {2, -2}), values + 3);
    EXPECT_EQ(array->rgsabound[1].cElements, 2U);

    SAFEARRAYBOUND shrunk{1, 0};
    EXPECT_EQ(SafeArrayRedim(array, &shrunk), S_OK);
    EXPECT_EQ(*static_cast<double*>(AddressOf(array, {2, 0})), 2.0);
    EXPECT_EQ(AddressOf(array, {1, 1}), nullptr);
    SAFEARRAYBOUND none{0, 0};
    EXPECT_EQ(SafeArrayRedim(array, &none), S_OK);
    EXPECT_EQ(SafeArrayRedim(array, &grown), S_OK);
    EXPECT_EQ(*static_cast<double*>(AddressOf(array, {1, -3})), 0.0);
    EXPECT_EQ(SafeArrayDestroy(array), S_OK);
}

TEST(PlatformArrays, StringElementsAreCopiedAndFreed)
{
    SAFEARRAY* array = NewArray(VT_BSTR, {{3, 1}});
    EXPECT_EQ(array->fFeatures, FADF_HAVEVARTYPE | FADF_BSTR);
    BSTR text = SysAllocStringLen(L"a\0b", 3);
    std::array<LONG, 1> index{2};
    EXPECT_EQ(SafeArrayPutElement(array, index.data(), text), S_OK);
    EXPECT_EQ(SafeArrayPutElement(array, index.data(), text), S_OK);
    SysFreeString(text);

    BSTR copy = nullptr;
    EXPECT_EQ(SafeArrayGetElement(array, index.data(), &copy), S_OK);
    EXPECT_EQ(std::wstring(copy, SysStringLen(copy)), std::wstring(L"a\0b", 3));
    EXPECT_NE(copy, static_cast<BSTR*>(array->pvData)[1]);
    SysFreeString(copy);
    index = {1};
    EXPECT_EQ(SafeArrayGetElement(array, index.data(), &copy), S_OK);
    EXPECT_EQ(copy, nullptr);

    SAFEARRAYBOUND shrunk{1, 1};
    EXPECT_EQ(SafeArrayRedim(array, &shrunk), S_OK);
    SAFEARRAYBOUND grown{3, 1};
    EXPECT_EQ(SafeArrayRedim(array, &grown), S_OK);
    EXPECT_EQ(static_cast<BSTR*>(array->pvData)[1], nullptr);
    EXPECT_EQ(SafeArrayDestroy(array), S_OK);
}

TEST(PlatformArrays, RefusalsHaveTheirCodes)
{
    SAFEARRAYBOUND bound{2, 0};
    EXPECT_EQ(SafeArrayCreate(VT_R8, 0, &bound), nullptr);
    EXPECT_EQ(SafeArrayCreate(VT_R8, 1, nullptr), nullptr);
    EXPECT_EQ(SafeArrayCreate(99, 1, &bound), nullptr);
    EXPECT_EQ(SafeArrayDestroy(nullptr), S_OK);
    EXPECT_EQ(SafeArrayRedim(nullptr, &bound), E_INVALIDARG);

    SAFEARRAY* array = NewArray(VT_I4, {{2, 0}});
    LONG value = 0;
    std::array<LONG, 1> index{2};
    EXPECT_EQ(SafeArrayGetLBound(array, 0, &value), DISP_E_BADINDEX);
    EXPECT_EQ(SafeArrayGetUBound(array, 2, &value), DISP_E_BADINDEX);
    EXPECT_EQ(SafeArrayGetElement(array, index.data(), &value), DISP_E_BADINDEX);
    EXPECT_EQ(SafeArrayPutElement(array, index.data(), &value), DISP_E_BADINDEX);
    EXPECT_EQ(SafeArrayUnlock(array), E_UNEXPECTED);

    void* data = nullptr;
    EXPECT_EQ(SafeArrayAccessData(array, &data), S_OK);
    EXPECT_EQ(data, array->pvData);
    EXPECT_EQ(SafeArrayRedim(array, &bound), DISP_E_ARRAYISLOCKED);
    EXPECT_EQ(SafeArrayDestroy(array), DISP_E_ARRAYISLOCKED);
    EXPECT_EQ(SafeArrayUnaccessData(array), S_OK);

    array->fFeatures |= FADF_FIXEDSIZE;
    EXPECT_EQ(SafeArrayRedim(array, &bound), DISP_E_ARRAYISLOCKED);
    EXPECT_EQ(SafeArrayDestroy(array), S_OK);
}

}  // namespace
