#pragma once

#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <string>
#include <utility>

#include "tests/support/Bytes.h"

/// Runs operations again and again, each time with another allocation that fails: alone, or with all that
/// follow.
namespace faults {

/// What may be seen of an object when an operation on it failed.
enum class After {
  asBefore,
  /// As before, or as `empty` says.
  asBeforeOr,
  /// A whole object, of which its header promises no more.
  whole
};

struct Row {
  const char* name;
  After after = After::asBefore;
  std::string empty = {};
};

struct Scene {
  std::function<void()> act;
  std::function<std::string()> look;
};

/// \param scene makes everything anew, and keeps it in what its functions hold.
void sweepScenes(const Row& row, const std::function<Scene()>& scene);

/// Objects from make(), which look() shows and act() changes.
template <class Make, class Look, class Act>
void sweep(const Row& row, Make make, Look look, Act act) {
  sweepScenes(row, [=] {
    auto objects = std::make_shared<decltype(make())>(make());
    return Scene{[=] { act(*objects); }, [=] { return look(*objects); }};
  });
}

/// An operation with nothing but a result, whose text act() returns.
template <class Act>
void sweepResult(const Row& row, Act act) {
  const auto look = [](const std::string& result) { return result; };
  sweep(
      row, [] { return std::string(); }, look, [=](std::string& result) { result = act(); });
}

}  // namespace faults
