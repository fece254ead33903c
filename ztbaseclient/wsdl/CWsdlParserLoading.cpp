// External schemas: the files that a document's schemas import or include.
#include <optional>
#include <string>
#include <vector>

#include "tovinCore/Guard.h"
#include "tovinCore/Units.h"
#include "tovinCore/Utf8.h"
#include "tovinCore/platform/Files.h"
#include "ztbaseclient/wsdl/CSchema.h"
#include "ztbaseclient/wsdl/ReferencePlace.h"
#include "ztbaseclient/wsdl/WsdlParserState.h"
#include "ztcore/ztFileName.h"

using tovin::guarded;
using tovin::iNode;

namespace {

constexpr wchar_t nullPointer[] = L"Cannot dereference a NULL pointer";

bool nameContains(const iNode& node, std::wstring_view word) {
  return node.getName() && std::wstring_view(node.getName()).find(word) != std::wstring_view::npos;
}

tovin::WideString writtenLocation(const iNode& reference) {
  const tovin::WideString location = attributeText(&reference, L"schemalocation");
  return location.isNull() ? attributeText(&reference, L"location") : location;
}

// A file name is real text, where the document keeps one character a byte.
tovin::WideString locationOf(const iNode& reference) {
  const tovin::WideString location = writtenLocation(reference);
  return location.isNull() ? location : tovin::WideString(tovin::charactersOfBytes(location.view()));
}

tovin::Ptr<iNode> readSchemaFile(const tovin::WideString& name) {
  CWsdlParser::XMLParser parser;
  tovin::Ptr<iNode> root(parser.parseRegular(name));
  if (!root) throw tovin::Exception(nullPointer);
  return root;
}

// A document must not make this computer speak to another one, unless it came from there.
void requireNear(const tovin::WideString& file, const wchar_t* wsdlFileName) {
  const std::wstring share = tovin::platform::networkShareOf(file.view());
  if (share.empty()) return;
  const std::wstring own = tovin::platform::networkShareOf(wsdlFileName ? wsdlFileName : L"");
  if (!tovin::equalFolded(share, own)) {
    throw tovin::Exception(L"Schema %ls lies on another computer than its document", file);
  }
}

// The file beside the document that has its name and the extension xsd.
tovin::WideString siblingSchemaOf(const wchar_t* wsdlFileName) {
  tovin::WideString file(wsdlFileName);
  tovin::WideString extension;
  ztFileName(wsdlFileName).GetExtension(extension);
  file = file.subString(0, file.getLength() - extension.getLength());
  if (!file.view().ends_with(L'.')) file += L".";
  file += L"xsd";
  return file;
}

}  // namespace

// Follows the references of one schema, and of the files that it reaches. A list of visits instead of
// recursion: a chain of files is as long as its author likes.
class CWsdlParser::SchemaLoader {
 public:
  SchemaLoader(CWsdlParser& parser, const wchar_t* wsdlFileName, iNode* typesNode)
      : parser_(parser), state_(*parser.state_), wsdlFileName_(wsdlFileName), typesNode_(typesNode) {}

  void load(iNode* schemaNode) {
    visits_.push_back({tovin::Ptr<iNode>(schemaNode), 0, std::nullopt, false});
    while (!visits_.empty()) {
      Visit& visit = visits_.back();
      if (visit.nextChild < visit.schema->getNumberOfChildren()) {
        follow(*visit.schema->getChildAt(visit.nextChild++));
      } else {
        if (visit.record) finish(visit);
        visits_.pop_back();
      }
    }
  }

 private:
  // A schema whose references are being followed: the document's own, or a file with the record that it will
  // have.
  struct Visit {
    tovin::Ptr<iNode> schema;
    unsigned nextChild;
    std::optional<ExternalSchemaRecord> record;
    bool included;
  };

