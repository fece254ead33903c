#include "ztcore/IniText.h"

#include "tovinCore/Exception.h"
#include "tovinCore/Units.h"
#include "tovinCore/Utf8.h"
#include "tovinCore/platform/WholeFile.h"
#include "ztcore/ztFile.h"

namespace {

constexpr size_t longestFile = size_t{1} << 20;
constexpr std::string_view byteOrderMark = "\xEF\xBB\xBF";

std::string_view trimmed(std::string_view text) {
  constexpr std::string_view blanks = " \t\r\v\f";
  const size_t first = text.find_first_not_of(blanks);
  if (first == std::string_view::npos) return {};
  return text.substr(first, text.find_last_not_of(blanks) - first + 1);
}

// One line taken apart: a section's head, a setting, or nothing of the kind.
struct Line {
  explicit Line(std::string_view text) {
    if (text.starts_with(byteOrderMark)) text.remove_prefix(byteOrderMark.size());
    text = trimmed(text);
    says = !text.empty();
    if (text.empty() || text[0] == '#' || text[0] == ';') return;
    if (text[0] == '[') {
      isSection = text.back() == ']';
      if (isSection) name = trimmed(text.substr(1, text.size() - 2));
      return;
    }
    const size_t mark = text.find('=');
    isSetting = mark != std::string_view::npos;
    if (!isSetting) return;
    name = trimmed(text.substr(0, mark));
    value = trimmed(text.substr(mark + 1));
  }

  bool isNamed(std::wstring_view other) const {
    return tovin::equalFolded(std::wstring_view(tovin::utf8ToWide(name)), other);
  }

  bool says = false;
  bool isSection = false;
  bool isSetting = false;
  std::string_view name;
  std::string_view value;
};

std::string_view unquoted(std::string_view value) {
  const bool quoted = value.size() > 1 && value.front() == '"' && value.back() == '"';
  return quoted ? value.substr(1, value.size() - 2) : value;
}

std::string lineOf(const std::string& name, const std::string& value) {
  const bool plain = trimmed(value) == value && unquoted(value) == value;
  return plain ? name + "=" + value : name + "=\"" + value + "\"";
}

std::string requireWritable(std::wstring_view text, const char* what) {
  if (text.find_first_of(std::wstring_view(L"\r\n\0", 3)) != std::wstring_view::npos) {
    throw tovin::Exception(L"A settings file holds no line breaks: %hs", what);
  }
  return tovin::wideToUtf8(text);
}

// Refuses a section that would be read as something else.
std::string requireSection(std::wstring_view text) {
  const std::string head = "[" + requireWritable(text, "section") + "]";
  const Line line(head);
  if (!line.isSection || line.name.size() + 2 != head.size())
    throw tovin::Exception(L"A settings file cannot hold the section \"%ls\"", std::wstring(text));
  return head;
}

// Refuses a name that would be read as something else.
std::string requireName(std::wstring_view text) {
  const std::string name = requireWritable(text, "name");
  const std::string setting = name + "=";
  const Line line(setting);
  const bool readsBack = line.isSetting && line.name == name && line.value.empty();
  if (name.empty() || !readsBack)
    throw tovin::Exception(L"A settings file cannot hold the name \"%hs\"", name);
  return name;
}

}  // namespace

IniText IniText::load(const std::wstring& file) {
  IniText text;
  ztFile in;
  if (!in.Open(file.c_str(), ztFile::ForReadingRegular)) {
    if (!tovin::platform::pathExists(file.c_str())) return text;
    throw tovin::Exception(L"Unable to read settings file %ls", file);
  }
  std::string bytes(longestFile + 1, '\0');
  bytes.resize(in.Read(reinterpret_cast<unsigned char*>(bytes.data()), longestFile + 1));
  if (bytes.size() > longestFile) {
    throw tovin::Exception(L"Settings file %ls is longer than %d bytes", file, longestFile);
  }
  for (size_t from = 0; from < bytes.size();) {
    const size_t end = std::min(bytes.find('\n', from), bytes.size());
    text.lines_.push_back(bytes.substr(from, end - from));
    from = end + 1;
  }
  return text;
}

void IniText::save(const std::wstring& file) const {
  std::string bytes;
  for (const std::string& line : lines_) bytes.append(line).append("\n");
  if (!tovin::platform::replaceFile(file.c_str(), bytes)) {
    throw tovin::Exception(L"Unable to write settings file %ls", file);
  }
}

IniText::Place IniText::locate(std::wstring_view section, std::wstring_view name) const {
  Place place;
  bool inside = place.found = section.empty();
  for (size_t i = 0; i < lines_.size(); ++i) {
    const Line line(lines_[i]);
    if (line.isSection) inside = line.isNamed(section);
    if (!inside) continue;
    place.found = true;
    if (line.says) place.end = i + 1;
    if (!place.line && line.isSetting && line.isNamed(name)) place.line = i;
  }
  return place;
}

bool IniText::hasSection(std::wstring_view section) const { return locate(section, {}).found; }

std::optional<std::wstring> IniText::find(std::wstring_view section, std::wstring_view name) const {
  const Place place = locate(section, name);
  if (!place.line) return std::nullopt;
  return tovin::utf8ToWide(unquoted(Line(lines_[*place.line]).value));
}

void IniText::set(std::wstring_view section, std::wstring_view name, std::wstring_view value) {
  const std::string line = lineOf(requireName(name), requireWritable(value, "value"));
  const std::string head = requireSection(section);
  Place place = locate(section, name);
  if (place.line) {
    lines_[*place.line] = line;
    return;
  }
  if (!place.found) {
    lines_.push_back(head);
    place.end = lines_.size();
  }
  lines_.insert(lines_.begin() + static_cast<std::ptrdiff_t>(place.end), line);
}
