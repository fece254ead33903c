#pragma once

#include <CLI/CLI.hpp>
#include <cstdint>
#include <limits>
#include <optional>
#include <string>
#include <vector>

/// What the command is given, on its way through the parser of command lines. The type name of an option is
/// the word that stands for its value wherever options are described; "FILE" and "OUT" are files.
namespace arguments {

/// The arguments behind the program's name as the parser of `app` takes them, the last one first. `--name=`
/// becomes an empty text, which the parser knows only as an argument of its own. The expression of a query
/// may begin with '-': what is no option's name goes to the end, behind a "--".
std::vector<std::string> forParser(const CLI::App& app, std::vector<std::string> given);

/// A text out of a list of texts, as it was given.
std::string fromList(std::string parsed);

/// Has every option below `app` that names no file refuse what is no UTF-8.
void requireUtf8(CLI::App& app);

/// A file, or one to be written; an empty name is refused where it is an option.
CLI::Option* addFile(CLI::App& app, const std::string& name, std::string& file, const std::string& help,
                     const std::string& word = "FILE");

/// Words that an option's value may be, and no other; or that are offered only, when one is typed.
CLI::Option* restrictTo(CLI::Option* option, const std::vector<std::string>& words);
CLI::Option* offer(CLI::Option* option, const std::vector<std::string>& words);
/// Of what restrictTo() and offer() were given.
std::vector<std::string> wordsOf(const CLI::Option& option);

/// Has a text refused that is empty, or has control characters in it.
CLI::Option* requireText(CLI::Option* option);
CLI::Option* requirePrintable(CLI::Option* option);

/// A number as the parser takes it: without zeros in front, which would make it an octal one. Errors: no
/// number, and one beyond the limits.
std::string checkedNumber(const std::string& number, int64_t least, uint64_t most);

template <class Value>
struct NumberOf {
  using type = Value;
};
template <class Value>
struct NumberOf<std::vector<Value>> : NumberOf<Value> {};
template <class Value>
struct NumberOf<std::optional<Value>> : NumberOf<Value> {};

/// An option, or a list of them, whose value is a number: decimal, or hexadecimal with 0x.
template <class Value>
CLI::Option* addNumber(CLI::App& app, const std::string& name, Value& value, const std::string& help) {
  using Limits = std::numeric_limits<typename NumberOf<Value>::type>;
  return app.add_option(name, value, help)->type_name("N")->transform([](const std::string& text) {
    return checkedNumber(text, static_cast<int64_t>(Limits::min()), static_cast<uint64_t>(Limits::max()));
  });
}

}  // namespace arguments
