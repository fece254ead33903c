#include "ztbaseclient/wsdl/CWsdlParser.h"

#include "tovinCore/Guard.h"
#include "ztbaseclient/wsdl/WsdlParserState.h"

using tovin::guarded;

tovin::LeakDetector CWsdlParser::m_attributeLeakDetector("CAttribute");
tovin::LeakDetector CWsdlParser::m_nodeLeakDetector("tovin::iNode");

CWsdlParser::CWsdlParser() : state_(std::make_unique<State>()) {}

CWsdlParser::~CWsdlParser() = default;

// The parses are not guarded again: the XML reader has named this class and method already.
void CWsdlParser::Parse(const tovin::WideString& fileName) {
  setWsdlUrl(fileName);
  adopt(state_->xml.parse(fileName));
  state_->hasParsed = true;
}

void CWsdlParser::Parse(const tovin::Array<unsigned char>& bytes) { adopt(state_->xml.parse(bytes)); }

void CWsdlParser::Parse(tovin::iByteInputStream& stream) { adopt(state_->xml.parse(stream)); }

void CWsdlParser::ParseZippedWsdl(const tovin::Array<unsigned char>& bytes) {
  adopt(state_->xml.parseZippedWsdl(bytes));
}

bool CWsdlParser::GetZippedWsdl(tovin::Array<unsigned char>& out) { return state_->xml.getZippedWsdl(out); }

// A second parse without a reset gives the first document again, with all that was found in it.
void CWsdlParser::adopt(tovin::iNode* root) {
  if (state_->root.get() == root) return;
  state_->replaceDocument(root);
}

void CWsdlParser::Reset() {
  guarded({ClassName, "Reset()"}, [&] {
    state_->replaceDocument(nullptr);
    state_->hasParsed = false;
    state_->xml.reset();
  });
}

tovin::iNode* CWsdlParser::requireRoot() const {
  if (!state_->root) throw tovin::Exception(L"Cannot dereference a NULL pointer");
  return state_->root.get();
}

const tovin::iNode* CWsdlParser::GetRoot() const noexcept { return state_->root.get(); }

bool CWsdlParser::HasParsedWsdl() const noexcept { return state_->hasParsed; }

void CWsdlParser::setWsdlUrl(const wchar_t* url) {
  guarded({ClassName, "setWsdlUrl"}, [&] { state_->wsdlUrl = tovin::WideString(url); });
}

const wchar_t* CWsdlParser::getWsdlUrl() const noexcept { return state_->wsdlUrl; }

bool CWsdlParser::IsBackwardCompatible70() const noexcept { return state_->backwardCompatible; }

void CWsdlParser::SetBackwardCompatible70(bool compatible) noexcept {
  state_->backwardCompatible = compatible;
}

bool CWsdlParser::IsRPCStyle() const noexcept { return state_->style == RPC; }

bool CWsdlParser::IsDOCStyle() const noexcept { return state_->style == DOC; }

const tovin::Array<CWsdlParser::ExternalSchemaRecord>& CWsdlParser::GetExternalSchemas() const noexcept {
  return state_->externalSchemas;
}
