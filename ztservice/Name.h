#pragma once

#include <compare>
#include <cstddef>
#include <functional>
#include <string_view>

namespace ztservice {

/// The name of a component: its namespace and its local name, UTF-8, exact in case and all. The texts of the
/// names that a service gives live as long as the service.
struct Name {
  std::string_view space;
  std::string_view local;

  bool empty() const noexcept { return local.empty(); }
  /// By namespace, then local name, by code points: the order of bytes in UTF-8.
  auto operator<=>(const Name&) const = default;
  // Local names differ sooner.
  bool operator==(const Name& other) const noexcept { return local == other.local && space == other.space; }
};

struct NameHash {
  size_t operator()(const Name& name) const noexcept {
    const std::hash<std::string_view> hash;
    return hash(name.space) * 31 + hash(name.local);
  }
};

}  // namespace ztservice
