#pragma once

#include <array>
#include <optional>
#include <string>
#include <unordered_map>
#include <vector>

#include "ztservice/Name.h"
#include "ztservice/load/Loader.h"

namespace ztservice::wsdl {

enum class Kind : uint8_t { message, portType, binding, service };
inline constexpr size_t kinds = 4;
// Of a child of definitions; none for what is no component.
std::optional<Kind> kindOf(const parse::Node& node);

// One component of definitions.
struct Definition {
  Name name;
  const parse::Node* node = nullptr;
  const parse::Definitions* in = nullptr;
};

// All components of all definitions, by kind and name. Of two with one name the first counts, with a warning.
class DefinitionSet {
 public:
  explicit DefinitionSet(parse::Loaded& loaded);

  // What an attribute of a node in these definitions names; null if there is none. A name that is not found
  // is looked for by its local name in the target namespace of the definitions that write it.
  const Definition* find(Kind kind, const parse::Node& node, std::string_view text,
                         const parse::Definitions& in) const;
  // The one that counts, null if there is none.
  const Definition* find(Kind kind, const Name& name) const;
  // In the order of the documents.
  const std::vector<Definition>& services() const noexcept { return services_; }

 private:
  void add(Kind kind, const parse::Node& node, const parse::Definitions& in, parse::Loaded& loaded);

  std::array<std::unordered_map<Name, Definition, NameHash>, kinds> tables_;
  std::vector<Definition> services_;
};

}  // namespace ztservice::wsdl
