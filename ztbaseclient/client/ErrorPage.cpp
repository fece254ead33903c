#include "ztbaseclient/client/ErrorPage.h"

#include "tovinCore/WebText.h"

namespace ErrorPage {
namespace {

constexpr std::wstring_view opening = L"<p>";
constexpr std::wstring_view closing = L"</p>";

std::wstring_view paragraphIn(std::wstring_view page) {
  const size_t begin = page.find(opening);
  if (begin == std::wstring_view::npos) return page;
  const std::wstring_view text = page.substr(begin + opening.size());
  const size_t end = text.find(closing);
  return end == std::wstring_view::npos ? page : text.substr(0, end);
}

}  // namespace

std::wstring reasonIn(std::wstring_view page) { return tovin::util::XMLDecode(paragraphIn(page)); }

}  // namespace ErrorPage
