// ztclient call: one operation of a service, from what it takes to what it answers.
#include <algorithm>
#include <chrono>
#include <deque>
#include <future>
#include <iostream>
#include <memory>
#include <optional>
#include <vector>

#include "tovinCore/Exception.h"
#include "tovinCore/Utf8.h"
#include "ztclient/Commands.h"
#include "ztclient/answers/CallAnswer.h"
#include "ztclient/answers/ServiceText.h"
#include "ztclient/arguments/Address.h"
#include "ztclient/arguments/Arguments.h"
#include "ztclient/arguments/NameValue.h"
#include "ztclient/input/InputFile.h"
#include "ztclient/input/JsonValue.h"
#include "ztclient/input/ServiceFile.h"
#include "ztclient/input/Source.h"
#include "ztclient/terminal/Escaping.h"
#include "ztclient/terminal/Messages.h"
#include "ztclient/terminal/ProgressBar.h"
#include "ztservice/call/AttachmentFiles.h"
#include "ztservice/call/Calls.h"
#include "ztservice/call/Client.h"
#include "ztservice/call/Request.h"
#include "ztservice/call/Template.h"

namespace {

using ztservice::Operation;
using ztservice::Port;
using ztservice::call::Answer;
using ztservice::call::Client;
using ztservice::call::ClientOptions;
using ztservice::call::Request;
using ztservice::call::Target;
using ztservice::call::Value;

struct Options {
  std::string file;
  std::string operation;
  std::vector<std::string> fields;
  std::string input;
  std::string templateKind;
  std::string port;
  ztservice::call::RequestOptions request;
  ClientOptions client;
  std::vector<std::string> headers;
  std::string bearerFile;
  std::vector<NameValue> headerFiles;
  std::string attachmentFolder;
  std::string securityUser;
  std::string securityPasswordFile;
  std::string securityKind = "digest";
  uint32_t securitySeconds = 0;
  std::string output = "json";
  uint32_t seconds = 300;
  uint32_t parallel = 0;
  bool trace = false;
  bool list = false;
  bool dryRun = false;
  bool xml = false;
  bool noCheck = false;
  ServiceSources sources;
};

[[noreturn]] void fail(const std::string& text) { throw tovin::Exception(tovin::utf8ToWide(text).c_str()); }

void list(const ztservice::Service& service) {
  size_t widest = 0;
  for (const Port& port : service.ports()) {
    for (const Operation& operation : port.operations()) widest = std::max(widest, operation.name().size());
  }
  for (const Port& port : service.ports()) {
    for (const Operation& operation : port.operations()) {
      std::cout << operation.name() << std::string(widest - operation.name().size() + 2, ' ') << port.name()
                << ", " << protocolName(port.protocol());
      if (!operation.error().empty()) std::cout << ": cannot be called, " << operation.error();
      std::cout << '\n';
    }
  }
}

// CLI11's way to refuse: a text, empty for none.
std::string checkHeader(const std::string& header) {
  const size_t colon = header.find(':');
  const bool hasControls = std::any_of(
      header.begin(), header.end(), [](char c) { return static_cast<unsigned char>(c) < 0x20 || c == 0x7F; });
  const bool hasName =
      colon != header.npos && colon > 0 && header.find_first_of(" \"(),/;<=>?@[\\]{}") >= colon;
  return hasName && !hasControls ? "" : '"' + header + "\" is no \"Name: value\"";
}

void tell(char direction, std::string_view bytes) {
  std::string line(1, direction);
  line.append(" ").append(bytes.substr(0, bytes.find_last_not_of("\r\n") + 1));
  std::cerr << escaping::shown(line) << '\n';
}

Value valuesOf(const Options& options) {
  Value values;
  if (!options.input.empty())
    values = readJson(readBytes(options.input), options.input == "-" ? "standard input" : options.input);
  if (!options.fields.empty() && !values.isNull() && values.kind() != Value::Kind::object)
    fail("fields cannot be set: the input is no object");
  FieldSetter setter(values);
  for (const std::string& field : options.fields) setter.set(field);
  return values;
}

int showTemplate(const ztservice::Service& service, const Target& target, const Options& options) {
  const std::string text = ztservice::call::makeTemplate(service, *target.port, *target.operation,
                                                         {options.templateKind != "minimal"});
  if (!options.xml) {
    std::cout << text;
    return commands::done;
  }
  std::cout << makeRequest(service, *target.port, *target.operation, readJson(text, "template"),
                           {"http://localhost/", false})
                   .body;
  return commands::done;
}

// The answer, or the fault.
int show(const Answer& answer, const std::string& body, const Options& options) {
  for (const std::string& warning : answer.warnings) messages::warn(warning);
  if (options.output == "xml") {
    std::cout << body;
    if (!body.ends_with('\n')) std::cout << '\n';
  }
  if (answer.fault) {
    messages::error(callAnswer::faultText(*answer.fault));
    if (!answer.fault->detail.isNull())
      messages::error("detail: " + callAnswer::toLine(answer.fault->detail));
    if (!answer.headers.isNull()) messages::error("headers: " + callAnswer::toLine(answer.headers));
    return commands::negative;
  }
  if (options.output == "table") callAnswer::writeTable(answer, std::cout);
  if (options.output == "json") {
    {
      JsonWriter json(std::cout);
      callAnswer::writeJson(answer, json);
    }
    std::cout << '\n';
  }
  return commands::done;
}

Request requestOf(const ztservice::Service& service, const Target& target, const Value& values,
                  const Options& options) {
  Request request = makeRequest(service, *target.port, *target.operation, values, options.request);
  for (const std::string& header : options.headers) {
    const size_t colon = header.find(':');
    const size_t value = std::min(header.find_first_not_of(' ', colon + 1), header.size());
    request.headers.emplace_back(header.substr(0, colon), header.substr(value));
  }
  for (const NameValue& header : options.headerFiles) {
    const std::string value = firstLineOf(header.value.value_or(""));
    if (!checkHeader(header.name + ": " + value).empty())
      fail("the first line of " + header.value.value_or("") + " cannot be the header " + header.name);
    request.headers.emplace_back(header.name, value);
    if (!value.empty()) request.secrets.push_back(value);
  }
  return request;
}

// What a service's document may have needed is not for another server.
void keepUserApart(Options& options, const Target& target) {
  ClientOptions& client = options.client;
  client.user = options.sources.options.user;
  const std::string address =
      options.request.address.empty() ? std::string(target.port->address()) : options.request.address;
  if (client.user.empty() || !address::isWebAddress(options.file) || !options.request.address.empty()) return;
  if (address::originOf(options.file) == address::originOf(address)) return;
  messages::warn("the user is not told to another server than that of the document; give its --address");
  client.user.clear();
}

ztservice::call::Security securityOf(const Options& options) {
  ztservice::call::Security security;
  security.user = options.securityUser;
  security.password = firstLineOf(options.securityPasswordFile);
  security.isDigest = options.securityKind == "digest";
  if (options.securitySeconds > 0) security.lifetime = std::chrono::seconds(options.securitySeconds);
  return security;
}

// What a call of many came to: a line, a status and what is to be said beside it.
struct Outcome {
  std::string text;
  int status = commands::done;
  std::vector<std::string> warnings;
};

Outcome outcomeOf(const Answer& answer) {
  if (!answer.fault) return {callAnswer::toLine(answer), commands::done, answer.warnings};
  Value fault;
  fault["$fault"]["code"] = answer.fault->code;
  fault["$fault"]["reason"] = answer.fault->reason;
  if (!answer.fault->detail.isNull()) fault["$fault"]["detail"] = answer.fault->detail;
  if (!answer.headers.isNull()) fault["$headers"] = answer.headers;
  return {callAnswer::toLine(fault), commands::negative, answer.warnings};
}

Outcome outcomeOf(const tovin::Exception& e) {
  Value error;
  error["$error"] = messages::textOf(e);
  return {callAnswer::toLine(error), commands::trouble, {}};
}

// Many calls of one operation, each a line of JSON: what each one answers, or why it does not, is a line in
// the order of the input.
class ManyCalls {
 public:
  ManyCalls(const ztservice::Service& service, const Target& target, const Options& options)
      : service_(service),
        target_(target),
        options_(options),
        client_(service, options.client),
        calls_(client_, options.parallel) {}

