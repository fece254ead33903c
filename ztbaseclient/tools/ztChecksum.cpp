#include "ztbaseclient/tools/ztChecksum.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <numeric>
#include <string>
#include <string_view>
#include <utility>

#include "tovinCore/Guard.h"
#include "tovinCore/Units.h"

using tovin::guarded;

namespace {

using Table = std::array<unsigned char, 256>;

// The deployment's key: client and server must share it.
constexpr uint32_t seed[] = {402117853, 1593022417, 918264503};

constexpr unsigned firstCount = 45;
constexpr unsigned digestBytes = 16;

// A digest byte folds every 16th absorbed byte into x = (byte − k + x + 16)·(k + 1), k counting from 0. Among
// any 36 successive factors at least 34 twos are found, so the 32 bits of x forget what it was 36 steps ago:
// only the last 36 steps of each digest byte need to be taken, and only their bytes to be kept.
constexpr uint64_t countedSteps = 36;
constexpr size_t keptBytes = countedSteps * digestBytes;
constexpr size_t heldBytes = 64 * keptBytes;
constexpr size_t absorbedAtOnce = 256;

constexpr unsigned char lowByte(char16_t unit) { return static_cast<unsigned char>(unit & 0xFF); }

// One permutation of 0 to 255: the order of 256 numbers drawn from the generator, the earlier position first
// where two are equal.
Table drawTable(uint32_t& a, uint32_t& b, uint32_t c) {
  std::array<uint32_t, 256> drawn;
  for (uint32_t& value : drawn) {
    value = (a + b) ^ c;
    a = b;
    b = value;
  }
  Table table;
  std::iota(table.begin(), table.end(), static_cast<unsigned char>(0));
  std::stable_sort(table.begin(), table.end(),
                   [&](unsigned char i, unsigned char j) { return drawn[i] < drawn[j]; });
  return table;
}

struct Tables {
  Table characters, ends, digest;

  Tables() {
    uint32_t a = seed[0], b = seed[1];
    for (Table* table : {&ends, &characters, &digest}) *table = drawTable(a, b, seed[2]);
  }
};

const Tables& tables() {
  static const Tables only;
  return only;
}

}  // namespace

class ztChecksum::State {
 public:
  void absorb(const wchar_t* text);
  tovin::WideString digest() const;

 private:
  void put(std::string_view bytes);
  uint64_t length() const { return dropped_ + held_.size(); }
  uint32_t fold(uint32_t x, unsigned column) const;

  uint32_t sum_ = 0;
  unsigned count_ = firstCount;
  // The end of what was absorbed, and how many bytes came before it.
  std::string held_;
  uint64_t dropped_ = 0;
};

// The absorbed bytes of one text are themselves a zero-terminated text: the first 0 that a table gives ends
// them, while the sum goes on to the end.
void ztChecksum::State::absorb(const wchar_t* text) {
  const Table& characters = tables().characters;
  char bytes[absorbedAtOnce];
  size_t filled = 0;
  bool open = true;
  uint32_t sum = sum_, weight = 1;
  for (; text && *text; ++text) {
    tovin::forUnits(static_cast<uint32_t>(*text), [&](char16_t unit) {
      sum += weight * unit;
      weight = weight == 3 ? 1 : weight + 1;
      const unsigned char byte = characters[lowByte(unit)];
      open = open && byte != 0;
      bytes[filled] = static_cast<char>(byte);
      filled += open;
      if (filled == absorbedAtOnce) put({bytes, std::exchange(filled, 0)});
    });
  }
  sum_ = sum;
  count_ = (count_ + 1) % 256;
  bytes[filled] = static_cast<char>(tables().ends[count_]);
  put({bytes, filled + (open && bytes[filled] != 0)});
}

void ztChecksum::State::put(std::string_view bytes) {
  held_ += bytes;
  if (held_.size() <= heldBytes) return;
  dropped_ += held_.size() - keptBytes;
  held_.erase(0, held_.size() - keptBytes);
}

uint32_t ztChecksum::State::fold(uint32_t x, unsigned column) const {
  if (column >= length()) return x;
  const uint64_t steps = (length() - column - 1) / digestBytes + 1;
  for (uint64_t k = steps - std::min(steps, countedSteps); k < steps; ++k) {
    const auto byte = static_cast<unsigned char>(held_[column + digestBytes * k - dropped_]);
    const auto factor = static_cast<uint32_t>(k);
    x = (byte - factor + x + digestBytes) * (factor + 1);
  }
  return x;
}

tovin::WideString ztChecksum::State::digest() const {
  constexpr wchar_t digits[] = L"0123456789abcdef";
  wchar_t text[2 * digestBytes];
  uint32_t x = sum_;
  for (unsigned column = 0; column < digestBytes; ++column) {
    x = fold(tables().digest[x & 0xFF], column);
    text[2 * column] = digits[x >> 4 & 15];
    text[2 * column + 1] = digits[x & 15];
  }
  return tovin::WideString(text, 2 * digestBytes);
}

ztChecksum::ztChecksum() {
  guarded({ClassName, "ztChecksum"}, [&] { Reset(); });
}

ztChecksum::ztChecksum(const ztChecksum& other) {
  guarded({ClassName, "ztChecksum"}, [&] { *this = other; });
}

ztChecksum& ztChecksum::operator=(const ztChecksum& other) {
  return guarded({ClassName, "operator="}, [&]() -> ztChecksum& {
    if (this == &other) return *this;
    auto state = other.state_ ? std::make_unique<State>(*other.state_) : nullptr;
    digest_ = other.digest_;
    state_ = std::move(state);
    return *this;
  });
}

ztChecksum::ztChecksum(ztChecksum&& other) noexcept = default;
ztChecksum& ztChecksum::operator=(ztChecksum&& other) noexcept = default;
ztChecksum::~ztChecksum() = default;

void ztChecksum::Reset() {
  guarded({ClassName, "Reset"}, [&] {
    state_ = std::make_unique<State>();
    digest_.clear();
  });
}

void ztChecksum::AddString(const wchar_t* text) {
  guarded({ClassName, "AddString"}, [&] {
    if (!state_) state_ = std::make_unique<State>();
    state_->absorb(text);
  });
}

const wchar_t* ztChecksum::GetChecksum() const {
  return guarded({ClassName, "GetChecksum"}, [&]() -> const wchar_t* {
    if (!state_) return nullptr;
    digest_ = state_->digest();
    return digest_.c_str();
  });
}
