#include "ztservice/load/Document.h"

#include <algorithm>
#include <vector>

#include "ztservice/Error.h"
#include "ztservice/load/Expat.h"

namespace ztservice::parse {

namespace {

// Stands between a namespace and a local name in what expat says; no namespace can have one in it.
constexpr char separator = '\n';

struct Split {
  std::string_view uri;
  std::string_view local;
};

Split split(const char* name) {
  const std::string_view text = name;
  const size_t at = text.rfind(separator);
  if (at == text.npos) return {{}, text};
  return {text.substr(0, at), text.substr(at + 1)};
}

class Reader {
 public:
  explicit Reader(Document& document) : document_(document), expat_(XML_ParserCreateNS(nullptr, separator)) {
    XML_SetUserData(expat_.get(), this);
    XML_SetElementHandler(expat_.get(), &onStart, &onEnd);
    XML_SetNamespaceDeclHandler(expat_.get(), &onDeclaration, nullptr);
  }

  void read(std::string_view bytes) {
    if (!expat_.feed(bytes)) throw Error({document_.shown, expat_.line(), expat_.column()}, expat_.fault());
  }

 private:
  struct Open {
    Node* node;
    Node* last;  // of its children
    const Scope* scope;
  };

  static Reader& self(void* data) { return *static_cast<Reader*>(data); }

  static void XMLCALL onDeclaration(void* data, const char* prefix, const char* uri) {
    self(data).expat_.guarded([&] { self(data).declare(prefix ? prefix : "", uri ? uri : ""); });
  }
  static void XMLCALL onStart(void* data, const char* name, const char** attributes) {
    self(data).expat_.guarded([&] { self(data).start(name, attributes); });
  }
  static void XMLCALL onEnd(void* data, const char*) { self(data).end(); }

  void declare(std::string_view prefix, std::string_view uri) {
    if (skipped_ > 0) return;
    scope_ = document_.arena.make(Scope{document_.arena.text(prefix), document_.arena.text(uri), scope_});
  }

  void start(const char* name, const char** attributes) {
    if (skipped_ > 0) {
      ++skipped_;
      return;
    }
    const Split names = split(name);
    const Space space = spaceOf(names.uri);
    const Word word = wordOf(names.local);
    if (!means(space, word)) {
      skipped_ = 1;
      return;
    }
    Node node;
    node.word = word;
    node.space = space;
    node.line = static_cast<uint32_t>(expat_.line());
    node.column = static_cast<uint32_t>(expat_.column());
    if (word == Word::facet) node.local = document_.arena.text(names.local);
    node.scope = scope_;
    node.attributes = keep(attributes);
    append(document_.arena.make(node));
  }

  static bool means(Space space, Word word) {
    if (word == Word::address) return true;
    return word != Word::other && space != Space::none && space != Space::other && space != Space::addressing;
  }

  std::span<const Attribute> keep(const char** attributes) {
    kept_.clear();
    for (; *attributes; attributes += 2) {
      const Split names = split(attributes[0]);
      const Word word = wordOf(names.local);
      if (word == Word::other) continue;
      kept_.push_back({word, spaceOf(names.uri), document_.arena.text(attributes[1])});
    }
    return document_.arena.copy(std::span<const Attribute>(kept_));
  }

  void append(Node* node) {
    if (open_.empty()) {
      document_.root = node;
    } else if (Open& parent = open_.back(); parent.last) {
      parent.last->next = node;
      parent.last = node;
    } else {
      parent.node->first = parent.last = node;
    }
    open_.push_back({node, nullptr, outer_});
    outer_ = scope_;
  }

  void end() {
    if (expat_.gaveUp()) return;
    if (skipped_ > 0) {
      if (--skipped_ > 0) return;
    } else {
      outer_ = open_.back().scope;
      open_.pop_back();
    }
    // Those of the element that ends are over.
    scope_ = outer_;
  }

  Document& document_;
  Expat expat_;
  std::vector<Open> open_;
  std::vector<Attribute> kept_;
  // The declarations that hold now, and those that hold around the element that is open.
  const Scope* scope_ = nullptr;
  const Scope* outer_ = nullptr;
  // How deep in an element that is left out.
  size_t skipped_ = 0;
};

}  // namespace

void readDocument(Document& document, std::string_view bytes) { Reader(document).read(bytes); }

}  // namespace ztservice::parse
