// Reading and writing trees, and what the Python classes of nodes, children and properties stand on.
#include <algorithm>
#include <cmath>
#include <unordered_set>
#include <vector>

#include "Errors.h"
#include "Module.h"
#include "NodeObject.h"
#include "Texts.h"
#include "Values.h"
#include "tovin/values/BitsetValue.h"
#include "tovin/values/DoubleValue.h"
#include "tovin/values/IntegerArrayValue.h"
#include "tovin/values/IntegerValue.h"
#include "tovin/values/StringArrayValue.h"
#include "tovin/values/StringValue.h"
#include "tovinCore/Units.h"
#include "tovinCore/Utf8.h"
#include "ztbaseclient/data/DocumentTexts.h"
#include "ztbaseclient/node/CBaseNode.h"
#include "ztbaseclient/node/CObjectTransportNode.h"
#include "ztbaseclient/node/NodeRecord.h"
#include "ztbaseclient/wsdl/XMLParser.h"
#include "ztclient/answers/Json.h"
#include "ztcore/ztMemoryStreams.h"

namespace {

// Bytes of a buffer that Python keeps meanwhile.
class Bytes {
 public:
  explicit Bytes(py::handle object) {
    if (PyObject_GetBuffer(object.ptr(), &view_, PyBUF_SIMPLE) != 0) throw py::error_already_set();
  }
  ~Bytes() { PyBuffer_Release(&view_); }
  Bytes(const Bytes&) = delete;
  Bytes& operator=(const Bytes&) = delete;
  const unsigned char* data() const { return static_cast<const unsigned char*>(view_.buf); }
  size_t size() const { return static_cast<size_t>(view_.len); }

 private:
  Py_buffer view_{};
};

// Names the file in what is thrown about it.
template <class Read>
auto naming(const std::wstring& file, Read&& read) {
  try {
    return read();
  } catch (tovin::Exception& e) {
    if (e.getFile().empty() && !file.empty()) e.setFile(file);
    throw;
  }
}

tovin::Ptr<tovin::iNode> readDocument(const Bytes& bytes) {
  ztMemoryByteInputStream stream(bytes.data(), bytes.size());
  CWsdlParser::XMLParser parser;
  tovin::Ptr<tovin::iNode> root(parser.parse(stream));
  if (!root) throw tovin::Exception(L"There is no document in the file");
  DocumentTexts::makeCharacters(*root);
  return root;
}

py::object parse(py::handle source, const py::object& file) {
  const Bytes bytes(source);
  const std::wstring name = file.is_none() ? std::wstring() : toFileName(file);
  return failingAs(Failure::parse, [&] {
    tovin::Ptr<tovin::iNode> root;
    {
      const py::gil_scoped_release released;
      root = naming(name, [&] { return readDocument(bytes); });
    }
    return wrapRoot(*root);
  });
}

// The node and how many bytes its record took.
py::tuple readRecord(py::handle source, const py::object& file) {
  const Bytes bytes(source);
  const std::wstring name = file.is_none() ? std::wstring() : toFileName(file);
  tovin::Ptr<tovin::iNode> root;
  size_t left = 0;
  {
    const py::gil_scoped_release released;
    ztMemoryByteInputStream stream(bytes.data(), bytes.size());
    root = naming(name, [&] { return ReadNodeRecord(stream); });
    left = stream.GetRemaining();
  }
  return py::make_tuple(wrapRoot(*root), bytes.size() - left);
}

py::bytes writeRecord(py::handle node) {
  tovin::iNode& written = nodeOf(node);
  ztMemoryByteOutputStream record;
  {
    const Alone alone(node);
    written.serialize(record);
  }
  return {reinterpret_cast<const char*>(record.GetBytes()), record.GetSize()};
}

py::object cloneNode(py::handle node) {
  tovin::iNode& source = nodeOf(node);
  tovin::Ptr<tovin::iNode> copy;
  {
    const Alone alone(node);
    copy = tovin::Ptr<tovin::iNode>(source.cloneNode(true));
  }
  return wrapRoot(*copy);
}

// --- equality

template <class T>
const T* as(const tovin::AttributeView& view) {
  return view.isObject() ? tovin::seek<T>(static_cast<const tovin::Object*>(&view.object())) : nullptr;
}

unsigned flagsOf(const tovin::AttributeView& view) {
  return view.kind == tovin::AttributeView::Kind::property
             ? view.property->getInfo()->getMetaDataFlags().getBits()
             : view.flags;
}

// A value, packed or an object, in one form.
struct Plain {
  using Kind = tovin::AttributeView::Kind;

