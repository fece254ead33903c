#include "ztclient/session/MockServer.h"

#include "tovinCore/Exception.h"
#include "ztclient/input/JsonValue.h"
#include "ztclient/session/HttpReader.h"
#include "ztclient/terminal/Messages.h"
#include "ztservice/call/Answer.h"
#include "ztservice/call/Multipart.h"
#include "ztservice/call/Template.h"

namespace {

using ztservice::call::headerIn;
using ztservice::call::makeFault;
using ztservice::call::parameterIn;
using ztservice::call::Target;

// Of SOAP 1.1 in a header of its own, of SOAP 1.2 beside the media type; without its quotation marks.
std::string actionIn(std::string_view head) {
  const std::string action = headerIn(head, "SOAPAction");
  if (action.empty()) return parameterIn(headerIn(head, "Content-Type"), "action");
  const bool isQuoted = action.size() >= 2 && action.front() == '"' && action.back() == '"';
  return isQuoted ? action.substr(1, action.size() - 2) : action;
}

std::string refusal(std::string_view status, const std::string& reason) {
  return httpAnswer(status, "text/plain", reason + '\n');
}

std::string envelope(std::string_view status, const ztservice::Port& port, const std::string& xml) {
  const bool is12 = port.protocol() == ztservice::Protocol::soap12;
  return httpAnswer(status, is12 ? "application/soap+xml" : "text/xml", xml);
}

}  // namespace

MockServer::MockServer(const ztservice::Service& service, std::map<std::string, std::string> answers,
                       uint16_t port)
    : service_(service), answers_(std::move(answers)), listener_(port) {}

std::string MockServer::url() const { return "http://127.0.0.1:" + std::to_string(listener_.port()) + '/'; }

// Nothing that a client sends ends the server.
void MockServer::run(const std::function<bool()>& goesOn,
                     const std::function<void(const std::string&)>& tell) {
  constexpr std::chrono::milliseconds pulse(50);
  while (goesOn()) {
    if (!listener_.accept(pulse)) continue;
    std::string told;
    try {
      HttpReader reader(listener_);
      const std::string head = reader.readHead();
      size_t chunks = 0;
      const std::string body = reader.readBody(head, chunks);
      listener_.send(answer(head, body, told));
    } catch (const tovin::Exception& e) {
      told = "400: " + messages::textOf(e);
      listener_.send(refusal("400 Bad Request", messages::textOf(e)));
    }
    tell(told);
    listener_.hangUp();
  }
}

std::string MockServer::answer(std::string_view head, const std::string& body, std::string& told) const {
  const std::string type = headerIn(head, "Content-Type");
  if (!ztservice::call::isMultipart(type)) return answer(head, {type, body, {}}, told);
  return answer(head, ztservice::call::readMultipart(type, body), told);
}

std::string MockServer::answer(std::string_view head, const ztservice::call::RelatedParts& message,
                               std::string& told) const {
  if (!head.starts_with("POST ")) {
    told = "405: only POST is taken here";
    return refusal("405 Method Not Allowed", "only POST is taken here");
  }
  if (!headerIn(head, "Content-Encoding").empty()) {
    told = "415: the body is compressed";
    return refusal("415 Unsupported Media Type", "the body is compressed");
  }
  const Target target = ztservice::call::operationOf(service_, message.root, actionIn(head));
  if (!target.port) {
    told = "500: no operation has this action and body";
    // Of which port nobody can say: as the first one speaks.
    if (service_.ports().empty()) return refusal("500 Internal Server Error", "the service has no port");
    return envelope("500 Internal Server Error", service_.ports()[0],
                    makeFault(service_.ports()[0], true, "no such operation"));
  }
  const std::string name(target.operation->name());
  try {
    ztservice::call::AnswerOptions strict;
    strict.isStrict = true;
    static_cast<void>(
        readRequest(service_, *target.port, *target.operation, message.root, strict, message.parts));
  } catch (const tovin::Exception& e) {
    told = name + ": refused, " + messages::textOf(e);
    return envelope("500 Internal Server Error", *target.port,
                    makeFault(*target.port, true, messages::textOf(e)));
  }
  if (!target.operation->output()) {
    told = name + ": 202";
    return httpAnswer("202 Accepted", "text/xml", "");
  }
  try {
    const std::string values = valuesFor(target);
    const std::string xml = values.starts_with('<') ? values
                                                    : makeAnswer(service_, *target.port, *target.operation,
                                                                 readJson(values, name));
    told = name + ": 200";
    return envelope("200 OK", *target.port, xml);
  } catch (const tovin::Exception& e) {
    told = name + ": no answer, " + messages::textOf(e);
    return envelope("500 Internal Server Error", *target.port,
                    makeFault(*target.port, false, messages::textOf(e)));
  }
}

std::string MockServer::valuesFor(const Target& target) const {
  const auto given = answers_.find(std::string(target.operation->name()));
  if (given != answers_.end()) return given->second;
  ztservice::call::TemplateOptions options;
  options.isAnswer = true;
  return makeTemplate(service_, *target.port, *target.operation, options);
}
