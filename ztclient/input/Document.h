#pragma once

#include <functional>
#include <string>
#include <string_view>

#include "tovin/Ptr.h"
#include "tovin/iNode.h"

/// A tree that the command was given: from an XML document or from a node record.
struct Document {
  tovin::Ptr<tovin::iNode> root;
  /// The reader of XML keeps one character a byte.
  bool bytesAsCharacters = false;

  /// A text of the tree, or a part of one, as UTF-8, which is valid even if the part cuts a character; empty
  /// for null.
  std::string utf8(const wchar_t* text) const { return text ? utf8(std::wstring_view(text)) : std::string(); }
  std::string utf8(std::wstring_view text) const;
  /// A text in UTF-8 as the texts of the tree are written.
  std::wstring wide(const std::string& utf8) const;
};

/// Reads a file, or standard input for "-". Told by its first byte: 1 to 3 begins a record, anything else
/// XML.
Document readDocument(const std::string& file);

/// Calls visit(node, depth) for a node and everything below it, in document order, without recursion.
void walk(const tovin::iNode& root, const std::function<void(const tovin::iNode& node, size_t depth)>& visit);

/// The UTF-8 of a text that holds one character a byte; empty for null.
std::string bytesOf(std::wstring_view text);
inline std::string bytesOf(const wchar_t* text) {
  return text ? bytesOf(std::wstring_view(text)) : std::string();
}

/// All bytes of a file, or of standard input for "-".
std::string readBytes(const std::string& file);
