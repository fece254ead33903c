#include "ztservice/load/Document.h"

#include <expat.h>

#include <algorithm>
#include <vector>

#include "ztservice/Error.h"
#include "ztservice/load/Encoding.h"

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
  explicit Reader(Document& document)
      : document_(document), parser_(XML_ParserCreateNS(nullptr, separator), &XML_ParserFree) {
    if (!parser_) throw std::bad_alloc();
    XML_SetUserData(parser_.get(), this);
    XML_SetElementHandler(parser_.get(), &onStart, &onEnd);
    XML_SetNamespaceDeclHandler(parser_.get(), &onDeclaration, nullptr);
    XML_SetUnknownEncodingHandler(parser_.get(), &onEncoding, nullptr);
  }

  void read(std::string_view bytes) {
    constexpr size_t piece = 1 << 20;
    do {
      const std::string_view next = bytes.substr(0, piece);
      bytes.remove_prefix(next.size());
      if (XML_Parse(parser_.get(), next.data(), static_cast<int>(next.size()), bytes.empty()) !=
          XML_STATUS_OK)
        fail();
    } while (!bytes.empty());
  }

 private:
  struct Open {
    Node* node;
    Node* last;  // of its children
    const Scope* scope;
  };

  static Reader& self(void* data) { return *static_cast<Reader*>(data); }

  // No exception may pass through expat.
  template <class Work>
  void guarded(const Work& work) {
    if (failure_) return;
    try {
      work();
    } catch (...) {
      failure_ = std::current_exception();
      XML_StopParser(parser_.get(), XML_FALSE);
    }
  }

  static void XMLCALL onDeclaration(void* data, const char* prefix, const char* uri) {
    self(data).guarded([&] { self(data).declare(prefix ? prefix : "", uri ? uri : ""); });
  }
  static void XMLCALL onStart(void* data, const char* name, const char** attributes) {
    self(data).guarded([&] { self(data).start(name, attributes); });
  }
  static void XMLCALL onEnd(void* data, const char*) { self(data).end(); }
  static int XMLCALL onEncoding(void*, const char* name, XML_Encoding* encoding) {
    return fillEncoding(name, *encoding) ? XML_STATUS_OK : XML_STATUS_ERROR;
  }

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
    node.line = static_cast<uint32_t>(XML_GetCurrentLineNumber(parser_.get()));
    node.column = static_cast<uint32_t>(XML_GetCurrentColumnNumber(parser_.get()) + 1);
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
    if (failure_) return;
    if (skipped_ > 0) {
      if (--skipped_ > 0) return;
    } else {
      outer_ = open_.back().scope;
      open_.pop_back();
    }
    // Those of the element that ends are over.
    scope_ = outer_;
  }

  [[noreturn]] void fail() {
    if (failure_) std::rethrow_exception(failure_);
    throw Error({document_.shown, XML_GetCurrentLineNumber(parser_.get()),
                 XML_GetCurrentColumnNumber(parser_.get()) + 1},
                XML_ErrorString(XML_GetErrorCode(parser_.get())));
  }

  Document& document_;
  std::unique_ptr<XML_ParserStruct, decltype(&XML_ParserFree)> parser_;
  std::vector<Open> open_;
  std::vector<Attribute> kept_;
  // The declarations that hold now, and those that hold around the element that is open.
  const Scope* scope_ = nullptr;
  const Scope* outer_ = nullptr;
  // How deep in an element that is left out.
  size_t skipped_ = 0;
  std::exception_ptr failure_;
};

}  // namespace

void readDocument(Document& document, std::string_view bytes) { Reader(document).read(bytes); }

}  // namespace ztservice::parse
