#pragma once

#include <string>

/// Colours for people: plain text where the output is no terminal or NO_COLOR is set.
namespace terminal {

/// A heading on standard output.
std::string heading(const std::string& text);
/// What went wrong, on standard error.
std::string alarm(const std::string& text);

}  // namespace terminal
