#include "core/platform.h"

#ifndef _WIN32

#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <cwchar>

namespace {

// A string's allocation starts this many bytes before its text: 4 bytes of padding, so that the text keeps an
// 8-byte alignment, then the 4-byte length.
constexpr std::size_t kTextOffset = 8;

std::uint32_t& ByteLengthOf(BSTR string)
{
    return *(reinterpret_cast<std::uint32_t*>(string) - 1);
}

}  // namespace

BSTR SysAllocString(const OLECHAR* text)
{
    return text == nullptr ? nullptr : SysAllocStringLen(text, static_cast<unsigned>(std::wcslen(text)));
}

BSTR SysAllocStringLen(const OLECHAR* text, unsigned length)
{
    const std::size_t bytes = std::size_t{length} * sizeof(OLECHAR);
    if (bytes > UINT32_MAX - kTextOffset - sizeof(OLECHAR)) return nullptr;
    auto* block = static_cast<char*>(std::calloc(1, kTextOffset + bytes + sizeof(OLECHAR)));
    if (block == nullptr) return nullptr;
    auto* string = reinterpret_cast<BSTR>(block + kTextOffset);
    ByteLengthOf(string) = static_cast<std::uint32_t>(bytes);
    if (text != nullptr) std::memcpy(string, text, bytes);
    return string;
}

int SysReAllocStringLen(BSTR* string, const OLECHAR* text, unsigned length)
{
    const BSTR replacement = SysAllocStringLen(text, length);
    if (replacement == nullptr) return 0;
    SysFreeString(*string);
    *string = replacement;
    return 1;
}

void SysFreeString(BSTR string)
{
    if (string != nullptr) std::free(reinterpret_cast<char*>(string) - kTextOffset);
}

unsigned SysStringLen(BSTR string)
{
    return SysStringByteLen(string) / static_cast<unsigned>(sizeof(OLECHAR));
}

unsigned SysStringByteLen(BSTR string)
{
    return string == nullptr ? 0U : ByteLengthOf(string);
}

#endif