  int run() {
    Source source(options_.input);
    for (std::string line; readNext(source, line);) {
      if (line.find_first_not_of(" \t\r") != line.npos) call(line);
    }
    calls_.finish();
    return status_;
  }

 private:
  // What comes through a pipe may let wait for itself: calls go on meanwhile.
  bool readNext(Source& source, std::string& line) {
    constexpr size_t longest = size_t{16} << 20;
    if (options_.input != "-") return source.readLine(line, longest);
    auto read = std::async(std::launch::async, [&] { return source.readLine(line, longest); });
    constexpr std::chrono::milliseconds pulse(5);
    const auto isReady = [&read] {
      return read.wait_for(std::chrono::seconds(0)) == std::future_status::ready;
    };
    while (calls_.open() > 0 && !isReady()) calls_.wait(pulse);
    if (!isReady()) std::cout.flush();
    return read.get();
  }

  void call(const std::string& line) {
    // What comes early waits for those before it; not too many, so that memory does not grow with the input.
    constexpr size_t mostWaiting = 1000;
    while (outcomes_.size() >= mostWaiting) calls_.wait(std::chrono::hours(1));
    const size_t number = first_ + outcomes_.size();
    outcomes_.emplace_back();
    try {
      calls_.add(requestOf(service_, target_, readJson(line, "input"), options_),
                 [this, number](ztservice::call::Calls::Outcome outcome) { take(number, outcome); });
    } catch (const tovin::Exception& e) {
      settle(number, outcomeOf(e));
    }
  }

