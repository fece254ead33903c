// Makes general-purpose nodes out of the names and texts of a document.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "tovin/Ptr.h"
#include "ztbaseclient/data/AttributeBlock.h"
#include "ztbaseclient/node/CBaseNode.h"

/// - Shape: each byte of a name or text becomes one wide character: the encoding is not undone here.
/// - Memory: names that come again are known by their bytes, until forget().
class NodeBuilder {
 public:
  NodeBuilder() = default;
  NodeBuilder(const NodeBuilder&) = delete;
  NodeBuilder& operator=(const NodeBuilder&) = delete;
  ~NodeBuilder() { forget(); }

  /// Looks at an element; its names and texts are borrowed. \param attributes names and texts, then null.
  void look(const char* name, const char** attributes);
  size_t attributeCount() const noexcept { return attributes_.size(); }
  /// Of all that was looked at, in bytes.
  size_t textSize() const noexcept { return textSize_; }
  size_t nameSize() const noexcept { return name_.size(); }
  /// A node of it. "Property %ls already exists\n" for attribute names that differ by ASCII case only.
  tovin::Ptr<tovin::iNode> make();
  /// Appends a node that make() gave.
  static void append(tovin::iNode& parent, tovin::iNode& child);
  /// To be called when no child follows.
  static void close(tovin::iNode& node) noexcept;
  void forget() noexcept;

 private:
  struct Attribute {
    std::string_view name;
    std::string_view text;
  };
  // A name as it came, and its shared text, one reference of which is held.
  struct Name {
    std::string bytes;
    const wchar_t* text = nullptr;
    uint32_t foldedHash = 0;
  };
  using Share = const wchar_t* (*)(const wchar_t* text);

  const Name& nameOf(std::string_view bytes, Share share);
  bool pack();
  void define(CBaseNode& node);

  std::string_view name_;
  std::vector<Attribute> attributes_;
  size_t textSize_ = 0;
  std::vector<Name> names_;
  std::vector<uint32_t> foldedHashes_;
  AttributePacker packer_;
  std::wstring room_, nameRoom_;
};
