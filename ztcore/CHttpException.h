#pragma once

#include "tovinCore/Exception.h"
#include "ztcore/Export.h"

/// An HTTP request that failed: what a program tells apart where a person reads the message.
///
///     catch (const CHttpException& e) { if (e.getKind() == CHttpException::Kind::TimeOut) tryLater(); }
///
/// Wrong use (a malformed URL, a call without a request) is a plain Exception. No message holds the user and
/// password of a URL.
class ZTCORE_API CHttpException : public tovin::Exception {
 public:
  enum class Kind {
    Status,       ///< The server answered, and the answer is no success.
    Connection,   ///< There was no connection, or it ended before the answer did.
    Name,         ///< The name of the server or proxy has no address.
    Tls,          ///< The certificate or the encryption failed.
    TimeOut,      ///< The server took nothing, or did not answer, for too long.
    Cancelled,    ///< The caller's watch gave the request up.
    Redirection,  ///< The server leads to where no request goes, or sends the request round too often.
  };
  struct Outcome {
    Kind kind;
    /// As the server sent it; 0 without an answer.
    long status = 0;
    /// A CURLcode; 0 when libcurl reported no failure.
    int curlCode = 0;
  };

  CHttpException(Outcome outcome, const std::wstring& message);
  ~CHttpException() override;

  Kind getKind() const noexcept { return outcome_.kind; }
  long getStatus() const noexcept { return outcome_.status; }
  int getCurlCode() const noexcept { return outcome_.curlCode; }
  const Outcome& getOutcome() const noexcept { return outcome_; }

 private:
  Outcome outcome_;
};
