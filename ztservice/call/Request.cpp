#include "ztservice/call/Request.h"

#include <algorithm>

#include "ztservice/call/BodyReader.h"
#include "ztservice/call/Compression.h"
#include "ztservice/call/MessageWriter.h"
#include "ztservice/call/Nearest.h"
#include "ztservice/call/SecurityHeader.h"
#include "ztservice/load/Location.h"
#include "ztservice/schema/Builtins.h"

namespace ztservice::call {

namespace {

constexpr std::string_view unknownMediaType = "application/octet-stream";
constexpr const char* declaration = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n";

[[noreturn]] void refuse(std::string_view text) { throw Error({}, text); }

// Every byte but the unreserved ones of RFC 3986, section 2.3.
std::string percentEncoded(std::string_view text) {
  constexpr char digits[] = "0123456789ABCDEF";
  std::string out;
  for (const char c : text) {
    const auto byte = static_cast<unsigned char>(c);
    const bool isPlain = (c >= '0' && c <= '9') || (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') ||
                         c == '-' || c == '.' || c == '_' || c == '~';
    if (isPlain)
      out += c;
    else
      out += {'%', digits[byte >> 4], digits[byte & 15]};
  }
  return out;
}

bool hasControls(std::string_view text) {
  return std::any_of(text.begin(), text.end(),
                     [](char c) { return static_cast<unsigned char>(c) < 0x20 || c == 0x7F; });
}

// One request on its way.
class RequestMaker {
 public:
  RequestMaker(const Service& service, const Port& port, const Operation& operation, const Value& values,
               const std::optional<Message>& message)
      : service_(service),
        port_(port),
        operation_(operation),
        message_(message),
        // Nothing at all is an object without members.
        values_(values.isNull() ? nothing() : values),
        writer_(service) {}

  Request make(const RequestOptions& options) {
    Enclosure enclosure(options.files, options.mtom);
    enclosure_ = &enclosure;
    writer_.enclose(enclosure);
    security_ = options.security ? &*options.security : nullptr;
    request_.address = options.address.empty() ? std::string(port_.address()) : options.address;
    if (port_.protocol() == Protocol::http) {
      checkMessage();
      http();
    } else {
      request_.body = envelope(operation_.name());
      soapHeaders(port_.protocol() == Protocol::soap12);
      keepSecrets();
    }
    complain(options.check);
    if (options.gzip) compressBody();
    if (request_.address.empty())
      refuse("the port " + std::string(port_.name()) + " has no address: give one");
    if (!parse::location::isWeb(request_.address))
      refuse(request_.address + " is no address of HTTP or HTTPS");
    if (hasControls(request_.address)) refuse("the address has control characters");
    return std::move(request_);
  }

  std::string makeAnswer() {
    std::string xml = envelope(std::string(operation_.name()) + "Response");
    complain(true);
    return xml;
  }

 private:
  static const Value& nothing() {
    static const Value none{Value::Object{}};
    return none;
  }

  void checkMessage() const {
    if (!operation_.error().empty()) refuse(operation_.error());
    if (port_.protocol() == Protocol::other)
      refuse("the port " + std::string(port_.name()) + " is neither of SOAP nor of HTTP");
    if (!message_) return;
    if (!message_->error.empty()) refuse(message_->error);
    for (const Part& part : message_->parts) {
      if (!part.error.empty()) refuse("the part " + std::string(part.name) + ": " + std::string(part.error));
    }
  }

  void complain(bool check) {
    const Findings& findings = writer_.findings();
    if (findings.isFatal() || (check && !findings.list().empty())) throw RequestError(findings.list());
  }

  // What a part is, as an element.
  Declared declared(const Part& part, const Name& name) const {
    const Element* element = part.element.empty() ? nullptr : service_.element(part.element);
    if (element) {
      Declared what = Declared::of(*element);
      if (!name.empty()) what.name = name;
      return what;
    }
    Declared what;
    what.name = name;
    what.type = TypeReference{part.type};
    what.nillable = true;
    return what;
  }

  // \param wrapper the element around the parts in the rpc style.
  std::string envelope(std::string_view wrapper) {
    checkMessage();
    space_ = port_.protocol() == Protocol::soap12 ? soap12Space : soap11Space;
    XmlText& xml = writer_.xml();
    const Name body{space_, "Body"};
    const std::string name = xml.qualified({space_, "Envelope"});
    headers();
    if (message_ && enclosure_) attachments(*message_);
    xml.begin(body);
    if (operation_.style() == "rpc")
      rpc(wrapper);
    else if (message_)
      document(*message_);
    complainOfRest();
    xml.end(body);
    const std::string text = xml.take();
    return std::string(declaration) + '<' + name + xml.declarations() + '>' + text + "</" + name + ">\n";
  }

  void soapHeaders(bool is12) {
    const std::string action(operation_.soapAction());
    if (hasControls(action) || action.find_first_of("\"\\") != std::string::npos)
      refuse("the action of the operation cannot stand in a header");
    const std::string mediaType = is12 ? "application/soap+xml" : "text/xml";
    const std::string suffix = is12 && !action.empty() ? "; action=\"" + action + '"' : std::string();
    request_.headers.emplace_back("Accept", mediaType);
    request_.headers.emplace_back("Accept-Encoding", "gzip, deflate");
    if (enclosure_->parts().empty())
      request_.headers.emplace_back("Content-Type", mediaType + "; charset=utf-8" + suffix);
    else
      multipart(mediaType, suffix);
    if (!is12) request_.headers.emplace_back("SOAPAction", '"' + action + '"');
  }

  // As RFC 2387 has it, and XML-binary Optimized Packaging where that is asked for.
  void multipart(const std::string& mediaType, const std::string& suffix) {
    const bool isMtom = enclosure_->isMtom();
    request_.attachments = std::move(enclosure_->parts());
    request_.boundary = enclosure_->boundary();
    request_.rootType = isMtom ? "application/xop+xml; charset=utf-8; type=\"" + mediaType + '"'
                               : mediaType + "; charset=utf-8";
    request_.headers.emplace_back(
        "Content-Type", "multipart/related; type=\"" + (isMtom ? "application/xop+xml" : mediaType) +
                            "\"; start=\"<" + request_.rootId() + ">\"" +
                            (isMtom ? "; start-info=\"" + mediaType + '"' : std::string()) + suffix +
                            "; boundary=\"" + request_.boundary + '"');
  }

  void keepSecrets() {
    if (!security_ || security_->isDigest || security_->password.empty()) return;
    XmlText escaped;
    escaped.text(security_->password);
    request_.secrets = {security_->password, escaped.take()};
  }

  void compressBody() {
    if (!request_.attachments.empty()) refuse("a request with attachments cannot be compressed");
    if (request_.body.empty()) return;
    request_.body = compressed(request_.body);
    request_.headers.emplace_back("Content-Encoding", "gzip");
  }

  void headers() {
    const Value* given = values_.find("$headers");
    if (given && given->isNull()) given = nullptr;
    if (given && given->kind() != Value::Kind::object) {
      writer_.findings().add("$headers", "is no object");
      given = nullptr;
    }
    if (!given && !security_) return;
    const Name header{space_, "Header"};
    writer_.xml().begin(header);
    if (security_) writeSecurity(writer_.xml(), *security_, space_);
    if (given) headersOf(message_ ? *message_ : Message(), *given);
    writer_.xml().end(header);
  }

  void headersOf(const Message& message, const Value& given) {
    std::vector<std::string> names;
    for (const Header& one : message.headers) {
      if (!one.part) continue;
      const Name name = one.part->element.empty() ? Name{one.space, one.part->name} : one.part->element;
      names.emplace_back(name.local);
      for (const auto& [key, value] : given.object()) {
        if (!Content::means(key, name) && key != one.part->name) continue;
        encode(one.use, {});
        writer_.element(declared(*one.part, name), value, "$headers." + key);
      }
    }
    for (const auto& member : given.object()) {
      const std::string& key = member.first;
      const bool isKnown = std::any_of(
          message.headers.begin(), message.headers.end(), [&, k = std::string_view(key)](const Header& one) {
            return one.part && (Content::means(k, one.part->element) || k == one.part->name);
          });
      if (!isKnown)
        writer_.findings().add("$headers." + key, "there is no such header" + suggestion(key, names));
    }
  }

  // Those that the service's description knows by their names, or others in a list.
  void attachments(const Message& message) {
    const Value* given = values_.find("$attachments");
    if (given && given->kind() == Value::Kind::list) {
      for (size_t i = 0; i < given->list().size(); ++i)
        enclosure_->add(writer_.attachment({}, given->list()[i], unknownMediaType,
                                           "$attachments[" + std::to_string(i) + ']'));
      return;
    }
    if (given && given->kind() != Value::Kind::object) {
      writer_.findings().add("$attachments", "is neither an object nor a list");
      return;
    }
    std::vector<std::string> names;
    for (const Attachment& one : message.attachments) {
      const std::string name(one.part.name);
      const Value* value = given ? given->find(name) : nullptr;
      names.push_back(name);
      if (!value) {
        writer_.findings().add("$attachments." + name, "is missing");
        continue;
      }
      const auto known = std::find_if(one.mediaTypes.begin(), one.mediaTypes.end(),
                                      [](std::string_view type) { return type.find('*') == type.npos; });
      enclosure_->add(writer_.attachment(typeOf(one.part), *value,
                                         known == one.mediaTypes.end() ? unknownMediaType : *known,
                                         "$attachments." + name),
                      percentEncoded(name) + '=');
    }
    if (!given) return;
    for (const auto& member : given->object()) {
      if (std::find(names.begin(), names.end(), member.first) == names.end())
        writer_.findings().add("$attachments." + member.first,
                               "there is no such attachment" + suggestion(member.first, names));
    }
  }

  void encode(std::string_view use, std::string_view style) {
    const std::string_view usual = space_ == soap12Space ? encoding12Space : encoding11Space;
    const bool isKnown = style == encoding11Space || style == encoding12Space;
    writer_.encode(use != "encoded" ? std::string_view() : isKnown ? style : usual);
  }

  void document(const Message& message) {
    encode(message.use, message.encodingStyle);
    if (message.parts.size() == 1) {
      const Part& part = message.parts[0];
      isWhole_ = true;
      if (!part.element.empty())
        writer_.element(declared(part, {}), values_, "");
      else
        writer_.content(TypeReference{part.type}, values_);
      return;
    }
    for (const Part& part : message.parts)
      writePart(part, part.element.empty() ? Name{{}, part.name} : Name());
  }

  void rpc(std::string_view name) {
    const Message* message = message_ ? &*message_ : nullptr;
    const Name wrapper{message ? message->space : std::string_view(), name};
    writer_.xml().begin(wrapper);
    if (message) {
      encode(message->use, message->encodingStyle);
      if (message->use == "encoded")
        writer_.xml().attribute({space_, "encodingStyle"},
                                message->encodingStyle.empty() ? encoding11Space : message->encodingStyle);
      for (const Part& part : message->parts) writePart(part, {{}, part.name});
    }
    writer_.xml().end(wrapper);
  }

  const Value* partValue(const Part& part) {
    known_.emplace_back(part.name);
    const Value* value = values_.find(part.name);
    if (!value) writer_.findings().add(std::string(part.name), "is missing");
    return value;
  }

  void writePart(const Part& part, const Name& name) {
    if (const Value* value = partValue(part))
      writer_.element(declared(part, name), *value, std::string(part.name));
  }

  // Values that no part has.
  void complainOfRest() {
    if (isWhole_) return;
    if (values_.kind() != Value::Kind::object) {
      writer_.findings().add("", "an object of the parts is wanted");
      return;
    }
    for (const auto& member : values_.object()) {
      const std::string& key = member.first;
      if (key == "$headers" || (key == "$attachments" && !space_.empty()) ||
          std::find(known_.begin(), known_.end(), key) != known_.end())
        continue;
      writer_.findings().add(key, "there is no such part" + suggestion(key, known_));
    }
  }

  void http() {
    request_.method = port_.verb();
    const std::string_view location = operation_.location();
    const Message none;
    const Message& message = message_ ? *message_ : none;
    std::string form;
    request_.address +=
        message.content == "urlReplacement" ? replaced(location, message) : std::string(location);
    const bool isForm = message.content == "application/x-www-form-urlencoded";
    const bool isInAddress =
        message.content == "urlEncoded" || (message.content.empty() && request_.method == "GET");
    request_.headers.emplace_back("Accept", "*/*");
    request_.headers.emplace_back("Accept-Encoding", "gzip, deflate");
    if (isForm || isInAddress) {
      for (const Part& part : message.parts) addToForm(part, form);
    } else if (message.content != "urlReplacement" && !message.parts.empty()) {
      bodyOf(message);
    }
    if (isInAddress && !form.empty())
      request_.address += (request_.address.find('?') == std::string::npos ? '?' : '&') + form;
    if (isForm) {
      request_.body = form;
      request_.headers.emplace_back("Content-Type", std::string(message.content));
    }
    complainOfRest();
  }

  // What repeats comes again and again under its name.
  void addToForm(const Part& part, std::string& form) {
    const Value* value = partValue(part);
    if (!value || value->isNull()) return;
    const auto add = [&](const Value& one, const std::string& step) {
      form += (form.empty() ? "" : "&") + percentEncoded(part.name) + '=' +
              percentEncoded(writer_.simpleText(typeOf(part), one, step));
    };
    if (value->kind() != Value::Kind::list) {
      add(*value, std::string(part.name));
      return;
    }
    for (size_t i = 0; i < value->list().size(); ++i)
      add(value->list()[i], std::string(part.name) + '[' + std::to_string(i) + ']');
  }

  TypeReference typeOf(const Part& part) const {
    const Element* element = part.element.empty() ? nullptr : service_.element(part.element);
    if (element) return element->type;
    const Type* type = service_.type(part.type);
    // An array is sent item by item.
    return type && type->kind == Type::Kind::array && type->item ? *type->item : TypeReference{part.type};
  }

  // "part(name)": the parts in brackets.
  std::string replaced(std::string_view location, const Message& message) {
    std::string text(location);
    for (const Part& part : message.parts) {
      const Value* value = partValue(part);
      const std::string name = '(' + std::string(part.name) + ')';
      const size_t at = text.find(name);
      if (!value || at == std::string::npos) continue;
      text.replace(at, name.size(),
                   percentEncoded(writer_.simpleText(typeOf(part), *value, std::string(part.name))));
    }
    return text;
  }

  // XML of the one part, or its text.
  void bodyOf(const Message& message) {
    if (message.parts.size() > 1) refuse("several parts cannot be sent as " + std::string(message.content));
    const Part& part = message.parts[0];
    const std::string mediaType(message.content);
    if (hasControls(mediaType)) refuse("the media type of the operation cannot stand in a header");
    request_.headers.emplace_back("Content-Type", mediaType.empty() ? "text/xml" : mediaType);
    const Value* value = partValue(part);
    if (!value) return;
    if (part.element.empty()) {
      request_.body = writer_.simpleText(TypeReference{part.type}, *value, std::string(part.name));
      return;
    }
    Declared what = declared(part, {});
    writer_.element(what, *value, std::string(part.name));
    std::string text = writer_.xml().take();
    // The prefixes stand on the only element.
    const size_t end = text.find_first_of(" />", 1);
    text.insert(std::min(end, text.size()), writer_.xml().declarations());
    request_.body = declaration + text + '\n';
  }

  const Service& service_;
  const Port& port_;
  const Operation& operation_;
  const std::optional<Message>& message_;
  const Value& values_;
  MessageWriter writer_;
  Enclosure* enclosure_ = nullptr;
  const Security* security_ = nullptr;
  std::string_view space_;
  Request request_;
  std::vector<std::string> known_;
  bool isWhole_ = false;
};

std::string messageOf(const std::vector<Finding>& findings) {
  return findings.empty() ? "the values make no request" : findings.front().toString();
}

}  // namespace

std::string Request::toWire() const {
  std::string text;
  toWire([&text](std::string_view piece) { text += piece; });
  return text;
}

void Request::toWire(const std::function<void(std::string_view)>& take) const {
  const size_t scheme = address.find("://") + 3;
  const size_t path = std::min(address.find_first_of("/?#", scheme), address.size());
  std::string host = address.substr(scheme, path - scheme);
  host.erase(0, host.rfind('@') + 1);
  std::string target = address.substr(path, address.find('#', path) - path);
  if (!target.starts_with('/')) target.insert(0, 1, '/');
  std::string text = method + ' ' + target + " HTTP/1.1\r\nHost: " + host + "\r\n";
  for (const auto& [name, value] : headers) text += name + ": " + value + "\r\n";
  BodyReader reader(*this);
  if (method != "GET") text += "Content-Length: " + std::to_string(reader.size()) + "\r\n";
  take(text + "\r\n");
  std::string piece(size_t{1} << 16, '\0');
  while (const size_t count = reader.read(piece.data(), piece.size())) take({piece.data(), count});
}

std::string Finding::toString() const { return path.empty() ? text : path + ": " + text; }

RequestError::RequestError(std::vector<Finding> findings)
    : Error({}, messageOf(findings)), findings_(std::move(findings)) {}

RequestError::~RequestError() = default;

Target findOperation(const Service& service, std::string_view operation, std::string_view portName) {
  const auto isSoap = [](const Port& port) {
    return port.protocol() == Protocol::soap11 || port.protocol() == Protocol::soap12;
  };
  Target found;
  for (const Port& port : service.ports()) {
    if (!portName.empty() && port.name() != portName) continue;
    for (const Operation& one : port.operations()) {
      if (one.name() != operation) continue;
      if (!found.port || (isSoap(port) && !isSoap(*found.port))) found = {&port, &one};
    }
  }
  return found;
}

Target requireOperation(const Service& service, std::string_view operation, std::string_view portName) {
  const Target found = findOperation(service, operation, portName);
  if (found.port) return found;
  std::vector<std::string> ports, operations;
  for (const Port& port : service.ports()) {
    ports.emplace_back(port.name());
    for (const Operation& one : port.operations()) operations.emplace_back(one.name());
  }
  const bool hasPort = portName.empty() || std::find(ports.begin(), ports.end(), portName) != ports.end();
  const std::string word(hasPort ? operation : portName);
  refuse((hasPort ? "no operation \"" : "no port \"") + word + '"' +
         suggestion(word, hasPort ? operations : ports));
}

Request makeRequest(const Service& service, const Port& port, const Operation& operation, const Value& values,
                    const RequestOptions& options) {
  return RequestMaker(service, port, operation, values, operation.input()).make(options);
}

std::string makeAnswer(const Service& service, const Port& port, const Operation& operation,
                       const Value& values) {
  return RequestMaker(service, port, operation, values, operation.output()).makeAnswer();
}

std::string makeFault(const Port& port, bool isOfSender, std::string_view reason) {
  XmlText xml;
  const bool is12 = port.protocol() == Protocol::soap12;
  const std::string_view space = is12 ? soap12Space : soap11Space;
  const auto text = [&xml](const Name& name, std::string_view value) {
    xml.begin(name);
    if (name.local == "Text") xml.attribute({schema::xmlNamespace, "lang"}, "en");
    xml.text(value);
    xml.end(name);
  };
  const Name body{space, "Body"}, fault{space, "Fault"}, code{space, "Code"}, words{space, "Reason"};
  const std::string envelope = xml.qualified({space, "Envelope"});
  xml.begin(body);
  xml.begin(fault);
  if (is12) {
    xml.begin(code);
    text({space, "Value"}, xml.qualified({space, isOfSender ? "Sender" : "Receiver"}));
    xml.end(code);
    xml.begin(words);
    text({space, "Text"}, reason);
    xml.end(words);
  } else {
    text({{}, "faultcode"}, xml.qualified({space, isOfSender ? "Client" : "Server"}));
    text({{}, "faultstring"}, reason);
  }
  xml.end(fault);
  xml.end(body);
  const std::string inside = xml.take();
  return std::string(declaration) + '<' + envelope + xml.declarations() + '>' + inside + "</" + envelope +
         ">\n";
}

}  // namespace ztservice::call
