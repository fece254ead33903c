// Texts as queries count them.
#pragma once

#include <string>
#include <string_view>

namespace tovin::xpath {

/// The same text with surrogate pairs where it has characters above U+FFFF: one unit an element. Borrowed
/// where there are none; otherwise in the room, where the text itself may lie.
std::wstring_view inUnits(std::wstring_view text, std::wstring& room);

/// Where the pattern begins in the text for the first time, or npos. In time linear in both together,
/// whatever they are.
size_t findText(std::wstring_view text, std::wstring_view pattern);

/// Each character that occurs in `from` becomes the one at the same place in `to`, or goes where `to` is
/// shorter; the first occurrence counts.
std::wstring translated(std::wstring_view text, std::wstring_view from, std::wstring_view to);

}  // namespace tovin::xpath
