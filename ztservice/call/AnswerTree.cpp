#include "ztservice/call/AnswerTree.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <unordered_set>

#include "ztservice/load/Expat.h"
#include "ztservice/schema/Builtins.h"

namespace ztservice::call {

namespace {

constexpr size_t mostNamespaces = 100'000;  // declared, with those that are declared again

bool isBlank(std::string_view text) { return text.find_first_not_of(" \t\r\n") == std::string_view::npos; }

}  // namespace

const std::string_view* AnswerTree::Element::attribute(const Name& wanted) const {
  for (const Attribute& one : attributes) {
    if (one.name == wanted) return &one.value;
  }
  return nullptr;
}

const AnswerTree::Element* AnswerTree::Element::child(std::string_view local) const {
  for (const auto& one : children) {
    if (one->name.local == local) return one;
  }
  return nullptr;
}

bool AnswerTree::Element::isWhiteSpace() const {
  return isBlank(text) && std::all_of(textBehind.begin(), textBehind.end(), isBlank);
}

struct AnswerTree::Reader {
  // A name as it is written, and what it means inside a scope.
  struct Resolved {
    std::string_view written;
    size_t scope = 0;
    bool isAttribute = false;
    Name name;
  };

  AnswerTree& tree;
  const AnswerLimits& limits;
  // Namespaces are resolved here, and once for the names that come again and again.
  parse::Expat expat{XML_ParserCreate(nullptr)};
  std::array<Resolved, 64> names;
  std::vector<Element*> open;
  size_t scope = 0;
  // Of each open element the scope around it.
  std::vector<size_t> outerScopes;

  explicit Reader(AnswerTree& into, const AnswerLimits& given) : tree(into), limits(given) {
    XML_SetUserData(expat.get(), this);
    XML_SetElementHandler(
        expat.get(),
        [](void* self, const XML_Char* name, const XML_Char** attributes) {
          static_cast<Reader*>(self)->guarded([&](Reader& reader) { reader.begin(name, attributes); });
        },
        [](void* self, const XML_Char*) {
          static_cast<Reader*>(self)->guarded([](Reader& reader) { reader.end(); });
        });
    XML_SetCharacterDataHandler(expat.get(), [](void* self, const XML_Char* text, int length) {
      static_cast<Reader*>(self)->guarded([&](Reader& reader) {
        reader.characters({text, static_cast<size_t>(length)});
      });
    });
    XML_SetStartDoctypeDeclHandler(
        expat.get(), [](void* self, const XML_Char*, const XML_Char*, const XML_Char*, int) {
          static_cast<Reader*>(self)->guarded(
              [](Reader& reader) { reader.fail("a document type, which messages must not have"); });
        });
  }

  template <class Work>
  void guarded(const Work& work) {
    expat.guarded([&] { work(*this); });
  }

  [[noreturn]] void fail(const std::string& text) const {
    throw Error({tree.what_, expat.line(), expat.column()}, text);
  }

  std::string_view keep(std::string_view text) { return tree.texts_.emplace_back(text); }

  Name nameOf(std::string_view written, bool isAttribute) {
    uint32_t hash = isAttribute;
    for (const char c : written) hash = hash * 31 + static_cast<unsigned char>(c);
    Resolved& known = names[hash % names.size()];
    if (known.written != written || known.scope != scope || known.isAttribute != isAttribute) {
      const std::string_view kept = known.written == written ? known.written : keep(written);
      known = {kept, scope, isAttribute, resolve(kept, isAttribute)};
    }
    return known.name;
  }

  // Namespaces in XML 1.0: an attribute without a prefix is in none.
  Name resolve(std::string_view written, bool isAttribute) const {
    const size_t colon = written.find(':');
    if (colon == written.npos && isAttribute) return {{}, written};
    const std::string_view prefix = colon == written.npos ? "" : written.substr(0, colon);
    const std::string_view local = colon == written.npos ? written : written.substr(colon + 1);
    if (prefix == "xml") return {schema::xmlNamespace, local};
    for (size_t at = scope; at > 0; at = tree.declarations_[at - 1].outer) {
      if (tree.declarations_[at - 1].prefix == prefix) return {tree.declarations_[at - 1].space, local};
    }
    if (colon != written.npos) fail("unbound prefix");
    return {{}, local};
  }

