#include "tovin/xpath/NodeTest.h"

#include "tovinCore/Units.h"

namespace tovin::xpath {
namespace {

constexpr std::wstring_view spaceMark = L"__white_space__";

// The pieces of a written name between its marks must be the pieces of the candidate between its spaces. A
// candidate may hold the mark itself.
bool equalWithSpaces(std::wstring_view written, std::wstring_view candidate) noexcept {
  while (true) {
    const size_t space = candidate.find(L' ');
    const std::wstring_view piece = candidate.substr(0, space);
    if (written.size() < piece.size() || !equalFolded(written.substr(0, piece.size()), piece)) return false;
    written.remove_prefix(piece.size());
    if (space == candidate.npos) return written.empty();
    if (!equalFolded(written.substr(0, spaceMark.size()), spaceMark)) return false;
    written.remove_prefix(spaceMark.size());
    candidate.remove_prefix(space + 1);
  }
}

}  // namespace

bool NodeTest::matchesName(const wchar_t* candidate) const noexcept {
  if (kind <= Kind::any) return true;
  if (kind == Kind::nothing || !candidate) return false;
  const std::wstring_view text(candidate);
  if (kind == Kind::name) return equalFolded(text, name) || equalWithSpaces(name, text);
  return text.size() > name.size() && text[name.size()] == L':' &&
         equalFolded(text.substr(0, name.size()), std::wstring_view(name));
}

std::wstring_view localName(const wchar_t* name) noexcept {
  if (!name) return {};
  std::wstring_view text(name);
  text.remove_prefix(text.find(L':') + 1);  // none is found at npos, and 1 more is 0
  return text;
}

}  // namespace tovin::xpath
