#include "platform_text.h"

#include <algorithm>

#include <new>
#include <optional>
#include <stdexcept>

namespace korvenrg::frontend {
namespace {

using Platform = std::basic_string<OLECHAR>;

constexpr bool kTwoByteCharacters = sizeof(OLECHAR) == 2;

bool IsContinuation(char byte)
{
    return (static_cast<unsigned char>(byte) & 0xC0u) == 0x80u;
}

/** Takes one code point off the front of the text; none when the front is malformed. */
std::optional<char32_t> TakeCodePoint(std::string_view& text)
{
    const auto lead = static_cast<unsigned char>(text.front());
    const std::size_t length = lead < 0x80 ? 1 : lead >= 0xF0 ? 4 : lead >= 0xE0 ? 3 : lead >= 0xC0 ? 2 : 0;
    if (length == 0 || lead > 0xF4 || text.size() < length) return std::nullopt;
    constexpr unsigned kLeadBits[] = {0x7F, 0x1F, 0x0F, 0x07};
    char32_t point = lead & kLeadBits[length - 1];
    for (std::size_t i = 1; i < length; ++i) {
        if (!IsContinuation(text[i])) return std::nullopt;
        point = (point << 6) | (static_cast<unsigned char>(text[i]) & 0x3Fu);
    }
    constexpr char32_t kSmallest[] = {0, 0x80, 0x800, 0x10000};
    if (point < kSmallest[length - 1] || point > 0x10FFFF || (point >= 0xD800 && point <= 0xDFFF))
        return std::nullopt;
    text.remove_prefix(length);
    return point;
}

Platform ToPlatform(std::string_view utf8)
{
    Platform text;
    while (!utf8.empty()) {
        const std::optional<char32_t> taken = TakeCodePoint(utf8);
        if (!taken) throw std::invalid_argument("malformed UTF-8");
        if (kTwoByteCharacters && *taken > 0xFFFF) {
            text.push_back(static_cast<OLECHAR>(0xD800 + ((*taken - 0x10000) >> 10)));
            text.push_back(static_cast<OLECHAR>(0xDC00 + ((*taken - 0x10000) & 0x3FF)));
        } else {
            text.push_back(static_cast<OLECHAR>(*taken));
        }
    }
    return text;
}

void AppendUtf8(std::string& text, char32_t point)
{
    const auto push = [&text](char32_t byte) { text.push_back(static_cast<char>(byte)); };
    if (point < 0x80) {
        push(point);
        return;
    }
    const int continuations = point < 0x800 ? 1 : point < 0x10000 ? 2 : 3;
    constexpr char32_t kLeads[] = {0xC0, 0xE0, 0xF0};
    push(kLeads[continuations - 1] | (point >> (6 * continuations)));
    for (int i = continuations - 1; i >= 0; --i)
        push(0x80 | ((point >> (6 * i)) & 0x3F));
}

}  // namespace

bool IsUtf8(std::string_view text)
{
    while (!text.empty()) {
        if (!TakeCodePoint(text)) return false;
    }
    return true;
}

std::size_t CodePointCount(std::string_view text)
{
    return text.size() - static_cast<std::size_t>(std::count_if(text.begin(), text.end(), IsContinuation));
}

std::string OneLine(std::string text)
{
    const auto isControl = [](char letter) {
        return static_cast<unsigned char>(letter) < 0x20 || letter == 0x7F;
    };
    std::replace_if(text.begin(), text.end(), isControl, ' ');
    return text;
}

TextArray::~TextArray()
{
    for (BSTR string : strings_)
        SysFreeString(string);
}

void TextArray::Set(std::size_t index, std::string_view utf8)
{
    const Platform text = ToPlatform(utf8);
    BSTR string = SysAllocStringLen(text.data(), static_cast<unsigned>(text.size()));
    if (string == nullptr) throw std::bad_alloc();
    SysFreeString(strings_[index]);
    strings_[index] = string;
}

std::string TextArray::Get(std::size_t index) const
{
    const BSTR string = strings_[index];
    const unsigned length = SysStringLen(string);
    std::string utf8;
    for (unsigned i = 0; i < length; ++i) {
        char32_t point = static_cast<char32_t>(string[i]);
        if (kTwoByteCharacters && point >= 0xD800 && point < 0xDC00 && i + 1 < length) {
            point = 0x10000 + ((point - 0xD800) << 10) + (static_cast<char32_t>(string[++i]) - 0xDC00);
        }
        AppendUtf8(utf8, point);
    }
    return utf8;
}

}  // namespace korvenrg::frontend
