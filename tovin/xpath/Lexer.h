// Splits a query into tokens, by the lexical rules of XPath 1.0 (W3C), section 3.7.
#pragma once

#include <cstddef>
#include <string_view>

namespace tovin::xpath {

enum class Token {
  end,
  number,
  literal,
  name,           // QName
  anyName,        // *
  anyWithPrefix,  // NCName:*
  orOperator,
  andOperator,
  equal,
  notEqual,
  less,
  lessOrEqual,
  greater,
  greaterOrEqual,
  plus,
  minus,
  multiply,
  div,
  mod,
  unite,
  slash,
  doubleSlash,
  openParenthesis,
  closeParenthesis,
  openBracket,
  closeBracket,
  dot,
  doubleDot,
  at,
  comma,
  doubleColon,
  dollar,
};

/// Holds one token at a time.
class Lexer {
 public:
  /// Borrows the text, and reads its first token.
  explicit Lexer(std::wstring_view text);

  Token token() const noexcept { return token_; }
  /// The token's text: of a literal without its quotes, of a NCName:* without what follows the prefix.
  std::wstring_view text() const noexcept { return value_; }
  /// Where the token begins, from 0.
  size_t position() const noexcept { return start_; }
  void next();
  /// True when these characters are next behind the token and the blanks that follow it.
  bool precedes(std::wstring_view characters) const noexcept;

  /// "Query \"…\": … at position N", counted from 1; of a long text only the surroundings are quoted.
  [[noreturn]] void fail(size_t position, std::wstring_view what) const;
  [[noreturn]] void fail(std::wstring_view what) const { fail(start_, what); }

 private:
  wchar_t at(size_t index) const noexcept { return index < text_.size() ? text_[index] : L'\0'; }
  void skipBlanks() noexcept;
  bool expectsOperator() const noexcept;
  Token read();
  Token readSymbol();
  Token readName();
  Token readNumber();
  Token readLiteral();
  size_t endOfName(size_t from) const noexcept;

  std::wstring_view text_;
  size_t start_ = 0;
  size_t end_ = 0;
  Token token_ = Token::end;
  bool first_ = true;
  std::wstring_view value_;
};

}  // namespace tovin::xpath
