#pragma once

#include <optional>
#include <string>
#include <unordered_map>
#include <utility>
#include <vector>

#include "ztbaseclient/wsdl/CCustomType.h"
#include "ztbaseclient/wsdl/SchemaSet.h"
#include "ztbaseclient/wsdl/TypeMembers.h"

// Makes type values out of the definitions of XML Schema.

/// The definition at a place. "Can't find schema with targetNamespace=%ls", "Cannot find a schema with
/// targetNamespace=%ls and customType=%ls"; the text is what the messages quote.
tovin::iNode* requireDeclaredType(const SchemaSet& schemas, const SchemaSet::Place& place,
                                  std::wstring_view name, const wchar_t* text);
/// The same for a global element.
tovin::iNode* requireDeclaredElement(const SchemaSet& schemas, const SchemaSet::Place& place,
                                     std::wstring_view name, const wchar_t* text);

// Remembers what it met, so that types which build on one another are read once each.
class TypeBuilder {
 public:
  /// Borrows the schemas, which must be complete.
  explicit TypeBuilder(const SchemaSet& schemas) : schemas_(schemas) {}

  /// The value of a complexType or simpleType node; schema and namespace are left to the caller.
  /// \param arrays whether an array is KindArray, or else a KindComplex around a member that repeats.
  CWsdlParser::CCustomType build(tovin::iNode* definition, const tovin::WideString& name, bool arrays);

 private:
  // One type of an inheritance: where its attributes and members are written, and the type that it extends.
  struct Level {
    tovin::iNode* content = nullptr;
    bool isArray = false;
    tovin::iNode* base = nullptr;
  };
  // A complex type that was read: its own members, or what is wrong with it or its bases.
  struct Known {
    tovin::Ptr<tovin::iNode> definition;
    Level level;
    std::vector<Member> members;
    // The nearest type that it builds on and that has members, and how many there are from there on.
    const Known* inherited = nullptr;
    size_t inheritedCount = 0;
    bool counted = false;
    std::optional<std::wstring> fault;
  };
  using Levels = std::vector<std::pair<tovin::iNode*, Level>>;

  void processComplexType(tovin::iNode* definition);
  Known& require(tovin::iNode* definition);
  std::optional<std::wstring> findLevels(tovin::iNode* definition, Levels& levels) const;
  void learn(tovin::iNode* definition, const Level& level, const std::optional<std::wstring>& fault);
  void learnCircle(const Levels& levels, const tovin::iNode* entry);
  void readMembers(Known& known, const tovin::WideString& name);
  void countBorrowed(size_t count, const tovin::WideString& name);
  Level levelOf(tovin::iNode* type) const;
  Level processComplexContent(tovin::iNode* complexContent) const;
  tovin::iNode* findBase(const tovin::iNode* extension) const;
  void requireArrayBase(const tovin::iNode* restriction) const;
  void refuseAttributes(tovin::iNode* content) const;
  Member arrayItem(tovin::iNode* restriction, std::vector<Member> members) const;
  void processMembers(const std::vector<const Member*>& members);
  void processArrayType(const Member& item);
  void processSimpleType(tovin::iNode* definition);
  void processSimpleTypeRestriction(tovin::iNode* restriction);
  void processEnumeration(tovin::iNode* enumeration, const tovin::WideString& base);

  const SchemaSet& schemas_;
  std::unordered_map<const tovin::iNode*, Known> known_;
  size_t borrowed_ = 0;
  // The answer in the making.
  bool arrays_ = false;
  CWsdlParser::CCustomType type_;
};
