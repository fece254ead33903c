#pragma once

#include <array>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "ztservice/Service.h"
#include "ztservice/call/Pattern.h"

namespace ztservice::call {

// Texts as values of simple types: what their facets say, those of all bases.
//
// - Shape: what cannot be judged is no fault: a type that is not resolved, an expression that is none.
// - Threads: one at a time.
class SimpleValues {
 public:
  explicit SimpleValues(const Service& service) : service_(service) {}

  // The type of a reference of the service; null for one that is not resolved.
  const Type* typeOf(const TypeReference& reference);
  static bool isSimple(const Type& type);

  // What is wrong with a text, as a sentence that begins with it; empty if nothing.
  std::string faultOf(const Type& type, std::string_view text);
  // A text that has no fault, where one can be found.
  std::string sampleOf(const Type& type);

 private:
  // What is looked up once for each type.
  struct Facts {
    // The type and what it restricts, up to the built-in one.
    std::vector<const Type*> line;
    std::string_view whiteSpace;
    bool hasFacets = false;
    bool isAnyText = false;
  };
  // A name of the service is known by where it stands.
  struct Known {
    const char* local = nullptr;
    const char* space = nullptr;
    const Type* type = nullptr;
  };

  const Facts& factsOf(const Type& type);
  std::vector<const Type*> lineOf(const Type& type) const;
  static std::string_view whiteSpaceOf(const std::vector<const Type*>& line);
  std::string faultOf(const Type& type, std::string_view text, size_t depth);
  std::string faultInUnion(const Type& type, std::string_view text, size_t depth);
  std::string faultOfFacets(const Type& step, const Type& type, const std::string& text);
  std::string faultOfFacet(const Facet& facet, const Type& type, const std::string& text) const;
  bool isOneOf(const Type& step, const Type& type, const std::string& text);
  const Pattern* pattern(std::string_view expression);
  std::string sampleOf(const Type& type, size_t depth);
  std::vector<std::string> candidatesFor(const Type& type, const std::vector<const Type*>& line);

  const Service& service_;
  std::array<Known, 64> known_;
  std::unordered_map<const Type*, Facts> facts_;
  std::map<std::string_view, std::optional<Pattern>> patterns_;
};

}  // namespace ztservice::call
