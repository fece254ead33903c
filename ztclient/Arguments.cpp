#include "ztclient/Arguments.h"

#include <algorithm>

#include "tovinCore/Exception.h"
#include "tovinCore/Utf8.h"

namespace {

// In a list the parser takes a text in brackets for a list of its own, and "++" for an end. A zero behind
// them, which no argument has, keeps them what they are.
constexpr char shield = '\0';

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

std::string arguments::fromList(std::string parsed) {
  if (!parsed.empty() && parsed.back() == shield) parsed.pop_back();
  return parsed;
}
