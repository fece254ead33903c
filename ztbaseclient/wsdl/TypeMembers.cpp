#include "ztbaseclient/wsdl/TypeMembers.h"

#include <algorithm>
#include <optional>

#include "tovin/xpath/XPathNumbers.h"
#include "tovinCore/Units.h"

using tovin::iNode;

namespace {

// Groups that open groups multiply: a few lines can ask for any number of members. No real type comes near
// this.
constexpr size_t mostOpenedParticles = 100'000;

bool isModel(const iNode* node) {
  return isNamed(node, L"sequence") || isNamed(node, L"all") || isNamed(node, L"choice");
}

// The significant digits of a whole number; nothing when it is none.
std::optional<std::wstring_view> digitsOf(std::wstring_view text) {
  if (text.starts_with(L'+')) text.remove_prefix(1);
  if (text.empty() || text.find_first_not_of(L"0123456789") != std::wstring_view::npos) return std::nullopt;
  return text.substr(std::min(text.find_first_not_of(L'0'), text.size()));
}

bool mayOccur(const iNode* particle) {
  const tovin::WideString most = attributeText(particle, L"maxOccurs");
  return digitsOf(trimmed(most.view())) != L"";
}

bool isParticle(const iNode* node) {
  const bool particle =
      isModel(node) || isNamed(node, L"element") || isNamed(node, L"group") || isNamed(node, L"any");
  return particle && mayOccur(node);
}

bool areAlternatives(iNode* model) {
  if (!isNamed(model, L"choice")) return false;
  size_t particles = 0;
  forChildren(model, [&](const iNode* child) { particles += isParticle(child); });
  return particles > 1;
}

tovin::WideString typeText(iNode* element, const tovin::WideString& name) {
  const tovin::WideString type = attributeText(element, L"type");
  if (!type.isEmpty()) return type;
  const bool written = childNamed(element, L"complexType") || childNamed(element, L"simpleType");
  return written ? name : tovin::WideString(L"");
}

// Binds the prefix of the type's name for a reader that has only the value.
void addNeededNamespace(const SchemaSet& schemas, CWsdlParser::CElement& element) {
  const QualifiedName type(element.type);
  for (const CWsdlParser::CNamespace& space : element.namespaces) {
    if (tovin::equalFolded(space.name.view(), std::wstring_view(type.prefix))) return;
  }
  const tovin::WideString uri = schemas.boundAt(element.node.get(), type.prefix);
  if (uri.isNull()) return;
  CWsdlParser::CNamespace& space = element.namespaces.add(CWsdlParser::CNamespace());
  space.name = tovin::WideString(type.prefix);
  space.setUrl(uri);
}

}  // namespace

iNode* childNamed(iNode* node, std::wstring_view localName) {
  for (unsigned i = 0; i < node->getNumberOfChildren(); ++i) {
    if (isNamed(node->getChildAt(i), localName)) return node->getChildAt(i);
  }
  return nullptr;
}

bool mayRepeat(const iNode* particle) {
  const tovin::WideString most = attributeText(particle, L"maxOccurs");
  const std::wstring_view bound = trimmed(most.view());
  if (tovin::equalFolded(bound, std::wstring_view(L"unbounded"))) return true;
  const auto digits = digitsOf(bound);
  return digits && (digits->size() > 1 || *digits > L"1");
}

bool mayBeMissing(const iNode* particle) {
  return tovin::xpath::textToNumber(attributeText(particle, L"minOccurs").view()) < 1;
}

void placeAt(const SchemaSet& schemas, CWsdlParser::CElement& element, iNode* node) {
  element.node = tovin::Ptr<iNode>(node);
  element.namespaces = declarationsOn(node);
  if (!element.type.isEmpty()) addNeededNamespace(schemas, element);
}

CWsdlParser::CElement elementValue(const SchemaSet& schemas, iNode* node) {
  CWsdlParser::CElement element;
  const tovin::WideString name = attributeText(node, L"name");
  element.name = name.isNull() ? tovin::WideString(L"") : name;
  element.type = typeText(node, element.name);
  placeAt(schemas, element, node);
  return element;
}

std::vector<Member> MemberCollector::collect(iNode* content) {
  open(content, false, false);
  while (!models_.empty()) {
    Model& model = models_.back();
    if (model.next < model.node->getNumberOfChildren()) {
      iNode* particle = model.node->getChildAt(model.next++);
      visit(Model(model), particle);
    } else {
      closeGroup(model);
      models_.pop_back();
    }
  }
  return std::move(members_);
}

void MemberCollector::open(iNode* model, bool repeats, bool optional, bool isGroup) {
  models_.push_back({model, 0, repeats, optional, isGroup, areAlternatives(model)});
}

void MemberCollector::visit(const Model& around, iNode* particle) {
  if (!isParticle(particle)) return;
  if (!openGroups_.empty()) countOpened();
  const bool optional = around.optional || around.areAlternatives || mayBeMissing(particle);
  if (isModel(particle)) {
    open(particle, around.repeats || mayRepeat(particle), optional);
  } else if (isNamed(particle, L"element")) {
    addMember(around, particle, optional);
  } else if (isNamed(particle, L"group")) {
    openGroup(around, particle, optional);
  }
}

void MemberCollector::openGroup(const Model& around, iNode* reference, bool optional) {
  const QualifiedName name(attributeText(reference, L"ref"));
  const tovin::WideString uri = schemas_.namespaceOf(reference, name);
  iNode* group = schemas_.find(schemas_.placeOf(reference, name), {SchemaSet::Kind::group}, name.local);
  // A group within itself has no end, and so is none.
  if (!group || !openGroups_.insert(group).second) {
    throw tovin::Exception(
        L"Cannot find reference group (%ls). Check that the (%ls) namespace is correctly defined or "
        L"imported.",
        name.text.isNull() ? L"" : name.text.c_str(), uri.isNull() ? L"" : uri.c_str());
  }
  open(group, around.repeats || mayRepeat(reference), optional, true);
}

void MemberCollector::closeGroup(const Model& model) {
  if (model.isGroup) openGroups_.erase(model.node);
}

void MemberCollector::addMember(const Model& around, iNode* element, bool optional) {
  iNode* declaration = element;
  const QualifiedName name(attributeText(element, L"ref"));
  if (!name.text.isNull()) {
    const tovin::WideString uri = schemas_.namespaceOf(element, name);
    declaration = schemas_.find(schemas_.placeOf(element, name), {SchemaSet::Kind::element}, name.local);
    if (!declaration) {
      throw tovin::Exception(
          L"Cannot find reference element (%ls). Check that the (%ls) namespace is correctly defined or "
          L"imported.",
          name.text, uri.isNull() ? L"" : uri.c_str());
    }
  }
  Member& member = members_.emplace_back();
  member.element = elementValue(schemas_, declaration);
  member.element.required = !optional;
  member.repeats = around.repeats || mayRepeat(element);
}

void MemberCollector::countOpened() {
  if (++opened_ > mostOpenedParticles) {
    throw tovin::Exception(L"Can't understand custom type: \"%ls\"", typeName_);
  }
}