  explicit Plain(const tovin::AttributeView& view) : kind(view.kind) {
    if (kind == Kind::text) text = unitsOf(view);
    if (kind == Kind::number) number = view.number;
    if (kind == Kind::integer) integer = view.integer;
    if (!view.isObject()) return;
    object = &view.object();
    if (const auto* string = as<tovin::StringValue>(view)) {
      kind = string->content().isNull() ? Kind::nullText : Kind::text;
      text = string->content().view();
    } else if (const auto* real = as<tovin::DoubleValue>(view)) {
      kind = Kind::number;
      number = real->getDouble();
    } else if (const auto* whole = as<tovin::IntegerValue>(view)) {
      kind = Kind::integer;
      integer = whole->getInteger();
    } else {
      kind = object->isNullValue() ? Kind::nullValue : Kind::value;
    }
  }

  bool equals(const Plain& other) const {
    if (kind != other.kind || text != other.text || integer != other.integer) return false;
    if (number != other.number && !(std::isnan(number) && std::isnan(other.number))) return false;
    return kind != Kind::value || object->equals(*other.object);
  }

  Kind kind;
  std::wstring text;
  double number = 0;
  int32_t integer = 0;
  const tovin::Value* object = nullptr;
};

bool haveEqualProperties(const tovin::iNode& a, const tovin::iNode& b) {
  const unsigned count = a.attributeCount();
  if (count != b.attributeCount()) return false;
  for (unsigned i = 0; i < count; ++i) {
    const tovin::AttributeView one = a.viewAttribute(i), other = b.viewAttribute(i);
    if (flagsOf(one) != flagsOf(other) || std::wstring_view(one.name) != other.name) return false;
    if (!Plain(one).equals(Plain(other))) return false;
  }
  return true;
}

const tovin::Object* carriedBy(const tovin::iNode& node) {
  const auto* carrier = tovin::seek<CObjectTransportNode>(static_cast<const tovin::Object*>(&node));
  return carrier ? carrier->GetObject() : nullptr;
}

bool carryEqualObjects(const tovin::iNode& a, const tovin::iNode& b) {
  const tovin::Object *one = carriedBy(a), *other = carriedBy(b);
  if (!one || !other) return one == other;
  ztMemoryByteOutputStream first, second;
  one->serialize(first);
  other->serialize(second);
  return one->getClassTag() == other->getClassTag() && first.GetSize() == second.GetSize() &&
         std::equal(first.GetBytes(), first.GetBytes() + first.GetSize(), second.GetBytes());
}

bool haveEqualContent(const tovin::iNode& a, const tovin::iNode& b) {
  const auto nameOf = [](const tovin::iNode& node) {
    return std::wstring_view(node.getName() ? node.getName() : L"");
  };
  return a.getClassTag() == b.getClassTag() && nameOf(a) == nameOf(b) && haveEqualProperties(a, b) &&
         a.getChildren().size() == b.getChildren().size() && carryEqualObjects(a, b);
}

bool areEqual(py::handle a, py::handle b) {
  std::vector<std::pair<const tovin::iNode*, const tovin::iNode*>> left{{&nodeOf(a), &nodeOf(b)}};
  while (!left.empty()) {
    const auto [one, other] = left.back();
    left.pop_back();
    if (one == other) continue;
    if (!haveEqualContent(*one, *other)) return false;
    const auto ones = one->getChildren(), others = other->getChildren();
    for (size_t i = ones.size(); i-- > 0;) left.emplace_back(ones[i], others[i]);
  }
  return true;
}

// --- children

py::object childAt(py::handle node, unsigned index) {
  NodeObject& self = nodeObject(node);
  return wrap(*self.node->getChildAt(index), self.tree);
}

py::list childList(py::handle node) {
  NodeObject& self = nodeObject(node);
  const auto children = self.node->getChildren();
  py::list list(children.size());
  for (size_t i = 0; i < children.size(); ++i) list[i] = wrap(*children[i], self.tree);
  return list;
}

void requireNoAncestor(const tovin::iNode& child, const tovin::iNode& parent) {
  for (const tovin::iNode* at = &parent; at; at = at->findParent())
    if (at == &child) throw py::value_error("a node cannot be below itself");
}

// Whatever held the child's tree holds its new one from now on.
void join(NodeObject& child, NodeObject& parent) {
  Tree &from = child.tree.get(), &to = parent.tree.get();
  if (&from == &to) return;
  if (from.root.get() == child.node) {
    from.joined = &to;
    ++to.references;
    from.root.reset();
  } else {
    child.tree = parent.tree;
  }
}

void take(tovin::iNode& child) {
  if (tovin::iNode* before = child.findParent()) before->removeChild(&child);
}

// From wherever it was.
void insertChild(py::handle node, size_t index, py::handle child) {
  NodeObject &parent = nodeObject(node), &added = nodeObject(child);
  requireNoAncestor(*added.node, *parent.node);
  const tovin::Ptr<tovin::iNode> held(added.node);
  const auto children = parent.node->getChildren();
  const tovin::iNode* behind = index < children.size() ? children[index] : nullptr;
  if (behind == added.node) return;
  take(*added.node);
  behind ? parent.node->insertChildBefore(added.node, behind) : parent.node->appendChild(added.node);
  join(added, parent);
}

py::object removeChild(py::handle node, unsigned index) {
  tovin::iNode& parent = nodeOf(node);
  const tovin::Ptr<tovin::iNode> child(parent.getChildAt(index));
  parent.removeChildAt(index);
  return wrapRoot(*child);
}

// These and no others, in this order.
void setChildren(py::handle node, const py::list& list) {
  NodeObject& parent = nodeObject(node);
  std::vector<tovin::Ptr<tovin::iNode>> wanted;
  std::unordered_set<const tovin::iNode*> known;
  for (const py::handle item : list) {
    wanted.emplace_back(nodeObject(item).node);
    if (!known.insert(wanted.back().get()).second) throw py::value_error("a node cannot be a child twice");
    requireNoAncestor(*wanted.back(), *parent.node);
  }
  // Whoever leaves gets a tree of its own if somebody has it.
  parent.node->removeAllChildren();
  for (size_t i = 0; i < wanted.size(); ++i) {
    take(*wanted[i]);
    parent.node->appendChild(wanted[i].get());
    join(nodeObject(list[i]), parent);
  }
}

// --- properties

// Exact as the collection has it: A to Z folded, the first one that is met.
int64_t indexOf(const tovin::iNode& node, const std::wstring& name) {
  const unsigned count = node.attributeCount();
  for (unsigned i = 0; i < count; ++i)
    if (tovin::equalFolded(std::wstring_view(node.viewAttribute(i).name), std::wstring_view(name))) return i;
  return -1;
}

py::object propertyNamed(py::handle node, py::handle name) {
  const tovin::iNode& owner = nodeOf(node);
  const int64_t index = indexOf(owner, toWide(name, "the name of a property"));
  if (index < 0) throwMissing(name);
  PyObject* value = newValue(owner.viewAttribute(static_cast<unsigned>(index)));
  if (!value) throw py::error_already_set();
  return py::reinterpret_steal<py::object>(value);
}

bool hasProperty(py::handle node, py::handle name) {
  return PyUnicode_Check(name.ptr()) && indexOf(nodeOf(node), toWide(name, "name")) >= 0;
}

void setProperty(py::handle node, py::handle name, py::handle value, const py::object& flags) {
  tovin::iNode& owner = nodeOf(node);
  const std::wstring wide = toWideWithoutNul(name, "the name of a property");
  if (wide.empty()) throw py::value_error("a property needs a name");
  const OwnedValue made = makeValue(value);
  tovin::iPropertyCollection& properties = *owner.getProperties();
  const int64_t index = indexOf(owner, wide);
  tovin::iProperty* property = nullptr;
  if (index >= 0)
    (property = properties.get(static_cast<unsigned>(index)))->setValue(*made);
  else
    property = properties.define(wide.c_str(), *made, 0);
  if (!flags.is_none()) {
    tovin::MetaDataFlags bits(py::cast<unsigned>(flags));
    property->getInfo()->setMetaDataFlags(bits);
  }
}

void removeProperty(py::handle node, py::handle name) {
  tovin::iNode& owner = nodeOf(node);
  const int64_t index = indexOf(owner, toWide(name, "the name of a property"));
  if (index < 0) throwMissing(name);
  owner.getProperties()->remove(static_cast<unsigned>(index));
}

unsigned flagsNamed(py::handle node, py::handle name) {
  tovin::iNode& owner = nodeOf(node);
  const int64_t index = indexOf(owner, toWide(name, "the name of a property"));
  if (index < 0) throwMissing(name);
  return flagsOf(owner.viewAttribute(static_cast<unsigned>(index)));
}

template <class Take>
py::list eachProperty(py::handle node, Take&& take) {
  const tovin::iNode& owner = nodeOf(node);
  const unsigned count = owner.attributeCount();
  py::list list(count);
  for (unsigned i = 0; i < count; ++i) list[i] = take(owner.viewAttribute(i));
  return list;
}

py::object valueOf(const tovin::AttributeView& view) {
  PyObject* value = newValue(view);
  if (!value) throw py::error_already_set();
  return py::reinterpret_steal<py::object>(value);
}

// --- texts for people

std::string onOneLine(std::string name) {
  const bool plain =
      std::none_of(name.begin(), name.end(), [](unsigned char c) { return c < 0x20 || c == 0x7F; });
  if (plain) return name;
  const std::string escaped = toText(Json(name));
  return escaped.substr(1, escaped.size() - 2);
}

Json textOrNull(const tovin::WideString& text) {
  return text.isNull() ? Json() : Json(tovin::wideToUtf8(text.view()));
}

Json jsonOf(const tovin::AttributeView& view) {
  using Kind = tovin::AttributeView::Kind;
  if (view.kind == Kind::text) return tovin::wideToUtf8(std::wstring_view(unitsOf(view)));
  if (view.kind == Kind::number) return numberOf(view.number);
  if (view.kind == Kind::integer) return view.integer;
  if (view.kind == Kind::nullText || view.kind == Kind::nullValue) return nullptr;
  if (const auto* real = as<tovin::DoubleValue>(view)) return numberOf(real->getDouble());
  if (const auto* integer = as<tovin::IntegerValue>(view)) return integer->getInteger();
  if (const auto* bits = as<tovin::BitsetValue>(view)) return bitsOn(*bits);
  if (const auto* numbers = as<tovin::IntegerArrayValue>(view)) return numbers->content();
  if (const auto* texts = as<tovin::StringArrayValue>(view)) {
    Json list = Json::array();
    for (const tovin::WideString& text : texts->content()) list.push_back(textOrNull(text));
    return list;
  }
  return textOrNull(view.object().getText());
}

// As the command prints it; the first `most` lines.
py::str treeText(py::handle node, size_t most) {
  constexpr size_t numberedLevel = 40;
  struct Step {
    const tovin::iNode* node;
    size_t depth;
  };
  std::string text;
  std::vector<Step> left{{&nodeOf(node), 0}};
  size_t lines = 0;
  while (!left.empty() && lines++ < most) {
    const Step step = left.back();
    left.pop_back();
    text += step.depth < numberedLevel ? std::string(2 * step.depth, ' ') : std::to_string(step.depth) + " ";
    text += onOneLine(tovin::wideToUtf8(step.node->getName()));
    for (unsigned i = 0; i < step.node->attributeCount(); ++i) {
      const tovin::AttributeView view = step.node->viewAttribute(i);
      text += " " + onOneLine(tovin::wideToUtf8(view.name)) + "=";
      text += toText(jsonOf(view));
    }
    if (const auto* carrier =
            tovin::seek<CObjectTransportNode>(static_cast<const tovin::Object*>(step.node))) {
      if (carrier->GetObject())
        text += std::string(" <") + static_cast<const char*>(carrier->GetObject()->getClassTag()) + ">";
    }
    text += '\n';
    const auto children = step.node->getChildren();
    for (auto child = children.rbegin(); child != children.rend(); ++child)
      left.push_back({*child, step.depth + 1});
  }
  return py::reinterpret_steal<py::str>(
      PyUnicode_DecodeUTF8(text.data(), static_cast<Py_ssize_t>(text.size()), "surrogatepass"));
}

}  // namespace

