// The command: a thin face on the library. One file a subcommand; this one only chooses and reports.
#include <algorithm>
#include <iostream>

#include "tovinCore/Exception.h"
#include "tovinCore/Utf8.h"
#include "ztclient/Commands.h"

namespace {

std::string chosenName(const CLI::App& app) {
  const auto chosen = app.get_subcommands();
  return chosen.empty() ? std::string() : " " + chosen.front()->get_name();
}

int report(const CLI::App& app, const std::string& message) {
  std::cout.flush();
  std::cerr << "ztclient" << chosenName(app) << ": " << message << '\n';
  return commands::trouble;
}

}  // namespace

int main(int argc, char** argv) {
  std::ios::sync_with_stdio(false);
  int status = commands::done;
  CLI::App app("Client command of the workflow server", "ztclient");
  app.require_subcommand(1);
  commands::addCredentials(app, status);
  commands::addQuery(app, status);
  commands::addChecksum(app, status);
  commands::addDiff(app, status);
  commands::addLog(app, status);
  commands::addTree(app, status);
  commands::addWsdl(app, status);
  commands::addCache(app, status);
  commands::addEndpoint(app, status);
  commands::addLink(app, status);
  commands::addUpload(app, status);
  try {
    std::vector<std::string> arguments(argv + 1, argv + argc);
    commands::setExpressionApart(app, arguments);
    std::ranges::reverse(arguments);  // as the parser takes them
    app.parse(std::move(arguments));
    std::cout.flush();
    return std::cout ? status : report(app, "cannot write to standard output");
  } catch (const CLI::Success& e) {
    return app.exit(e);
  } catch (const CLI::ParseError& e) {
    return report(app, e.what());
  } catch (const tovin::Exception& e) {
    return report(app, tovin::wideToUtf8(e.getMessage()));
  } catch (const std::exception& e) {
    return report(app, e.what());
  }
}
