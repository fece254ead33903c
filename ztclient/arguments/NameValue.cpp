#include "ztclient/arguments/NameValue.h"

namespace {

NameValue split(const std::string& text) {
  const size_t mark = text.find('=');
  if (mark == std::string::npos) return {text, std::nullopt};
  return {text.substr(0, mark), text.substr(mark + 1)};
}

}  // namespace

// Through a function and not into a list of texts, which would be searched for brackets and commas.
CLI::Option* addNameValues(CLI::App& command, const std::string& option, std::vector<NameValue>& out,
                           const std::string& description) {
  return command
      .add_option_function<std::string>(
          option, [&out](const std::string& text) { out.push_back(split(text)); }, description)
      ->trigger_on_parse()
      ->take_last()
      ->type_name("NAME=VALUE");
}
