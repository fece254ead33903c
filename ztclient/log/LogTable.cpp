#include "ztclient/log/LogTable.h"

#include <algorithm>

#include "tovinCore/Exception.h"
#include "tovinCore/Utf8.h"
#include "ztclient/answers/Json.h"
#include "ztclient/log/EntryNames.h"

namespace {

constexpr size_t mostColumns = 1000;
constexpr size_t gap = 2;
constexpr size_t narrowest = 3;

// In characters.
size_t lengthOf(std::string_view utf8) {
  return static_cast<size_t>(std::ranges::count_if(utf8, [](char c) { return (c & 0xC0) != 0x80; }));
}

std::string_view firstCharacters(std::string_view utf8, size_t count) {
  size_t end = 0;
  for (; end < utf8.size(); ++end) {
    if ((utf8[end] & 0xC0) != 0x80 && count-- == 0) break;
  }
  return utf8.substr(0, end);
}

std::string shownOf(const std::optional<std::string>& value) { return onOneLine(value.value_or("")); }

}  // namespace

LogColumns::LogColumns(const std::vector<std::string>& names) {
  std::map<std::string, size_t> counts;
  for (const std::string& name : names) {
    const std::string folded = entryNames::folded(name);
    places_.emplace(std::pair(folded, counts[folded]++), names_.size());
    names_.push_back(name);
  }
  used_.resize(names_.size());
}

template <class Visit>
void LogColumns::forPairs(const EntryPairs& entry, Visit&& visit) {
  std::map<std::string, size_t> counts;
  for (const auto& [name, value] : entry) {
    const std::string folded = entryNames::folded(name);
    visit(std::pair(folded, counts[folded]++), name, value);
  }
}

void LogColumns::see(const EntryPairs& entry) {
  forPairs(entry, [this](const auto& key, const std::string& name, const std::string&) {
    if (!places_.emplace(key, names_.size()).second) return;
    if (names_.size() == mostColumns)
      throw tovin::Exception(L"There are more than %u columns: name those that are wanted", mostColumns);
    names_.push_back(name);
    used_.push_back(true);
  });
}

TableRow LogColumns::rowOf(const EntryPairs& entry) {
  TableRow row(names_.size());
  forPairs(entry, [&](const auto& key, const std::string&, const std::string& value) {
    const auto place = places_.find(key);
    if (place == places_.end()) return;
    row[place->second] = value;
    used_[place->second] = true;
  });
  return row;
}

std::vector<std::string> LogColumns::unused() const {
  std::vector<std::string> names;
  for (size_t i = 0; i < names_.size(); ++i) {
    if (!used_[i]) names.push_back(names_[i]);
  }
  return names;
}

void tableText::writeCsv(std::ostream& out, const TableRow& row) {
  const char* divider = "";
  for (const auto& value : row) {
    out << divider;
    divider = ",";
    if (!value) continue;
    if (!value->empty() && value->find_first_of(",\"\r\n") == value->npos) {
      out << *value;
      continue;
    }
    out << '"';
    for (const char c : *value) c == '"' ? out << "\"\"" : out << c;
    out << '"';
  }
  out << "\r\n";
}

void tableText::writeTsv(std::ostream& out, const TableRow& row) {
  const char* divider = "";
  for (const auto& value : row) {
    out << divider;
    divider = "\t";
    for (const char c : value.value_or("")) {
      if (c == '\t')
        out << "\\t";
      else if (c == '\n')
        out << "\\n";
      else if (c == '\\')
        out << "\\\\";
      else
        out << c;
    }
  }
  out << '\n';
}

TableRow tableText::headingOf(const std::vector<std::string>& names) { return {names.begin(), names.end()}; }

void tableText::Aligned::see(const TableRow& row) {
  if (row.size() > widths_.size()) widths_.resize(row.size());
  for (size_t i = 0; i < row.size(); ++i) widths_[i] = std::max(widths_[i], lengthOf(shownOf(row[i])));
}

size_t tableText::Aligned::fit(size_t width) {
  size_t columns = 0;
  for (size_t sum = 0; columns < widths_.size(); ++columns) {
    sum += std::min(widths_[columns], narrowest) + (columns > 0 ? gap : 0);
    if (sum > width) break;
  }
  const size_t leftOut = widths_.size() - columns;
  widths_.resize(columns);
  const size_t gaps = widths_.empty() ? 0 : gap * (widths_.size() - 1);
  const size_t room = std::max(width, gaps) - gaps;
  // The width that all wider columns get: the largest with which the sum is no more than the room.
  size_t least = narrowest, most = width;
  while (least < most) {
    const size_t limit = least + (most - least + 1) / 2;
    size_t sum = 0;
    for (const size_t each : widths_) sum += std::min(each, limit);
    if (sum <= room)
      least = limit;
    else
      most = limit - 1;
  }
  for (size_t& each : widths_) each = std::min(each, std::max(least, narrowest));
  return leftOut;
}

void tableText::Aligned::write(std::ostream& out, const TableRow& row) const {
  std::string line;
  size_t blanks = 0;
  for (size_t i = 0; i < std::min(row.size(), widths_.size()); ++i) {
    const std::string text = shownOf(row[i]);
    const size_t length = lengthOf(text);
    if (length > 0) line.append(blanks, ' ');
    if (length > widths_[i])
      line.append(firstCharacters(text, widths_[i] - 1)).append("…");
    else
      line += text;
    blanks = (length > 0 ? 0 : blanks) + widths_[i] - std::min(length, widths_[i]) + gap;
  }
  out << line << '\n';
}

void tableText::Aligned::writeRule(std::ostream& out) const {
  for (size_t i = 0; i < widths_.size(); ++i) {
    if (i > 0) out << std::string(gap, ' ');
    for (size_t n = 0; n < widths_[i]; ++n) out << "─";
  }
  out << '\n';
}
