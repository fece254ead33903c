#pragma once

#include <cstdint>
#include <exception>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "tovinCore/Export.h"
#include "tovinCore/Format.h"

namespace tovin {

/// Who put an entry into an exception's trail: a guarded call on its way out, a guarded call that met a
/// foreign exception, or a destructor.
enum class CatchClass { framework, severe, destructor };

/// One entry of the trail. The names are literals of the throwing library.
struct CatchEntry {
  CatchClass catchClass;
  const char* className;
  const char* method;
};

/// The root of the exception family: a wide message and the trail of the guarded calls that it passed.
///
///     throw Exception(L"Property %ls already exists\n", name);
///     catch (const Exception& e) { print(e.getMessage()); for (const CatchEntry& at : e.getTrail()) … }
///
/// - Shape: message as wide text; what() is the message and the trail as UTF-8, a line an entry.
/// - Place: the file that was at fault, line and column in it (from 1), the system's reason and where the
///   file was asked for stand beside the message, which they are no part of; empty or 0 where nobody said
///   them.
/// - Ownership: copies share one state until one of them changes; copying never throws.
/// - Threads: one thread at a time, like any exception object; the warning handler may be set from any
///   thread.
class TOVINCORE_API Exception : public std::exception {
 public:
  Exception();
  /// The text as it stands: no conversions are looked for.
  explicit Exception(const wchar_t* text);
  explicit Exception(const char* text);
  template <class... Args>
  requires(sizeof...(Args) > 0) Exception(const wchar_t* pattern, const Args&... args)
      : Exception(format(pattern, args...).c_str()) {}
  template <class... Args>
  requires(sizeof...(Args) > 0) Exception(const char* pattern, const Args&... args)
      : Exception(format(widened(pattern).c_str(), args...).c_str()) {}
  ~Exception() override;

  const wchar_t* getMessage() const noexcept;
  /// Innermost call first.
  const std::vector<CatchEntry>& getTrail() const noexcept;
  const char* what() const noexcept override;

  /// As it was given to whoever opened it.
  const std::wstring& getFile() const noexcept;
  int64_t getLine() const noexcept;
  /// In bytes of the line.
  int64_t getColumn() const noexcept;
  const std::wstring& getReason() const noexcept;
  /// "included by a.wsdl:3:5".
  const std::wstring& getOrigin() const noexcept;
  /// Whether the same may succeed the next time: the system was short of something, or failed for once.
  bool mayPass() const noexcept;
  Exception& setFile(const std::wstring& file);
  Exception& setPlace(int64_t line, int64_t column);
  Exception& setReason(const std::wstring& reason);
  Exception& setOrigin(const std::wstring& origin);
  Exception& setMayPass(bool mayPass);

  /// Adds a guarded call to the trail. The names are kept as pointers.
  void appendMessage(CatchClass catchClass, const char* className, const char* method);
  /// Adds a line to the message.
  void appendMessage(const std::wstring& line);
  /// Empties message, place and trail.
  void clear();

  /// A finding that is no failure. Goes to the handler; the first one writes a line to standard error.
  template <class... Args>
  static void warn(const wchar_t* pattern, const Args&... args) {
    raiseWarning(sizeof...(Args) > 0 ? format(pattern, args...) : std::wstring(pattern));
  }
  using WarningHandler = std::function<void(const wchar_t* message)>;
  /// Replaces the handler and returns the one before; an empty one restores the first.
  static WarningHandler setWarningHandler(WarningHandler handler);

 private:
  struct State;
  static std::wstring widened(const char* text);
  static void raiseWarning(const std::wstring& message);
  State& editable();

  std::shared_ptr<State> state_;
};

/// An index beyond the end.
class TOVINCORE_API InvalidIndexException : public Exception {
 public:
  /// \param last the last valid index; -1 for an empty range.
  InvalidIndexException(long long index, long long last);
  ~InvalidIndexException() override;
  long long getIndex() const noexcept { return index_; }
  long long getLastIndex() const noexcept { return last_; }

 private:
  long long index_;
  long long last_;
};

/// Memory that could not be had.
class TOVINCORE_API MemoryException : public Exception {
 public:
  /// \param size bytes of one element; \param count how many were asked for.
  MemoryException(long long size, long long count);
  ~MemoryException() override;
};

/// A change of a read-only property.
class TOVINCORE_API PropertyAccessException : public Exception {
 public:
  using Exception::Exception;
  ~PropertyAccessException() override;
};

/// Two files differ.
class TOVINCORE_API DiffErrorException : public Exception {
 public:
  using Exception::Exception;
  ~DiffErrorException() override;
};

/// Two files differ within the tolerance.
class TOVINCORE_API DiffWarningException : public Exception {
 public:
  using Exception::Exception;
  ~DiffWarningException() override;
};

}  // namespace tovin