  void take(size_t number, const ztservice::call::Calls::Outcome& outcome) {
    try {
      if (outcome.error) std::rethrow_exception(outcome.error);
      settle(number, outcomeOf(client_.read(*target_.port, *target_.operation, outcome.answer)));
    } catch (const tovin::Exception& e) {
      settle(number, outcomeOf(e));
    }
  }

  void settle(size_t number, Outcome outcome) {
    outcomes_[number - first_] = std::move(outcome);
    for (; !outcomes_.empty() && outcomes_.front(); outcomes_.pop_front(), ++first_) {
      for (const std::string& warning : outcomes_.front()->warnings)
        messages::warn("call " + std::to_string(first_) + ": " + warning);
      std::cout << outcomes_.front()->text << '\n';
      status_ = std::max(status_, outcomes_.front()->status);
    }
  }

  const ztservice::Service& service_;
  const Target& target_;
  const Options& options_;
  Client client_;
  ztservice::call::Calls calls_;
  // From the first that is not printed on, empty while it is on its way.
  std::deque<std::optional<Outcome>> outcomes_;
  size_t first_ = 1;
  int status_ = commands::done;
};

int callOnce(const ztservice::Service& service, const Target& target, Options& options) {
  const Request request = requestOf(service, target, valuesOf(options), options);
  if (options.dryRun) {
    if (options.xml)
      std::cout << request.body;
    else
      request.toWire([](std::string_view piece) { std::cout << piece; });
    return commands::done;
  }
  ProgressBar bar;
  options.client.progress = [&bar](uint64_t done, uint64_t total) { bar.show(done, total); };
  Client client(service, options.client);
  const ztservice::call::HttpAnswer answer = client.send(request);
  return show(client.read(*target.port, *target.operation, answer), answer.body, options);
}

int run(Options& options) {
  const ztservice::Service service = loadService(options.file, options.sources);
  for (const ztservice::Warning& warning : service.warnings()) messages::warn(warning.toString());
  if (options.list) {
    list(service);
    return commands::done;
  }
  std::optional<ztservice::call::AttachmentFiles> files;
  if (!options.attachmentFolder.empty()) {
    files.emplace(options.attachmentFolder);
    options.client.fileFor = [&files](const ztservice::call::MimePart& part) { return files->nameFor(part); };
  }
  const Target target = ztservice::call::requireOperation(service, options.operation, options.port);
  if (!options.templateKind.empty()) return showTemplate(service, target, options);
  keepUserApart(options, target);
  try {
    return options.parallel > 0 ? ManyCalls(service, target, options).run()
                                : callOnce(service, target, options);
  } catch (const ztservice::call::RequestError& e) {
    for (const auto& finding : e.findings()) messages::error(finding.toString());
    return commands::trouble;
  }
}

}  // namespace

