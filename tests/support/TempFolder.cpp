#include "tests/support/TempFolder.h"

#include <cstdlib>
#include <fstream>
#include <iterator>
#include <random>

namespace testsupport {

TempFolder::TempFolder() {
  std::random_device random;
  do folder_ = std::filesystem::temp_directory_path() / ("ztb-test-" + std::to_string(random()));
  while (!std::filesystem::create_directory(folder_));
}

TempFolder::~TempFolder() {
  std::error_code ignored;
  std::filesystem::remove_all(folder_, ignored);
}

std::string TempFolder::write(const std::string& name, const std::string& bytes) const {
  const std::filesystem::path file = folder_ / pathOf(name);
  std::filesystem::create_directories(file.parent_path());
  std::ofstream(file, std::ios::binary) << bytes;
  return file.string();
}

void TempFolder::append(const std::string& name, const std::string& bytes) const {
  std::ofstream(folder_ / pathOf(name), std::ios::binary | std::ios::app) << bytes;
}

std::string TempFolder::read(const std::string& name) const {
  std::ifstream in(folder_ / pathOf(name), std::ios::binary);
  return std::string(std::istreambuf_iterator<char>(in), {});
}

ScopedVariable::ScopedVariable(const char* name, const char* value) : name_(name) {
  if (const char* before = std::getenv(name)) before_ = before;
  setVariable(name, value);
}

ScopedVariable::~ScopedVariable() { setVariable(name_, before_ ? before_->c_str() : nullptr); }

}  // namespace testsupport
