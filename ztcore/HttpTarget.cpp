#include "ztcore/HttpTarget.h"

#include <curl/curl.h>

#include <cstring>
#include <memory>

#include "tovinCore/Exception.h"
#include "tovinCore/Utf8.h"

namespace {

using Url = std::unique_ptr<CURLU, decltype(&curl_url_cleanup)>;

struct FreeWiped {
  void operator()(char* text) const noexcept {
    tovin::wipe(text, std::strlen(text));
    curl_free(text);
  }
};
using Text = std::unique_ptr<char, FreeWiped>;

// Null for a part that the URL has not got.
Text partOf(const Url& url, CURLUPart part, unsigned flags) {
  char* text = nullptr;
  const CURLUcode fault = curl_url_get(url.get(), part, &text, flags);
  if (fault == CURLUE_OUT_OF_MEMORY) throw tovin::MemoryException(1, 1);
  return Text(fault == CURLUE_OK ? text : nullptr);
}

std::string textOf(const Url& url, CURLUPart part) {
  const Text text = partOf(url, part, 0);
  return text ? text.get() : std::string();
}

[[noreturn]] void refuse(const wchar_t* url, const char* why) {
  throw tovin::Exception(L"Malformed URL %ls: %hs", withoutUserInfo(url ? url : L""), why);
}

void read(const Url& url, const wchar_t* text) {
  tovin::SecretString<char> utf8;
  const std::wstring_view characters(text ? text : L"");
  tovin::wideToUtf8(characters, utf8.allocate(tovin::utf8Length(characters)));
  // Which other schemes curl knows depends on how it was built: that they are none of ours is said below.
  const CURLUcode fault =
      curl_url_set(url.get(), CURLUPART_URL, utf8.text().c_str(), CURLU_URLENCODE | CURLU_NON_SUPPORT_SCHEME);
  if (fault == CURLUE_OUT_OF_MEMORY) throw tovin::MemoryException(1, 1);
  if (fault != CURLUE_OK) refuse(text, curl_url_strerror(fault));
  const std::string scheme = textOf(url, CURLUPART_SCHEME);
  if (scheme != "http" && scheme != "https") refuse(text, "the scheme is neither http nor https");
}

}  // namespace

HttpTarget HttpTarget::parse(const wchar_t* text) {
  const Url url(curl_url(), curl_url_cleanup);
  if (!url) throw tovin::MemoryException(1, 1);
  read(url, text);
  HttpTarget target;
  target.user = tovin::SecretString<char>(partOf(url, CURLUPART_USER, CURLU_URLDECODE).get());
  target.password = tovin::SecretString<char>(partOf(url, CURLUPART_PASSWORD, CURLU_URLDECODE).get());
  curl_url_set(url.get(), CURLUPART_USER, nullptr, 0);
  curl_url_set(url.get(), CURLUPART_PASSWORD, nullptr, 0);
  target.url = textOf(url, CURLUPART_URL);
  return target;
}

// From behind the first "//", else from the blank or quote before it, to the last '@': a password that is not
// encoded as it should be may hold any character.
std::wstring withoutUserInfo(std::wstring_view text) {
  constexpr std::wstring_view blanksAndQuotes = L" \t\r\n'\"";
  const size_t sign = text.rfind(L'@');
  if (sign == std::wstring_view::npos) return std::wstring(text);
  const size_t slashes = text.find(L"//");
  const size_t begin = slashes < sign ? slashes + 2 : text.find_last_of(blanksAndQuotes, sign) + 1;
  return std::wstring(text.substr(0, begin)).append(text.substr(sign + 1));
}
