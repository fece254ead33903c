#pragma once

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

class TypeBuilder {
 public:
  /// \param arrays whether an array is KindArray, or else a KindComplex around a member that repeats.
  TypeBuilder(const SchemaSet& schemas, bool arrays) : schemas_(schemas), arrays_(arrays) {}

  /// The value of a complexType or simpleType node; schema and namespace are left to the caller.
  CWsdlParser::CCustomType build(tovin::iNode* definition, const tovin::WideString& name);

 private:
  // One type of an inheritance: where its attributes and members are written, and the type that it extends.
  struct Level {
    tovin::iNode* content;
    bool isArray;
    tovin::iNode* base;
  };

  void processComplexType(tovin::iNode* definition);
  std::vector<Level> levelsOf(tovin::iNode* definition);
  Level levelOf(tovin::iNode* type) const;
  Level processComplexContent(tovin::iNode* complexContent) const;
  tovin::iNode* findBase(const tovin::iNode* extension) const;
  void requireArrayBase(const tovin::iNode* restriction) const;
  void refuseAttributes(tovin::iNode* content) const;
  Member arrayItem(tovin::iNode* restriction) const;
  void processMembers(std::vector<Member>& members);
  void processArrayType(Member& item);
  void processSimpleType(tovin::iNode* definition);
  void processSimpleTypeRestriction(tovin::iNode* restriction);
  void processEnumeration(tovin::iNode* enumeration, const tovin::WideString& base);

  const SchemaSet& schemas_;
  const bool arrays_;
  CWsdlParser::CCustomType type_;
};
