#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

/// A pattern of file names.
///
///     Glob("*.txt").matches("a/b.txt");    // of the last name, in any folder
///     Glob("a/**/b").matches("a/x/y/b");   // with a '/' of the whole path
///
/// - Shape: `*` is any text without '/', `**` any text, "**/" any number of folders and none too, `?` one
///   character, `[a-z]` and `[!a]` one of a set; `\` takes away the meaning of what follows. A bracket that
///   is never closed is itself. Bytes that are no UTF-8 are characters of their own.
/// - Time: the product of both lengths at most.
class Glob {
 public:
  explicit Glob(std::string_view pattern);

  bool matches(std::string_view path) const;

 private:
  struct Token {
    // `anyFolders` may be passed over together with `folder`, which follows it.
    enum class Kind { one, any, set, stretch, deepStretch, anyFolders, folder };
    struct Range {
      uint32_t first, last;
    };

    bool takes(uint32_t c) const;

    Kind kind;
    uint32_t character = 0;
    bool negated = false;
    std::vector<Range> ranges = {};
  };

  void addStars(const std::vector<uint32_t>& pattern, size_t& at);
  bool addSet(const std::vector<uint32_t>& pattern, size_t& at);
  void passOver(std::vector<char>& states) const;

  std::vector<Token> tokens_;
  bool wholePath_ = false;
};

/// Which files of a tree are wanted: all, or those that a pattern of `include` matches; none that one of
/// `exclude` does, nor what lies in a folder that one does.
struct FileFilter {
  std::vector<Glob> include = {};
  std::vector<Glob> exclude = {};

  bool wantsFile(std::string_view path) const;
  bool wantsFolder(std::string_view path) const;
};
