#pragma once

#include <string>
#include <string_view>

/// What others wrote, for a terminal: control characters (but the tab and the line feed), those that turn the
/// direction of writing, and bytes that are no UTF-8 are shown as escapes instead of being obeyed.
namespace escaping {

/// "a\u001b[1m", "name\xff".
std::string shown(std::string_view utf8);
/// How many bytes from the beginning on end with a whole character; more may complete the rest.
size_t wholeCharacters(std::string_view utf8) noexcept;

}  // namespace escaping
