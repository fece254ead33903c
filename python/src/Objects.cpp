// Nested Python values as nodes, and back.
//
// A dict is a node with the property "kind" "dict": plain items are properties, the others children by their
// keys. A list of integers or of texts is the node's value, any other a node of the kind "list" with a child
// an item. What a value of the library cannot hold has a kind of its own and a text. Depth takes no stack.
#include <unordered_set>
#include <vector>

#include "Errors.h"
#include "Module.h"
#include "NodeObject.h"
#include "Texts.h"
#include "Values.h"
#include "tovin/values/DoubleValue.h"
#include "tovin/values/IntegerArrayValue.h"
#include "tovin/values/IntegerValue.h"
#include "tovin/values/StringArrayValue.h"
#include "tovin/values/StringValue.h"
#include "tovinCore/Units.h"
#include "ztbaseclient/node/CBaseNode.h"

namespace {

using tovin::AttributeView;
using tovin::iNode;

constexpr const wchar_t* kindName = L"kind";
// The key of an item whose own one is no name of a node.
constexpr const wchar_t* keyName = L"key";
constexpr const wchar_t* itemName = L"item";

bool fits(py::handle number, int& value) {
  int overflow = 0;
  const long long wide = PyLong_AsLongLongAndOverflow(number.ptr(), &overflow);
  if (overflow || wide < INT32_MIN || wide > INT32_MAX) return false;
  value = static_cast<int>(wide);
  return true;
}

bool isPlainInteger(py::handle object, int& value) {
  return PyLong_CheckExact(object.ptr()) && fits(object, value);
}

tovin::Ptr<iNode> newNode(const std::wstring& name) {
  tovin::Ptr<iNode> node(CBaseNode::allocate());
  node->setName(name.c_str());
  return node;
}

void setKind(iNode& node, const wchar_t* kind) { node.getProperties()->define(kindName, kind, 0); }

void setText(iNode& node, std::wstring_view text) {
  tovin::StringValue value;
  value.content() = tovin::WideString(text);
  node.setValue(value);
}

// The items of lists that a value of the library holds as they are.
bool setWholeList(iNode& node, const py::list& list) {
  const size_t count = list.size();
  if (count == 0) return false;
  int number = 0;
  if (isPlainInteger(PyList_GET_ITEM(list.ptr(), 0), number)) {
    tovin::IntegerArrayValue value;
    for (size_t i = 0; i < count; ++i) {
      if (!isPlainInteger(PyList_GET_ITEM(list.ptr(), static_cast<Py_ssize_t>(i)), number)) return false;
      value.content().push_back(number);
    }
    node.setValue(value);
    return true;
  }
  if (!PyUnicode_CheckExact(PyList_GET_ITEM(list.ptr(), 0))) return false;
  tovin::StringArrayValue value;
  for (size_t i = 0; i < count; ++i) {
    PyObject* item = PyList_GET_ITEM(list.ptr(), static_cast<Py_ssize_t>(i));
    if (!PyUnicode_CheckExact(item)) return false;
    value.content().emplace_back(std::wstring_view(toWide(item, "an item")));
  }
  node.setValue(value);
  return true;
}

class Builder {
 public:
  tovin::Ptr<iNode> build(py::handle value, const std::wstring& name) {
    tovin::Ptr<iNode> root = newNode(name);
    begin(value, *root);
    while (!steps_.empty()) {
      Step& step = steps_.back();
      if (step.next == static_cast<Py_ssize_t>(step.items.size())) {
        open_.erase(step.container.ptr());
        steps_.pop_back();
        continue;
      }
      const auto item = py::reinterpret_borrow<py::tuple>(PyList_GET_ITEM(step.items.ptr(), step.next++));
      iNode& parent = *step.node;
      tovin::Ptr<iNode> child = childFor(PyTuple_GET_ITEM(item.ptr(), 0));
      parent.appendChild(child.get());
      begin(PyTuple_GET_ITEM(item.ptr(), 1), *child);
    }
    return root;
  }

 private:
  // A container whose children are under way: keys (None in lists) and values.
  struct Step {
    iNode* node;
    py::object container;
    py::list items;
    Py_ssize_t next = 0;
  };

  static tovin::Ptr<iNode> childFor(py::handle key) {
    if (key.is_none()) return newNode(itemName);
    const std::wstring name = toWide(key, "a key");
    if (!name.empty() && name.find(L'\0') == name.npos) return newNode(name);
    tovin::Ptr<iNode> node = newNode(itemName);
    tovin::StringValue value;
    value.content() = tovin::WideString(std::wstring_view(name));
    node->getProperties()->define(keyName, value, 0);
    return node;
  }

