#pragma once

#include <cstdint>
#include <limits>
#include <optional>
#include <span>
#include <string_view>
#include <vector>

#include "ztservice/Name.h"

namespace ztservice {

struct Type;

/// A type that something has: by name, or written inside it.
struct TypeReference {
  /// Empty for a type without name.
  Name name;
  /// Null for one with a name, and where what is referred to has the type: an element with `isReference`.
  const Type* anonymous = nullptr;
};

/// A wildcard: "##any", "##other", "##targetNamespace", "##local" or namespaces; "strict", "lax" or "skip".
struct Wildcard {
  std::string_view space;
  std::string_view process;
};

/// What a complex type has inside it: an element or, with `any`, a wildcard. Whatever cannot be resolved has
/// an `error` that says what is missing, and nothing behind its name then; without a name too where not even
/// that can be told.
struct Member {
  static constexpr uint64_t unbounded = std::numeric_limits<uint64_t>::max();

  /// As on the wire.
  Name name;
  TypeReference type;
  std::optional<Wildcard> any;
  /// Those of all groups around it are in them; of a choice, too, which lowers no minimum.
  uint64_t min = 1;
  uint64_t max = 1;
  bool nillable = false;
  /// Refers to a global element.
  bool isReference = false;
  /// "2.1" for the first alternative of the type's second choice, "2.1/3.2" for one inside it; empty without.
  std::string_view choice;
  /// The innermost group around it that repeats, numbered from 1; 0 without.
  unsigned group = 0;
  std::optional<std::string_view> defaultValue;
  std::optional<std::string_view> fixedValue;
  std::string_view error;
};

struct Attribute {
  Name name;
  TypeReference type;
  bool required = false;
  std::optional<std::string_view> defaultValue;
  std::optional<std::string_view> fixedValue;
  std::string_view error;
};

/// "maxLength", "20".
struct Facet {
  std::string_view name;
  std::string_view value;
};

/// A type with all that it has, its bases' too where they come first.
///
/// - Shape: what a kind does not have is empty.
/// - Ownership: belongs to its service, as all texts in it do.
struct Type {
  enum class Kind : uint8_t { atomic, simple, enumeration, array, complex };
  enum class Variety : uint8_t { atomic, list, unionOf };

  Kind kind = Kind::complex;
  /// Empty for a type that is written inside something.
  Name name;
  Name base;
  /// Why the rest is not there; a type that cannot be resolved is simple or complex.
  std::string_view error;
  /// Where it is written; no file for a built-in type.
  std::string_view file;
  uint32_t line = 0;
  uint32_t column = 0;

  // Of atomic and simple types and enumerations.
  /// The type without name that a simple one restricts.
  const Type* anonymousBase = nullptr;
  Variety variety = Variety::atomic;
  /// One of the 19 of XML Schema, or anySimpleType; empty for a union.
  std::string_view primitive;
  std::vector<TypeReference> memberTypes;
  std::vector<Facet> facets;
  std::vector<std::string_view> values;

  /// Of lists and arrays.
  std::optional<TypeReference> item;
  std::string_view itemName;
  std::string_view dimensions;

  // Of complex types.
  bool isAbstract = false;
  bool mixed = false;
  /// What can stand in for an abstract type.
  std::vector<Name> derived;
  /// Of its text.
  std::optional<TypeReference> content;
  std::vector<Member> members;
  std::vector<Attribute> attributes;
  std::optional<Wildcard> anyAttribute;
};

/// A global element.
struct Element {
  Name name;
  TypeReference type;
  bool nillable = false;
  bool isAbstract = false;
  std::optional<std::string_view> defaultValue;
  std::optional<std::string_view> fixedValue;
  /// What can stand in its place.
  std::vector<Name> substitutes;
  std::string_view error;
  /// Where it is written.
  std::string_view file;
  uint32_t line = 0;
  uint32_t column = 0;
};

}  // namespace ztservice
