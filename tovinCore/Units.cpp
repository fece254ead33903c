#include "tovinCore/Units.h"

#include <algorithm>
#include <chrono>
#include <random>

namespace tovin {
namespace {

// Reads a text unit by unit, splitting elements above U+FFFF.
class UnitCursor {
 public:
  explicit UnitCursor(std::wstring_view text) : text_(text) {}

  // The next unit, or -1 at the end.
  int next() {
    if (pending_) {
      const int unit = pending_;
      pending_ = 0;
      return unit;
    }
    if (at_ == text_.size()) return -1;
    int first = -1;
    forUnits(static_cast<uint32_t>(text_[at_++]),
             [&](char16_t unit) { (first < 0 ? first : pending_) = unit; });
    return first;
  }

 private:
  std::wstring_view text_;
  size_t at_ = 0;
  int pending_ = 0;
};

bool isPlain(uint32_t element) { return element <= 0xFFFF; }

bool equalFoldedUnits(std::wstring_view a, std::wstring_view b) {
  UnitCursor left(a), right(b);
  for (;;) {
    const int x = left.next(), y = right.next();
    if (x < 0 || y < 0) return x == y;
    if (foldAscii(static_cast<uint32_t>(x)) != foldAscii(static_cast<uint32_t>(y))) return false;
  }
}

constexpr auto folded = [](uint32_t unit) { return foldAscii(unit); };
constexpr auto asItIs = [](uint32_t unit) { return unit; };

struct HashKey {
  uint64_t start, factor;

  static uint64_t draw() noexcept try {
    std::random_device source;
    return uint64_t{source()} << 32 | source();
  } catch (...) {
    // No randomness to be had: when, and where the stack lies, is not known to those who prepare texts
    // either.
    const auto now = std::chrono::steady_clock::now().time_since_epoch().count();
    return (static_cast<uint64_t>(now) ^ reinterpret_cast<uintptr_t>(&now)) * 0x9E3779B97F4A7C15u;
  }
  HashKey() noexcept : start(draw()), factor(draw() | 1) {}
};

template <class Fold>
uint32_t hashUnderKey(std::wstring_view text, Fold fold) {
  static const HashKey key;
  uint64_t hash = key.start;
  const auto mix = [&](uint32_t unit) {
    hash = (hash ^ unit) * key.factor;
    hash ^= hash >> 32;
  };
  for (wchar_t c : text) {
    if (isPlain(c))
      mix(fold(static_cast<uint32_t>(c)));
    else
      forUnits(static_cast<uint32_t>(c), mix);
  }
  return static_cast<uint32_t>(hash);
}

template <class Fold>
uint32_t hashUnits(const wchar_t* text, Fold fold) {
  uint32_t hash = 0;
  if (!text) return hash;
  while (const auto element = static_cast<uint32_t>(*text++)) {
    if (isPlain(element))
      hash = hash * 31 + fold(element);
    else
      forUnits(element, [&](char16_t unit) { hash = hash * 31 + unit; });
  }
  return hash;
}

}  // namespace

bool equalFolded(const wchar_t* a, const wchar_t* b) noexcept {
  if (a == b) return true;
  if (!a || !b) return false;
  for (;; ++a, ++b) {
    if (*a != *b && foldAscii(*a) != foldAscii(*b)) break;
    if (!*a) return true;
  }
  // Only an element that stands for two units can still be equal to something else.
  if (isPlain(*a) && isPlain(*b)) return false;
  return equalFoldedUnits(a, b);
}

bool equalFolded(std::wstring_view a, std::wstring_view b) noexcept {
  const size_t common = std::min(a.size(), b.size());
  size_t same = 0;
  while (same < common && (a[same] == b[same] || foldAscii(a[same]) == foldAscii(b[same]))) ++same;
  if (same == common) return a.size() == b.size();
  if (isPlain(a[same]) && isPlain(b[same])) return false;
  a.remove_prefix(same);
  b.remove_prefix(same);
  return equalFoldedUnits(a, b);
}

bool equalExact(const wchar_t* a, const wchar_t* b) noexcept {
  if (a == b) return true;
  return a && b && compareUnits(a, b) == 0;
}

int compareUnits(std::wstring_view a, std::wstring_view b) noexcept {
  const size_t common = std::min(a.size(), b.size());
  size_t same = 0;
  while (same < common && a[same] == b[same]) ++same;
  a.remove_prefix(same);
  b.remove_prefix(same);
  UnitCursor left(a), right(b);
  for (;;) {
    const int x = left.next(), y = right.next();
    if (x != y || x < 0) return x - y;
  }
}

uint32_t hashFolded(const wchar_t* text) noexcept { return hashUnits(text, folded); }

uint32_t hashExact(const wchar_t* text) noexcept { return hashUnits(text, asItIs); }

uint32_t hashKeyed(std::wstring_view text) noexcept { return hashUnderKey(text, asItIs); }

uint32_t hashKeyedFolded(std::wstring_view text) noexcept { return hashUnderKey(text, folded); }

}  // namespace tovin
