#include "ztclient/arguments/Arguments.h"

#include <algorithm>
#include <charconv>

#include "tovinCore/Utf8.h"
#include "ztservice/call/Nearest.h"

namespace {

// In a list the parser takes a text in brackets for a list of its own, and "++" for an end. A zero behind
// them, which no argument has, keeps them what they are.
constexpr char shield = '\0';

bool isDigit(char c) { return c >= '0' && c <= '9'; }

// Whether digits, behind the sign or the 0x at the front, are a number within the limits; none where they are
// no number.
std::optional<bool> isWithin(const std::string& number, size_t first, int64_t least, uint64_t most) {
  const bool hexadecimal = number.compare(first, 2, "0x") == 0 || number.compare(first, 2, "0X") == 0;
  const char* end = number.data() + number.size();
  const auto read = [&](auto& value, size_t from) {
    return std::from_chars(number.data() + from, end, value, hexadecimal ? 16 : 10);
  };
  uint64_t magnitude = 0;
  const auto [stop, error] = read(magnitude, hexadecimal ? first + 2 : first);
  if (error == std::errc::invalid_argument || stop != end) return std::nullopt;
  if (error == std::errc::result_out_of_range) return false;
  if (number[0] != '-') return magnitude <= most;
  return magnitude <= (least == 0 ? 0 : uint64_t{0} - static_cast<uint64_t>(least));
}

bool needsShield(const std::string& text) {
  return text == "++" || (text.size() > 1 && text.front() == '[' && text.back() == ']');
}

bool isEmptyValue(const std::string& text) {
  return text.size() > 3 && text.starts_with("--") && text.find('=') == text.size() - 1;
}

bool isFile(const CLI::Option& option) {
  const std::string word = option.get_type_name();
  return word.starts_with("FILE") || word.starts_with("OUT");
}

// CLI11's way to refuse: a text, empty for none.
std::string refuseOtherThanUtf8(const std::string& text) {
  bool cutShort = false;
  return tovin::isValidUtf8(text, cutShort) ? "" : "the value is not UTF-8";
}

std::string refuseEmpty(const std::string& text) { return text.empty() ? "the value is empty" : ""; }

std::string refuseControls(const std::string& text) {
  const bool any =
      std::any_of(text.begin(), text.end(), [](unsigned char c) { return c < 0x20 || c == 0x7F; });
  return any ? "a control character is in the value" : "";
}

std::string joined(const std::vector<std::string>& words, const char* separator) {
  std::string text;
  for (const std::string& word : words) text += (text.empty() ? "" : separator) + word;
  return text;
}

CLI::Option* addWords(CLI::Option* option, const std::vector<std::string>& words,
                      const std::function<std::string(std::string&)>& check) {
  return option->check(CLI::Validator(check, "{" + joined(words, ",") + "}"));
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

std::string arguments::checkedNumber(const std::string& text, int64_t least, uint64_t most) {
  std::string number = text;
  const size_t first = number.starts_with('-') || number.starts_with('+') ? 1 : 0;
  size_t end = first;
  while (end + 1 < number.size() && number[end] == '0' && isDigit(number[end + 1])) ++end;
  number.erase(first, end - first);
  const std::optional<bool> within = isWithin(number, first, least, most);
  if (!within) throw CLI::ValidationError('"' + text + "\" is no number");
  if (!*within) throw CLI::ValidationError(number + " is out of range");
  return number;
}

std::string arguments::fromList(std::string parsed) {
  if (!parsed.empty() && parsed.back() == shield) parsed.pop_back();
  return parsed;
}

void arguments::requireUtf8(CLI::App& app) {
  for (CLI::Option* option : app.get_options()) {
    if (!isFile(*option) && option->get_items_expected_max() > 0)
      option->check(CLI::Validator([](std::string& text) { return refuseOtherThanUtf8(text); }, ""));
  }
  for (CLI::App* command : app.get_subcommands([](const CLI::App*) { return true; })) requireUtf8(*command);
}

CLI::Option* arguments::addFile(CLI::App& app, const std::string& name, std::string& file,
                                const std::string& help, const std::string& word) {
  CLI::Option* option = app.add_option(name, file, help)->type_name(word);
  return name.starts_with('-') ? requireText(option) : option;
}

CLI::Option* arguments::restrictTo(CLI::Option* option, const std::vector<std::string>& words) {
  return addWords(option, words, [words](std::string& text) -> std::string {
    if (std::ranges::count(words, text)) return {};
    const std::string meant = ztservice::call::nearest(text, words);
    return "no value \"" + text + '"' +
           (meant.empty() ? "; there are " : "; did you mean \"" + meant + "\"? There are ") +
           joined(words, ", ");
  });
}

CLI::Option* arguments::offer(CLI::Option* option, const std::vector<std::string>& words) {
  return addWords(option, words, [](std::string&) { return std::string(); });
}

// The parser tells them in the type's name: "WORD:{nodes,properties}".
std::vector<std::string> arguments::wordsOf(const CLI::Option& option) {
  const std::string type = option.get_type_name();
  const size_t begin = type.find('{'), end = type.find('}');
  if (begin == std::string::npos || end == std::string::npos) return {};
  return CLI::detail::split(type.substr(begin + 1, end - begin - 1), ',');
}

CLI::Option* arguments::requireText(CLI::Option* option) {
  return option->check(CLI::Validator([](std::string& text) { return refuseEmpty(text); }, ""));
}

CLI::Option* arguments::requirePrintable(CLI::Option* option) {
  return option->check(CLI::Validator([](std::string& text) { return refuseControls(text); }, ""));
}
