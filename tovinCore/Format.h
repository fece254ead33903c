#pragma once

#include <concepts>
#include <span>
#include <string>
#include <type_traits>

#include "tovinCore/Export.h"

namespace tovin {

/// One argument of a printf-style message, kept with its type so that a wrong conversion cannot read foreign
/// memory.
///
/// - Ownership: borrows texts until format() returns.
class FormatArg {
 public:
  enum class Kind { signedNumber, unsignedNumber, real, wide, narrow };

  FormatArg(const wchar_t* text) : kind_(Kind::wide) { value_.wide = text; }
  FormatArg(const char* text) : kind_(Kind::narrow) { value_.narrow = text; }
  template <std::floating_point T>
  FormatArg(T number) : kind_(Kind::real) {
    value_.real = static_cast<double>(number);
  }
  template <std::signed_integral T>
  FormatArg(T number) : kind_(Kind::signedNumber) {
    value_.number = number;
  }
  template <std::unsigned_integral T>
  FormatArg(T number) : kind_(Kind::unsignedNumber) {
    value_.bits = number;
  }
  /// Any string class that converts to a pointer to its text.
  template <class T>
  requires(std::is_class_v<T>&& std::convertible_to<const T&, const wchar_t*>) FormatArg(const T& text)
      : FormatArg(static_cast<const wchar_t*>(text)) {}
  template <class T>
  requires(std::is_class_v<T>&& std::convertible_to<const T&, const char*>) FormatArg(const T& text)
      : FormatArg(static_cast<const char*>(text)) {}
  FormatArg(const std::wstring& text) : FormatArg(text.c_str()) {}
  FormatArg(const std::string& text) : FormatArg(text.c_str()) {}

  Kind kind() const { return kind_; }
  long long number() const { return value_.number; }
  unsigned long long bits() const { return value_.bits; }
  double real() const { return value_.real; }
  const wchar_t* wide() const { return value_.wide; }
  const char* narrow() const { return value_.narrow; }

 private:
  Kind kind_;
  union {
    long long number;
    unsigned long long bits;
    double real;
    const wchar_t* wide;
    const char* narrow;
  } value_;
};

/// Formats like printf, never looking at the process locale.
///
///     format(L"Property %ls already exists\n", {name})
///
/// - Conversions: %d %i %u %x %X %c %s %ls %hs %f %e %g %%, with flags "-0+ #", width and precision; length
///   modifiers are accepted and passed over, because every argument brings its own width.
/// - A null text prints as "(null)"; a 32-bit %x of a negative number prints 32 bits; reals print `nan` and
///   `inf`.
/// - Narrow texts are UTF-8. An argument that is missing or of another kind prints as "(?)".
TOVINCORE_API std::wstring format(const wchar_t* pattern, std::span<const FormatArg> args);

template <class... Args>
std::wstring format(const wchar_t* pattern, const Args&... args) {
  const FormatArg list[] = {FormatArg(args)..., FormatArg(0)};
  return format(pattern, std::span<const FormatArg>(list, sizeof...(Args)));
}

}  // namespace tovin
