#pragma once

#include <cstdint>
#include <functional>
#include <memory>

#include "tovin/BaseString.h"
#include "ztcore/CHttpException.h"
#include "ztcore/Export.h"

/// Posts a multipart form (RFC 7578) over HTTP or HTTPS, pushing: the caller hands over each piece when it
/// has it, and it is on its way to the server when the call returns. No thread, and no copy of the body.
///
///     CHttp http(1);
///     do {
///       result = http.OpenConnect(url, CHttp::Post, CHttp::Chunked, CHttp::MultipartForm);
///       … AddPostSection("SID", nullptr, nullptr, nullptr), AppendData(id, length), AppendData("\r\n", 2) …
///       if (result == CHttp::Success) result = http.EndPostSection();
///       if (result == CHttp::Success) result = http.CheckResponseHeader(30000);
///     } while (result == CHttp::StartAgain);
///
/// - Results: Success; StartAgain when the whole request is to be sent anew, beginning with OpenConnect:
///   after a redirection that keeps the method (307, 308), a 401 that the user and password in the URL answer
///   (Basic, and but for Windows Digest), a 407 of a proxy likewise, a 417, or when a kept connection died
///   before any answer. Any call of a request may give it. What a request was told on its way is forgotten
///   with it: the next one goes to its own URL.
/// - Errors: every failure is a CHttpException: an answer that is no success or ends in its head, a
///   connection that fails or dies, TLS, time-outs, more than 5 requests behind the first one.
/// - TLS: certificates and host names are verified against the system's authorities, or those in the file
///   that the environment variable SSL_CERT_FILE names. A redirection never leads from HTTPS to HTTP.
/// - Proxies: those of the environment variables http_proxy, https_proxy and no_proxy, with the user and
///   password in them.
/// - A section's content ends with "\r\n" from the caller: the line end that belongs to the boundary.
/// - Units: milliseconds. Ownership: borrows pieces until the call returns. Threads: one at a time.
class ZTCORE_API CHttp {
 public:
  enum ResponseResult { Success = 1, StartAgain = 2 };
  enum Verb { Post = 1 };
  enum FormDataType { MultipartForm = 2 };
  /// Sizes of a body whose length nobody knows: in chunks, at once or when the server has said "100
  /// Continue".
  static constexpr int64_t Chunked = -1;
  static constexpr int64_t ChunkedAfterContinue = -2;

  /// \param connections how many are kept for later requests.
  explicit CHttp(int connections);
  CHttp(const CHttp&) = delete;
  CHttp& operator=(const CHttp&) = delete;
  ~CHttp();

  /// How long connecting may take, and how long the server may refuse to take further data; 30 s each at
  /// first.
  void SetTimeouts(unsigned connecting, unsigned sending);
  /// \param watch asked five times a second while a call waits; false gives the request up, as Cancelled.
  void SetWatch(std::function<bool()> watch);

  /// Begins a request; gives up one that is under way.
  ResponseResult OpenConnect(const wchar_t* url, int verb, int64_t size, int formDataType);
  /// Begins a section. Texts are UTF-8; what is null is left out of the section's header. Quotes and line
  /// ends in them are percent-encoded.
  ResponseResult AddPostSection(const char* name, const char* contentType, const char* fileName,
                                const char* encoding);
  ResponseResult AppendData(const void* bytes, size_t count);
  ResponseResult EndPostSection();
  /// Waits for the answer.
  /// \param timeout how long the server may take for its head, and as long again for the rest: an answer
  /// whose body goes on after that counts as it is.
  ResponseResult CheckResponseHeader(unsigned timeout);
  /// The body of the last answer, at most 1 MiB of it; UTF-8, or 8-bit text where it is no UTF-8.
  ResponseResult GetErrorMessageBody(tovin::WideString& body) const;

 private:
  class Transfer;

  std::unique_ptr<Transfer> transfer_;
};
