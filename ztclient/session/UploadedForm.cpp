#include "ztclient/session/UploadedForm.h"

#include "tovinCore/Exception.h"
#include "ztservice/call/Multipart.h"

using ztservice::call::headerIn;
using ztservice::call::parameterIn;

namespace {

constexpr std::string_view lineEnd = "\r\n";
constexpr std::string_view headEnd = "\r\n\r\n";

FormSection sectionOf(std::string_view text) {
  if (!text.starts_with(lineEnd)) throw tovin::Exception(L"The form is damaged");
  const size_t end = text.find(headEnd);
  if (end == std::string_view::npos) throw tovin::Exception(L"The form is damaged");
  return {std::string(text.substr(0, end)), std::string(text.substr(end + headEnd.size()))};
}

}  // namespace

std::string FormSection::header(std::string_view field) const { return headerIn(head, field); }

std::string FormSection::parameter(std::string_view key) const {
  return parameterIn(header("Content-Disposition"), key);
}

// multipart: "--" boundary section... "--" boundary "--"; a section begins and ends with a line end.
std::vector<FormSection> sectionsOf(std::string_view contentType, std::string_view body) {
  const std::string boundary = parameterIn(contentType, "boundary");
  if (boundary.empty()) throw tovin::Exception(L"The form has no boundary");
  const std::string mark = "\r\n--" + boundary;
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
