#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <string>

#include "tovin/Export.h"
#include "tovin/iNode.h"

namespace tovin {

/// A path query that is asked again and again, of many nodes of one tree: compiled once, and with the kind of
/// its results known before the first.
///
///     PathQuery price(L"number(@price) * 2", *root);
///     for (const iNode* row : rows) total += price.number(*row);
///
/// - Language and errors: those of CXPathParser; docs/queries.md.
/// - Ownership: borrows the tree, which must neither change nor go meanwhile.
/// - Threads: one thread at a time, like the tree.
class TOVIN_API PathQuery {
 public:
  enum class Kind : uint8_t { nodes, boolean, number, text };
  static constexpr uint32_t noAttribute = UINT32_MAX;
  /// \param attribute which one of the node's is selected, noAttribute for the node itself. False to be given
  /// no more.
  using Visit = std::function<bool(const iNode& node, uint32_t attribute)>;

  /// \param tree any node of the tree.
  PathQuery(const wchar_t* expression, const iNode& tree);
  PathQuery(PathQuery&& other) noexcept;
  ~PathQuery();

  Kind kind() const noexcept;
  bool boolean(const iNode& context);
  /// NaN where the language has it.
  double number(const iNode& context);
  std::wstring text(const iNode& context);
  /// In document order; the root above the tree is left out. "Nodes are asked for" of any other kind.
  void visit(const iNode& context, const Visit& visit);
  /// The first one alone, null if nothing is selected.
  const iNode* first(const iNode& context, uint32_t& attribute);

 private:
  struct State;
  std::unique_ptr<State> state_;
};

}  // namespace tovin
