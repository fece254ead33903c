#include "ztcore/ztFile.h"

#include "tovinCore/platform/Files.h"

namespace platform = tovin::platform;

namespace {

platform::OpenMode modeOf(int mode) {
  switch (mode) {
    case ztFile::ForWriting:
      return platform::OpenMode::write;
    case ztFile::ForAppending:
      return platform::OpenMode::append;
    case ztFile::ForReadingRegular:
      return platform::OpenMode::readRegular;
    default:
      return platform::OpenMode::read;
  }
}

}  // namespace

ztFile::~ztFile() { Close(); }

bool ztFile::Open(const wchar_t* name, int mode, Encoding, bool) {
  Close();
  if (!name) return false;
  handle_ = platform::openFile(name, modeOf(mode));
  name_ = name;
  return IsOpen();
}

tovin::Exception ztFile::OpenFailure(const wchar_t* pattern, const wchar_t* name) {
  const bool mayPass = platform::lastFailureMayPass();
  const std::wstring reason = platform::lastFailure();
  tovin::Exception failure(pattern, name);
  failure.setFile(name ? name : L"").setReason(reason).setMayPass(mayPass);
  return failure;
}

void ztFile::Close() noexcept {
  if (IsOpen()) platform::closeFile(handle_);
  handle_ = none;
}

void ztFile::fail(const wchar_t* pattern) const { throw OpenFailure(pattern, name_); }

unsigned ztFile::Read(unsigned char* buffer, unsigned size) {
  unsigned done = 0;
  while (done < size) {
    const int64_t got = platform::readFile(handle_, buffer + done, size - done);
    if (got < 0) fail(L"Unable to read file %ls");
    if (got == 0) break;
    done += static_cast<unsigned>(got);
  }
  return done;
}

void ztFile::Write(const void* bytes, size_t count) {
  const auto* from = static_cast<const unsigned char*>(bytes);
  while (count > 0) {
    const int64_t put = platform::writeFile(handle_, from, count);
    if (put <= 0) fail(L"Unable to write file %ls");
    from += put;
    count -= static_cast<size_t>(put);
  }
}

void ztFile::Seek(int64_t position) {
  if (!platform::seekFile(handle_, position)) fail(L"Unable to read file %ls");
}

int64_t ztFile::GetLength() const {
  const int64_t length = platform::fileLength(handle_);
  if (length < 0) fail(L"Unable to read file %ls");
  return length;
}

bool ztFile::CanOpen(const wchar_t* name, int mode) {
  if (!name) return false;
  // Opening for writing would cut the file, so it is tried as for appending.
  const bool writing = mode == ForWriting || mode == ForAppending;
  const intptr_t handle = platform::openFile(name, writing ? platform::OpenMode::probe : modeOf(mode));
  if (handle != none) platform::closeFile(handle);
  return handle != none;
}
