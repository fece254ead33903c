#include "ztbaseclient/data/DocumentTexts.h"

#include <algorithm>
#include <cwchar>
#include <vector>

#include "tovinCore/Guard.h"
#include "tovinCore/Utf8.h"

namespace {

bool isAscii(const wchar_t* text) {
  return std::all_of(text, text + std::wcslen(text), [](wchar_t c) { return c < 0x80; });
}

bool isAscii(const tovin::AttributeView& view) {
  if (view.name && !isAscii(view.name)) return false;
  if (view.isObject()) return false;
  if (view.kind != tovin::AttributeView::Kind::text) return true;
  return view.unit == 1 && tovin::asciiPrefix(view.narrow()) == view.length;
}

bool hasOnlyAscii(const tovin::iNode& node) {
  for (unsigned i = 0; i < node.attributeCount(); ++i)
    if (!isAscii(node.viewAttribute(i))) return false;
  return true;
}

void convert(tovin::iProperty& property) {
  const tovin::WideString text = property.getValue().getText();
  if (!text.isNull() && !isAscii(text.c_str()))
    property.setValue(tovin::charactersOfBytes(text.view()).c_str());
}

void convert(tovin::iNode& node) {
  if (node.getName() && !isAscii(node.getName()))
    node.setName(tovin::charactersOfBytes(node.getName()).c_str());
  if (hasOnlyAscii(node)) return;
  tovin::iPropertyCollection& properties = *node.getProperties();
  for (unsigned i = 0; i < properties.getSize(); ++i) {
    convert(*properties.get(i));
    const std::wstring name = properties.get(i)->getName();
    if (!isAscii(name.c_str())) properties.rename(name.c_str(), tovin::charactersOfBytes(name).c_str());
  }
}

}  // namespace

void DocumentTexts::makeCharacters(tovin::iNode& root) {
  tovin::guarded({"DocumentTexts", "makeCharacters"}, [&] {
    std::vector<tovin::iNode*> left{&root};
    while (!left.empty()) {
      tovin::iNode* node = left.back();
      left.pop_back();
      convert(*node);
      const auto children = node->getChildren();
      left.insert(left.end(), children.rbegin(), children.rend());
    }
  });
}
