#pragma once

#include <cstdint>

#include "tovin/BaseString.h"
#include "tovinCore/Exception.h"
#include "ztcore/Export.h"

/// A file of bytes, read or written in order.
///
///     ztFile file;
///     if (!file.Open(name, ztFile::ForReading)) …
///     while (unsigned count = file.Read(buffer, sizeof buffer)) use(buffer, count);
///
/// - Names: UTF-16; UTF-8 towards the system where that speaks bytes. Folders are no files.
/// - Ownership: owns the open file, closes it when it dies.
/// - Errors: Open tells by its result; later failures raise "Unable to read file %ls", "Unable to write file
///   %ls", with the file and the system's reason.
class ZTCORE_API ztFile {
 public:
  /// ForReadingRegular takes files of bytes only, no device and no pipe, which could be waited for or read
  /// without end.
  enum Mode { ForReading = 1, ForWriting = 2, ForAppending = 3, ForReadingRegular = 4 };
  /// How the text of a file is encoded.
  enum class Encoding { Unknown = 0, Utf16 = 1, Bytes = 2, Utf8 = 3, Utf16BigEndian = 4 };

  ztFile() noexcept = default;
  ztFile(const ztFile&) = delete;
  ztFile& operator=(const ztFile&) = delete;
  ~ztFile();

  /// False when there is no such file or it cannot be had; what was open before is closed.
  /// \param encoding,share accepted for callers that say them: bytes are bytes, and files are always
  /// shared.
  bool Open(const wchar_t* name, int mode, Encoding encoding = Encoding::Bytes, bool share = true);
  /// What to throw where Open just said false: with the name as the file and the system's
  /// reason. \param pattern has at most one conversion, for the name.
  static tovin::Exception OpenFailure(const wchar_t* pattern, const wchar_t* name);
  void Close() noexcept;
  bool IsOpen() const noexcept { return handle_ != none; }

  /// The count read, fewer than asked for only at the end, 0 there.
  unsigned Read(unsigned char* buffer, unsigned size);
  void Write(const void* bytes, size_t count);
  /// From the start.
  void Seek(int64_t position);
  /// Of the whole file as it is now.
  int64_t GetLength() const;

  /// Whether the file can be opened in a mode; a folder cannot, and writing is tried without changing the
  /// file.
  static bool CanOpen(const wchar_t* name, int mode);

 private:
  static constexpr intptr_t none = -1;

  [[noreturn]] void fail(const wchar_t* pattern) const;

  intptr_t handle_ = none;
  tovin::WideString name_;
};
