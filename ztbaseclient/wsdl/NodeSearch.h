#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <unordered_set>
#include <vector>

#include "tovin/Array.h"
#include "tovin/BaseString.h"
#include "tovin/iNode.h"

// Searches among the children and attributes of one node, by local names with ASCII case ignored.

/// A name taken apart at its first ':'.
struct NameParts {
  explicit NameParts(std::wstring_view name);

  bool hasPrefix;
  std::wstring_view prefix;
  std::wstring_view local;
};

/// How names are compared: by their local parts alone, or with the token, which stands for any prefix of the
/// SOAP binding namespace.
enum class NameMode { plain, token };

class NodeSearch {
 public:
  static constexpr wchar_t Token[] = L"_WSDLSOAPNS_";

  /// The prefixes that the token stands for.
  void addSoapPrefix(std::wstring_view prefix);
  bool hasSoapPrefixes() const noexcept { return !soapPrefixes_.empty(); }
  void clearSoapPrefixes() noexcept { soapPrefixes_.clear(); }

  /// In token mode "Invalid namespace comparison between '%ls' == '%ls'" when neither name holds the token.
  bool Equals_NS(const wchar_t* documentName, const wchar_t* name, NameMode mode) const;

  /// The last child of the name, not the first; null if none.
  tovin::iNode* findNode(tovin::iNode* node, const wchar_t* name, NameMode mode = NameMode::plain) const;
  void findNodes(tovin::iNode* node, const wchar_t* name, tovin::NodeReferenceSet& found,
                 NameMode mode = NameMode::plain) const;

 private:
  bool isSoapPrefix(std::wstring_view prefix) const;

  // Folded.
  std::unordered_set<std::wstring> soapPrefixes_;
};

/// The first attribute whose local name matches, as it stands; nothing if there is none.
std::optional<tovin::AttributeView> findAttr(const tovin::iNode* node, const wchar_t* name);
/// Its text, the empty text if there is none.
tovin::WideString findAttrVal(const tovin::iNode* node, const wchar_t* name);

/// The text of the attribute of exactly this name but for case; null if there is none.
tovin::WideString attributeText(const tovin::iNode* node, const wchar_t* name);
/// Defines a text, or changes it.
void putText(tovin::iNode* node, const wchar_t* name, const wchar_t* text);

/// A text with A to Z folded, for keys.
std::wstring folded(std::wstring_view text);

bool isNamed(const tovin::iNode* node, std::wstring_view localName);

template <class Visit>
void forChildren(tovin::iNode* node, Visit&& visit) {
  for (unsigned i = 0; i < node->getNumberOfChildren(); ++i) visit(node->getChildAt(i));
}

template <class Visit>
void forAttributes(const tovin::iNode* node, Visit&& visit) {
  for (unsigned i = 0, count = node->attributeCount(); i < count; ++i) visit(node->viewAttribute(i));
}

/// The children of a node by element name and "name" attribute, each look-up in constant time. Borrows the
/// node.
class NamedChildren {
 public:
  explicit NamedChildren(tovin::iNode* node);
  /// The first child that matches; null if none.
  tovin::iNode* findNodeByAttr(std::wstring_view element, std::wstring_view name) const;

 private:
  static std::wstring key(std::wstring_view element, std::wstring_view name);

  std::unordered_map<std::wstring, tovin::iNode*> nodes_;
};
