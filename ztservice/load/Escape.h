#pragma once

#include <string>
#include <string_view>

namespace ztservice::parse {

// A text as XML. White space that a parser would take for other white space is written as a reference.
inline void appendEscaped(std::string& out, std::string_view text, bool inAttribute) {
  for (const char c : text) {
    switch (c) {
      case '&':
        out += "&amp;";
        break;
      case '<':
        out += "&lt;";
        break;
      case '>':
        out += "&gt;";
        break;
      case '\r':
        out += "&#13;";
        break;
      case '"':
        out += inAttribute ? "&quot;" : "\"";
        break;
      case '\n':
        out += inAttribute ? "&#10;" : "\n";
        break;
      case '\t':
        out += inAttribute ? "&#9;" : "\t";
        break;
      default:
        out += c;
    }
  }
}

}  // namespace ztservice::parse
