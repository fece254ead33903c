#include "ztcore/HttpTarget.h"

#include <curl/curl.h>

#include <memory>

#include "tovinCore/Exception.h"
#include "tovinCore/Utf8.h"

namespace {

using Url = std::unique_ptr<CURLU, decltype(&curl_url_cleanup)>;

std::string partOf(const Url& url, CURLUPart part, unsigned flags) {
  char* text = nullptr;
  if (curl_url_get(url.get(), part, &text, flags) != CURLUE_OK) return {};
  const std::unique_ptr<char, decltype(&curl_free)> owned(text, curl_free);
  return text;
}

}  // namespace

HttpTarget HttpTarget::parse(const wchar_t* text) {
  const Url url(curl_url(), curl_url_cleanup);
  if (!url) throw tovin::MemoryException(1, 1);
  // Which other schemes curl knows depends on how it was built: that they are none of ours is said below.
  const CURLUcode fault = curl_url_set(url.get(), CURLUPART_URL, tovin::wideToUtf8(text).c_str(),
                                       CURLU_URLENCODE | CURLU_NON_SUPPORT_SCHEME);
  if (fault != CURLUE_OK) throw tovin::Exception(L"Malformed URL %ls: %hs", text, curl_url_strerror(fault));
  const std::string scheme = partOf(url, CURLUPART_SCHEME, 0);
  if (scheme != "http" && scheme != "https") {
    throw tovin::Exception(L"Malformed URL %ls: the scheme is neither http nor https", text);
  }
  HttpTarget target;
  target.user = partOf(url, CURLUPART_USER, CURLU_URLDECODE);
  target.password = partOf(url, CURLUPART_PASSWORD, CURLU_URLDECODE);
  curl_url_set(url.get(), CURLUPART_USER, nullptr, 0);
  curl_url_set(url.get(), CURLUPART_PASSWORD, nullptr, 0);
  target.url = partOf(url, CURLUPART_URL, 0);
  return target;
}
