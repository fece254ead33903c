#pragma once

#include <ostream>
#include <streambuf>
#include <string>
#include <string_view>
#include <vector>

/// Standard output as long as one lives: std::cout writes through it. Files and pipes get the bytes as they
/// are; on a terminal what is written is escaped, but for what paint() lets pass. A write that fails leaves
/// its reason.
class Output : public std::streambuf {
 public:
  Output();
  Output(const Output&) = delete;
  Output& operator=(const Output&) = delete;
  ~Output() override;

  /// A sequence for the terminal. Nothing where `out` is no such output.
  static void paint(std::ostream& out, std::string_view sequence);
  /// Sends all on its way; false when anything was lost.
  bool finish();
  /// Why it was lost, in the system's words.
  const std::wstring& failure() const noexcept { return failure_; }

 protected:
  int_type overflow(int_type c) override;
  int sync() override;

 private:
  bool send(std::string_view bytes);
  bool drain(bool whole);

  std::streambuf* before_;
  bool escapes_;
  std::wstring failure_;
  std::vector<char> room_;
};
