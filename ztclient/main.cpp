// The command: a thin face on the library. One file a subcommand; this one only chooses and reports.
#include <chrono>
#include <iostream>
#include <new>

#include "tovinCore/Exception.h"
#include "tovinCore/Format.h"
#include "tovinCore/Utf8.h"
#include "tovinCore/platform/Console.h"
#include "ztclient/Commands.h"
#include "ztclient/arguments/Arguments.h"
#include "ztclient/arguments/Misuse.h"
#include "ztclient/arguments/Suggestion.h"
#include "ztclient/terminal/Messages.h"
#include "ztclient/terminal/Output.h"
#include "ztclient/terminal/WarningScope.h"

namespace {

int report(const std::string& message) {
  messages::error(message);
  return commands::trouble;
}

// What was printed has arrived, or it is said why not.
int finished(Output& output, int status) {
  if (output.finish()) return status;
  return report("cannot write to standard output: " + tovin::wideToUtf8(output.failure()));
}

int run(CLI::App& app, int argc, char** argv, int& status) {
  try {
    app.parse(arguments::forParser(app, tovin::platform::programArguments(argc, argv)));
    return status;
  } catch (const CLI::Success& e) {
    return app.exit(e);
  } catch (const CLI::ParseError& e) {
    return report(explain(app, e));
  } catch (const Misuse& e) {
    return report(explain(app, e));
  } catch (const tovin::Exception& e) {
    return report(messages::textOf(e));
  } catch (const std::bad_alloc&) {
    return report("There is not enough memory");
  } catch (const std::exception& e) {
    return report(e.what());
  }
}

}  // namespace

int main(int argc, char** argv) {
  const auto start = std::chrono::steady_clock::now();
  const tovin::platform::Utf8Console console;
  std::ios::sync_with_stdio(false);
  Output output;
  int status = commands::done;
  CLI::App app("", "ztclient");
  commands::addAll(app, status);
  for (CLI::App* command : app.get_subcommands([](const CLI::App*) { return true; }))
    command->preparse_callback([command](size_t) { messages::setCommand(command->get_name()); });
  // The library's warnings are said like errors.
  const WarningScope warnings([](const wchar_t* message) { messages::warn(tovin::wideToUtf8(message)); });
  status = finished(output, run(app, argc, argv, status));
  const std::chrono::duration<double> time = std::chrono::steady_clock::now() - start;
  messages::note(tovin::wideToUtf8(tovin::format(L"took %.3f s", time.count())));
  return status;
}
