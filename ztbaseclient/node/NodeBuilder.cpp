#include "ztbaseclient/node/NodeBuilder.h"

#include <algorithm>
#include <cstring>
#include <typeinfo>

#include "tovinCore/Units.h"
#include "ztbaseclient/data/CProperty.h"
#include "ztcore/ztUniqueStrings.h"

namespace {

// Names are kept by a hash of their bytes, each in the one place that this gives.
constexpr size_t keptNames = 256;
constexpr size_t longestKeptName = 128;

// Elements with more are rare, and their names are better looked for in an index.
constexpr size_t mostPacked = 32;

const wchar_t* widened(std::wstring& room, std::string_view bytes) {
  const auto* first = reinterpret_cast<const unsigned char*>(bytes.data());
  room.assign(first, first + bytes.size());
  return room.c_str();
}

size_t placeOf(std::string_view bytes) noexcept {
  uint64_t head = 0, tail = 0;
  const size_t count = std::min(bytes.size(), sizeof head);
  std::memcpy(&head, bytes.data(), count);
  std::memcpy(&tail, bytes.data() + bytes.size() - count, count);
  const uint64_t mixed = (head ^ tail * 0x9E3779B97F4A7C15u ^ bytes.size()) * 0xD6E8FEB86659FD93u;
  return mixed >> 56;
}

const wchar_t* shareNodeName(const wchar_t* text) {
  return ztUniqueStrings::GetUniqueString(text, nullptr, nullptr);
}

}  // namespace

void NodeBuilder::look(const char* name, const char** attributes) {
  name_ = name;
  attributes_.clear();
  textSize_ = 0;
  for (; *attributes; attributes += 2) {
    const Attribute& attribute = attributes_.emplace_back(Attribute{attributes[0], attributes[1]});
    textSize_ += attribute.name.size() + attribute.text.size();
  }
}

tovin::Ptr<tovin::iNode> NodeBuilder::make() {
  CBaseNode* made = CBaseNode::allocate();
  tovin::Ptr<tovin::iNode> node(made);
  CNodeImplBase& core = *made;
  core.SetUniqueNodeName(nameOf(name_, shareNodeName).text);
  if (attributes_.empty()) return node;
  if (pack())
    core.setPacked(packer_.pack());
  else
    define(*made);
  return node;
}

const NodeBuilder::Name& NodeBuilder::nameOf(std::string_view bytes, Share share) {
  if (names_.empty()) names_.resize(keptNames + 1);
  Name& name = names_[bytes.size() > longestKeptName ? keptNames : placeOf(bytes)];
  if (name.text && name.bytes == bytes) return name;
  ztUniqueStrings::Release(std::exchange(name.text, nullptr));
  name.bytes = bytes;
  name.text = share(widened(nameRoom_, bytes));
  name.foldedHash = tovin::hashFolded(name.text);
  return name;
}

// False where they cannot lie in a block, or where two names may be one: then the packer stays empty.
bool NodeBuilder::pack() {
  if (attributes_.size() > mostPacked) return false;
  packer_.clear();
  foldedHashes_.clear();
  for (const Attribute& attribute : attributes_) {
    if (attribute.name.starts_with('_')) return false;
    const Name& name = nameOf(attribute.name, CProperty::ShareName);
    if (std::ranges::find(foldedHashes_, name.foldedHash) != foldedHashes_.end()) return false;
    foldedHashes_.push_back(name.foldedHash);
    if (!packer_.addBytes(name.text, attribute.text)) return false;
    ztUniqueStrings::AddReference(name.text);
  }
  return true;
}

void NodeBuilder::define(CBaseNode& node) {
  tovin::iPropertyCollection* properties = node.getProperties();
  for (const Attribute& attribute : attributes_) {
    properties->define(widened(nameRoom_, attribute.name), widened(room_, attribute.text), 0);
  }
}

void NodeBuilder::append(tovin::iNode& parent, tovin::iNode& child) {
  if (typeid(parent) != typeid(CBaseNode)) return parent.appendChild(&child);
  CNodeImplBase& core = static_cast<CBaseNode&>(parent);
  core.AddChildNode(&child, core.NumChildNodes());
}

void NodeBuilder::close(tovin::iNode& node) noexcept {
  if (typeid(node) != typeid(CBaseNode)) return;
  CNodeImplBase& core = static_cast<CBaseNode&>(node);
  core.children_.shrink();
}

void NodeBuilder::forget() noexcept {
  for (const Name& name : names_) ztUniqueStrings::Release(name.text);
  names_.clear();
}