void commands::addCall(CLI::App& app, int& status) {
  auto options = std::make_shared<Options>();
  CLI::App* call = app.add_subcommand("call", "Call an operation of a service, and show what it answers");
  arguments::addFile(*call, "FILE", options->file, "WSDL document, or its address; - for standard input")
      ->required();
  CLI::Option* operation =
      call->add_option("OPERATION", options->operation, "The operation, as --list has it")->type_name("NAME");
  CLI::Option* fields = call->add_option("FIELD", options->fields,
                                         "FIELD=TEXT or FIELD:=JSON, as in item.id=7 or items[0].count:=2")
                            ->type_name("FIELD");
  CLI::Option* list = call->add_flag("--list", options->list, "The operations, and the ports that have them");
  CLI::Option* pattern =
      arguments::restrictTo(call->add_option("--template", options->templateKind,
                                             "The values of a request to fill in, as JSON with comments"),
                            {"full", "minimal"})
          ->expected(0, 1)
          ->type_name("KIND")
          ->default_str("full");
  CLI::Option* input =
      arguments::addFile(*call, "--input", options->input, "The values, as JSON; comments may stand in it");
  CLI::Option* dryRun = call->add_flag("--dry-run", options->dryRun, "Print the request, send nothing");
  arguments::requireText(
      call->add_option("--port", options->port,
                       "The port to call; default the first of SOAP that has the operation"))
      ->type_name("NAME");
  arguments::requireText(
      call->add_option("--address", options->request.address, "Another address than the port's"))
      ->type_name("URL");
  call->add_flag("--xml", options->xml, "The XML alone, of a template or of the request");
  call->add_flag("--no-check", options->noCheck, "Send values that are not as the types want them");
  arguments::restrictTo(call->add_option("--output", options->output, "How the answer is shown"),
                        {"json", "table", "xml"})
      ->type_name("FORM")
      ->capture_default_str();
  call->add_option("--header", options->headers, "One more header of HTTP, as \"Name: value\"")
      ->type_name("HEADER")
      ->allow_extra_args(false)
      ->check(checkHeader);
  CLI::Option* parallel =
      arguments::addNumber(
          *call, "--parallel", options->parallel,
          "The input is many, one JSON a line: make as many calls at a time, and answer one a line")
          ->check(CLI::Range(1, 64));
  call->add_flag("--trace", options->trace,
                 "Tell on standard error what goes over the wire, but for what authorizes");
  call->add_flag("--strict", options->client.answer.isStrict,
                 "Refuse an answer that is not as the types want it");
  arguments::addNumber(*call, "--seconds", options->seconds, "How long a call may take")
      ->capture_default_str()
      ->check(CLI::Range(1, INT32_MAX / 1000));
  arguments::addNumber(*call, "--retries", options->client.retries,
                       "How often a connection is tried again that cannot be made");
  call->add_flag("--redirect-anywhere", options->client.redirectsAnywhere,
                 "Follow a redirection to another server");
  call->add_flag("--mtom", options->request.mtom, "Send binary values beside the message, not in it");
  call->add_flag("--gzip", options->request.gzip, "Compress the request");
  arguments::addFile(*call, "--save-attachments", options->attachmentFolder,
                     "Write what comes beside the answer to files in this folder", "OUT");
  CLI::Option* securityUser = arguments::requireText(
      call->add_option("--wsse-user", options->securityUser, "The user in the message (WS-Security)"));
  securityUser->type_name("NAME");
  CLI::Option* securityPassword =
      arguments::addFile(*call, "--wsse-password-file", options->securityPasswordFile,
                         "The user's password, in the first line of this file");
  arguments::restrictTo(
      call->add_option("--wsse", options->securityKind, "How the password goes in the message"),
      {"digest", "text"})
      ->type_name("KIND")
      ->capture_default_str()
      ->needs(securityUser);
  arguments::addNumber(*call, "--wsse-seconds", options->securitySeconds,
                       "How long the message is good for; 0 says nothing of it")
      ->capture_default_str()
      ->needs(securityUser);
  securityUser->needs(securityPassword);
  securityPassword->needs(securityUser);
  addNameValues(*call, "--header-file", options->headerFiles,
                "NAME=FILE: one more header of HTTP, in the first line of a file; no trace shows it");
  arguments::addFile(*call, "--bearer-file", options->bearerFile,
                     "A file with a token that goes along with the call");
  arguments::addFile(*call, "--authorities", options->client.authorities,
                     "Certificates of the authorities to trust");
  arguments::addFile(*call, "--certificate", options->client.certificate, "The client's certificate");
  arguments::addFile(*call, "--key", options->client.key, "The key of the client's certificate");
  arguments::requireText(
      call->add_option("--proxy", options->client.proxy, "A proxy other than that of the environment"))
      ->type_name("URL");
  addServiceSources(*call, options->sources);
  parallel->needs(input)->excludes(dryRun)->excludes(fields);
  list->excludes(operation)->excludes(pattern)->excludes(input)->excludes(dryRun);
  pattern->excludes(input)->excludes(dryRun)->excludes(fields);
  call->footer("Example: ztclient call orders.wsdl PlaceOrder item.id=7 item.count:=2 --dry-run");
  call->callback([=, &status] {
    if (!list->count() && !operation->count()) throw CLI::RequiredError("OPERATION");
    if (pattern->count() && options->templateKind.empty()) options->templateKind = "full";
    options->request.check = !options->noCheck;
    options->request.files = true;
    if (securityUser->count()) options->request.security = securityOf(*options);
    options->client.transfer = std::chrono::seconds(options->seconds);
    if (!options->bearerFile.empty()) options->client.bearer = firstLineOf(options->bearerFile);
    if (options->trace) options->client.trace = tell;
    status = run(*options);
  });
}
