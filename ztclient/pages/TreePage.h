#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

/// A tree as a page: its branches are made when they are opened, from data that stand in the page, and its
/// names and values can be searched.
///
/// - Limits: the first million nodes.
class TreePage {
 public:
  struct Property {
    std::string name;
    std::string type;
    std::string value;
  };

  explicit TreePage(std::string title) : title_(std::move(title)) {}

  /// One more node, in document order. \param depth 0 for the root.
  void add(size_t depth, std::string_view name, const std::vector<Property>& properties);
  std::string text();

 private:
  // A node whose count of those below it is not known yet.
  struct Open {
    size_t depth;
    size_t index;
  };

  std::string title_;
  std::vector<std::string> nodes_;
  std::vector<size_t> below_;
  std::vector<Open> open_;
  std::string outline_;
  size_t leftOut_ = 0;
};
