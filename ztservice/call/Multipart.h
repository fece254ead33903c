#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "ztservice/Export.h"

namespace ztservice::call {

/// A part of a multipart body: what goes beside a message, or came beside it.
struct MimePart {
  /// Of Content-ID, without its brackets.
  std::string id;
  /// With its parameters.
  std::string mediaType;
  /// As its sender calls the file it was; no name of a file here.
  std::string fileName;
  /// The part of the message that it is, where the description of the service names one.
  std::string part;
  /// Its content, unless a file has it.
  std::string bytes;
  std::string file;
};

/// A message and what came beside it.
struct RelatedParts {
  std::string mediaType;
  std::string root;
  std::vector<MimePart> parts;
};

/// Whether a Content-Type is that of a body with parts.
ZTSERVICE_API bool isMultipart(std::string_view contentType);

/// Takes a multipart/related body (RFC 2387) apart: SOAP with attachments, and MTOM.
///
/// - Errors: Error for a body that is cut off or has no boundary, has more than 1,000 parts or larger heads
///   than 16 KiB, or not the part that its type calls the root.
ZTSERVICE_API RelatedParts readMultipart(std::string_view contentType, std::string_view body);

/// The value of a header in lines of "Name: value", without the blanks around it; empty if there is none.
ZTSERVICE_API std::string headerIn(std::string_view head, std::string_view name);
/// A parameter of a header's value: of `text/xml; charset="utf-8"` the charset. Empty if there is none.
ZTSERVICE_API std::string parameterIn(std::string_view value, std::string_view name);

}  // namespace ztservice::call
