#pragma once

#include <utility>

#include "tovin/BaseString.h"
#include "tovinCore/Wipe.h"

namespace tovin {

/// A text that is wiped before its memory is given back: a password, or what a password is read from.
///
///     SecretString<wchar_t> password(L"…");
///     password = other.c_str();   // the old characters are overwritten first
///
/// - Ownership: owns its characters.
/// - Shape: null and empty are distinct, as in BaseString.
template <class C>
class SecretString {
 public:
  SecretString() noexcept = default;
  explicit SecretString(const C* text) : text_(text) {}
  /// Takes the characters over.
  explicit SecretString(BaseString<C>&& text) noexcept : text_(std::move(text)) {}
  SecretString(const SecretString&) = default;
  SecretString(SecretString&&) noexcept = default;
  ~SecretString() { wipeText(); }
  SecretString& operator=(const SecretString& other) { return *this = SecretString(other); }
  SecretString& operator=(SecretString&& other) noexcept {
    std::swap(text_, other.text_);
    return *this;
  }

  void setNull() noexcept {
    wipeText();
    text_.setNull();
  }
  const BaseString<C>& text() const noexcept { return text_; }
  /// Memory for a text of this length, to be written to: its characters are whatever the memory holds.
  C* allocate(size_t length) {
    setNull();
    text_.setLength(length);
    return text_.data();
  }
  /// Cuts a text that allocate() made longer than needed.
  void shorten(size_t length) {
    const size_t before = text_.getLength();
    if (length >= before) return;
    wipe(text_.data() + length, (before - length) * sizeof(C));
    text_.setLength(length);
  }

 private:
  void wipeText() noexcept { wipe(text_.data(), text_.getLength() * sizeof(C)); }

  BaseString<C> text_;
};

}  // namespace tovin
