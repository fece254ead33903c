#include "ztclient/comparison/Glob.h"

#include <gtest/gtest.h>

namespace {

struct Row {
  std::string pattern;
  std::string matches;
  std::string not1;
  std::string not2;
};

TEST(Glob, MatchesNamesAndPaths) {
  const Row rows[] = {{"*.txt", "a/b/c.txt", "a/b/c.txt~", "txt"},
                      {"a*b*c", "aXbYbZc", "aXcYb", "ab"},
                      {"?", "€", "ab", ""},
                      {"??", "x\xFF", "x", "x\xC3\xA4z"},
                      {"[a-cx]1", "b1", "d1", "-1"},
                      {"[!a-c]", "d", "b", "dd"},
                      {"[]a]", "]", "b", "[]a]"},
                      {"[a-]", "-", "b", ""},
                      {"[ab", "[ab", "a", "b"},
                      {"\\*\\[", "*[", "a[", "\\*["},
                      {"\\", "\\", "", "a"},
                      {"a/*", "a/b", "a/b/c", "x/a/b"},
                      {"a/**", "a/b/c", "b/a/b", "a"},
                      {"**/b", "b", "xb", "a/bx"},
                      {"a/**/b", "a/b", "a/xb", "ab"},
                      {"a/**/b", "a/x/y/b", "a/x/y/bb", "x/a/b"},
                      {"**/x/**/y", "a/x/b/c/y", "a/x", "x"},
                      {"[!a]/b", "c/b", "a/b", "/b/b"},
                      {"a/", "a/", "a", "b/"}};
  for (const Row& row : rows) {
    const Glob glob(row.pattern);
    EXPECT_TRUE(glob.matches(row.matches)) << row.pattern << ' ' << row.matches;
    EXPECT_FALSE(glob.matches(row.not1)) << row.pattern << ' ' << row.not1;
    EXPECT_FALSE(glob.matches(row.not2)) << row.pattern << ' ' << row.not2;
  }
}

TEST(Glob, TakesNoLongerForMoreStars) {
  std::string pattern;
  for (int i = 0; i < 200; ++i) pattern += "*a**/";
  EXPECT_FALSE(Glob(pattern + "b").matches(std::string(2000, 'a')));
}

}  // namespace
