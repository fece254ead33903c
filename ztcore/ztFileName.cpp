#include "ztcore/ztFileName.h"

#include <filesystem>
#include <string>
#include <system_error>
#include <vector>

#include "tovinCore/Utf8.h"

namespace {

using View = std::wstring_view;

constexpr View separators = L"/\\";
constexpr View schemeMark = L"://";
constexpr View longNameMark = L"\\\\?\\";  // in front of a long name on Windows

bool isSeparator(wchar_t c) { return separators.find(c) != View::npos; }

bool isLetter(wchar_t c) { return (c >= L'a' && c <= L'z') || (c >= L'A' && c <= L'Z'); }

bool hasDrive(View name) { return name.size() >= 2 && isLetter(name[0]) && name[1] == L':'; }

std::wstring currentFolder() {
  std::error_code none;
  const std::u8string folder = std::filesystem::current_path(none).generic_u8string();
  return tovin::utf8ToWide({reinterpret_cast<const char*>(folder.data()), folder.size()});
}

// What stands before the first part: a drive, and for an absolute name a separator; two for a network name.
View rootOf(View name) {
  size_t end = hasDrive(name) ? 2 : 0;
  const size_t drive = end;
  while (end < name.size() && end < drive + 2 && isSeparator(name[end])) ++end;
  const bool network = drive == 0 && end == 2 && name.substr(0, 2) == L"\\\\";
  return name.substr(0, end > drive && !network ? drive + 1 : end);
}

void takePart(std::vector<View>& parts, View part) {
  if (part.empty() || part == L".") return;
  if (part != L"..")
    parts.push_back(part);
  else if (!parts.empty())
    parts.pop_back();
}

std::vector<View> partsOf(View name) {
  std::vector<View> parts;
  for (size_t at = 0; at < name.size();) {
    const size_t end = std::min(name.find_first_of(separators, at), name.size());
    takePart(parts, name.substr(at, end - at));
    at = end + 1;
  }
  return parts;
}

}  // namespace

ztFileName::ztFileName(const wchar_t* name, bool folder) { SetName(name, folder); }

void ztFileName::SetName(const wchar_t* name, bool folder) {
  name_ = name;
  folder_ = folder;
}

void ztFileName::GetName(tovin::WideString& name) const { name = name_; }

// Where the leaf begins; a query cuts the name off before its separators are looked at.
size_t ztFileName::leafStart() const {
  const View name = name_.view();
  const size_t mark = name.starts_with(longNameMark) ? longNameMark.size() : 0;
  for (size_t at = name.find(L'?', mark); at != View::npos; at = name.find(L'?', at + 1)) {
    if (at == 0 || isSeparator(name[at - 1])) return at;
  }
  const size_t separator = name.find_last_of(separators);
  if (separator != View::npos) return separator + 1;
  return hasDrive(name) ? 2 : 0;
}

void ztFileName::GetPath(tovin::WideString& path) const {
  const View name = name_.view();
  if (folder_) return static_cast<void>(path = name);
  const size_t leaf = leafStart();
  path = name.substr(0, leaf > 0 && isSeparator(name[leaf - 1]) ? leaf - 1 : leaf);
}

void ztFileName::GetLeaf(tovin::WideString& leaf) const {
  const View rest = folder_ ? View() : name_.view().substr(leafStart());
  leaf = rest.starts_with(L'?') ? View() : rest;
}

void ztFileName::GetExtension(tovin::WideString& extension) const {
  tovin::WideString leaf;
  GetLeaf(leaf);
  const size_t dot = leaf.findLast(L'.');
  extension = dot == View::npos || dot == 0 ? View() : leaf.view().substr(dot + 1);
}

bool ztFileName::hasScheme() const {
  const size_t mark = name_.find(schemeMark);
  return mark != View::npos && mark > 0 && name_.view().find_first_of(separators) > mark;
}

bool ztFileName::IsAbsolute() const {
  const View name = name_.view();
  return hasScheme() || hasDrive(name) || (!name.empty() && isSeparator(name[0]));
}

tovin::WideString ztFileName::GetCanonicalName() const {
  if (hasScheme()) return name_;
  std::wstring name(name_.view());
  if (IsRelative()) name = currentFolder() + L"/" + name;
  const View root = rootOf(name);
  std::wstring canonical(root);
  const char* gap = "";
  for (const View part : partsOf(View(name).substr(root.size()))) {
    if (*gap) canonical += L'/';
    canonical += part;
    gap = "/";
  }
  for (wchar_t& c : canonical) c = isSeparator(c) ? L'/' : c;
  return canonical;
}

void ztFileName::ExtractPathname(const tovin::WideString& name, tovin::WideString& path) {
  const ztFileName file(name);
  file.GetPath(path);
  const bool unsaid = path.isEmpty() && (name.isEmpty() || !isSeparator(name[0]));
  if (unsaid) path = L".";
}
