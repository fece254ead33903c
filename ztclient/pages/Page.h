#pragma once

#include <string>
#include <string_view>

/// Pages for people: one file each, that reaches no network and runs nothing but its own few lines of script.
/// A policy in the page says so to the browser; each text of others goes through markup::escaped() all the
/// same.
namespace page {

/// A whole page. \param body markup, with all texts escaped.
std::string of(std::string_view title, std::string_view body);

/// A field that shows those elements with the attribute data-row below `selector` that have all words.
std::string filterOf(std::string_view what, std::string_view selector, std::string_view id);
/// A row of a table of two columns.
std::string row(std::string_view heading, std::string_view value);

}  // namespace page
