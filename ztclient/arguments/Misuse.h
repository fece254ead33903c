#pragma once

#include <stdexcept>

/// Says that what was given cannot be meant, where the parser of command lines cannot know. Its text names
/// the option; where to find help is added to it.
class Misuse : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};
