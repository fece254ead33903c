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

/// Objects from make(), which act() changes and look() shows.
template <class Make, class Act, class Look>
void sweep(const Row& row, Make make, Act act, Look look) {
  sweepScenes(row, [=] {
    auto objects = std::make_shared<decltype(make())>(make());
    return Scene{[=] { act(*objects); }, [=] { return look(*objects); }};
  });
}

/// An operation with nothing but a result, whose text act() returns.
template <class Act>
void sweepResult(const Row& row, Act act) {
  sweep(
      row, [] { return std::string(); }, [=](std::string& result) { result = act(); },
      [](const std::string& result) { return result; });
}

}  // namespace faults