  void begin(py::handle value, iNode& node) {
    PyObject* object = value.ptr();
    int number = 0;
    if (PyDict_Check(object)) return beginDict(py::reinterpret_borrow<py::dict>(value), node);
    if (PyList_Check(object)) return beginList(py::reinterpret_borrow<py::list>(value), L"list", node, value);
    if (PyTuple_Check(object)) {
      const auto items = py::reinterpret_steal<py::list>(PySequence_List(object));
      return beginList(items, L"tuple", node, value);
    }
    if (PyUnicode_Check(object)) return setText(node, toWide(value, "a text"));
    if (value.is_none()) return node.setValue(tovin::NullValue());
    if (PyBool_Check(object)) {
      setKind(node, L"bool");
      return node.setValue(tovin::IntegerValue(object == Py_True ? 1 : 0));
    }
    if (PyFloat_Check(object)) return node.setValue(tovin::DoubleValue(PyFloat_AS_DOUBLE(object)));
    if (PyLong_Check(object)) {
      if (fits(value, number)) return node.setValue(tovin::IntegerValue(number));
      setKind(node, L"int");
      // In hexadecimal, which has no limit of digits and takes linear time.
      const auto digits = py::reinterpret_steal<py::object>(PyNumber_ToBase(object, 16));
      if (!digits) throw py::error_already_set();
      return setText(node, toWide(digits, "a number"));
    }
    if (PyBytes_Check(object)) {
      setKind(node, L"bytes");
      std::wstring text;
      for (char c :
           std::string_view(PyBytes_AS_STRING(object), static_cast<size_t>(PyBytes_GET_SIZE(object))))
        text += static_cast<wchar_t>(static_cast<unsigned char>(c));
      return setText(node, text);
    }
    throw py::type_error(
        std::string("to_node takes dict, list, tuple, str, bytes, int, float, bool and None, not ") +
        Py_TYPE(object)->tp_name);
  }

  void enter(py::handle container, iNode& node, py::list items) {
    if (items.size() == 0) return;
    if (!open_.insert(container.ptr()).second) throw py::value_error("a value contains itself");
    steps_.push_back({&node, py::reinterpret_borrow<py::object>(container), std::move(items), 0});
  }

  void beginList(const py::list& list, const wchar_t* kind, iNode& node, py::handle container) {
    if (kind[0] == L'l' && setWholeList(node, list)) return;
    setKind(node, kind);
    py::list items;
    for (const py::handle item : list) items.append(py::make_tuple(py::none(), item));
    enter(container, node, std::move(items));
  }

  void beginDict(const py::dict& dict, iNode& node) {
    setKind(node, L"dict");
    tovin::iPropertyCollection& properties = *node.getProperties();
    py::list items;
    for (const auto& [key, value] : dict) {
      if (!PyUnicode_Check(key.ptr()))
        throw py::type_error(std::string("a key must be a str, not ") + Py_TYPE(key.ptr())->tp_name);
      if (!setItem(properties, key, value)) items.append(py::make_tuple(key, value));
    }
    enter(dict, node, std::move(items));
  }

  // False for an item that is a child: one that is not plain, or whose name a property cannot have.
  static bool setItem(tovin::iPropertyCollection& properties, py::handle key, py::handle value) {
    PyObject* object = value.ptr();
    int number = 0;
    const bool isText = PyUnicode_CheckExact(object), isReal = PyFloat_CheckExact(object),
               isInteger = isPlainInteger(value, number);
    if (!isText && !isReal && !isInteger && !value.is_none()) return false;
    const std::wstring name = toWide(key, "a key");
    if (name.empty() || name.find(L'\0') != name.npos || name[0] == L'/' || name[0] == L'_') return false;
    for (unsigned i = 0; i < properties.getSize(); ++i)
      if (tovin::equalFolded(std::wstring_view(properties.get(i)->getName()), std::wstring_view(name)))
        return false;
    if (name == CNodeImplBase::DefaultValueName) return false;
    if (isText) {
      tovin::StringValue text;
      text.content() = tovin::WideString(std::wstring_view(toWide(value, "a text")));
      properties.define(name.c_str(), text, 0);
    } else if (isReal) {
      properties.define(name.c_str(), PyFloat_AS_DOUBLE(object), 0);
    } else if (isInteger) {
      properties.define(name.c_str(), tovin::IntegerValue(number), 0);
    } else {
      properties.define(name.c_str(), tovin::NullValue(), 0);
    }
    return true;
  }

  std::vector<Step> steps_;
  std::unordered_set<PyObject*> open_;
};

py::object valueOf(const AttributeView& view) {
  PyObject* value = newValue(view);
  if (!value) throw py::error_already_set();
  return py::reinterpret_steal<py::object>(value);
}

// Makes the objects of a tree from the leaves up, with a list of what is under way.
class Reader {
 public:
  py::object read(const iNode& root) {
    py::object result = begin(root);
    while (!steps_.empty()) {
      Step& step = steps_.back();
      const auto children = step.node->getChildren();
      if (step.next == children.size()) {
        steps_.pop_back();
        continue;
      }
      const iNode& child = *children[step.next++];
      // What begin() makes of a child may move the steps.
      const py::object target = step.target;
      const Kind kind = step.kind;
      const size_t place = step.next - 1;
      put(kind, target, place, child, begin(child));
    }
    return result;
  }

