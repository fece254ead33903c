#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <string_view>
#include <vector>

#include "tovin/BaseString.h"
#include "ztbaseclient/Export.h"
#include "ztbaseclient/tools/CConsoleEntry.h"

class ztMemoryStringFile;
class ztStringReader;

/// Reads the entries of a job's console log, which the job may still be writing.
///
///     CConsoleReader reader(L"job.log", position);
///     CConsoleEntry entry;
///     while (reader.GetNextEntry(entry)) use(entry);
///     position = reader.GetResumePosition();
///
/// - Shape: an entry stands between a line with DRV_ConsoleEntryBegin and one with DRV_ConsoleEntryEnd, a
///   pair a line: name, tab, value. In both "%n" is a line feed, "%t" a tab and "%p" a percent sign.
/// - Growing logs: the end of the log ends an entry too, and the last line counts as it stands. GetPosition()
///   is behind what was read: a reader that begins there goes on exactly where this one stopped, and passes
///   over the rest of an entry that was cut off. GetResumePosition() is where a reader begins that shall meet
///   every entry whole, and none of the whole ones twice: in front of the entry, or of the line, whose end
///   was not written yet.
/// - Units: bytes of a file, characters of a text in memory.
/// - Ownership: owns the open file; borrows a text in memory. Copying moves what is read to the copy.
/// - Errors: without a file there are no entries, and the position is 0; lines as in ztStringReader: one that
///   is too long is told once, its entry is given up, and the next call goes on behind it.
class ZTBASECLIENT_API CConsoleReader {
 public:
  static constexpr const char* ClassName = "CConsoleReader";

  CConsoleReader(const wchar_t* path, int64_t position);
  CConsoleReader(ztMemoryStringFile& file, int64_t position);
  CConsoleReader(CConsoleReader& other) noexcept;
  CConsoleReader& operator=(CConsoleReader& other) noexcept;
  ~CConsoleReader();

  bool HasSource() const noexcept { return source_ != nullptr; }
  int64_t GetPosition() const;
  int64_t GetResumePosition() const noexcept { return resume_; }
  /// Goes back to GetResumePosition(), for what the job has written meanwhile.
  void Resume();
  /// Whether the last entry given had its end marker.
  bool WasEntryComplete() const noexcept { return entryComplete_; }
  /// False, with the entry empty, when the log has no more.
  bool GetNextEntry(CConsoleEntry& entry);

  /// Takes a pair of an entry, in UTF-8, borrowed for the call.
  using PairVisitor = std::function<void(std::string_view name, std::string_view value)>;
  /// The same with the pairs as they come, for those who want no wide text: `visit` has seen some of an entry
  /// that ends with an exception.
  bool VisitNextEntry(const PairVisitor& visit);

 protected:
  /// Decodes the characters from `start` to `end`, both included.
  void Decode(const tovin::BaseString<wchar_t>& line, unsigned start, unsigned end,
              tovin::BaseString<wchar_t>& out);

 private:
  bool nextLine();
  bool findBegin();
  bool findPlainBegin();
  template <class Pairs>
  bool readEntry(const Pairs& pairs);
  template <class Pairs>
  bool readPlainPairs(const Pairs& pairs);
  template <class Pairs>
  bool readLine(const Pairs& pairs);
  CConsoleEntry::NameValue& addPair(CConsoleEntry& entry);
  void empty(CConsoleEntry& entry);

  std::unique_ptr<ztStringReader> source_;
  int64_t resume_ = 0;
  bool unfinishedLine_ = false;
  bool entryComplete_ = false;
  // The line and, inside it, its text without blanks around.
  tovin::WideString line_;
  std::wstring_view text_;
  // Texts of earlier entries, so that the next ones need no new memory.
  std::vector<CConsoleEntry::NameValue> spare_;
  tovin::BaseString<char> nameRoom_, valueRoom_;
};
