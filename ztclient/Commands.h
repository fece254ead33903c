#pragma once

#include <CLI/CLI.hpp>
#include <string>
#include <vector>

/// What every subcommand shares: each adds itself to the command line, with what it does when it is chosen.
namespace commands {

/// Exit statuses.
constexpr int done = 0;
constexpr int negative = 1;
constexpr int trouble = 2;

/// All of them, and what the command itself says.
/// \param status out: the exit status of the subcommand that ran.
void addAll(CLI::App& app, int& status);

void addCall(CLI::App& app, int& status);
void addCredentials(CLI::App& app, int& status);
void addQuery(CLI::App& app, int& status);
void addChecksum(CLI::App& app, int& status);
void addDiff(CLI::App& app, int& status);
void addLog(CLI::App& app, int& status);
void addTree(CLI::App& app, int& status);
void addWsdl(CLI::App& app, int& status);
void addCache(CLI::App& app, int& status);
void addEndpoint(CLI::App& app, int& status);
void addLink(CLI::App& app, int& status);
void addUpload(CLI::App& app, int& status);
void addMock(CLI::App& app, int& status);
void addSession(CLI::App& app, int& status);
void addHelp(CLI::App& app, int& status);

}  // namespace commands
