#pragma once

#include <string>

/// Files that the library is given under another name than people know them by.
namespace givenNames {

/// From now on a file that is opened as `name` is shown as `given`.
void add(const std::wstring& name, const std::wstring& given);
/// A text with the names as they were given.
std::wstring in(std::wstring text);

}  // namespace givenNames