  void declare(std::string_view prefix, std::string_view space) {
    if (tree.declarations_.size() >= mostNamespaces) fail("too many namespaces");
    if (prefix == "xmlns" || (prefix == "xml") != (space == schema::xmlNamespace))
      fail("reserved prefix must not be declared or undeclared");
    if (!prefix.empty() && space.empty()) fail("must not undeclare prefix");
    tree.declarations_.push_back({std::string(prefix), std::string(space), scope});
    scope = tree.declarations_.size();
  }

  static bool isDeclaration(std::string_view written) {
    return written.starts_with("xmlns") && (written.size() == 5 || written[5] == ':');
  }

  void begin(const XML_Char* name, const XML_Char** attributes) {
    if (open.size() >= limits.depth) fail("more than " + std::to_string(limits.depth) + " elements deep");
    if (tree.elements_.size() == limits.elements)
      fail("more than " + std::to_string(limits.elements) + " elements");
    outerScopes.push_back(scope);
    for (const XML_Char** one = attributes; *one; one += 2) {
      const std::string_view written(one[0]);
      if (isDeclaration(written)) declare(written.substr(std::min<size_t>(6, written.size())), one[1]);
    }
    Element& element = tree.elements_.emplace_back();
    element.name = nameOf(name, false);
    element.scope = scope;
    for (; *attributes; attributes += 2) {
      if (isDeclaration(attributes[0])) continue;
      element.attributes.push_back({nameOf(attributes[0], true), keep(attributes[1])});
      const Attribute& added = element.attributes.back();
      if (added.name.local == "id") tree.ids_.emplace(added.value, &element);
    }
    if (element.attributes.size() > 1) refuseEqual(element.attributes);
    if (!open.empty()) {
      open.back()->children.push_back(&element);
      open.back()->textBehind.emplace_back();
    }
    open.push_back(&element);
  }

  // Different prefixes may mean one namespace.
  void refuseEqual(const std::vector<Attribute>& attributes) const {
    constexpr size_t few = 8;
    std::unordered_set<Name, NameHash> seen;
    for (size_t i = 0; i < attributes.size(); ++i) {
      const bool isSecond =
          attributes.size() > few
              ? !seen.insert(attributes[i].name).second
              : std::any_of(attributes.begin(), attributes.begin() + static_cast<ptrdiff_t>(i),
                            [&](const Attribute& one) { return one.name == attributes[i].name; });
      if (isSecond) fail("duplicate attribute");
    }
  }

  void end() {
    open.pop_back();
    scope = outerScopes.back();
    outerScopes.pop_back();
  }

  void characters(std::string_view text) {
    Element& inside = *open.back();
    (inside.textBehind.empty() ? inside.text : inside.textBehind.back()).append(text);
  }
};

AnswerTree::AnswerTree(std::string_view bytes, const AnswerLimits& limits, const char* what) : what_(what) {
  if (bytes.size() > limits.bytes)
    throw Error({what}, "more than " + std::to_string(limits.bytes) + " bytes");
  Reader reader(*this, limits);
  if (!reader.expat.feed(bytes)) reader.fail(reader.expat.fault());
}

const AnswerTree::Element* AnswerTree::byId(std::string_view id) const {
  const auto found = ids_.find(id);
  return found == ids_.end() ? nullptr : found->second;
}

Name AnswerTree::resolved(const Element& at, std::string_view qualified) const {
  const size_t first = std::min(qualified.find_first_not_of(" \t\r\n"), qualified.size());
  qualified = qualified.substr(first, qualified.find_last_not_of(" \t\r\n") + 1 - first);
  const size_t colon = qualified.find(':');
  const std::string_view prefix = colon == qualified.npos ? "" : qualified.substr(0, colon);
  const std::string_view local = colon == qualified.npos ? qualified : qualified.substr(colon + 1);
  for (size_t scope = at.scope; scope > 0; scope = declarations_[scope - 1].outer) {
    if (declarations_[scope - 1].prefix == prefix) return {declarations_[scope - 1].space, local};
  }
  return {{}, local};
}

}  // namespace ztservice::call
