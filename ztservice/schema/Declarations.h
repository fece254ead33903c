#pragma once

#include <array>
#include <deque>
#include <string>
#include <unordered_map>
#include <vector>

#include "ztservice/Name.h"
#include "ztservice/load/Loader.h"

namespace ztservice::schema {

enum class Kind : uint8_t { type, element, attribute, group, attributeGroup };
inline constexpr size_t kinds = 5;

// One global component, as a schema declares it.
struct Declaration {
  Kind kind;
  Name name;
  const parse::Node* node;
  const parse::Schema* schema;
  // Of a redefinition: the schema that it redefines, and the component that its own name means inside it.
  // Null where there is none.
  bool redefines = false;
  const parse::Schema* redefined = nullptr;
  Declaration* replaced = nullptr;
  // Whether one that counts replaces it, over any number of steps.
  bool isReplaced = false;
  // The next one of the same name, in the order in which they count.
  Declaration* next = nullptr;
};

// Where a name is written, and for whom.
struct Context {
  const parse::Node* node;
  const parse::Schema* schema;
  // The global component around it.
  const Declaration* owner;
};

// A name that a document asks for.
struct Asked {
  // False for a prefix that nobody declares.
  bool declared;
  Name name;
  // As written.
  std::string_view text;
};
Asked askedName(const parse::Node& node, std::string_view text);
// "no type {urn:a}Order", "the prefix a of a:Order is not declared".
std::string notFound(std::string_view what, const Asked& asked);

// All global components of a service, by kind and name.
class Declarations {
 public:
  explicit Declarations(parse::Loaded& loaded);

  // The one that counts, null if none.
  const Declaration* find(Kind kind, const Name& name) const;
  // The same for a name that is written somewhere: one without namespace is looked for in several.
  const Declaration* find(Kind kind, const Context& context, const Asked& asked) const;
  // All that count, in the order of the documents.
  const std::vector<const Declaration*>& all(Kind kind) const { return all_[static_cast<size_t>(kind)]; }

 private:
  // Those of one name.
  struct Same {
    Declaration* first;
    Declaration* last;
    Declaration* counts;
  };
  using Table = std::unordered_map<Name, Same, NameHash>;

  void declare(const parse::Schema& schema, const std::vector<const parse::Redefinition*>& redefinitions);
  void add(const parse::Node& node, const parse::Schema& schema, const parse::Redefinition* redefinition);
  void settle(parse::Loaded& loaded);

  std::array<Table, kinds> tables_;
  std::deque<Declaration> declarations_;
  std::array<std::vector<const Declaration*>, kinds> all_;
};

}  // namespace ztservice::schema
