#pragma once

#include <string>
#include <string_view>

/// Text inside of XML and HTML.
namespace markup {

/// For the content of an element or a value in quotation marks: `&<>"'` as references; control characters but
/// tab, line feed and carriage return, which no XML can hold, and what is no UTF-8 as U+FFFD.
std::string escaped(std::string_view text);
/// A text as JSON that may stand in a script element: nothing in it can end that.
std::string scriptText(std::string_view text);

}  // namespace markup
