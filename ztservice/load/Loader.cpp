#include "ztservice/load/Loader.h"

#include <algorithm>

#include "tovinCore/Utf8.h"
#include "ztservice/load/Location.h"
#include "ztservice/load/Sources.h"

namespace ztservice::parse {

namespace {

bool isDefinitions(const Document& document) {
  return document.root && document.root->isWsdl(Word::definitions);
}
bool isSchema(const Document& document) { return document.root && document.root->isSchema(Word::schema); }

std::string reasonOf(const tovin::Exception& e) {
  std::string text = tovin::wideToUtf8(e.getMessage());
  if (!e.getReason().empty()) text += ": " + tovin::wideToUtf8(e.getReason());
  return text;
}

}  // namespace

Loader::Loader(const Options& options, bool keepsSources)
    : options_(options), keepsSources_(keepsSources), sources_(std::make_unique<Sources>(options_)) {}

Loader::~Loader() = default;

std::unique_ptr<Loaded> Loader::load(const std::string& location, const std::string* bytes) {
  loaded_ = std::make_unique<Loaded>();
  const Document* document = read(location, bytes);
  if (!isDefinitions(*document)) throw Error({document->shown}, "no definitions of WSDL 1.1");
  read_[location::identity(location)].document = document;
  read_[location::identity(document->location)].document = document;
  enterDefinitions(*document);
  while (!pending_.empty()) {
    const Reference next = pending_.back();
    pending_.pop_back();
    follow(next);
  }
  return std::move(loaded_);
}

Document* Loader::read(const std::string& location, const std::string* bytes) {
  Sources::Bytes got;
  if (!bytes) got = sources_->read(location);
  Document& document = loaded_->documents.emplace_back();
  document.location = bytes ? location : got.location;
  document.shown = location::shown(document.location);
  try {
    readDocument(document, bytes ? *bytes : got.bytes);
  } catch (...) {
    loaded_->documents.pop_back();
    throw;
  }
  if (keepsSources_) document.source = bytes ? *bytes : std::move(got.bytes);
  return &document;
}

void Loader::enterDefinitions(const Document& document) {
  if (!enteredDefinitions_.emplace(document.root, true).second) return;
  const Node& root = *document.root;
  const std::string_view targetNamespace = root.get(Word::targetNamespace);
  loaded_->definitions.push_back({&document, &root, targetNamespace});
  for (const Node* child = root.first; child; child = child->next) {
    if (child->isWsdl(Word::import)) {
      Reference& reference = collected_.emplace_back();
      reference.node = child;
      reference.from = &document;
      reference.location = child->get(Word::location);
      reference.nameSpace = child->get(Word::nameSpace);
    } else if (child->isWsdl(Word::types)) {
      for (const Node& schema : Children(*child, Space::schema, Word::schema))
        enterSchema(document, schema, schema.get(Word::targetNamespace), false, targetNamespace);
    }
  }
  pushCollected();
}

Schema* Loader::enterSchema(const Document& document, const Node& root, std::string_view targetNamespace,
                            bool took, std::string_view around) {
  const auto [entry, isNew] = entered_.emplace(Instance{&root, targetNamespace}, nullptr);
  if (!isNew) return entry->second;
  Schema& schema = loaded_->schemas.emplace_back();
  entry->second = &schema;
  schema.document = &document;
  schema.root = &root;
  schema.targetNamespace = targetNamespace;
  schema.around = around;
  schema.tookNamespaceOn = took;
  schema.qualifiesElements = root.get(Word::elementFormDefault) == "qualified";
  schema.qualifiesAttributes = root.get(Word::attributeFormDefault) == "qualified";
  collect(document, schema);
  return &schema;
}

void Loader::collect(const Document& document, Schema& schema) {
  for (const Node* child = schema.root->first; child; child = child->next) {
    if (child->space != Space::schema) continue;
    const bool imports = child->word == Word::import;
    if (!imports && child->word != Word::include && child->word != Word::redefine) continue;
    Reference& reference = collected_.emplace_back();
    reference.node = child;
    reference.from = &document;
    reference.schema = imports ? nullptr : &schema;
    reference.location = child->get(Word::schemaLocation);
    reference.nameSpace = child->get(Word::nameSpace);
    if (child->word != Word::redefine) continue;
    reference.redefinition = loaded_->redefinitions.size();
    loaded_->redefinitions.push_back({child, &schema, nullptr});
  }
}

// The first one collected is followed next.
void Loader::pushCollected() {
  pending_.insert(pending_.end(), collected_.rbegin(), collected_.rend());
  collected_.clear();
}

void Loader::follow(const Reference& reference) {
  const Document* document = documentOf(reference);
  if (!document) return;
  if (isDefinitions(*document)) {
    enterDefinitions(*document);
  } else if (isSchema(*document)) {
    const std::string_view own = document->root->get(Word::targetNamespace);
    const bool takes = reference.schema && own.empty() && !reference.schema->targetNamespace.empty();
    Schema* schema =
        enterSchema(*document, *document->root, takes ? reference.schema->targetNamespace : own, takes, {});
    pushCollected();
    if (reference.schema) attach(reference, *schema);
  } else {
    warn(reference, document->shown + ": neither a schema nor definitions of WSDL 1.1");
  }
}

void Loader::attach(const Reference& reference, const Schema& schema) {
  reference.schema->included.push_back(&schema);
  if (reference.redefinition) loaded_->redefinitions[*reference.redefinition].of = &schema;
}

const Document* Loader::documentOf(const Reference& reference) {
  const std::string nameSpace(reference.nameSpace);
  if (reference.location.empty()) {
    const auto copy = sources_->copyOfNamespace(nameSpace);
    return copy ? readOnce(*copy, reference) : nullptr;
  }
  const std::string resolved = location::resolved(reference.from->location, reference.location);
  if (const auto copy = sources_->copyOf(std::string(reference.location), resolved))
    return readOnce(*copy, reference);
  // What was read already is there, wherever it lies.
  const bool known = read_.contains(location::identity(resolved));
  const std::string refusal = known ? std::string() : sources_->refusal(reference.from->location, resolved);
  if (refusal.empty()) return readOnce(resolved, reference);
  if (location::isWeb(resolved)) {
    if (const auto copy = sources_->copyOfNamespace(nameSpace)) return readOnce(*copy, reference);
  }
  warn(reference, location::shown(resolved) + ' ' + refusal);
  return nullptr;
}

const Document* Loader::readOnce(const std::string& location, const Reference& reference) {
  Outcome& outcome = read_[location::identity(location)];
  if (!outcome.document && outcome.reason.empty()) {
    try {
      outcome.document = read(location, nullptr);
    } catch (const tovin::Exception& e) {
      const std::string shown =
          e.getFile().empty() ? location::shown(location) : tovin::wideToUtf8(e.getFile());
      const std::string line = e.getLine() > 0
                                   ? ':' + std::to_string(e.getLine()) + ':' + std::to_string(e.getColumn())
                                   : std::string();
      outcome.reason = shown + line + ": " + reasonOf(e);
    }
  }
  if (!outcome.document) warn(reference, outcome.reason);
  return outcome.document;
}

void Loader::warn(const Reference& reference, const std::string& text) {
  loaded_->warnings.push_back({loaded_->placeOf(*reference.from, *reference.node), text});
}

}  // namespace ztservice::parse
