#include "NodeObject.h"

#include <new>
#include <vector>

#include "Errors.h"
#include "Texts.h"
#include "Values.h"
#include "ztbaseclient/node/CBaseNode.h"

namespace {

PyTypeObject* baseType = nullptr;
PyTypeObject* walkType = nullptr;
// The class in Python that derives from it.
PyTypeObject* nodeType = nullptr;

// For the C functions of the type: what is thrown becomes Python's.
template <class Body>
PyObject* protect(Body&& body) noexcept {
  try {
    return failingAs(Failure::none, body);
  } catch (py::error_already_set& e) {
    e.restore();
  } catch (const py::builtin_exception& e) {
    e.set_error();
  }
  return nullptr;
}

NodeObject& self(PyObject* object) { return *reinterpret_cast<NodeObject*>(object); }

PyObject* makeNode(PyTypeObject* type, PyObject*, PyObject*) {
  return protect([&]() -> PyObject* {
    tovin::Ptr<tovin::iNode> node(CBaseNode::allocate());
    PyObject* object = type->tp_alloc(type, 0);
    if (!object) return nullptr;
    self(object).node = nullptr;
    new (&self(object).tree) TreeRef(TreeRef::of(*node));
    node->addRef();
    self(object).node = node.get();
    return object;
  });
}

void deallocate(PyObject* object) {
  PyTypeObject* type = Py_TYPE(object);
  NodeObject& that = self(object);
  PyObject *kind, *value, *trace;
  PyErr_Fetch(&kind, &value, &trace);
  tovin::guardedDestruction("NodeObject", [&] {
    if (that.node) that.node->release();
    that.tree.~TreeRef();
  });
  PyErr_Restore(kind, value, trace);
  type->tp_free(object);
  Py_DECREF(type);
}

PyObject* getName(PyObject* object, void*) {
  return protect([&]() -> PyObject* {
    const wchar_t* name = nodeOf(object).getName();
    if (!name) return PyUnicode_FromStringAndSize(nullptr, 0);
    return newStr(std::wstring_view(name));
  });
}

int setName(PyObject* object, PyObject* value, void*) {
  PyObject* done = protect([&]() -> PyObject* {
    if (!value) throw py::attribute_error("a node has a name always");
    nodeOf(object).setName(toWideWithoutNul(value, "name").c_str());
    return Py_NewRef(Py_None);
  });
  Py_XDECREF(done);
  return done ? 0 : -1;
}

PyObject* getValue(PyObject* object, void*) {
  return protect([&] { return newValue(nodeOf(object).viewValue()); });
}

int setValue(PyObject* object, PyObject* value, void*) {
  PyObject* done = protect([&]() -> PyObject* {
    tovin::iNode& node = nodeOf(object);
    const OwnedValue made = makeValue(value ? py::handle(value) : py::handle(Py_None));
    node.setValue(*made);
    return Py_NewRef(Py_None);
  });
  Py_XDECREF(done);
  return done ? 0 : -1;
}

PyObject* getParent(PyObject* object, void*) {
  return protect([&]() -> PyObject* {
    tovin::iNode* parent = nodeOf(object).findParent();
    return parent ? newNodeObject(*parent, self(object).tree) : Py_NewRef(Py_None);
  });
}

PyObject* getRoot(PyObject* object, void*) {
  return protect([&] { return newNodeObject(topOf(nodeOf(object)), self(object).tree); });
}

// --- walking

struct WalkObject {
  PyObject_HEAD TreeRef tree;
  // A step's node is counted, so that what happens to the tree meanwhile leaves no dangling one.
  struct Step {
    tovin::Held<tovin::iNode> node;
    unsigned next;
  };
  std::vector<Step> steps;
  bool begun;
};

PyObject* walk(PyObject* object, PyObject*) {
  return protect([&]() -> PyObject* {
    tovin::iNode& node = nodeOf(object);
    PyObject* made = walkType->tp_alloc(walkType, 0);
    if (!made) return nullptr;
    auto& that = *reinterpret_cast<WalkObject*>(made);
    new (&that.tree) TreeRef(self(object).tree);
    new (&that.steps) std::vector<WalkObject::Step>();
    that.begun = false;
    that.steps.push_back({tovin::Held<tovin::iNode>(&node), 0});
    return made;
  });
}

PyObject* walkNext(PyObject* object) {
  auto& that = *reinterpret_cast<WalkObject*>(object);
  return protect([&]() -> PyObject* {
    if (that.tree.get().busy) throwBusy();
    if (!that.begun) {
      that.begun = true;
      return newNodeObject(*that.steps.back().node, that.tree);
    }
    while (!that.steps.empty()) {
      WalkObject::Step& step = that.steps.back();
      const auto children = step.node->getChildren();
      if (step.next >= children.size()) {
        that.steps.pop_back();
        continue;
      }
      tovin::iNode* child = children[step.next++];
      // One without children needs no step of its own.
      if (child->hasChildren()) that.steps.push_back({tovin::Held<tovin::iNode>(child), 0});
      return newNodeObject(*child, that.tree);
    }
    return nullptr;
  });
}

void deallocateWalk(PyObject* object) {
  auto& that = *reinterpret_cast<WalkObject*>(object);
  PyTypeObject* type = Py_TYPE(object);
  std::destroy_at(&that.steps);
  that.tree.~TreeRef();
  type->tp_free(object);
  Py_DECREF(type);
}

PyGetSetDef properties[] = {
    {"name", getName, setName, "str : The qualified name, \"\" for none.", nullptr},
    {"value", getValue, setValue, "The node's own value, a native one; None where it has none.", nullptr},
    {"parent", getParent, nullptr, "Node or None : The node above.", nullptr},
    {"root", getRoot, nullptr, "Node : The topmost node of the tree.", nullptr},
    {}};

PyMethodDef methods[] = {{"walk", walk, METH_NOARGS,
                          "walk()\n--\n\nThe node and all below it in document order, one by "
                          "one.\n\nReturns\n-------\niterator of Node\n"},
                         {}};

PyTypeObject* makeType(PyType_Spec& layout) {
  auto* type = reinterpret_cast<PyTypeObject*>(PyType_FromSpec(&layout));
  if (!type) throw py::error_already_set();
  return type;
}

}  // namespace

