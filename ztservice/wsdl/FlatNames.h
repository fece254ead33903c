#pragma once

#include <map>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <unordered_map>
#include <utility>

#include "ztservice/load/Copier.h"
#include "ztservice/load/Loader.h"
#include "ztservice/schema/Declarations.h"
#include "ztservice/wsdl/DefinitionSet.h"

namespace ztservice::wsdl {

// What is called otherwise where all definitions and schemas stand in one document: what refers to
// definitions of other target namespaces refers to the one that there is; of two components that then have
// one name the second gets another; and so does what a redefinition replaces, which it can name no more by
// its own name.
class FlatNames {
 public:
  explicit FlatNames(parse::Loaded& loaded);

  // The target namespace of the document: that of its definitions, or of the first that have one.
  std::string_view target() const noexcept { return target_; }
  // Plans the new names of definitions, their types aside, or of a schema.
  void plan(parse::CopyPlan& plan, const parse::Definitions& definitions);
  void plan(parse::CopyPlan& plan, const parse::Schema& schema);
  // The declarations, by attribute, that the new names need around them all.
  const std::map<std::string, std::string>& declarations() const noexcept { return declarations_; }

 private:
  using Node = parse::Node;
  // A component as one schema has it: an included file may be several schemas.
  using Place = std::pair<const parse::Schema*, const Node*>;

  void nameDefinitions();
  void nameReplaced();
  void planDefinition(parse::CopyPlan& plan, const Node& node, const parse::Definitions& in);
  void planReference(parse::CopyPlan& plan, const Node& node, parse::Word attribute, Kind kind,
                     const parse::Definitions& in);
  void planPart(parse::CopyPlan& plan, const Node& part, parse::Word attribute, schema::Kind kind,
                const parse::Definitions& in);
  void planComponent(parse::CopyPlan& plan, const Node& component, const parse::Schema& schema);
  // What a name in a schema becomes; none where it stays.
  std::optional<std::string> nameFor(schema::Kind kind, const schema::Context& context,
                                     std::string_view written);
  std::string qualified(std::string_view space, std::string_view local);

  parse::Loaded& loaded_;
  DefinitionSet definitions_;
  schema::Declarations schemata_;
  std::string_view target_;
  // Whether there are several target namespaces.
  bool merges_ = false;
  std::unordered_map<const Node*, std::string> definitionNames_;
  std::map<Place, const schema::Declaration*> redefined_;
  std::unordered_map<const schema::Declaration*, std::string> replacedNames_;
  std::set<std::string, std::less<>> usedPrefixes_;
  std::map<std::string, std::string, std::less<>> prefixes_;
  std::map<std::string, std::string> declarations_;
};

}  // namespace ztservice::wsdl
