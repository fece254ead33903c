#pragma once

#include <gtest/gtest.h>

#include <filesystem>
#include <optional>
#include <string>

#include "tests/support/System.h"
#include "tovinCore/Utf8.h"

namespace testsupport {

/// A fresh folder that goes with all it holds.
class TempFolder {
 public:
  TempFolder();
  TempFolder(const TempFolder&) = delete;
  TempFolder& operator=(const TempFolder&) = delete;
  ~TempFolder();

  std::string path() const { return folder_.string(); }
  std::string path(const std::string& name) const { return (folder_ / pathOf(name)).string(); }
  /// Writes a file, with the folders it lies in, and returns its path.
  std::string write(const std::string& name, const std::string& bytes) const;
  void append(const std::string& name, const std::string& bytes) const;
  std::string read(const std::string& name) const;

 private:
  std::filesystem::path folder_;
};

/// A test with such a folder, in which it names files as the library does.
class FolderTest : public testing::Test {
 protected:
  std::wstring path(const std::string& name) const { return tovin::utf8ToWide(folder_.path(name)); }
  /// Writes a file and returns its path.
  std::wstring file(const std::string& name, const std::string& bytes) const {
    return tovin::utf8ToWide(folder_.write(name, bytes));
  }

  TempFolder folder_;
};

/// Sets an environment variable, or takes it away for null, until it dies.
class ScopedVariable {
 public:
  ScopedVariable(const char* name, const char* value);
  ScopedVariable(const char* name, const std::string& value) : ScopedVariable(name, value.c_str()) {}
  ScopedVariable(const ScopedVariable&) = delete;
  ScopedVariable& operator=(const ScopedVariable&) = delete;
  ~ScopedVariable();

 private:
  const char* name_;
  std::optional<std::string> before_;
};

/// Settings of the test's own, none at first, until it dies.
class OwnSettings {
 public:
  OwnSettings() { enterOwnRegistry(); }
  OwnSettings(const OwnSettings&) = delete;
  OwnSettings& operator=(const OwnSettings&) = delete;
  ~OwnSettings() { leaveOwnRegistry(); }

  /// Where those lie that are files.
  const TempFolder& folder() const { return folder_; }

 private:
  TempFolder folder_;
  ScopedVariable variable_{settingsVariable, folder_.path()};
};

}  // namespace testsupport