 private:
  enum class Kind { dict, list, tuple, plain };
  struct Step {
    const iNode* node;
    py::object target;
    Kind kind;
    size_t next;
  };

  // A tuple is filled where it stands, before anybody can see it.
  static void put(Kind kind, const py::object& target, size_t place, const iNode& child, py::object value) {
    if (kind == Kind::dict)
      target[keyOf(child)] = value;
    else if (kind == Kind::tuple)
      PyTuple_SET_ITEM(target.ptr(), static_cast<Py_ssize_t>(place), value.release().ptr());
    else
      PyList_SET_ITEM(target.ptr(), static_cast<Py_ssize_t>(place), value.release().ptr());
  }

  static bool is(const AttributeView& view, const wchar_t* name) {
    return view.name && std::wstring_view(view.name) == name;
  }

  static py::object keyOf(const iNode& node) {
    for (unsigned i = 0; i < node.attributeCount(); ++i) {
      const AttributeView view = node.viewAttribute(i);
      if (is(view, keyName) && std::wstring_view(node.getName()) == itemName && i <= 1 && keyStands(node, i))
        return valueOf(view);
    }
    return toStr(std::wstring_view(node.getName()));
  }

  // The builder's own comes before the kind; an item "key" of a dict stands behind it.
  static bool keyStands(const iNode& node, unsigned index) {
    for (unsigned i = 0; i < index; ++i)
      if (is(node.viewAttribute(i), kindName)) return false;
    return true;
  }

  static std::string kindOf(const iNode& node) {
    for (unsigned i = 0; i < node.attributeCount() && i < 2; ++i) {
      const AttributeView view = node.viewAttribute(i);
      if (!is(view, kindName)) continue;
      const py::object value = valueOf(view);
      if (PyUnicode_Check(value.ptr())) return toUtf8(value, "kind");
    }
    return {};
  }

  py::object begin(const iNode& node) {
    const std::string kind = kindOf(node);
    if (kind == "dict") return beginDict(node);
    const size_t count = node.getChildren().size();
    if (kind == "list") return enter(node, py::list(count), Kind::list);
    if (kind == "tuple") return count ? enter(node, py::tuple(count), Kind::tuple) : py::object(py::tuple());
    if (kind.empty() && (count || !hasValue(node))) return beginPlain(node);
    const py::object value = valueOf(node.viewValue());
    if (kind == "bool") return py::bool_(py::bool_(value));
    if (kind == "int" && PyUnicode_Check(value.ptr())) {
      PyObject* number = PyLong_FromUnicodeObject(value.ptr(), 16);
      if (!number) throw py::error_already_set();
      return py::reinterpret_steal<py::object>(number);
    }
    if (kind == "bytes" && PyUnicode_Check(value.ptr())) {
      PyObject* bytes = PyUnicode_AsLatin1String(value.ptr());
      if (!bytes) throw py::error_already_set();
      return py::reinterpret_steal<py::object>(bytes);
    }
    return kind.empty() && node.attributeCount() > 1 && !isKeyed(node) ? beginPlain(node) : value;
  }

  static bool hasValue(const iNode& node) {
    for (unsigned i = 0; i < node.attributeCount(); ++i)
      if (node.viewAttribute(i).isNodeValue()) return true;
    return false;
  }
  static bool isKeyed(const iNode& node) {
    return node.attributeCount() == 2 && is(node.viewAttribute(0), keyName);
  }

  py::object enter(const iNode& node, py::object target, Kind kind) {
    if (!node.getChildren().empty()) steps_.push_back({&node, target, kind, 0});
    return target;
  }

  py::object beginDict(const iNode& node) {
    py::dict dict;
    bool behindKind = false;
    for (unsigned i = 0; i < node.attributeCount(); ++i) {
      const AttributeView view = node.viewAttribute(i);
      if (!behindKind) {
        behindKind = is(view, kindName);
        continue;
      }
      if (!view.isNodeValue()) dict[toStr(view.name)] = valueOf(view);
    }
    return enter(node, std::move(dict), Kind::dict);
  }

  // Of a node that no Python value was made into.
  py::object beginPlain(const iNode& node) {
    py::dict dict, properties;
    for (unsigned i = 0; i < node.attributeCount(); ++i) {
      const AttributeView view = node.viewAttribute(i);
      properties[toStr(view.name)] = valueOf(view);
    }
    dict["name"] = toStr(std::wstring_view(node.getName() ? node.getName() : L""));
    dict["properties"] = std::move(properties);
    py::list children(node.getChildren().size());
    dict["children"] = children;
    enter(node, children, Kind::plain);
    return dict;
  }

  std::vector<Step> steps_;
};

}  // namespace

void addObjects(py::module_& module) {
  module.def("to_node", [](py::handle value, py::handle name) {
    return wrapRoot(*Builder().build(value, toWideWithoutNul(name, "name")));
  });
  module.def("to_python", [](py::handle node) { return Reader().read(nodeOf(node)); });
}
