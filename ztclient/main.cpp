// The command: a thin face on the library. One file a subcommand; this one only chooses and reports.
#include <iostream>

#include "tovinCore/Exception.h"
#include "tovinCore/Utf8.h"
#include "tovinCore/platform/Console.h"
#include "ztclient/Commands.h"
#include "ztclient/arguments/Arguments.h"
#include "ztclient/arguments/Suggestion.h"
#include "ztclient/input/InputFile.h"
#include "ztclient/terminal/Terminal.h"
#include "ztclient/terminal/WarningScope.h"

namespace {

std::string chosenName(const CLI::App& app) {
  const auto chosen = app.get_subcommands();
  return chosen.empty() ? std::string() : " " + chosen.front()->get_name();
}

void say(const CLI::App& app, const std::string& message) {
  std::cout.flush();
  std::cerr << terminal::alarm("ztclient" + chosenName(app) + ":") << ' ' << message << '\n';
}

int report(const CLI::App& app, const std::string& message) {
  say(app, message);
  return commands::trouble;
}

}  // namespace

int main(int argc, char** argv) {
  const tovin::platform::Utf8Console console;
  std::ios::sync_with_stdio(false);
  int status = commands::done;
  CLI::App app("", "ztclient");
  commands::addAll(app, status);
  // The library's warnings are said like errors.
  const WarningScope warnings([&app](const wchar_t* message) { say(app, tovin::wideToUtf8(message)); });
  try {
    app.parse(arguments::forParser(app, tovin::platform::programArguments(argc, argv)));
    std::cout.flush();
    return std::cout ? status : report(app, "cannot write to standard output");
  } catch (const CLI::Success& e) {
    return app.exit(e);
  } catch (const CLI::ParseError& e) {
    return report(app, explain(app, e));
  } catch (const tovin::Exception& e) {
    return report(app, tovin::wideToUtf8(InputFile::asGiven(e.getMessage())));
  } catch (const std::exception& e) {
    return report(app, e.what());
  }
}
