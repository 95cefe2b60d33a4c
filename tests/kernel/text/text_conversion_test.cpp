#include "kernel/text/text_conversion.h"

#include <gtest/gtest.h>

namespace {

TEST(TextConversion, KeepsEmbeddedZerosAndTakesNullAsEmpty)
{
    const std::wstring text(L"a\0b", 3);
    BSTR string = convertWstringToBSTR(text);
    EXPECT_EQ(SysStringLen(string), 3U);
    EXPECT_EQ(convertBSTRtoWstring(string), text);
    SysFreeString(string);
    BSTR null = nullptr;
    EXPECT_TRUE(convertBSTRtoWstring(null).empty());
}

}  // namespace
