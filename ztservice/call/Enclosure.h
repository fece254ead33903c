#pragma once

#include <cstdint>
#include <cstdio>
#include <random>
#include <string>
#include <vector>

#include "ztservice/call/Multipart.h"

namespace ztservice::call {

// What goes beside a message, as its values are written.
class Enclosure {
 public:
  Enclosure(bool allowsFiles, bool isMtom) : allowsFiles_(allowsFiles), isMtom_(isMtom) {}

  bool allowsFiles() const noexcept { return allowsFiles_; }
  bool isMtom() const noexcept { return isMtom_; }
  // \param name what its id begins with: of a part of the message "NAME=" (WS-I Attachments
  // Profile 1.0, 3.8). \return its id.
  const std::string& add(MimePart part, const std::string& name = {}) {
    part.id = name + std::to_string(parts_.size() + 1) + '.' + boundary() + "@attachment";
    parts_.push_back(std::move(part));
    return parts_.back().id;
  }

  // Drawn, so that no content can have prepared for it.
  const std::string& boundary() {
    if (!boundary_.empty()) return boundary_;
    std::random_device source;
    for (int i = 0; i < 4; ++i) {
      char digits[9];
      std::snprintf(digits, sizeof digits, "%08x", static_cast<unsigned>(source()));
      boundary_ += digits;
    }
    return boundary_;
  }
  std::vector<MimePart>& parts() noexcept { return parts_; }

 private:
  bool allowsFiles_;
  bool isMtom_;
  std::string boundary_;
  std::vector<MimePart> parts_;
};

}  // namespace ztservice::call
