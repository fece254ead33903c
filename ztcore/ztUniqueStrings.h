#pragma once

#include <cstddef>

#include "ztcore/Export.h"

/// The process-wide table of shared wide texts: equal texts are one copy, and so one pointer.
///
///     name = ztUniqueStrings::GetUniqueString(L"size", name, &created);   // gives up what name held
///     ztUniqueStrings::Release(name);                                     // only gives up
///
/// - Ownership: each pointer handed out counts one reference; the copy dies with its last reference. A count
///   that reaches its limit stays there, and the text with it.
/// - Shape: texts are compared exactly, case and all.
/// - Threads: any; the table has 16 parts, each with a lock of its own.
class ZTCORE_API ztUniqueStrings {
 public:
  /// \param newText the text to share, null to get none.
  /// \param oldText a pointer handed out before whose reference is given up, or null.
  /// \param created out, may be null: true when no copy of the text existed.
  static const wchar_t* GetUniqueString(const wchar_t* newText, const wchar_t* oldText, bool* created);

  /// Gives up a reference; nothing for null.
  static void Release(const wchar_t* text) noexcept {
    if (text) giveUp(text);
  }

  /// One more reference to a text handed out before; null for null.
  static const wchar_t* AddReference(const wchar_t* text) noexcept;

  /// Has a field hold a text that was handed out before, or null, in place of what it holds.
  static void Assign(const wchar_t*& field, const wchar_t* sharedText) noexcept {
    const wchar_t* old = field;
    field = AddReference(sharedText);
    Release(old);
  }

  /// How many distinct texts are held now.
  static size_t GetCount();

 private:
  static void giveUp(const wchar_t* text) noexcept;
};

/// Holds one shared text for a scope or as a key.
class ztUniqueString {
 public:
  ztUniqueString() noexcept = default;
  explicit ztUniqueString(const wchar_t* text)
      : text_(ztUniqueStrings::GetUniqueString(text, nullptr, nullptr)) {}
  ztUniqueString(const ztUniqueString& other) noexcept : text_(ztUniqueStrings::AddReference(other.text_)) {}
  ztUniqueString(ztUniqueString&& other) noexcept : text_(other.text_) { other.text_ = nullptr; }
  ~ztUniqueString() { ztUniqueStrings::Release(text_); }
  ztUniqueString& operator=(ztUniqueString other) noexcept {
    const wchar_t* mine = text_;
    text_ = other.text_;
    other.text_ = mine;
    return *this;
  }
  operator const wchar_t*() const noexcept { return text_; }

 private:
  const wchar_t* text_ = nullptr;
};
