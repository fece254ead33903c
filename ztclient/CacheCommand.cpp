// ztclient cache: the arguments of a cache request, checked and written as URL parameters.
#include <algorithm>
#include <iostream>
#include <memory>

#include "tovinCore/Format.h"
#include "tovinCore/Units.h"
#include "tovinCore/Utf8.h"
#include "ztbaseclient/client/CCacheRequest.h"
#include "ztbaseclient/client/CacheNames.h"
#include "ztclient/Commands.h"
#include "ztclient/arguments/Arguments.h"
#include "ztclient/arguments/NameValue.h"
#include "ztclient/terminal/Messages.h"
#include "ztservice/call/Nearest.h"

namespace {

struct Argument {
  std::string name;
  unsigned bit;  // 0: none
};

const std::vector<Argument>& knownArguments() {
  static const std::vector<Argument> known = {{pszUser, CCacheRequest::User},
                                              {pszJobID, CCacheRequest::JobID},
                                              {pszCacheID, CCacheRequest::CacheID},
                                              {pszComponentAttr, CCacheRequest::ComponentAttr},
                                              {pszDisplayAttr, CCacheRequest::DisplayAttr},
                                              {pszRecNum, CCacheRequest::RecordNumber},
                                              {pszNodeVector, CCacheRequest::NodeVector},
                                              {pszPropertyName, CCacheRequest::Property},
                                              {"recordtype", CCacheRequest::RecordType},
                                              {"displayedRecs", 0}};
  return known;
}

struct Options {
  std::vector<NameValue> arguments;
  unsigned required = 0;
  std::optional<unsigned> mask;
};

// Null if there is none.
const Argument* find(const std::string& name) {
  const auto found = std::ranges::find_if(knownArguments(), [&](const Argument& argument) {
    return tovin::equalFolded(std::wstring_view(tovin::utf8ToWide(argument.name)),
                              std::wstring_view(tovin::utf8ToWide(name)));
  });
  return found == knownArguments().end() ? nullptr : &*found;
}

std::vector<std::string> names(bool withBit, const std::string& behind = {}) {
  std::vector<std::string> all;
  for (const Argument& argument : knownArguments()) {
    if (argument.bit != 0 || !withBit) all.push_back(argument.name + behind);
  }
  return all;
}

// Names that are equal but for their case are one argument.
CCacheRequest::Arguments toArguments(const std::vector<NameValue>& arguments) {
  CCacheRequest::Arguments map;
  for (const auto& [name, value] : arguments) {
    const Argument* known = find(name);
    if (!known) messages::warn("no argument " + name);
    const bool first = map.put(tovin::WideString(tovin::utf8ToWide(known ? known->name : name)),
                               value ? tovin::WideString(tovin::utf8ToWide(*value)) : tovin::WideString());
    if (!first && known) messages::warn(name + " is given twice, the last holds");
  }
  return map;
}

unsigned bitOf(const std::string& name) {
  const Argument* argument = find(name);
  if (argument && argument->bit != 0) return argument->bit;
  throw CLI::ValidationError("no argument \"" + name + '"' + ztservice::call::suggestion(name, names(true)));
}

// "0x3", "3", or names between commas.
unsigned maskOf(const std::string& text) {
  if (!text.empty() && text[0] >= '0' && text[0] <= '9')
    return static_cast<unsigned>(std::stoull(arguments::checkedNumber(text, 0, UINT32_MAX), nullptr, 0));
  unsigned mask = 0;
  for (size_t at = 0; at <= text.size();) {
    const size_t end = std::min(text.find(',', at), text.size());
    mask |= bitOf(text.substr(at, end - at));
    at = end + 1;
  }
  return mask;
}

template <class Mask>
CLI::Option* addMask(CLI::App& app, const std::string& name, Mask& mask, const std::string& help) {
  CLI::Option* option = app.add_option_function<std::string>(
      name, [&mask](const std::string& text) { mask = maskOf(text); }, help);
  option->check(CLI::Validator(
      [](std::string& text) {
        maskOf(text);
        return std::string();
      },
      ""));
  return arguments::offer(option, names(true))->type_name("MASK");
}

std::string bits() {
  std::string text;
  for (const Argument& argument : knownArguments()) {
    text += (text.empty() ? "" : ", ") + argument.name;
    text += argument.bit == 0 ? " (no bit)" : tovin::wideToUtf8(tovin::format(L" 0x%03x", argument.bit));
  }
  return text;
}

int run(const Options& options) {
  CCacheRequest request;
  tovin::WideString text;
  if (!request.PopulateFromArguments(toArguments(options.arguments), options.required, text)) {
    messages::error(tovin::wideToUtf8(text.view()));
    return commands::negative;
  }
  request.AddToURLParameterBuffer(text, options.mask.value_or(request.GetArguments()));
  std::cout << tovin::wideToUtf8(text.view()) << '\n';
  return commands::done;
}

}  // namespace

void commands::addCache(CLI::App& app, int& status) {
  auto options = std::make_shared<Options>();
  CLI::App* cache =
      app.add_subcommand("cache", "Check the arguments of a cache request and write them as URL");
  arguments::offer(addNameValues(*cache, "--arg", options->arguments, "An argument; may be repeated"),
                   names(false, "="));
  addMask(*cache, "--require", options->required,
          "The arguments that must be there: names between commas, or the sum of their bits")
      ->default_str("none");
  addMask(*cache, "--mask", options->mask, "The parameters to print, likewise")->default_str("those given");
  cache->footer(
      "Example: ztclient cache --arg user=alice --arg jobid=7 --require user,jobid\nArguments and their "
      "bits: " +
      bits() + ".\nExit status 1: the arguments are refused; the reason is on standard error.");
  cache->callback([options, &status] { status = run(*options); });
}
