#include "ztservice/call/SecurityHeader.h"

#include <array>
#include <cstdio>
#include <random>

#include "ztservice/call/Binary.h"
#include "ztservice/call/Sha1.h"

namespace ztservice::call {

namespace {

constexpr std::string_view extensionSpace =
    "http://docs.oasis-open.org/wss/2004/01/oasis-200401-wss-wssecurity-secext-1.0.xsd";
constexpr std::string_view utilitySpace =
    "http://docs.oasis-open.org/wss/2004/01/oasis-200401-wss-wssecurity-utility-1.0.xsd";
constexpr std::string_view passwordTypes =
    "http://docs.oasis-open.org/wss/2004/01/oasis-200401-wss-username-token-profile-1.0#";
constexpr std::string_view base64Coding =
    "http://docs.oasis-open.org/wss/2004/01/oasis-200401-wss-soap-message-security-1.0#Base64Binary";

std::string drawNonce() {
  constexpr size_t length = 16;
  std::random_device source;
  std::string nonce;
  while (nonce.size() < length) nonce += static_cast<char>(source() & 0xFF);
  return nonce;
}

// "2026-11-27T08:15:00Z".
std::string textOf(std::chrono::sys_seconds time) {
  const auto day = std::chrono::floor<std::chrono::days>(time);
  const std::chrono::year_month_day date(day);
  const std::chrono::hh_mm_ss clock(time - day);
  std::array<char, 40> text{};
  std::snprintf(text.data(), text.size(), "%04d-%02u-%02uT%02d:%02d:%02dZ", static_cast<int>(date.year()),
                static_cast<unsigned>(date.month()), static_cast<unsigned>(date.day()),
                static_cast<int>(clock.hours().count()), static_cast<int>(clock.minutes().count()),
                static_cast<int>(clock.seconds().count()));
  return text.data();
}

class SecurityWriter {
 public:
  SecurityWriter(XmlText& xml, const Security& security)
      : xml_(xml),
        security_(security),
        created_(security.created
                     ? *security.created
                     : std::chrono::floor<std::chrono::seconds>(std::chrono::system_clock::now())) {}

  void write(std::string_view space) {
    const Name header{extensionSpace, "Security"};
    xml_.begin(header);
    xml_.attribute({space, "mustUnderstand"}, "1");
    if (security_.lifetime) timestamp(*security_.lifetime);
    token();
    xml_.end(header);
  }

 private:
  void timestamp(std::chrono::seconds lifetime) {
    const Name stamp{utilitySpace, "Timestamp"};
    xml_.begin(stamp);
    text({utilitySpace, "Created"}, textOf(created_));
    text({utilitySpace, "Expires"}, textOf(created_ + lifetime));
    xml_.end(stamp);
  }

  void token() {
    const Name token{extensionSpace, "UsernameToken"}, password{extensionSpace, "Password"},
        nonceName{extensionSpace, "Nonce"};
    const std::string nonce = security_.nonce.empty() ? drawNonce() : security_.nonce;
    const std::string created = textOf(created_);
    xml_.begin(token);
    text({extensionSpace, "Username"}, security_.user);
    xml_.begin(password);
    xml_.attribute({{}, "Type"},
                   std::string(passwordTypes) + (security_.isDigest ? "PasswordDigest" : "PasswordText"));
    xml_.text(security_.isDigest ? base64Of(sha1(nonce + created + security_.password)) : security_.password);
    xml_.end(password);
    xml_.begin(nonceName);
    xml_.attribute({{}, "EncodingType"}, base64Coding);
    xml_.text(base64Of(nonce));
    xml_.end(nonceName);
    text({utilitySpace, "Created"}, created);
    xml_.end(token);
  }

  void text(const Name& name, std::string_view value) {
    xml_.begin(name);
    xml_.text(value);
    xml_.end(name);
  }

  XmlText& xml_;
  const Security& security_;
  std::chrono::sys_seconds created_;
};

}  // namespace

void writeSecurity(XmlText& xml, const Security& security, std::string_view space) {
  SecurityWriter(xml, security).write(space);
}

}  // namespace ztservice::call
