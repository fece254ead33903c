#pragma once

#include <concepts>
#include <cstdint>
#include <functional>
#include <type_traits>

#include "tovin/BaseString.h"
#include "ztbaseclient/Export.h"

class CHttp;

/// Where the server is, and how files get there.
///
///     WideString endPoint;
///     ztSoapUtils::GetServerEndpointSetting(endPoint);  // the saved one, else the default
///     ztSoapUtils::UploadViaCGI(L"/data/a.sdf", L"a.sdf", nullptr, session, true, url);
class ZTBASECLIENT_API ztSoapUtils {
 public:
  /// The locator on this computer, over HTTPS.
  static const wchar_t* GetDefaultLocatorEndpoint() noexcept;

  /// Fills an empty end point with the one in the user's settings, else with the default one.
  /// \return false for the default, whatever stood in the way of the saved one.
  static bool GetServerEndpointSetting(tovin::WideString& endPoint);

  /// Whether plain HTTP may be used. The server configuration's "DrvDevNoHttp" forbids it towards this very
  /// computer, by its loopback name or its own.
  /// \param endPoint UTF-8; null or empty for the one of the settings.
  static bool UseHttp(const char* endPoint) noexcept;

  /// Told how much of the file is on its way, after each piece and five times a second while the server is
  /// waited for; again from the start when the request is sent again. In bytes; the length is the file's when
  /// it was opened, 0 before that. A function that returns bool gives the upload up with false, any function
  /// by throwing.
  class UploadProgress {
   public:
    UploadProgress() = default;
    template <std::invocable<uint64_t, uint64_t> Function>
    requires(!std::same_as<std::remove_cvref_t<Function>, UploadProgress>) UploadProgress(Function function)
        : function_(answering(std::move(function))) {}

    explicit operator bool() const noexcept { return static_cast<bool>(function_); }
    /// False to give the upload up.
    bool operator()(uint64_t done, uint64_t length) const { return function_(done, length); }

   private:
    using Answering = std::function<bool(uint64_t, uint64_t)>;

    template <class Function>
    static Answering answering(Function function) {
      if constexpr (requires { function.target_type(); }) {
        if (!function) return {};  // an empty std::function
      }
      if constexpr (std::is_void_v<std::invoke_result_t<Function&, uint64_t, uint64_t>>) {
        return [function = std::move(function)](uint64_t done, uint64_t length) mutable {
          function(done, length);
          return true;
        };
      } else {
        return function;
      }
    }

    Answering function_;
  };

  /// Sends a file to the server's upload script, as a form with the sections FileName, SID, jobid and file,
  /// in this order. The file is compressed (zlib) on the way; memory does not grow with it.
  ///
  /// - Errors: "Unable to upload %ls: %ls" with the server's reason when it gave one; otherwise the exception
  ///   of CHttp or ztFile, with a line that tells it was an upload. Either is a CHttpException where the
  ///   request failed. What the progress function throws comes out as it was.
  /// \param jobId null for no job: the section is left out.
  /// \param flag false to wait for the server's consent before the body is sent (100 Continue).
  /// \param sentPath what the server is told as the file's path; null for the path itself.
  static void UploadViaCGI(const wchar_t* filePath, const wchar_t* fileName, const wchar_t* jobId,
                           const wchar_t* sessionId, bool flag, const wchar_t* url,
                           const UploadProgress& progress = {}, const wchar_t* sentPath = nullptr);

 private:
  static void GetUploadCgiError(CHttp& http, tovin::WideString& message);
};
