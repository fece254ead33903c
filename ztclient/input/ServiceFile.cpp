#include "ztclient/input/ServiceFile.h"

#include <array>
#include <chrono>
#include <cstdint>

#include "ztclient/arguments/Address.h"
#include "ztclient/arguments/Arguments.h"
#include "ztclient/input/InputFile.h"

namespace {

struct Limit {
  const char* name;
  void (*set)(ztservice::Limits& limits, uint64_t value);
};

constexpr std::array<Limit, 8> limits = {{
    {"connect-seconds",
     [](ztservice::Limits& of, uint64_t value) { of.connecting = std::chrono::seconds(value); }},
    {"document-bytes", [](ztservice::Limits& of, uint64_t value) { of.documentBytes = value; }},
    {"documents", [](ztservice::Limits& of, uint64_t value) { of.documents = value; }},
    {"file-bytes", [](ztservice::Limits& of, uint64_t value) { of.fileBytes = value; }},
    {"members", [](ztservice::Limits& of, uint64_t value) { of.members = value; }},
    {"redirects", [](ztservice::Limits& of, uint64_t value) { of.redirects = value; }},
    {"service-bytes", [](ztservice::Limits& of, uint64_t value) { of.serviceBytes = value; }},
    {"transfer-seconds",
     [](ztservice::Limits& of, uint64_t value) { of.transfer = std::chrono::seconds(value); }},
}};

// As many as a time in milliseconds has room for.
constexpr uint64_t most = INT32_MAX / 1000;
constexpr uint64_t mostBytes = uint64_t{1} << 40;

std::string namesOfLimits() {
  std::string out;
  for (const Limit& limit : limits) out += (out.empty() ? "" : ", ") + std::string(limit.name);
  return out;
}

void setLimit(ztservice::Limits& values, const std::string& text) {
  const size_t at = text.find('=');
  const std::string name = text.substr(0, at);
  for (const Limit& limit : limits) {
    if (name != limit.name || at == text.npos) continue;
    const std::string number =
        arguments::checkedNumber(text.substr(at + 1), 0, name.ends_with("seconds") ? most : mostBytes);
    limit.set(values, std::stoull(number, nullptr, 0));
    return;
  }
  throw CLI::ValidationError("--limit", '"' + text + "\" is no NAME=N; the names are " + namesOfLimits());
}

std::string nameOf(const std::string& file) { return file == "-" ? "standard input" : file; }

std::string bytesOfFile(const std::string& file, uint64_t atMost) {
  std::string bytes = readUpTo(file, atMost);
  if (bytes.size() > atMost) throw ztservice::Error({nameOf(file)}, "larger than a document may be");
  return bytes;
}

}  // namespace

void addServiceSources(CLI::App& command, ServiceSources& sources) {
  ztservice::Options& options = sources.options;
  sources.added = {
      command
          .add_option(
              "--catalog", options.catalogs,
              "XML catalogue that says where copies of documents are; default for that of well-known schemas")
          ->type_name("FILE")
          ->allow_extra_args(false),
      command.add_flag("--fetch", options.fetch, "Read from the network what a file refers to there"),
      arguments::requireText(
          command.add_option("--user", options.user, "NAME:PASSWORD, for servers that ask for a user"))
          ->type_name("USER"),
      command.add_flag("--netrc", options.netrc, "Look for users and passwords in the file .netrc"),
      command
          .add_option_function<std::string>(
              "--limit", [&options](const std::string& text) { setLimit(options.limits, text); },
              "What the documents may cost at most: " + namesOfLimits())
          ->trigger_on_parse()
          ->take_last()
          ->type_name("NAME=N")};
}

ztservice::Service loadService(const std::string& file, const ServiceSources& sources) {
  const ztservice::Options& options = sources.options;
  if (address::isWebAddress(file)) return ztservice::load(file, options);
  return ztservice::loadText(bytesOfFile(file, options.limits.fileBytes), nameOf(file), options);
}

std::string flattenService(const std::string& file, const ServiceSources& sources) {
  const ztservice::Options& options = sources.options;
  if (address::isWebAddress(file)) return ztservice::flatten(file, options);
  return ztservice::flattenText(bytesOfFile(file, options.limits.fileBytes), nameOf(file), options);
}
