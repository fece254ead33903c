#pragma once

#include <deque>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "ztservice/Error.h"
#include "ztservice/load/Document.h"
#include "ztservice/load/Options.h"

namespace ztservice::parse {

class Sources;

// One schema: a file, or what stands in the types of definitions. An included file without target namespace
// is one for each namespace that it takes on.
struct Schema {
  const Document* document = nullptr;
  const Node* root = nullptr;
  std::string_view targetNamespace;
  // Of the definitions around it.
  std::string_view around;
  bool tookNamespaceOn = false;
  bool qualifiesElements = false;
  bool qualifiesAttributes = false;
  // What it includes and redefines.
  std::vector<const Schema*> included;
};

struct Definitions {
  const Document* document = nullptr;
  const Node* root = nullptr;
  std::string_view targetNamespace;
};

// What stands in a redefine element, and the schema that it redefines; null where that cannot be read.
struct Redefinition {
  const Node* node = nullptr;
  const Schema* by = nullptr;
  const Schema* of = nullptr;
};

// A document and all that it refers to, in the order in which they count.
struct Loaded {
  std::deque<Document> documents;
  std::deque<Schema> schemas;
  std::deque<Definitions> definitions;
  std::vector<Redefinition> redefinitions;
  std::vector<Warning> warnings;

  Place placeOf(const Document& document, const Node& node) const {
    return {document.shown, node.line, node.column};
  }
};

// Reads a document and all that it refers to: each file once, a document's own components before what it
// refers to, that in the order of the references, each with what it refers to in turn.
class Loader {
 public:
  // keepsSources: whether the bytes of the documents stay.
  explicit Loader(const Options& options, bool keepsSources = false);
  Loader(const Loader&) = delete;
  Loader& operator=(const Loader&) = delete;
  ~Loader();

  // Errors: Error where the document cannot be read or is no WSDL 1.1.
  // bytes: of the document, where they are not to be read; its location says what references are relative to.
  std::unique_ptr<Loaded> load(const std::string& location, const std::string* bytes);

 private:
  struct Reference {
    const Node* node = nullptr;
    const Document* from = nullptr;
    // Whose includes and redefinitions they are; null for an import.
    Schema* schema = nullptr;
    std::string_view location;
    std::string_view nameSpace;
    // Of what it redefines; none for any other.
    std::optional<size_t> redefinition;
  };
  struct Instance {
    const Node* root;
    std::string_view targetNamespace;
    bool operator==(const Instance&) const = default;
  };
  struct InstanceHash {
    size_t operator()(const Instance& instance) const noexcept {
      return std::hash<const void*>()(instance.root) ^
             std::hash<std::string_view>()(instance.targetNamespace);
    }
  };

  Document* read(const std::string& location, const std::string* bytes);
  const Document* documentOf(const Reference& reference);
  const Document* readOnce(const std::string& location, const Reference& reference);
  void enterDefinitions(const Document& document);
  Schema* enterSchema(const Document& document, const Node& root, std::string_view targetNamespace, bool took,
                      std::string_view around);
  void collect(const Document& document, Schema& schema);
  void follow(const Reference& reference);
  void attach(const Reference& reference, const Schema& schema);
  void pushCollected();
  void warn(const Reference& reference, const std::string& text);

  Options options_;
  bool keepsSources_;
  std::unique_ptr<Sources> sources_;
  std::unique_ptr<Loaded> loaded_;
  // By identity; with the reason of a failure where there is no document.
  struct Outcome {
    const Document* document = nullptr;
    std::string reason;
  };
  std::unordered_map<std::string, Outcome> read_;
  std::unordered_map<Instance, Schema*, InstanceHash> entered_;
  std::unordered_map<const Node*, bool> enteredDefinitions_;
  std::vector<Reference> collected_;
  std::vector<Reference> pending_;
};

}  // namespace ztservice::parse
