#pragma once

#include <optional>
#include <string_view>

#include "ztbaseclient/wsdl/CNamespace.h"
#include "ztbaseclient/wsdl/NodeSearch.h"

// Namespace declarations, and the names that lean on them.

/// The attributes that declare namespaces: visit(prefix, uri) with the empty prefix for "xmlns".
template <class Visit>
void forDeclarations(const tovin::iNode* node, Visit&& visit) {
  forAttributes(node, [&](const tovin::AttributeView& attribute) {
    const NameParts name(attribute.name);
    const bool bare = !name.hasPrefix;
    if (!tovin::equalFolded(bare ? name.local : name.prefix, std::wstring_view(L"xmlns"))) return;
    visit(bare ? std::wstring_view() : name.local, attribute.getText());
  });
}

/// The declarations found on a node itself.
tovin::Array<CWsdlParser::CNamespace> declarationsOn(const tovin::iNode* node);

/// What a node itself binds the prefix to, no prefix being the default namespace; null if nothing.
tovin::WideString declaredOn(const tovin::iNode* node, std::wstring_view prefix);

/// Without XML's blanks at its ends.
std::wstring_view trimmed(std::wstring_view text);

/// A reference to a type, element or group as an attribute writes it.
struct QualifiedName {
  explicit QualifiedName(const tovin::WideString& written);

  tovin::WideString text;
  std::wstring prefix;
  std::wstring local;
  bool hasPrefix;
  /// Has a local name, no empty prefix and one colon at most.
  bool wellFormed;
};
