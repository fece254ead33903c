#include "ztclient/input/GivenNames.h"

#include <utility>
#include <vector>

namespace {

std::vector<std::pair<std::wstring, std::wstring>>& names() {
  static std::vector<std::pair<std::wstring, std::wstring>> names;
  return names;
}

bool isDigit(wchar_t c) { return c >= L'0' && c <= L'9'; }

}  // namespace

// A name that was used before stands for the new file.
void givenNames::add(const std::wstring& name, const std::wstring& given) {
  std::erase_if(names(), [&](const auto& known) { return known.first == name; });
  names().emplace_back(name, given);
}

// The names end in numbers: one may be the beginning of another.
std::wstring givenNames::in(std::wstring text) {
  for (const auto& [name, given] : names()) {
    for (size_t at = 0; (at = text.find(name, at)) != text.npos;) {
      const size_t end = at + name.size();
      const bool whole = end == text.size() || !isDigit(text[end]);
      if (whole) text.replace(at, name.size(), given);
      at += whole ? given.size() : 1;
    }
  }
  return text;
}
