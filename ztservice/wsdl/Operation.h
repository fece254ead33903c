#pragma once

#include <optional>
#include <string_view>
#include <vector>

#include "ztservice/Name.h"

namespace ztservice {

/// A part of a message: a global element, or a type. With an element, the type is the element's, and empty
/// for one without name.
struct Part {
  std::string_view name;
  Name element;
  Name type;
  std::string_view error;
};

struct Header {
  Name message;
  /// "literal" or "encoded".
  std::string_view use;
  std::string_view space;
  std::optional<Part> part;
  std::string_view error;
};

/// A part that travels beside the envelope.
struct Attachment {
  Part part;
  std::vector<std::string_view> mediaTypes;
};

struct Fault {
  std::string_view name;
  Name message;
  /// Empty where the binding does not name it.
  std::string_view use;
  std::vector<Part> parts;
  std::string_view error;
};

/// What goes in or comes out of an operation.
struct Message {
  /// Of the port type's input or output, WSDL's default where none is written.
  std::string_view name;
  Name message;
  /// Of WS-Addressing, where one is written.
  std::string_view action;
  std::string_view use;
  std::string_view encodingStyle;
  /// Of the wrapper in the rpc style.
  std::string_view space;
  /// Unless SOAP: "urlEncoded", "urlReplacement", or a media type.
  std::string_view content;
  /// Of the body.
  std::vector<Part> parts;
  std::vector<Header> headers;
  std::vector<Attachment> attachments;
  std::string_view error;
};

/// An operation of a port: what it takes, gives and fails with, and how that is sent.
///
/// - Ownership: belongs to its service. What cannot be resolved has an error that says what is missing.
class Operation {
 public:
  std::string_view name() const noexcept { return name_; }
  /// "document" or "rpc"; empty unless SOAP, as the action is.
  std::string_view style() const noexcept { return style_; }
  std::string_view soapAction() const noexcept { return soapAction_; }
  /// Of HTTP, behind the port's address.
  std::string_view location() const noexcept { return location_; }
  /// As written; the parts of a message stand in the order in which they are sent.
  const std::vector<std::string_view>& parameterOrder() const noexcept { return parameterOrder_; }
  /// None for an operation that takes, or gives, nothing.
  const std::optional<Message>& input() const noexcept { return input_; }
  const std::optional<Message>& output() const noexcept { return output_; }
  const std::vector<Fault>& faults() const noexcept { return faults_; }
  std::string_view error() const noexcept { return error_; }

 private:
  friend class BindingReader;

  std::string_view name_;
  std::string_view style_;
  std::string_view soapAction_;
  std::string_view location_;
  std::vector<std::string_view> parameterOrder_;
  std::optional<Message> input_;
  std::optional<Message> output_;
  std::vector<Fault> faults_;
  std::string_view error_;
};

}  // namespace ztservice
