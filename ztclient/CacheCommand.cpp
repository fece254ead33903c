// ztclient cache: the arguments of a cache request, checked and written as URL parameters.
#include <iostream>
#include <memory>

#include "tovinCore/Utf8.h"
#include "ztbaseclient/client/CCacheRequest.h"
#include "ztclient/Commands.h"
#include "ztclient/arguments/Arguments.h"
#include "ztclient/arguments/NameValue.h"

namespace {

struct Options {
  std::vector<NameValue> arguments;
  unsigned required = 0;
  std::optional<unsigned> mask;
};

CCacheRequest::Arguments toArguments(const std::vector<NameValue>& arguments) {
  CCacheRequest::Arguments map;
  for (const auto& [name, value] : arguments) {
    map.put(tovin::WideString(tovin::utf8ToWide(name)),
            value ? tovin::WideString(tovin::utf8ToWide(*value)) : tovin::WideString());
  }
  return map;
}

int run(const Options& options) {
  CCacheRequest request;
  tovin::WideString text;
  if (!request.PopulateFromArguments(toArguments(options.arguments), options.required, text)) {
    std::cerr << "ztclient cache: " << tovin::wideToUtf8(text.view()) << '\n';
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
  addNameValues(*cache, "--arg", options->arguments, "An argument: user, jobid, cacheid, recnum, node, …");
  arguments::addNumber(*cache, "--require", options->required,
                       "Mask of the arguments that must be there, as 3 or 0x3");
  arguments::addNumber(*cache, "--mask", options->mask,
                       "Mask of the parameters to print; those given unless said");
  cache->footer("Example: ztclient cache --arg user=alice --arg jobid=7 --require 0x3");
  cache->callback([options, &status] { status = run(*options); });
}
