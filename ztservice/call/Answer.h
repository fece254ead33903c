#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "ztservice/Service.h"
#include "ztservice/call/Request.h"

namespace ztservice::call {

/// How much of an answer is taken, whatever the server sends.
struct AnswerLimits {
  uint64_t bytes = uint64_t{64} << 20;
  /// Of each file that what comes beside an answer is written to.
  uint64_t fileBytes = uint64_t{16} << 30;
  /// Elements inside each other; what refers to others counts as inside.
  size_t depth = 500;
  /// Those that are referred to count each time.
  size_t elements = 1'000'000;
};

struct AnswerOptions {
  AnswerLimits limits;
  /// Whether what the types do not foresee is an error.
  bool isStrict = false;
};

/// What a server says when it could not do what it was asked.
struct AnswerFault {
  /// The local name: "Client", "Server", "Sender"; of SOAP 1.2 with its subcodes: "Sender/BadOrder".
  std::string code;
  std::string reason;
  /// The actor, or the node and role.
  std::string actor;
  /// What the detail has, each element by its name.
  Value detail;
};

/// An answer, read.
struct Answer {
  /// The members of the message's element in the document style, the parts by name in the rpc style and of
  /// several. What may repeat is a list always; numbers are as they were written, those that JSON does not
  /// know as texts.
  Value values;
  Value headers;
  std::optional<AnswerFault> fault;
  /// What came beside it and no binary value refers to.
  std::vector<MimePart> attachments;
  /// What the types do not foresee: "order.colour: there is no such member".
  std::vector<std::string> warnings;
};

/// Reads the envelope that an operation answers with, or the XML of HTTP.
///
/// - Binary values that came beside it (MTOM) are their base64, or {"$file": …} where a file has them.
/// - References ("href" of SOAP 1.1, "ref" of SOAP 1.2) are what they refer to.
/// - Unknown elements are kept, under "{NAMESPACE}LOCAL" where they are of a namespace.
/// - Errors: Error for what is no envelope, has a document type, goes in circles or exceeds the limits.
/// \param attachments what came beside it.
ZTSERVICE_API Answer readAnswer(const Service& service, const Port& port, const Operation& operation,
                                std::string_view xml, const AnswerOptions& options = {},
                                std::span<const MimePart> attachments = {});

/// Reads a request the same way, as a server gets it.
ZTSERVICE_API Answer readRequest(const Service& service, const Port& port, const Operation& operation,
                                 std::string_view xml, const AnswerOptions& options = {},
                                 std::span<const MimePart> attachments = {});

/// The operation that an envelope of SOAP means: by the element in its body, else by the action. Of several
/// ports the first; null where there is none.
/// Errors: Error for what is no envelope.
ZTSERVICE_API Target operationOf(const Service& service, std::string_view xml, std::string_view action,
                                 const AnswerLimits& limits = {});

}  // namespace ztservice::call
