/** Text between UTF-8 and the platform strings of the doors. */
#ifndef KORVENRG_FRONTEND_PLATFORM_TEXT_H
#define KORVENRG_FRONTEND_PLATFORM_TEXT_H

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include "korvenrg.h"

namespace korvenrg::frontend {

/** True when the text is well-formed UTF-8: no overlong forms, no surrogates, nothing above U+10FFFF. */
bool IsUtf8(std::string_view text);

/** Number of code points; the width of a printed cell. */
std::size_t CodePointCount(std::string_view text);

/** The text with a space for each control character: a line end in a name must not break a printed line. */
std::string OneLine(std::string text);

/** An array of platform strings, as the doors take it; frees what stands in it at the end, whoever made it.
 */
class TextArray
{
  public:
    explicit TextArray(std::size_t size) : strings_(size == 0 ? 1 : size, nullptr) {}
    ~TextArray();
    TextArray(const TextArray&) = delete;
    TextArray& operator=(const TextArray&) = delete;

    void Set(std::size_t index, std::string_view utf8);
    std::string Get(std::size_t index) const;
    BSTR* data()
    {
        return strings_.data();
    }

  private:
    std::vector<BSTR> strings_;
};

}  // namespace korvenrg::frontend

#endif
