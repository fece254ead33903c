#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

// A settings file: sections in brackets, name=value lines in them, comments behind '#' or ';'. Names fold
// ASCII case; the first of two equal ones counts. Blanks around names and values do not, unless a value
// stands in double quotes. Lines that mean nothing are passed over and written back.
class IniText {
 public:
  // The empty text for a file that is not there. Raises "Unable to read settings file %ls" for one that
  // cannot be read or is none of bytes, "Settings file %ls is longer than %d bytes".
  static IniText load(const std::wstring& file);
  // Raises "Unable to write settings file %ls", the file being as it was.
  void save(const std::wstring& file) const;

  // The section without a name is what stands before the first one.
  bool hasSection(std::wstring_view section) const;
  std::optional<std::wstring> find(std::wstring_view section, std::wstring_view name) const;
  // Raises an exception for names and values that a line cannot hold.
  void set(std::wstring_view section, std::wstring_view name, std::wstring_view value);

 private:
  struct Place {
    size_t end = 0;              // behind the section's last line that says anything
    bool found = false;          // the section is there
    std::optional<size_t> line;  // of the name
  };

  Place locate(std::wstring_view section, std::wstring_view name) const;

  std::vector<std::string> lines_;
};
