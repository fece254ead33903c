#pragma once

#include <string>
#include <vector>

#include "tests/support/Bytes.h"
#include "tovin/Ptr.h"
#include "tovin/iNode.h"
#include "ztbaseclient/data/DeepPropertyUtils.h"
#include "ztbaseclient/node/CBaseNode.h"
#include "ztbaseclient/wsdl/XMLParser.h"

/// Trees from XML, and what queries select in them as texts.
namespace testsupport {

inline tovin::Ptr<tovin::iNode> treeOf(const std::string& xml) {
  ztMemoryByteInputStream stream(xml.data(), xml.size());
  CWsdlParser::XMLParser parser;
  return parser.parse(stream);
}

/// By positions only: "/*[1]/*[2]/".
inline std::string placeOf(const tovin::iNode& node) {
  tovin::WideString path;
  DeepPropertyUtils::NodeLocation(node, false, path);
  return tovin::wideToUtf8(path);
}

using Places = std::vector<std::string>;

inline Places placesOf(const tovin::NodeReferenceSet& nodes) {
  Places places;
  for (size_t i = 0; i < nodes.getSize(); ++i) places.push_back(placeOf(*nodes[i]));
  return places;
}

inline Places select(const tovin::iNode& node, const wchar_t* query, unsigned flags = 3) {
  tovin::NodeReferenceSet nodes;
  const bool any = node.query(query, flags, nodes);
  EXPECT_EQ(any, !nodes.isEmpty());
  return placesOf(nodes);
}

/// "name=text" each, in document order.
inline Places selectProperties(const tovin::iNode& node, const wchar_t* query) {
  tovin::PropertyReferenceSet properties;
  const bool any = node.query(query, 0, properties);
  EXPECT_EQ(any, !properties.isEmpty());
  Places texts;
  for (size_t i = 0; i < properties.getSize(); ++i) {
    texts.push_back(tovin::wideToUtf8(properties[i]->getName()) + "=" +
                    tovin::wideToUtf8(properties[i]->getValue().getText()));
  }
  return texts;
}

inline std::string textOf(const tovin::iNode& node, const wchar_t* query) {
  tovin::WideString text;
  node.query(query, 0, text);
  return tovin::wideToUtf8(text.view());
}

/// Rows of a query and of the text, or the places, that it gives.
inline void expectTexts(const tovin::iNode& node,
                        std::initializer_list<std::pair<const wchar_t*, const char*>> rows) {
  for (const auto& [query, text] : rows) EXPECT_EQ(textOf(node, query), text) << tovin::wideToUtf8(query);
}
inline void expectPlaces(const tovin::iNode& node,
                         std::initializer_list<std::pair<const wchar_t*, Places>> rows) {
  for (const auto& [query, found] : rows) EXPECT_EQ(select(node, query), found) << tovin::wideToUtf8(query);
}

}  // namespace testsupport
