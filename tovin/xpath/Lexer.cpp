#include "tovin/xpath/Lexer.h"

#include <algorithm>
#include <string>

#include "tovin/xpath/QueryNames.h"
#include "tovinCore/Exception.h"

namespace tovin::xpath {
namespace {

constexpr size_t quotedBefore = 120;
constexpr size_t quotedAfter = 40;

bool isBlank(wchar_t c) { return c == L' ' || c == L'\t' || c == L'\n' || c == L'\r'; }

struct Symbol {
  std::wstring_view text;
  Token token;
};

// Longer ones before those that they begin with.
constexpr Symbol symbols[] = {
    {L"//", Token::doubleSlash},
    {L"::", Token::doubleColon},
    {L"..", Token::doubleDot},
    {L"!=", Token::notEqual},
    {L"<=", Token::lessOrEqual},
    {L">=", Token::greaterOrEqual},
    {L"/", Token::slash},
    {L"(", Token::openParenthesis},
    {L")", Token::closeParenthesis},
    {L"[", Token::openBracket},
    {L"]", Token::closeBracket},
    {L".", Token::dot},
    {L"@", Token::at},
    {L",", Token::comma},
    {L"$", Token::dollar},
    {L"|", Token::unite},
    {L"+", Token::plus},
    {L"-", Token::minus},
    {L"=", Token::equal},
    {L"<", Token::less},
    {L">", Token::greater},
    {L"*", Token::anyName},
};

constexpr Symbol operatorNames[] = {
    {L"or", Token::orOperator}, {L"and", Token::andOperator}, {L"div", Token::div}, {L"mod", Token::mod}};

}  // namespace

Lexer::Lexer(std::wstring_view text) : text_(text) { next(); }

void Lexer::next() {
  skipBlanks();
  start_ = end_;
  token_ = read();
  first_ = false;
}

bool Lexer::precedes(std::wstring_view characters) const noexcept {
  size_t from = end_;
  while (isBlank(at(from))) ++from;
  std::wstring_view rest = text_;
  rest.remove_prefix(std::min(from, rest.size()));
  return rest.starts_with(characters);
}

void Lexer::fail(size_t position, std::wstring_view what) const {
  const size_t from = position > quotedBefore ? position - quotedBefore : 0;
  const size_t to = std::min(text_.size(), position + quotedAfter);
  std::wstring quoted(text_.substr(from, to - from));
  if (from > 0) quoted = L"..." + quoted;
  if (to < text_.size()) quoted += L"...";
  throw Exception(L"Query \"%ls\": %ls at position %d", quoted, std::wstring(what), position + 1);
}

void Lexer::skipBlanks() noexcept {
  while (isBlank(at(end_))) ++end_;
}

// What a name or a star means depends on the token before it.
bool Lexer::expectsOperator() const noexcept {
  if (first_) return false;
  switch (token_) {
    case Token::number:
    case Token::literal:
    case Token::name:
    case Token::anyName:
    case Token::anyWithPrefix:
    case Token::closeParenthesis:
    case Token::closeBracket:
    case Token::dot:
    case Token::doubleDot:
      return true;
    default:
      return false;
  }
}

Token Lexer::read() {
  const wchar_t c = at(start_);
  if (start_ >= text_.size()) return Token::end;
  if (isDigit(c) || (c == L'.' && isDigit(at(start_ + 1)))) return readNumber();
  if (c == L'"' || c == L'\'') return readLiteral();
  if (beginsName(c)) return readName();
  return readSymbol();
}

Token Lexer::readSymbol() {
  for (const Symbol& symbol : symbols) {
    if (!text_.substr(start_).starts_with(symbol.text)) continue;
    end_ = start_ + symbol.text.size();
    value_ = symbol.text;
    return symbol.token == Token::anyName && expectsOperator() ? Token::multiply : symbol.token;
  }
  fail(L"this character has no meaning here");
}

size_t Lexer::endOfName(size_t from) const noexcept {
  while (from < text_.size() && continuesName(text_[from])) ++from;
  return from;
}

Token Lexer::readName() {
  const bool operatorExpected = expectsOperator();
  end_ = endOfName(start_);
  value_ = text_.substr(start_, end_ - start_);
  if (operatorExpected) {
    for (const Symbol& symbol : operatorNames) {
      if (value_ == symbol.text) return symbol.token;
    }
    fail(L"an operator is expected");
  }
  if (at(end_) != L':' || at(end_ + 1) == L':') return Token::name;
  if (at(end_ + 1) == L'*') {
    end_ += 2;
    return Token::anyWithPrefix;
  }
  if (!beginsName(at(end_ + 1))) fail(end_, L"a name is expected behind the prefix");
  end_ = endOfName(end_ + 1);
  value_ = text_.substr(start_, end_ - start_);
  return Token::name;
}

// Number ::= Digits ('.' Digits?)? | '.' Digits
Token Lexer::readNumber() {
  while (isDigit(at(end_))) ++end_;
  if (at(end_) == L'.') ++end_;
  while (isDigit(at(end_))) ++end_;
  value_ = text_.substr(start_, end_ - start_);
  return Token::number;
}

// Literal ::= '"' [^"]* '"' | "'" [^']* "'"
Token Lexer::readLiteral() {
  const size_t close = text_.find(text_[start_], start_ + 1);
  if (close == text_.npos) fail(L"the text that begins here has no closing quote");
  value_ = text_.substr(start_ + 1, close - start_ - 1);
  end_ = close + 1;
  return Token::literal;
}

}  // namespace tovin::xpath
