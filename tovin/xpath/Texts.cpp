#include "tovin/xpath/Texts.h"

#include <array>
#include <unordered_map>
#include <vector>

#include "tovinCore/Units.h"

namespace tovin::xpath {
namespace {

// For each beginning of the pattern, how much of the pattern its end is the beginning of.
std::vector<size_t> overlapsOf(std::wstring_view pattern) {
  std::vector<size_t> overlaps(pattern.size(), 0);
  for (size_t i = 1, same = 0; i < pattern.size(); ++i) {
    while (same > 0 && pattern[i] != pattern[same]) same = overlaps[same - 1];
    if (pattern[i] == pattern[same]) ++same;
    overlaps[i] = same;
  }
  return overlaps;
}

// Knuth, Morris and Pratt: never looks back in the text.
size_t findLong(std::wstring_view text, std::wstring_view pattern) {
  const std::vector<size_t> overlaps = overlapsOf(pattern);
  size_t same = 0;
  for (size_t i = 0; i < text.size(); ++i) {
    while (same > 0 && text[i] != pattern[same]) same = overlaps[same - 1];
    if (text[i] == pattern[same]) ++same;
    if (same == pattern.size()) return i + 1 - same;
  }
  return text.npos;
}

// Which place of a list each character has first.
class Places {
 public:
  static constexpr size_t none = std::wstring_view::npos;

  explicit Places(std::wstring_view characters) {
    ascii_.fill(none);
    for (size_t i = 0; i < characters.size(); ++i) {
      const wchar_t c = characters[i];
      if (!isAscii(c))
        others_.try_emplace(c, i);
      else if (size_t& place = ascii_[static_cast<size_t>(c)]; place == none)
        place = i;
    }
  }

  size_t of(wchar_t c) const {
    if (isAscii(c)) return ascii_[static_cast<size_t>(c)];
    const auto place = others_.find(c);
    return place == others_.end() ? none : place->second;
  }

 private:
  static bool isAscii(wchar_t c) { return static_cast<uint32_t>(c) < 128; }

  std::array<size_t, 128> ascii_;
  std::unordered_map<wchar_t, size_t> others_;
};

}  // namespace

std::wstring_view inUnits(std::wstring_view text, std::wstring& room) {
  if (countUnits(text) == text.size()) return text;
  std::wstring units;
  for (wchar_t c : text) {
    forUnits(static_cast<uint32_t>(c), [&](char16_t unit) { units += static_cast<wchar_t>(unit); });
  }
  room = std::move(units);
  return room;
}

size_t findText(std::wstring_view text, std::wstring_view pattern) {
  constexpr size_t shortPattern = 32;
  return pattern.size() <= shortPattern ? text.find(pattern) : findLong(text, pattern);
}

std::wstring translated(std::wstring_view text, std::wstring_view from, std::wstring_view to) {
  const Places places(from);
  std::wstring result;
  for (wchar_t c : text) {
    const size_t place = places.of(c);
    if (place == Places::none)
      result += c;
    else if (place < to.size())
      result += to[place];
  }
  return result;
}

}  // namespace tovin::xpath
