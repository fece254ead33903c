#pragma once

#include <string>
#include <string_view>

#include "ztbaseclient/Export.h"

/// What the server's HTML error pages say to people.
namespace ErrorPage {

/// The text of the first paragraph, from "<p>" to the next "</p>" in just these letters, or the whole page
/// when there is none; its character references decoded, other tags left as they are.
ZTBASECLIENT_API std::wstring reasonIn(std::wstring_view page);

}  // namespace ErrorPage
