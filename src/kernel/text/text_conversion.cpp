#include "kernel/text/text_conversion.h"

namespace {

std::string Narrowed(const std::wstring& text)
{
    std::string narrow;
    for (const wchar_t character : text) {
        narrow.push_back(static_cast<char>(static_cast<unsigned>(character) & 0xFFU));
    }
    return narrow;
}

}  // namespace

std::wstring convertBSTRtoWstring(BSTR& string)
{
    return korvenrg::TextOf(string);
}

BSTR convertWstringToBSTR(const std::wstring& text)
{
    return korvenrg::NewString(text);
}

namespace korvenrg::text {

int CountNarrowed(const matrix<std::wstring>* texts, int n, const std::string& word)
{
    int count = 0;
    for (int i = 1; i <= n; ++i) {
        if (Narrowed(texts->vbget(i)) == word) count += 1;
    }
    return count;
}

int CountLeadingOnes(const matrix<std::wstring>* texts, int n)
{
    int count = 0;
    for (int i = 1; i <= n; ++i) {
        const std::wstring text = texts->vbget(i);
        if (text != L"0" && text != L"1") break;
        if (text == L"1") count += 1;
    }
    return count;
}

}  // namespace korvenrg::text
