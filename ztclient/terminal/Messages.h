#pragma once

#include <string>

#include "tovinCore/Exception.h"

/// What the command says on standard error, a line each: "ztclient COMMAND: text". All of it is escaped.
namespace messages {

/// Who speaks: "diff"; empty before a subcommand is known.
void setCommand(const std::string& name);

void error(const std::string& text);
/// What is no failure; not for --quiet.
void warn(const std::string& text);
/// What only --verbose tells.
void note(const std::string& text);

/// "[FILE[:LINE:COLUMN]: ]TEXT[: REASON][ (ORIGIN)]", each file as it was given; with --verbose the trail
/// below.
std::string textOf(const tovin::Exception& e);

}  // namespace messages
