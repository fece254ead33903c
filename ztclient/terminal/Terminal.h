#pragma once

#include <ostream>
#include <string>
#include <string_view>

/// How the command speaks to people, as they asked for.
namespace terminal {

enum class Colours { automatic, always, never };

struct Settings {
  bool quiet = false;
  bool verbose = false;
  Colours colours = Colours::automatic;
};

Settings& settings() noexcept;

/// A heading on standard output: in bold where colours are used.
struct Heading {
  std::string text;
};
std::ostream& operator<<(std::ostream& out, const Heading& heading);

/// Part of a line on standard output, in a colour where colours are used.
enum class Colour { red, green };
struct Coloured {
  Colour colour;
  std::string_view text;
};
std::ostream& operator<<(std::ostream& out, const Coloured& part);

/// What went wrong, on standard error: in red where colours are used. Automatic colours are for terminals
/// that have them, unless NO_COLOR is set.
std::string alarm(const std::string& text);

/// Whether a line that is written over and over can be seen on standard error, and is wanted.
bool showsProgress();
/// Whether TERM says that a terminal cannot move its cursor.
bool isDumb();
/// Columns of the terminal, else those that COLUMNS says, else 80.
size_t width();
/// The same for running text, where COLUMNS goes first and lines of more than 100 are not read well.
size_t textWidth();

}  // namespace terminal
