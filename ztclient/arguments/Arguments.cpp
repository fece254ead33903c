#include "ztclient/arguments/Arguments.h"

#include <algorithm>
#include <charconv>

#include "tovinCore/Exception.h"
#include "tovinCore/Utf8.h"

namespace {

// In a list the parser takes a text in brackets for a list of its own, and "++" for an end. A zero behind
// them, which no argument has, keeps them what they are.
constexpr char shield = '\0';

bool isDigit(char c) { return c >= '0' && c <= '9'; }

// Whether a number, whose digits begin at `first`, has more than the 64 bits up to which the parser looks.
bool exceedsAll(const std::string& number, size_t first) {
  const bool hexadecimal = number.compare(first, 2, "0x") == 0 || number.compare(first, 2, "0X") == 0;
  const char* end = number.data() + number.size();
  const auto beyond = [&](auto value, size_t from, int base) {
    return std::from_chars(number.data() + from, end, value, base).ec == std::errc::result_out_of_range;
  };
  if (hexadecimal) return beyond(uint64_t{}, first + 2, 16);
  return number[0] == '-' ? beyond(int64_t{}, 0, 10) : beyond(int64_t{}, first, 10);
}

bool needsShield(const std::string& text) {
  return text == "++" || (text.size() > 1 && text.front() == '[' && text.back() == ']');
}

bool isEmptyValue(const std::string& text) {
  return text.size() > 3 && text.starts_with("--") && text.find('=') == text.size() - 1;
}

void requireUtf8(const std::vector<std::string>& given) {
  for (size_t i = 0; i < given.size(); ++i) {
    bool cutShort = false;
    if (!tovin::isValidUtf8(given[i], cutShort)) throw tovin::Exception(L"Argument %d is not UTF-8", i + 1);
  }
}

void setExpressionApart(const CLI::App& app, std::vector<std::string>& arguments) {
  if (arguments.empty() || arguments[0] != "query" || std::ranges::count(arguments, "--")) return;
  const CLI::App* query = app.get_subcommand("query");
  const auto expression = std::ranges::find_if(arguments, [query](const std::string& argument) {
    return argument.size() > 1 && argument[0] == '-' && argument[1] != '-' &&
           !query->get_option_no_throw(argument);
  });
  if (expression == arguments.end()) return;
  std::rotate(expression, expression + 1, arguments.end());
  arguments.insert(arguments.end() - 1, "--");
}

}  // namespace

std::vector<std::string> arguments::forParser(const CLI::App& app, std::vector<std::string> given) {
  requireUtf8(given);
  setExpressionApart(app, given);
  const bool takesTexts = !given.empty() && given.front() == "checksum";
  std::vector<std::string> out;
  bool options = true;
  for (std::string& text : given) {
    options = options && text != "--";
    if (options && isEmptyValue(text)) {
      text.pop_back();
      out.insert(out.end(), {text, ""});
      continue;
    }
    if (takesTexts && needsShield(text)) text += shield;
    out.push_back(std::move(text));
  }
  std::reverse(out.begin(), out.end());
  return out;
}

std::string arguments::checkedNumber(std::string number) {
  const size_t first = number.starts_with('-') || number.starts_with('+') ? 1 : 0;
  if (number.size() == first) throw CLI::ValidationError("no number");
  size_t end = first;
  while (end + 1 < number.size() && number[end] == '0' && isDigit(number[end + 1])) ++end;
  number.erase(first, end - first);
  if (exceedsAll(number, first)) throw CLI::ValidationError(number + " is out of range");
  return number;
}

std::string arguments::fromList(std::string parsed) {
  if (!parsed.empty() && parsed.back() == shield) parsed.pop_back();
  return parsed;
}
