#pragma once

#include <string>
#include <string_view>

#include "tovinCore/Export.h"

/// Texts on their way into a URL and out of a page.
namespace tovin::util {

/// Appends a text as a part of a URL (RFC 3986): letters, digits and "-._~" as they are, every other
/// character as the percent-encoded bytes of its UTF-8, a blank as "%20".
///
///     std::wstring url = L"?name=";
///     urlEncode(L"a b\x20AC", url);  // ?name=a%20b%E2%82%AC
TOVINCORE_API void urlEncode(std::wstring_view text, std::wstring& out);
TOVINCORE_API std::wstring urlEncode(std::wstring_view text);

/// Replaces the character references of XML 1.0: &amp; &lt; &gt; &quot; &apos;, decimal and hexadecimal ones.
/// What is no reference, or none to a character, stays as it is; what a reference gives is not decoded again.
TOVINCORE_API std::wstring XMLDecode(std::wstring_view text);

}  // namespace tovin::util
