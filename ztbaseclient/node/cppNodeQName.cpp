#include "ztbaseclient/node/cppNodeQName.h"

#include "tovin/BaseString.h"
#include "tovinCore/Guard.h"
#include "ztbaseclient/framework/StreamPrimitives.h"
#include "ztcore/ztUniqueStrings.h"

tovin::LeakDetector cppNodeQName::m_leakDetector(cppNodeQName::ClassName);

namespace {

void replace(const wchar_t*& field, const wchar_t* text) {
  field = ztUniqueStrings::GetUniqueString(text, field, nullptr);
}

}  // namespace

cppNodeQName::cppNodeQName() { m_leakDetector.Add(this, ClassName); }

cppNodeQName::cppNodeQName(const wchar_t* qname) : cppNodeQName() { replace(qualifiedName_, qname); }

cppNodeQName::cppNodeQName(const cppNodeQName& other) : cppNodeQName() { *this = other; }

cppNodeQName& cppNodeQName::operator=(const cppNodeQName& other) {
  ztUniqueStrings::Assign(qualifiedName_, other.qualifiedName_);
  ztUniqueStrings::Assign(localName_, other.localName_);
  ztUniqueStrings::Assign(prefix_, other.prefix_);
  return *this;
}

cppNodeQName::~cppNodeQName() {
  onDeactivate();
  m_leakDetector.Sub(this);
}

void cppNodeQName::setName(const wchar_t* name) { replace(qualifiedName_, name); }

void cppNodeQName::setUniqueName(const wchar_t* name) noexcept {
  ztUniqueStrings::Assign(qualifiedName_, name);
}

void cppNodeQName::setLocalName(const wchar_t* name) {
  replace(localName_, name);
  ztUniqueStrings::Assign(qualifiedName_, nullptr);
}

void cppNodeQName::setUriName(const wchar_t* prefix) { replace(prefix_, prefix); }

const wchar_t* cppNodeQName::joinName() const {
  tovin::WideString name;
  if (prefix_ && *prefix_) (name += prefix_) += L':';
  name += localName_;
  replace(qualifiedName_, name.isNull() ? L"" : name.c_str());
  return qualifiedName_;
}

const wchar_t* cppNodeQName::getLocalName() const {
  if (!localName_ && qualifiedName_) splitName();
  return localName_;
}

const wchar_t* cppNodeQName::getUriName() const {
  if (!prefix_ && qualifiedName_) splitName();
  return prefix_;
}

void cppNodeQName::splitName() const {
  const tovin::WideString name(qualifiedName_);
  const size_t colon = name.find(L":");
  if (colon == name.npos || colon == 0) {
    replace(localName_, name);
    ztUniqueStrings::Assign(prefix_, nullptr);
    return;
  }
  const ztUniqueString prefix(name.subString(0, colon));
  replace(localName_, name.subString(colon + 1));
  ztUniqueStrings::Assign(prefix_, prefix);
}

void cppNodeQName::WriteTexts(tovin::iByteOutputStream& stream, const wchar_t* qname, const wchar_t* local,
                              const wchar_t* prefix) {
  for (const wchar_t* text : {qname, local, prefix}) WriteWideString(stream, text);
}

void cppNodeQName::ReadTexts(tovin::iByteInputStream& stream, ztUniqueString (&texts)[3]) {
  tovin::WideString text;
  for (ztUniqueString& name : texts) {
    ReadWideString(stream, text);
    name = ztUniqueString(text);
  }
}

void cppNodeQName::serialize(tovin::iByteOutputStream& stream) const {
  WriteTexts(stream, qualifiedName_, localName_, prefix_);
}

void cppNodeQName::deserialize(tovin::iByteInputStream& stream) {
  ztUniqueString read[3];
  ReadTexts(stream, read);
  share(read[0], read[1], read[2]);
}

void cppNodeQName::share(const wchar_t* qname, const wchar_t* local, const wchar_t* prefix) noexcept {
  ztUniqueStrings::Assign(qualifiedName_, qname);
  ztUniqueStrings::Assign(localName_, local);
  ztUniqueStrings::Assign(prefix_, prefix);
}

void cppNodeQName::onActivate() noexcept { qualifiedName_ = localName_ = prefix_ = nullptr; }

void cppNodeQName::onDeactivate() noexcept {
  for (const wchar_t** field : {&prefix_, &localName_, &qualifiedName_})
    ztUniqueStrings::Assign(*field, nullptr);
}
