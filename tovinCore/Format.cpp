#include "tovinCore/Format.h"

#include <algorithm>
#include <charconv>
#include <cmath>

#include "tovinCore/Utf8.h"

namespace tovin {
namespace {

struct Conversion {
  bool left = false, zero = false, plus = false, blank = false, alternate = false;
  size_t width = 0;
  int precision = -1;
  wchar_t type = 0;
};

// Wider fields than any message needs are cut, so that a pattern cannot ask for gigabytes.
constexpr int maxField = 4096;

int readNumber(const wchar_t*& at) {
  int number = 0;
  for (; *at >= L'0' && *at <= L'9'; ++at) number = std::min(maxField, number * 10 + (*at - L'0'));
  return number;
}

Conversion readConversion(const wchar_t*& at) {
  Conversion field;
  for (;; ++at) {
    if (*at == L'-')
      field.left = true;
    else if (*at == L'0')
      field.zero = true;
    else if (*at == L'+')
      field.plus = true;
    else if (*at == L' ')
      field.blank = true;
    else if (*at == L'#')
      field.alternate = true;
    else
      break;
  }
  field.width = static_cast<size_t>(readNumber(at));
  if (*at == L'.') field.precision = readNumber(++at);
  while (*at == L'l' || *at == L'h' || *at == L'z' || *at == L'j' || *at == L't') ++at;
  field.type = *at;
  if (*at) ++at;
  return field;
}

void pad(std::wstring& out, const Conversion& field, const std::wstring& sign, std::wstring body,
         bool number) {
  const size_t length = sign.size() + body.size();
  const size_t missing = field.width > length ? field.width - length : 0;
  if (field.left)
    out += sign + body + std::wstring(missing, L' ');
  else if (field.zero && number)
    out += sign + std::wstring(missing, L'0') + body;
  else
    out += std::wstring(missing, L' ') + sign + body;
}

std::wstring signOf(const Conversion& field, bool negative) {
  if (negative) return L"-";
  return field.plus ? L"+" : field.blank ? L" " : L"";
}

std::wstring widen(const char* first, const char* last) { return std::wstring(first, last); }

void putReal(std::wstring& out, const Conversion& field, double value) {
  const std::wstring sign = signOf(field, std::signbit(value) && !std::isnan(value));
  if (!std::isfinite(value)) return pad(out, field, sign, std::isnan(value) ? L"nan" : L"inf", false);
  char digits[512 + maxField];
  const auto style = field.type == L'f'   ? std::chars_format::fixed
                     : field.type == L'e' ? std::chars_format::scientific
                                          : std::chars_format::general;
  const int precision = field.precision < 0 ? 6 : field.precision;
  const auto end = std::to_chars(digits, digits + sizeof digits, std::fabs(value), style, precision).ptr;
  pad(out, field, sign, widen(digits, end), true);
}

void putNumber(std::wstring& out, const Conversion& field, const FormatArg& arg) {
  const bool isSigned = arg.kind() == FormatArg::Kind::signedNumber;
  const bool hexadecimal = field.type == L'x' || field.type == L'X';
  const bool negative = isSigned && !hexadecimal && field.type != L'u' && arg.number() < 0;
  unsigned long long magnitude = negative ? 0ULL - arg.bits() : arg.bits();
  // A negative 32-bit number arrives sign-extended; printed without a sign it has its own 32 bits.
  if (isSigned && !negative && arg.number() < 0 && arg.number() >= -0x80000000LL) magnitude &= 0xFFFFFFFFULL;
  char digits[24];
  const auto end = std::to_chars(digits, digits + sizeof digits, magnitude, hexadecimal ? 16 : 10).ptr;
  std::wstring body = widen(digits, end);
  if (field.type == L'X') {
    for (wchar_t& c : body) c = c >= L'a' ? static_cast<wchar_t>(c - 32) : c;
  }
  const size_t least = field.precision < 0 ? 0 : static_cast<size_t>(field.precision);
  if (body.size() < least) body.insert(0, least - body.size(), L'0');
  pad(out, field, signOf(field, negative) + (field.alternate && hexadecimal ? L"0x" : L""), body,
      field.precision < 0);
}

void putText(std::wstring& out, const Conversion& field, const FormatArg& arg) {
  std::wstring text = L"(null)";
  if (arg.kind() == FormatArg::Kind::wide && arg.wide()) text = arg.wide();
  if (arg.kind() == FormatArg::Kind::narrow && arg.narrow()) text = utf8ToWide(arg.narrow());
  if (field.precision >= 0) text.resize(std::min(text.size(), static_cast<size_t>(field.precision)));
  pad(out, field, L"", std::move(text), false);
}

void put(std::wstring& out, const Conversion& field, const FormatArg* arg) {
  using Kind = FormatArg::Kind;
  const bool text = arg && (arg->kind() == Kind::wide || arg->kind() == Kind::narrow);
  const bool real = arg && arg->kind() == Kind::real;
  const bool number = arg && !text && !real;
  switch (field.type) {
    case L's':
      if (text) return putText(out, field, *arg);
      break;
    case L'f':
    case L'e':
    case L'g':
      if (real) return putReal(out, field, arg->real());
      break;
    case L'c':
      if (number) return pad(out, field, L"", std::wstring(1, static_cast<wchar_t>(arg->number())), false);
      break;
    default:
      if (number) return putNumber(out, field, *arg);
      break;
  }
  out += L"(?)";
}

}  // namespace

std::wstring format(const wchar_t* pattern, std::span<const FormatArg> args) {
  std::wstring out;
  size_t next = 0;
  for (const wchar_t* at = pattern; at && *at;) {
    if (*at != L'%') {
      out += *at++;
    } else if (at[1] == L'%') {
      out += L'%';
      at += 2;
    } else {
      const Conversion field = readConversion(++at);
      put(out, field, next < args.size() ? &args[next] : nullptr);
      ++next;
    }
  }
  return out;
}

}  // namespace tovin
