#include "tovinCore/Exception.h"

#include <mutex>
#include <utility>

#include "tovinCore/Utf8.h"
#include "tovinCore/platform/Console.h"

namespace tovin {

struct Exception::State {
  std::wstring message;
  std::string text;
  std::vector<CatchEntry> trail;
  std::wstring file;
  std::wstring reason;
  std::wstring origin;
  int64_t line = 0;
  int64_t column = 0;
  bool mayPass = false;

  void render() {
    text = wideToUtf8(message);
    for (const CatchEntry& entry : trail)
      (text += "\n  in ") += std::string(entry.className) + "::" + entry.method;
  }
};

namespace {

struct Warnings {
  std::mutex lock;
  Exception::WarningHandler handler;
};

// Never destroyed: a static object's destructor may still warn.
Warnings& warnings() {
  static Warnings& only = *new Warnings;
  return only;
}

}  // namespace

Exception::Exception() : Exception(L"") {}

Exception::Exception(const wchar_t* text) : state_(std::make_shared<State>()) {
  state_->message = text ? text : L"";
  state_->render();
}

Exception::Exception(const char* text) : Exception(widened(text).c_str()) {}

Exception::~Exception() = default;

std::wstring Exception::widened(const char* text) { return text ? utf8ToWide(text) : std::wstring(); }

const wchar_t* Exception::getMessage() const noexcept { return state_->message.c_str(); }

const std::vector<CatchEntry>& Exception::getTrail() const noexcept { return state_->trail; }

const char* Exception::what() const noexcept { return state_->text.c_str(); }

const std::wstring& Exception::getFile() const noexcept { return state_->file; }
int64_t Exception::getLine() const noexcept { return state_->line; }
int64_t Exception::getColumn() const noexcept { return state_->column; }
const std::wstring& Exception::getReason() const noexcept { return state_->reason; }
const std::wstring& Exception::getOrigin() const noexcept { return state_->origin; }

Exception& Exception::setFile(const std::wstring& file) {
  editable().file = file;
  return *this;
}

Exception& Exception::setPlace(int64_t line, int64_t column) {
  State& state = editable();
  state.line = line;
  state.column = column;
  return *this;
}

Exception& Exception::setReason(const std::wstring& reason) {
  editable().reason = reason;
  return *this;
}

bool Exception::mayPass() const noexcept { return state_->mayPass; }

Exception& Exception::setMayPass(bool mayPass) {
  editable().mayPass = mayPass;
  return *this;
}

Exception& Exception::setOrigin(const std::wstring& origin) {
  editable().origin = origin;
  return *this;
}

Exception::State& Exception::editable() {
  if (state_.use_count() > 1) state_ = std::make_shared<State>(*state_);
  return *state_;
}

void Exception::appendMessage(CatchClass catchClass, const char* className, const char* method) {
  State& state = editable();
  state.trail.push_back({catchClass, className, method});
  state.render();
}

void Exception::appendMessage(const std::wstring& line) {
  State& state = editable();
  if (!state.message.empty()) state.message += L'\n';
  state.message += line;
  state.render();
}

void Exception::clear() {
  State& state = editable();
  state = State();
}

void Exception::raiseWarning(const std::wstring& message) {
  WarningHandler handler;
  {
    const std::lock_guard<std::mutex> held(warnings().lock);
    handler = warnings().handler;
  }
  if (handler) return handler(message.c_str());
  platform::printErrorLine("warning: " + wideToUtf8(message));
}

Exception::WarningHandler Exception::setWarningHandler(WarningHandler handler) {
  const std::lock_guard<std::mutex> held(warnings().lock);
  return std::exchange(warnings().handler, std::move(handler));
}

InvalidIndexException::InvalidIndexException(long long index, long long last)
    : Exception(L"Invalid index %d, the last valid index is %d", index, last), index_(index), last_(last) {}
InvalidIndexException::~InvalidIndexException() = default;

MemoryException::MemoryException(long long size, long long count)
    : Exception(L"Out of memory allocating %d elements of %d bytes", count, size) {}
MemoryException::~MemoryException() = default;

PropertyAccessException::~PropertyAccessException() = default;
DiffErrorException::~DiffErrorException() = default;
DiffWarningException::~DiffWarningException() = default;

}  // namespace tovin
