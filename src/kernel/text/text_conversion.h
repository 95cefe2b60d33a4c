/** Conversion between platform strings and texts, and the simplest counts over arrays of texts. */
#pragma once

#include <string>

#include "core/matrix.h"

/** The text of a platform string; null gives the empty text. */
std::wstring convertBSTRtoWstring(BSTR& string);

/** A new platform string, owned by the caller. */
BSTR convertWstringToBSTR(const std::wstring& text);

namespace korvenrg::text {

/** How many of the first n texts are equal to `word` once each of their characters is cut to its low byte. */
int CountNarrowed(const matrix<std::wstring>* texts, int n, const std::string& word);

/** How many of the leading texts are "1", up to the first that is neither "0" nor "1". */
int CountLeadingOnes(const matrix<std::wstring>* texts, int n);

}  // namespace korvenrg::text
