#include "ztservice/wsdl/Flatten.h"

#include <algorithm>
#include <map>
#include <utility>
#include <vector>

#include "ztservice/load/Copier.h"
#include "ztservice/load/Loader.h"
#include "ztservice/wsdl/FlatNames.h"

namespace ztservice {

using parse::Node;
using parse::Word;

namespace {

// What one document is copied from and how its references go.
parse::CopyPlan planOf(const parse::Document& document) {
  parse::CopyPlan plan;
  plan.bytes = &document.source;
  return plan;
}

// References to files lead nowhere from the new place: an import keeps its namespace, an include goes.
void planSchema(parse::CopyPlan& plan, const Node& schema) {
  for (const Node* child = schema.first; child; child = child->next) {
    if (child->isSchema(Word::include)) plan.actions[{child->line, child->column}] = parse::CopyAction::drop;
    if (child->isSchema(Word::import))
      plan.actions[{child->line, child->column}] = parse::CopyAction::unlocate;
  }
}

void planDefinitions(parse::CopyPlan& plan, const Node& root) {
  for (const Node* child = root.first; child; child = child->next) {
    if (child->isWsdl(Word::import)) plan.actions[{child->line, child->column}] = parse::CopyAction::drop;
    if (!child->isWsdl(Word::types)) continue;
    for (const Node& schema : parse::Children(*child, parse::Space::schema, Word::schema))
      planSchema(plan, schema);
  }
}

// The schemas of other files, each as it counts: one that took a namespace on has it now.
std::string schemasOf(const parse::Loaded& loaded, wsdl::FlatNames& names) {
  const parse::Document* own = loaded.definitions.front().document;
  std::string out;
  for (const parse::Schema& schema : loaded.schemas) {
    if (schema.document == own) continue;
    parse::CopyPlan plan = planOf(*schema.document);
    planSchema(plan, *schema.root);
    names.plan(plan, schema);
    plan.begin = {schema.root->line, schema.root->column};
    plan.addsDeclarations = true;
    if (schema.tookNamespaceOn) plan.targetNamespace = std::string(schema.targetNamespace);
    out += parse::copyOf(plan) + '\n';
  }
  return out;
}

// What other definitions have but their types, which are told with the schemas.
std::string definitionsOf(const parse::Loaded& loaded, wsdl::FlatNames& names) {
  std::string out;
  for (size_t i = 1; i < loaded.definitions.size(); ++i) {
    const parse::Definitions& definitions = loaded.definitions[i];
    parse::CopyPlan plan = planOf(*definitions.document);
    for (const Node* child = definitions.root->first; child; child = child->next) {
      if (child->isWsdl(Word::import) || child->isWsdl(Word::types))
        plan.actions[{child->line, child->column}] = parse::CopyAction::drop;
    }
    names.plan(plan, definitions);
    plan.begin = {definitions.root->line, definitions.root->column};
    plan.childrenOnly = true;
    plan.addsDeclarations = true;
    out += parse::copyOf(plan);
  }
  return out;
}

std::string flattened(const std::string& location, const std::string* bytes, Options options) {
  parse::Loader loader(options, true);
  const auto loaded = loader.load(location, bytes);
  wsdl::FlatNames names(*loaded);
  const parse::Definitions& own = loaded->definitions.front();
  parse::CopyPlan plan = planOf(*own.document);
  planDefinitions(plan, *own.root);
  names.plan(plan, own);
  if (own.targetNamespace != names.target()) plan.targetNamespace = std::string(names.target());
  for (const parse::Schema& schema : loaded->schemas) {
    if (schema.document == own.document) names.plan(plan, schema);
  }
  plan.begin = {own.root->line, own.root->column};
  const std::string schemas = schemasOf(*loaded, names);
  const Node* types = own.root->child(parse::Space::wsdl, Word::types);
  if (types) {
    plan.insertions[{types->line, types->column}] = schemas;
  } else if (!schemas.empty()) {
    plan.behindStart = "<types xmlns=\"http://schemas.xmlsoap.org/wsdl/\">\n" + schemas + "</types>\n";
  }
  plan.insertions[plan.begin] = definitionsOf(*loaded, names);
  plan.declarations = names.declarations();
  return "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n" + parse::copyOf(plan) + '\n';
}

}  // namespace

std::string flatten(const std::string& location, const Options& options) {
  return flattened(location, nullptr, options);
}

std::string flattenText(const std::string& bytes, const std::string& location, const Options& options) {
  return flattened(location, &bytes, options);
}

}  // namespace ztservice
