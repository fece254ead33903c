#include "ztclient/session/UploadedForm.h"

#include <algorithm>

#include "tovinCore/Exception.h"

namespace {

constexpr std::string_view lineEnd = "\r\n";
constexpr std::string_view headEnd = "\r\n\r\n";

char folded(char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c + ('a' - 'A')) : c; }

bool equalFolded(std::string_view a, std::string_view b) {
  return std::equal(a.begin(), a.end(), b.begin(), b.end(),
                    [](char x, char y) { return folded(x) == folded(y); });
}

std::string_view trimmed(std::string_view text) {
  while (text.starts_with(' ')) text.remove_prefix(1);
  while (text.ends_with(' ')) text.remove_suffix(1);
  return text;
}

// Calls visit for each piece of the text until one of them is taken.
template <class Visit>
void forPieces(std::string_view text, std::string_view separator, Visit&& visit) {
  for (;;) {
    const size_t end = text.find(separator);
    if (visit(text.substr(0, end)) || end == std::string_view::npos) return;
    text.remove_prefix(end + separator.size());
  }
}

// The value behind `key` and a mark, in one of the pieces.
std::string_view valueIn(std::string_view text, std::string_view separator, char mark, std::string_view key) {
  std::string_view value;
  forPieces(text, separator, [&](std::string_view piece) {
    const size_t at = piece.find(mark);
    const bool found = at != std::string_view::npos && equalFolded(trimmed(piece.substr(0, at)), key);
    if (found) value = trimmed(piece.substr(at + 1));
    return found;
  });
  return value;
}

std::string_view unquoted(std::string_view text) {
  return text.size() >= 2 && text.front() == '"' && text.back() == '"' ? text.substr(1, text.size() - 2)
                                                                       : text;
}

FormSection sectionOf(std::string_view text) {
  if (!text.starts_with(lineEnd)) throw tovin::Exception(L"The form is damaged");
  const size_t end = text.find(headEnd);
  if (end == std::string_view::npos) throw tovin::Exception(L"The form is damaged");
  return {std::string(text.substr(0, end)), std::string(text.substr(end + headEnd.size()))};
}

}  // namespace

std::string_view headerIn(std::string_view head, std::string_view field) {
  return valueIn(head, lineEnd, ':', field);
}

std::string_view FormSection::header(std::string_view field) const { return headerIn(head, field); }

std::string_view FormSection::parameter(std::string_view key) const {
  return unquoted(valueIn(header("Content-Disposition"), ";", '=', key));
}

// multipart: "--" boundary section... "--" boundary "--"; a section begins and ends with a line end.
std::vector<FormSection> sectionsOf(std::string_view contentType, std::string_view body) {
  const std::string_view boundary = unquoted(valueIn(contentType, ";", '=', "boundary"));
  if (boundary.empty()) throw tovin::Exception(L"The form has no boundary");
  const std::string mark = "\r\n--" + std::string(boundary);
  if (!body.starts_with(std::string_view(mark).substr(lineEnd.size())))
    throw tovin::Exception(L"The form is damaged");
  std::string_view rest = body.substr(mark.size() - lineEnd.size());
  std::vector<FormSection> sections;
  while (!rest.starts_with("--")) {
    const size_t end = rest.find(mark);
    if (end == std::string_view::npos) throw tovin::Exception(L"The form is cut off");
    sections.push_back(sectionOf(rest.substr(0, end)));
    rest.remove_prefix(end + mark.size());
  }
  return sections;
}
