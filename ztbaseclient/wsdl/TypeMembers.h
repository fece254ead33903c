#pragma once

#include <string>
#include <unordered_set>
#include <vector>

#include "ztbaseclient/wsdl/CElement.h"
#include "ztbaseclient/wsdl/SchemaSet.h"

// What a type is made of: the elements of its content model, flattened in document order. References to
// groups are opened in place; the model is walked with a list, because it may be nested as deep as its author
// likes.

/// A member whose type text has no "[]" yet.
struct Member {
  CWsdlParser::CElement element;
  /// May occur more than once, by its own bounds or by those of what stands around it.
  bool repeats = false;
};

/// A schema's element as a value, its type as written.
CWsdlParser::CElement elementValue(const SchemaSet& schemas, tovin::iNode* element);
/// Gives the value its node and the namespaces that the names in it need.
void placeAt(const SchemaSet& schemas, CWsdlParser::CElement& element, tovin::iNode* node);

bool mayRepeat(const tovin::iNode* particle);
/// A "minOccurs" below 1, read as path queries read numbers.
bool mayBeMissing(const tovin::iNode* particle);

tovin::iNode* childNamed(tovin::iNode* node, std::wstring_view localName);

class MemberCollector {
 public:
  /// \param typeName for the error of a type that opens groups without end.
  MemberCollector(const SchemaSet& schemas, const tovin::WideString& typeName)
      : schemas_(schemas), typeName_(typeName) {}

  /// What a complex type, extension or restriction holds.
  std::vector<Member> collect(tovin::iNode* content);
  /// How much of it is not written there but in groups.
  size_t opened() const noexcept { return opened_; }

 private:
  // A part of the content model whose children are being looked at.
  struct Model {
    tovin::iNode* node;
    unsigned next;
    bool repeats;
    bool optional;
    bool isGroup;
    bool areAlternatives;
  };

  void open(tovin::iNode* model, bool repeats, bool optional, bool isGroup = false);
  void visit(const Model& around, tovin::iNode* particle);
  void openGroup(const Model& around, tovin::iNode* reference, bool optional);
  void closeGroup(const Model& model);
  void addMember(const Model& around, tovin::iNode* element, bool optional);
  void countOpened();

  const SchemaSet& schemas_;
  const tovin::WideString& typeName_;
  std::vector<Model> models_;
  std::vector<Member> members_;
  std::unordered_set<const tovin::iNode*> openGroups_;
  size_t opened_ = 0;
};
