// The Python object that stands for a node.
//
// A node of the library knows its parent by a back pointer only. What Python holds of a tree therefore shares
// a Tree, which keeps the root: no node that Python can reach loses its way up.
#pragma once

#include <pybind11/pybind11.h>

#include "tovin/Ptr.h"
#include "tovin/iNode.h"

namespace py = pybind11;

/// What the objects of one tree share. All of it is touched with the GIL held only.
struct Tree {
  size_t references = 0;
  tovin::Ptr<tovin::iNode> root;
  /// The tree that this one became a part of; counted.
  Tree* joined = nullptr;
  /// How many calls use the tree without the GIL: it is nobody else's meanwhile.
  int busy = 0;
};

class TreeRef {
 public:
  TreeRef() noexcept = default;
  explicit TreeRef(Tree* tree) noexcept : tree_(tree) {
    if (tree_) ++tree_->references;
  }
  TreeRef(const TreeRef& other) noexcept : TreeRef(other.tree_) {}
  TreeRef(TreeRef&& other) noexcept : tree_(std::exchange(other.tree_, nullptr)) {}
  ~TreeRef() { drop(); }
  TreeRef& operator=(TreeRef other) noexcept {
    std::swap(tree_, other.tree_);
    return *this;
  }
  static TreeRef of(tovin::iNode& root);
  /// The tree as it is now, after all that it became a part of.
  Tree& get();

 private:
  void drop() noexcept;
  Tree* tree_ = nullptr;
};

struct NodeObject {
  PyObject_HEAD tovin::iNode* node;  // counted
  TreeRef tree;
};

void addNodeType(py::module_& module);
bool isNode(py::handle object) noexcept;
/// TypeError for what is no node; RuntimeError while another thread uses its tree.
NodeObject& nodeObject(py::handle object);
inline tovin::iNode& nodeOf(py::handle object) { return *nodeObject(object).node; }
/// A new reference, null with a Python error set.
PyObject* newNodeObject(tovin::iNode& node, const TreeRef& tree);
py::object wrap(tovin::iNode& node, const TreeRef& tree);
/// Of a tree that nobody holds yet.
py::object wrapRoot(tovin::iNode& root);
/// The root node above a node, itself for a root.
tovin::iNode& topOf(tovin::iNode& node);

/// Without the GIL, with the tree for this thread alone.
class Alone {
 public:
  explicit Alone(py::handle node) : tree_(nodeObject(node).tree) {
    ++tree_.get().busy;
    state_ = PyEval_SaveThread();
  }
  ~Alone() {
    PyEval_RestoreThread(state_);
    --tree_.get().busy;
  }
  Alone(const Alone&) = delete;
  Alone& operator=(const Alone&) = delete;

 private:
  TreeRef tree_;
  PyThreadState* state_;
};
