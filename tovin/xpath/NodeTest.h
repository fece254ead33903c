// Which nodes a step takes, by their kind and name.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace tovin::xpath {

struct NodeTest {
  enum class Kind : uint8_t {
    node,    // node()
    any,     // *
    prefix,  // p:*
    name,
    nothing,  // text(), comment(), processing-instruction(): the tree has none
  };
  Kind kind = Kind::node;
  std::wstring name;  // of prefix and name

  /// Names compare with A to Z folded, as they are written, prefix and all; a space is met as
  /// "__white_space__".
  bool matchesName(const wchar_t* candidate) const noexcept;
};

/// Answers of one test by the address of the name: names live as long as their nodes, and few differ.
class NameMemory {
 public:
  bool matches(const NodeTest& test, const wchar_t* name) noexcept {
    if (test.kind <= NodeTest::Kind::any) return true;
    Entry& entry = entries_[(reinterpret_cast<uintptr_t>(name) >> 4) % entryCount];
    if (!entry.known || entry.name != name) entry = {name, true, test.matchesName(name)};
    return entry.answer;
  }

 private:
  static constexpr size_t entryCount = 8;
  struct Entry {
    const wchar_t* name = nullptr;
    bool known = false;
    bool answer = false;
  };
  Entry entries_[entryCount];
};

/// What follows the first ':' of a name, or all of it; empty for null.
std::wstring_view localName(const wchar_t* name) noexcept;

}  // namespace tovin::xpath
