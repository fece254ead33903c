#include "ztservice/call/AnswerTree.h"

#include <algorithm>

#include "ztservice/load/Expat.h"

namespace ztservice::call {

namespace {

constexpr size_t mostNamespaces = 100'000;  // declared, with those that are declared again
constexpr char separator = '\n';            // in no namespace and no name

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
  AnswerTree& tree;
  const AnswerLimits& limits;
  parse::Expat expat{XML_ParserCreateNS(nullptr, separator)};
  std::vector<Element*> open;
  size_t scope = 0;
  // Of each open element the scope around it.
  std::vector<size_t> outerScopes;
  size_t newDeclarations = 0;

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
    XML_SetStartNamespaceDeclHandler(
        expat.get(), [](void* self, const XML_Char* prefix, const XML_Char* space) {
          static_cast<Reader*>(self)->guarded(
              [&](Reader& reader) { reader.declare(prefix ? prefix : "", space ? space : ""); });
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

  std::string_view keep(std::string_view text) {
    const auto [found, isNew] = tree.texts_.try_emplace(std::string(text));
    if (isNew) found->second = std::make_unique<std::string>(text);
    return *found->second;
  }

  Name nameOf(std::string_view text) {
    const size_t at = text.find(separator);
    if (at == text.npos) return {{}, keep(text)};
    return {keep(text.substr(0, at)), keep(text.substr(at + 1))};
  }

  void declare(std::string_view prefix, std::string_view space) {
    if (tree.declarations_.size() >= mostNamespaces) fail("too many namespaces");
    if (newDeclarations++ == 0) outerScopes.push_back(scope);
    tree.declarations_.push_back({std::string(prefix), std::string(space), scope});
    scope = tree.declarations_.size();
  }

  void begin(const XML_Char* name, const XML_Char** attributes) {
    if (open.size() >= limits.depth) fail("more than " + std::to_string(limits.depth) + " elements deep");
    if (tree.elements_.size() == limits.elements)
      fail("more than " + std::to_string(limits.elements) + " elements");
    if (newDeclarations == 0) outerScopes.push_back(scope);
    newDeclarations = 0;
    Element& element = tree.elements_.emplace_back();
    element.name = nameOf(name);
    element.scope = scope;
    for (; *attributes; attributes += 2) {
      element.attributes.push_back({nameOf(attributes[0]), keep(attributes[1])});
      const Attribute& added = element.attributes.back();
      if (added.name.local == "id") tree.ids_.emplace(added.value, &element);
    }
    if (!open.empty()) {
      open.back()->children.push_back(&element);
      open.back()->textBehind.emplace_back();
    }
    open.push_back(&element);
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
