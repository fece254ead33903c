// Where this system keeps a user's settings: texts by a key and a name.
#pragma once

#include <string>

namespace settings {

// Empty when the user has no place for settings.
std::wstring place();
bool hasKey(const std::wstring& place, const std::wstring& key);
bool read(const std::wstring& place, const std::wstring& key, const std::wstring& name, std::wstring& value);
void write(const std::wstring& place, const std::wstring& key, const std::wstring& name,
           const std::wstring& value);

}  // namespace settings
