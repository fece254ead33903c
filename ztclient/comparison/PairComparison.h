#pragma once

#include <string>
#include <vector>

#include "ztbaseclient/tools/FileDifferences.h"

/// What a comparison of two files came to.
struct PairResult {
  enum class Verdict { equal, within, different, onlyFirst, onlySecond, unreadable };

  Verdict verdict = Verdict::equal;
  /// Why they are unreadable, or different as a whole; else empty.
  std::string reason = {};
  /// Of texts.
  differences::Summary sums = {};
  /// The first lines that differ, a text each, and how many more there are.
  std::vector<std::string> first = {};
  int64_t more = 0;
};

/// "equal", "within tolerance", …
const char* wordOf(PairResult::Verdict verdict) noexcept;

/// How pairs of files are compared.
///
/// - Files of the same bytes are equal; other texts are compared by their fields, what is no text by bytes.
/// - Errors: none; what cannot be read is a result.
/// - Threads: any number at once.
class PairComparison {
 public:
  PairComparison(differences::Options how, bool binary) : how_(std::move(how)), binary_(binary) {}

  PairResult compare(const wchar_t* file1, const wchar_t* file2) const;
  /// Which numbers are near enough, in words.
  std::string tolerance() const;

 private:
  PairResult compareOrThrow(const wchar_t* file1, const wchar_t* file2) const;
  PairResult compareText(const wchar_t* file1, const wchar_t* file2) const;

  differences::Options how_;
  bool binary_;
};
