#include "ztclient/comparison/Glob.h"

#include <algorithm>

#include "tovinCore/Utf8.h"

namespace {

// Bytes that are no UTF-8 stand behind all characters.
constexpr uint32_t strangeBytes = 0x110000;

std::vector<uint32_t> charactersOf(std::string_view text) {
  std::vector<uint32_t> characters;
  characters.reserve(text.size());
  for (size_t at = 0; at < text.size();) {
    unsigned length = 0;
    const uint32_t c = tovin::decodeUtf8(text, at, length);
    characters.push_back(length > 0 ? c : strangeBytes + static_cast<unsigned char>(text[at]));
    at += std::max(length, 1u);
  }
  return characters;
}

bool anyMatches(const std::vector<Glob>& globs, std::string_view path) {
  return std::ranges::any_of(globs, [&](const Glob& glob) { return glob.matches(path); });
}

}  // namespace

Glob::Glob(std::string_view pattern) : wholePath_(pattern.find('/') != pattern.npos) {
  const std::vector<uint32_t> characters = charactersOf(pattern);
  for (size_t at = 0; at < characters.size();) {
    const uint32_t c = characters[at];
    if (c == '*') {
      addStars(characters, at);
    } else if (c == '?') {
      tokens_.push_back({Token::Kind::any});
      ++at;
    } else if (c != '[' || !addSet(characters, at)) {
      if (c == '\\' && at + 1 < characters.size()) ++at;
      tokens_.push_back({Token::Kind::one, characters[at++]});
    }
  }
}

void Glob::addStars(const std::vector<uint32_t>& pattern, size_t& at) {
  const bool begins = at == 0 || pattern[at - 1] == '/';
  size_t stars = 0;
  for (; at < pattern.size() && pattern[at] == '*'; ++at) ++stars;
  if (stars == 1) {
    tokens_.push_back({Token::Kind::stretch});
  } else if (begins && at < pattern.size() && pattern[at] == '/') {
    tokens_.push_back({Token::Kind::anyFolders});
    tokens_.push_back({Token::Kind::folder});
    ++at;
  } else {
    tokens_.push_back({Token::Kind::deepStretch});
  }
}

bool Glob::addSet(const std::vector<uint32_t>& pattern, size_t& at) {
  Token token{Token::Kind::set};
  size_t next = at + 1;
  token.negated = next < pattern.size() && (pattern[next] == '!' || pattern[next] == '^');
  if (token.negated) ++next;
  const size_t first = next;
  for (; next < pattern.size() && (pattern[next] != ']' || next == first); ++next) {
    const uint32_t from = pattern[next];
    const bool isRange = next + 2 < pattern.size() && pattern[next + 1] == '-' && pattern[next + 2] != ']';
    if (isRange) next += 2;
    token.ranges.push_back({from, pattern[next]});
  }
  if (next >= pattern.size()) return false;
  tokens_.push_back(std::move(token));
  at = next + 1;
  return true;
}

bool Glob::Token::takes(uint32_t c) const {
  switch (kind) {
    case Kind::one:
      return c == character;
    case Kind::any:
    case Kind::stretch:
      return c != '/';
    case Kind::set: {
      const bool isThere = std::ranges::any_of(
          ranges, [c](const Range& range) { return range.first <= c && c <= range.last; });
      return c != '/' && isThere != negated;
    }
    case Kind::deepStretch:
    case Kind::folder:
      return true;
    case Kind::anyFolders:
      return false;
  }
  return false;
}

// A state is how many tokens are behind; what may match nothing is passed over too.
void Glob::passOver(std::vector<char>& states) const {
  for (size_t i = 0; i < tokens_.size(); ++i) {
    const Token::Kind kind = tokens_[i].kind;
    if (!states[i]) continue;
    if (kind == Token::Kind::anyFolders) states[i + 2] = 1;
    if (kind == Token::Kind::anyFolders || kind == Token::Kind::stretch || kind == Token::Kind::deepStretch)
      states[i + 1] = 1;
  }
}

bool Glob::matches(std::string_view path) const {
  if (!wholePath_) path.remove_prefix(path.rfind('/') + 1);
  std::vector<char> states(tokens_.size() + 1), next(tokens_.size() + 1);
  states[0] = 1;
  passOver(states);
  for (const uint32_t c : charactersOf(path)) {
    std::ranges::fill(next, 0);
    for (size_t i = 0; i < tokens_.size(); ++i) {
      if (!states[i] || !tokens_[i].takes(c)) continue;
      const Token::Kind kind = tokens_[i].kind;
      const bool isFolder = kind == Token::Kind::folder;
      if (isFolder || kind == Token::Kind::stretch || kind == Token::Kind::deepStretch) next[i] = 1;
      if (!isFolder || c == '/') next[i + 1] = 1;
    }
    passOver(next);
    states.swap(next);
  }
  return states.back() != 0;
}

bool FileFilter::wantsFile(std::string_view path) const {
  return (include.empty() || anyMatches(include, path)) && !anyMatches(exclude, path);
}

bool FileFilter::wantsFolder(std::string_view path) const { return !anyMatches(exclude, path); }