  void follow(const iNode& child) {
    const bool included = nameContains(child, L"include");
    if (!included && !nameContains(child, L"import")) return;
    const tovin::WideString location = locationOf(child);
    if (location.isNull()) return;
    const tovin::WideString file = parser_.buildExternalSchemaFilename(wsdlFileName_, location);
    ExternalSchemaRecord record;
    record.fileName = ztFileName(file).GetCanonicalName();
    iNode* includer = visits_.back().schema.get();
    if (iNode* held = rootOf(record.fileName)) {
      if (included) state_.schemas.addInclusion(includer, held);
      return;
    }
    record.schemaNamespace.setUrl(attributeText(&child, L"namespace"));
    requireNear(file, wsdlFileName_);
    record.root = readReferred(child, location, record.fileName);
    record.location = location;
    // Known before its own references are followed, so that files which import each other come to an end.
    known_.emplace(folded(record.fileName.view()), record.root);
    if (included) state_.schemas.addInclusion(includer, record.root.get());
    visits_.push_back({record.root, 0, record, included});
  }

  // A failure tells the file as the reference names it, and where the reference stands.
  tovin::Ptr<iNode> readReferred(const iNode& reference, const tovin::WideString& location,
                                 const tovin::WideString& file) {
    try {
      return readSchemaFile(file);
    } catch (tovin::Exception& e) {
      const auto& record = visits_.back().record;
      const ReferencePlace place = record
                                       ? findReference(record->fileName, writtenLocation(reference))
                                       : findReference(state_.xml.getRawBytes(), writtenLocation(reference));
      const std::wstring includer = record ? record->location.c_str() : wsdlFileName_ ? wsdlFileName_ : L"";
      e.setFile(location.c_str());
      e.setOrigin(tovin::format(L"%ls by %ls%ls",
                                nameContains(reference, L"include") ? L"included" : L"imported",
                                includer.empty() ? L"the document" : includer, place.text()));
      throw;
    }
  }

  // The root of a file that was read before; null if none.
  iNode* rootOf(const tovin::WideString& file) {
    for (const auto* files : {&known_, &state_.heldFiles}) {
      const auto found = files->find(folded(file.view()));
      if (found != files->end()) return found->second.get();
    }
    return nullptr;
  }

  void finish(Visit& visit) {
    ExternalSchemaRecord& record = *visit.record;
    typesNode_->appendChild(record.root.get());
    const tovin::WideString target = attributeText(record.root.get(), L"targetNamespace");
    record.schemaNamespace.setUrl(visit.included ? nullptr : target.c_str());
    record.loaded = true;
    state_.heldFiles.emplace(folded(record.fileName.view()), record.root);
    state_.schemas.addFileRoot(record.root.get());
    state_.externalSchemas.add(record);
  }

  CWsdlParser& parser_;
  State& state_;
  const wchar_t* wsdlFileName_;
  iNode* typesNode_;
  std::vector<Visit> visits_;
  FilesByName known_;
};

void CWsdlParser::loadExternalSchemata(const wchar_t* wsdlFileName, iNode* typesNode, iNode* schemaNode) {
  guarded({ClassName, "loadExternalSchemata()"}, [&] {
    if (!typesNode || !schemaNode) throw tovin::Exception(nullPointer);
    SchemaLoader(*this, wsdlFileName, typesNode).load(schemaNode);
  });
}

tovin::WideString CWsdlParser::buildExternalSchemaFilename(const wchar_t* wsdlFileName,
                                                           const wchar_t* location) {
  return guarded({ClassName, "buildExternalSchemaFilename()"}, [&] {
    const ztFileName place(location);
    tovin::WideString leaf;
    place.GetLeaf(leaf);
    if (leaf.isEmpty()) return siblingSchemaOf(wsdlFileName);
    if (place.IsAbsolute()) return tovin::WideString(location);
    tovin::WideString file;
    ztFileName::ExtractPathname(wsdlFileName, file);
    file += L"/";
    file += location;
    return file;
  });
}

bool CWsdlParser::importExternalSchemaElements(const CSchema& schema) {
  return guarded({ClassName, "importExternalSchemaElements()"}, [&] {
    if (!schema.node) throw tovin::Exception(nullPointer);
    return schema.node->hasChildren();
  });
}