void addTrees(py::module_& module) {
  module.def("parse", parse);
  module.def("read_record", readRecord);
  module.def("write_record", writeRecord);
  module.def("clone", cloneNode);
  module.def("equal", areEqual);
  module.def("same", [](py::handle a, py::handle b) { return &nodeOf(a) == &nodeOf(b); });
  module.def("class_name", [](py::handle node) { return std::string(nodeOf(node).getClassTag()); });
  module.def("child_count", [](py::handle node) { return nodeOf(node).getChildren().size(); });
  module.def("child_at", childAt);
  module.def("child_list", childList);
  module.def("insert_child", insertChild);
  module.def("remove_child", removeChild);
  module.def("set_children", setChildren);
  module.def("property_count", [](py::handle node) { return nodeOf(node).attributeCount(); });
  module.def("property", propertyNamed);
  module.def("has_property", hasProperty);
  module.def("set_property", setProperty);
  module.def("remove_property", removeProperty);
  module.def("clear_properties", [](py::handle node) {
    tovin::iNode& owner = nodeOf(node);
    if (owner.hasProperties()) owner.getProperties()->removeAll();
  });
  module.def("property_flags", flagsNamed);
  module.def("property_names", [](py::handle node) {
    return eachProperty(node, [](const tovin::AttributeView& view) { return toStr(view.name); });
  });
  module.def("property_items", [](py::handle node) {
    return eachProperty(node, [](const tovin::AttributeView& view) {
      return py::make_tuple(toStr(view.name), valueOf(view));
    });
  });
  module.def("tree_text", treeText);
}