TreeRef TreeRef::of(tovin::iNode& root) {
  TreeRef made(new Tree());
  made.tree_->root = tovin::Ptr<tovin::iNode>(&root);
  return made;
}

Tree& TreeRef::get() {
  while (tree_->joined) *this = TreeRef(tree_->joined);
  return *tree_;
}

void TreeRef::drop() noexcept {
  Tree* tree = std::exchange(tree_, nullptr);
  while (tree && --tree->references == 0) {
    Tree* next = tree->joined;
    delete tree;
    tree = next;
  }
}

bool isNode(py::handle object) noexcept { return PyObject_TypeCheck(object.ptr(), baseType); }

NodeObject& nodeObject(py::handle object) {
  if (!object || !isNode(object))
    throw py::type_error(std::string("a Node is needed, not ") +
                         (object ? Py_TYPE(object.ptr())->tp_name : "nothing"));
  NodeObject& found = self(object.ptr());
  if (!found.node) throw std::runtime_error("the node is gone");
  if (found.tree.get().busy) throwBusy();
  return found;
}

PyObject* newNodeObject(tovin::iNode& node, const TreeRef& tree) {
  PyObject* object = nodeType->tp_alloc(nodeType, 0);
  if (!object) return nullptr;
  new (&self(object).tree) TreeRef(tree);
  node.addRef();
  self(object).node = &node;
  return object;
}

py::object wrap(tovin::iNode& node, const TreeRef& tree) {
  PyObject* made = newNodeObject(node, tree);
  if (!made) throw py::error_already_set();
  return py::reinterpret_steal<py::object>(made);
}

py::object wrapRoot(tovin::iNode& root) { return wrap(root, TreeRef::of(root)); }

tovin::iNode& topOf(tovin::iNode& node) {
  tovin::iNode* top = &node;
  while (tovin::iNode* parent = top->findParent()) top = parent;
  return *top;
}

void addNodeType(py::module_& module) {
  static PyType_Slot slots[] = {{Py_tp_new, reinterpret_cast<void*>(makeNode)},
                                {Py_tp_dealloc, reinterpret_cast<void*>(deallocate)},
                                {Py_tp_getset, properties},
                                {Py_tp_methods, methods},
                                {}};
  static PyType_Spec layout = {"ztbaseclient._core.NodeBase", sizeof(NodeObject), 0,
                               Py_TPFLAGS_DEFAULT | Py_TPFLAGS_BASETYPE, slots};
  static PyType_Slot walkSlots[] = {{Py_tp_dealloc, reinterpret_cast<void*>(deallocateWalk)},
                                    {Py_tp_iter, reinterpret_cast<void*>(PyObject_SelfIter)},
                                    {Py_tp_iternext, reinterpret_cast<void*>(walkNext)},
                                    {}};
  static PyType_Spec walkSpec = {"ztbaseclient._core.Walk", sizeof(WalkObject), 0,
                                 Py_TPFLAGS_DEFAULT | Py_TPFLAGS_DISALLOW_INSTANTIATION, walkSlots};
  baseType = makeType(layout);
  walkType = makeType(walkSpec);
  nodeType = baseType;
  module.attr("NodeBase") = py::handle(reinterpret_cast<PyObject*>(baseType));
  module.def("set_node_class", [](py::type type) {
    if (!PyType_IsSubtype(reinterpret_cast<PyTypeObject*>(type.ptr()), baseType))
      throw py::type_error("a class of nodes is needed");
    nodeType = reinterpret_cast<PyTypeObject*>(type.inc_ref().ptr());
  });
}
