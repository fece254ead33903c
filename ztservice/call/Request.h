#pragma once

#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "ztservice/Service.h"
#include "ztservice/call/Multipart.h"
#include "ztservice/call/Security.h"
#include "ztservice/call/Value.h"

namespace ztservice::call {

/// An HTTP request, as it goes.
struct Request {
  std::string method = "POST";
  std::string address;
  /// In their order; without Host and Content-Length.
  std::vector<std::pair<std::string, std::string>> headers;
  std::string body;
  /// What goes beside the body, which is the root of a multipart/related body (RFC 2387) then.
  std::vector<MimePart> attachments;
  /// Of that body, and the media type of its root.
  std::string boundary;
  std::string rootType;
  /// What no trace may show.
  std::vector<std::string> secrets;

  std::string rootId() const { return "root." + boundary; }
  /// As HTTP/1.1 has it on the wire: request line, headers, a blank line, body.
  /// Errors: Error for a file that cannot be read.
  ZTSERVICE_API std::string toWire() const;
  /// The same, a piece at a time.
  ZTSERVICE_API void toWire(const std::function<void(std::string_view)>& take) const;
};

/// The port and the operation of that name that a call goes to; null where there is none.
/// \param port its name; empty for the first of SOAP, else the first, that has the operation.
struct Target {
  const Port* port = nullptr;
  const Operation* operation = nullptr;
};
ZTSERVICE_API Target findOperation(const Service& service, std::string_view operation,
                                   std::string_view port = {});
/// The same. Errors: Error where there is none, with the name that was probably meant.
ZTSERVICE_API Target requireOperation(const Service& service, std::string_view operation,
                                      std::string_view port = {});

struct RequestOptions {
  /// Another address than the port's; empty for that.
  std::string address;
  /// Whether the values are checked against the types before there is a request.
  bool check = true;
  /// Whether "$file" in the values may name files of this computer: only where whoever gave the values may
  /// read them.
  bool files = false;
  /// Whether binary values of some length, and files, go beside the message (MTOM) and not inside it.
  bool mtom = false;
  /// Whether the body goes compressed.
  bool gzip = false;
  /// Who calls, in the message itself.
  std::optional<Security> security = {};
};

/// What is wrong with a value: "order.items[3].price", "1.234 has 3 fraction digits, 2 allowed".
struct Finding {
  std::string path;
  std::string text;

  /// "PATH: TEXT", the text alone without a path.
  ZTSERVICE_API std::string toString() const;
};

/// Values that do not make a request: all that is wrong with them, up to a limit. The message is the first.
class ZTSERVICE_API RequestError : public Error {
 public:
  explicit RequestError(std::vector<Finding> findings);
  ~RequestError() override;
  const std::vector<Finding>& findings() const noexcept { return findings_; }

 private:
  std::vector<Finding> findings_;
};

/// Makes the request of an operation.
///
/// - Shape of the values: the members of the message's element in the document style, of its only part or of
///   several; the parts by name in the rpc style and of HTTP. Headers stand by their elements' or parts'
///   names under "$headers", attachments by their parts' names under "$attachments", or in a list there where
///   the service's description does not know of them.
/// - Files: {"$file": "a.png", "$mediaType": "image/png"} is the content of a file, as what the type wants:
///   base64, hexadecimal digits or text. What goes beside the message is read when it goes.
/// - Order: of the type, whatever the order of the values; what repeats as a group goes round by round.
/// - Errors: RequestError for values, Error for an operation that cannot be called: its message is not
///   resolved, or the port has a protocol or no address that a request could have.
ZTSERVICE_API Request makeRequest(const Service& service, const Port& port, const Operation& operation,
                                  const Value& values, const RequestOptions& options = {});

/// Makes the envelope that answers a call of SOAP. Errors: as above.
ZTSERVICE_API std::string makeAnswer(const Service& service, const Port& port, const Operation& operation,
                                     const Value& values);
/// Makes the envelope of a fault. \param isOfSender whether the request was at fault.
ZTSERVICE_API std::string makeFault(const Port& port, bool isOfSender, std::string_view reason);

}  // namespace ztservice::call
