#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

/// One section of a multipart form (RFC 7578).
struct FormSection {
  /// The value of a header line as it stands, without the blanks around; empty if there is none.
  std::string header(std::string_view field) const;
  /// A parameter of Content-Disposition, without its quotes; empty if there is none.
  std::string parameter(std::string_view key) const;

  std::string head;
  std::string content;
};

/// Takes a multipart body apart.
///
/// - Errors: "The form has no boundary", "The form is cut off", "The form is damaged".
/// \param contentType of the request, which names the boundary.
std::vector<FormSection> sectionsOf(std::string_view contentType, std::string_view body);
