#pragma once

#include <string>

#include "tests/support/Bytes.h"
#include "tests/support/TempFolder.h"
#include "tovinCore/Exception.h"
#include "tovinCore/Utf8.h"
#include "ztbaseclient/tools/CDiffFiles.h"

// Comparisons of two files of a test's own, told as text: "equal", or the kind and the message of what was
// raised, with FILE1 and FILE2 for the files' names.
class DiffOutcome : public testsupport::FolderTest {
 protected:
  static std::string with(std::string text, const std::string& name, const std::string& shown) {
    for (size_t at = 0; (at = text.find(name, at)) != std::string::npos; at += shown.size()) {
      text.replace(at, name.size(), shown);
    }
    return text;
  }

  template <class Compare>
  std::string outcomeOf(Compare&& compare) const {
    const auto told = [&](const char* kind, const tovin::Exception& e) {
      const std::string text = tovin::wideToUtf8(e.getMessage());
      return kind + with(with(text, folder_.path("1"), "FILE1"), folder_.path("2"), "FILE2");
    };
    try {
      return compare() ? "equal" : "false";
    } catch (const tovin::DiffErrorException& e) {
      return told("error: ", e);
    } catch (const tovin::DiffWarningException& e) {
      return told("warning: ", e);
    } catch (const tovin::Exception& e) {
      return told("trouble: ", e);
    }
  }

  std::string compare(const std::string& text1, const std::string& text2, int tolerance) const {
    const std::wstring file1 = file("1", text1), file2 = file("2", text2);
    return outcomeOf([&] { return CDiffFiles().CompareFiles(file1.c_str(), file2.c_str(), tolerance); });
  }
};
