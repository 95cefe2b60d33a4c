/** The three simplest doors, called as a client calls them. */
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "core/limits.h"
#include "korvenrg.h"
#include "support/guarded_array.h"

namespace {

using korvenrg::test::GuardedArray;

// Calls a door on texts, the empty one as null, and checks that it leaves the array alone.
int OnTexts(int (*door)(BSTR*, int), const std::vector<std::wstring>& texts)
{
    std::vector<BSTR> strings;
    for (const std::wstring& text : texts) {
        strings.push_back(text.empty() ? nullptr
                                       : SysAllocStringLen(text.data(), static_cast<unsigned>(text.size())));
    }
    GuardedArray<BSTR> array(strings);
    const int result = door(array.data(), static_cast<int>(texts.size()));
    EXPECT_EQ(array.CountChanged(), 0U);
    EXPECT_TRUE(array.IntactGuards());
    for (BSTR string : strings) {
        SysFreeString(string);
    }
    return result;
}

TEST(FrameDoors, SumTakesTheArrayInItsOrder)
{
    struct Case
    {
        std::vector<double> values;
        double sum;
    };
    for (const Case& c : {Case{{1E16, 1.0, -1E16}, 0.0},
                          Case{{1E16, -1E16, 1.0}, 1.0},
                          Case{{korvenrg::kMissing, 5.0}, korvenrg::kMissing},
                          Case{{}, 0.0}})
    {
        GuardedArray<double> array(c.values);
        EXPECT_EQ(Cpp_SUM(array.data(), static_cast<int>(c.values.size())), c.sum);
        EXPECT_EQ(array.CountChanged(), 0U);
    }
    double untouched = 3.0;
    EXPECT_EQ(Cpp_SUM(&untouched, -1), 0.0);
}

TEST(FrameDoors, CountComparesTheLowBytes)
{
    EXPECT_EQ(OnTexts(Cpp_Count, {}), -1);
    EXPECT_EQ(OnTexts(Cpp_Count, {L"Vexa"}), 1);
    EXPECT_EQ(OnTexts(Cpp_Count, {L"vexa", L"Vex", L"Vexa ", L""}), 0);
    EXPECT_EQ(OnTexts(Cpp_Count, {L"\x0156\x0165xa", L"other", L"Vexa"}), 2);
}

TEST(FrameDoors, CheckBooleanStopsAtTheFirstOtherText)
{
    EXPECT_EQ(OnTexts(Cpp_CheckBoolean, {L"1", L"0", L"1", L"x", L"1"}), 2);
    EXPECT_EQ(OnTexts(Cpp_CheckBoolean, {L"0", L"0"}), 0);
    EXPECT_EQ(OnTexts(Cpp_CheckBoolean, {L"1", L"", L"1"}), 1);
    EXPECT_EQ(OnTexts(Cpp_CheckBoolean, {L"1", L"10"}), 1);
    EXPECT_EQ(OnTexts(Cpp_CheckBoolean, {}), 0);
    EXPECT_EQ(Cpp_CheckBoolean(nullptr, -1), 0);
}

}  // namespace
