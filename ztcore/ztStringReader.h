#pragma once

#include <cstdint>
#include <functional>
#include <memory>

#include "ztcore/ztFastReadFile.h"

class ztMemoryStringFile;

/// The lines of a text, whatever its encoding.
///
///     ztStringReader reader(name);
///     tovin::WideString line;
///     while (reader.GetLine(line)) …  // L"text\n"
///
/// - Lines: LF and CR LF end a line; the last one may go without. Every line is given with one LF as its end.
/// - Units: a position is the byte offset behind the last line given, of a text in memory the character
///   offset; what was sought, before a line is given.
/// - Broken text: a byte that belongs to no character is U+DC00 plus the byte, so that different bytes stay
///   different.
/// - Memory: a line has up to 16 MiB in the file, at most four times as much as wide text; a longer one is
///   refused, once, with "Line at byte %d of file %ls is longer than %d bytes", and passed over.
/// - Growth: what is written behind the last line given is found by the next GetLine. A line without an end
///   is given as it stands; to have it whole later, seek back to where it began.
/// - Ownership: owns the open file; borrows a text in memory.
class ZTCORE_API ztStringReader {
 public:
  using Ending = ztFastReadFile::Ending;

  explicit ztStringReader(const wchar_t* path, Ending ending = Ending::Final);
  explicit ztStringReader(const ztMemoryStringFile& file);
  ~ztStringReader();

  /// False at the end, which leaves the line as it was.
  bool GetLine(tovin::WideString& line);
  /// Whether the last line given had an end of its own.
  bool HadLineEnd() const noexcept { return hadLineEnd_; }
  /// Whether the last GetLine refused a line: the position is behind what there is of it.
  bool WasTooLong() const noexcept { return wasTooLong_; }
  int64_t GetPosition() const noexcept { return position_; }
  /// From the start; a place behind the end is allowed and has no lines.
  void Seek(int64_t position);

  /// Passes over the lines that both have in common from here on, at the speed of memory where they are the
  /// same bytes; stops, at the latest, before the first pair of lines that differ. What it does not pass over
  /// is not therefore different.
  /// \param watch told now and then where the first one is.
  /// \return how many lines of each.
  static int64_t SkipEqualLines(ztStringReader& a, ztStringReader& b,
                                const std::function<void(int64_t position)>& watch = {});

  /// Passes over pairs of lines from here on as long as a test says so, without decoding them. It is asked
  /// about ASCII only: lines without their line feed, which hold neither zero bytes nor carriage returns. It
  /// stops, at the latest, before the first pair of others.
  /// \return how many lines of each.
  using PairTest = std::function<bool(std::string_view line1, std::string_view line2)>;
  static int64_t SkipPairs(ztStringReader& a, ztStringReader& b, const PairTest& test,
                           const std::function<void(int64_t position)>& watch = {});

  /// The whole lines from here on that are plain (ASCII without zero bytes and carriage returns), as they
  /// stand in the file; as many as are at hand, at least one if the next line is such a line of usual length.
  /// They are passed over by PassPlainLines, up to behind any of their line feeds.
  /// \return borrowed until the next call.
  std::string_view PeekPlainLines();
  void PassPlainLines(size_t length);

  /// Passes over lines that do not hold a text, which is ASCII without a line feed, at the speed of memory
  /// where it can; never over a last line without an end. What it does not pass over may be without it too.
  void SkipLinesWithout(std::string_view text);

 private:
  bool getFileLine(tovin::WideString& line);
  bool getMemoryLine(tovin::WideString& line);
  ztFile::Encoding encodingOf(std::string_view text);
  bool findLine(std::string_view& text, size_t& length);
  void passLongLine();
  std::string_view plainWindow(size_t most = std::string_view::npos);
  bool growPlainWindow();

  std::unique_ptr<ztFastReadFile> file_;
  const ztMemoryStringFile* memory_ = nullptr;
  int64_t position_ = 0;
  bool hadLineEnd_ = true;
  bool inLongLine_ = false;
  bool wasTooLong_ = false;
  // Up to where the file is known to be plain: ASCII without zero bytes and carriage returns.
  int64_t plainEnd_ = 0;
};
