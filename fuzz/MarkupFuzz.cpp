// Texts of others in pages: what comes out is text to every reader of HTML and JSON, and says the same.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <nlohmann/json.hpp>
#include <string_view>

#include "tovinCore/Utf8.h"
#include "ztclient/answers/Markup.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string_view text(reinterpret_cast<const char*>(data), size);
  bool cutShort = false;
  const std::string escaped = markup::escaped(text);
  if (escaped.find_first_of("<>\"'") != escaped.npos || !tovin::isValidUtf8(escaped, cutShort)) std::abort();
  const std::string json = markup::scriptText(text);
  if (json.find('<') != json.npos || json.find('\n') != json.npos) std::abort();
  const bool wasValid = tovin::isValidUtf8(text, cutShort);
  if (wasValid && nlohmann::json::parse(json).get<std::string>() != text) std::abort();
  return 0;
}
