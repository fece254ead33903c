#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string_view>

#include "ztcore/ztFile.h"

/// A text file that is read from front to back in large pieces, and that knows how its text is encoded.
///
///     ztFastReadFile file(name);
///     while (file.Fill()) file.Consume(use(file.GetWindow()));
///
/// - Encoding: a byte-order mark decides and is no text. Without one, UTF-16 shows by the zero bytes of the
///   beginning; the rest is UTF-8 if the whole file is valid UTF-8, else 8-bit, each byte one character.
/// - Units: positions and lengths in bytes of the file.
/// - Ownership: owns the open file and the window; a view of the window is borrowed until the next call.
/// - Errors: "Unable to open file %ls"; "Unable to read file %ls". A file that shrinks merely ends earlier.
class ZTCORE_API ztFastReadFile {
 public:
  using Encoding = ztFile::Encoding;
  /// Whether the file is all there, or somebody still writes it: then a character may be cut off at its end.
  enum class Ending { Final, Growing };

  /// How many bytes are read at once.
  static constexpr size_t PieceSize = size_t{1} << 17;

  explicit ztFastReadFile(const wchar_t* name, Ending ending = Ending::Final);
  ~ztFastReadFile();

  const wchar_t* GetName() const noexcept { return name_; }
  bool Is16Bit() const noexcept {
    return encoding_ == Encoding::Utf16 || encoding_ == Encoding::Utf16BigEndian;
  }
  /// Unknown until DetermineEncoding for a file without a mark that is not UTF-16: until a character beyond
  /// ASCII is met, nobody needs to know.
  Encoding GetEncoding() const noexcept { return encoding_; }
  /// Decides between UTF-8 and 8-bit, for which the file is read once to its end.
  void DetermineEncoding();

  /// What is read and not consumed yet; begins at GetPosition().
  std::string_view GetWindow() const noexcept { return {buffer_.get() + begin_, end_ - begin_}; }
  /// Reads more behind the window, which grows as far as it must; false at the end of the file.
  bool Fill();
  void Consume(size_t count) noexcept;
  int64_t GetPosition() const noexcept { return position_; }
  /// Moves to a byte of the file. A place inside the mark is behind it, one inside a 16-bit unit is at the
  /// unit's beginning.
  void Seek(int64_t position);

 private:
  void examineHead();
  bool isWhollyUtf8();
  void makeRoom();

  ztFile file_;
  tovin::WideString name_;
  Ending ending_;
  Encoding encoding_ = Encoding::Unknown;
  bool examined_ = false;
  int64_t markLength_ = 0;

  int64_t position_ = 0;
  std::unique_ptr<char[]> buffer_;
  size_t capacity_ = 0;
  size_t begin_ = 0, end_ = 0;
};
