#include "ztbaseclient/auth/CAuthRoles.h"

using tovin::guarded;

// The quotes are part of the name: peers know the class by this text.
const tovin::ClassTagDecl CAuthRoles::Tag("\"DraVolin.data.AuthRoles\"");
tovin::LeakDetector CAuthRoles::m_leakDetector(CAuthRoles::ClassName);
tovin::ClassImp<CAuthRoles> CAuthRoles::m_class(CAuthRoles::Tag, CAuthRoles::m_leakDetector);

namespace {

constexpr wchar_t unknownRole[] =
    L"Role %ls not found in Corvanta configuration.  Please have your administrator check that all packages "
    L"are installed correctly.";

}  // namespace

CAuthRoles::CAuthRoles() = default;
CAuthRoles::CAuthRoles(CAuthRolesCache* cache) : cache_(cache) {}
CAuthRoles::CAuthRoles(const CAuthRoles& other) = default;
CAuthRoles::~CAuthRoles() = default;

CAuthRoles& CAuthRoles::operator=(const CAuthRoles& other) {
  AssignRoles(other);
  return *this;
}

void CAuthRoles::AssignRoles(const CAuthRoles& other) {
  guarded({ClassName, "AssignRoles"}, [&] {
    cache_ = other.cache_;
    bits_.copyFrom(other.bits_);
  });
}

void CAuthRoles::SetRolesCache(CAuthRolesCache* cache) {
  guarded({ClassName, "SetRolesCache"}, [&] { cache_ = cache; });
}

void CAuthRoles::CheckRoleCache() const {
  if (!cache_) throw tovin::Exception(L"The authorization role lookup cache has not been initialized");
}

unsigned CAuthRoles::requireBit(const wchar_t* name) const {
  const unsigned bit = cache_->GetBit(name);
  if (bit == CAuthRolesCache::NoBit) throw tovin::Exception(unknownRole, name);
  return bit;
}

void CAuthRoles::switchOn(unsigned bit) {
  if (bit >= bits_.getNumBits()) bits_.resize(bit + 1);
  bits_.setOn(bit);
}

void CAuthRoles::SetRoles(const NameList& names) {
  guarded({ClassName, "SetRoles"}, [&] {
    CheckRoleCache();
    bits_.resize(cache_->getSize());
    bits_.setAll(false);
    for (const tovin::WideString& name : names) switchOn(requireBit(name));
  });
}

void CAuthRoles::AddToRole(const wchar_t* name) {
  guarded({ClassName, "AddToRole"}, [&] {
    CheckRoleCache();
    switchOn(requireBit(name));
  });
}

void CAuthRoles::RemoveFromRole(const wchar_t* name) {
  guarded({ClassName, "RemoveFromRole"}, [&] {
    CheckRoleCache();
    const unsigned bit = cache_->GetBit(name);
    if (bit == CAuthRolesCache::NoBit) return tovin::Exception::warn(unknownRole, name);
    if (bit < bits_.getNumBits()) bits_.setOff(bit);
  });
}

bool CAuthRoles::IsMemberOf(const wchar_t* name) const {
  return guarded({ClassName, "IsMemberOf"}, [&] {
    CheckRoleCache();
    return bits_.isOn(cache_->GetBit(name));  // off beyond the end, where the bit of an unknown name lies too
  });
}

void CAuthRoles::GetRoles(NameList& out) const {
  guarded({ClassName, "GetRoles"}, [&] {
    CheckRoleCache();
    out.clear();
    out.reserve(bits_.getNumBitsOn());
    const unsigned end = bits_.getNumBits();
    for (unsigned bit = bits_.getNextNoCheck(0); bit < end; bit = bits_.getNextNoCheck(bit + 1))
      out.add(cache_->GetRole(bit));
  });
}

void CAuthRoles::Clear() {
  guarded({ClassName, "Clear"}, [&] { bits_.reset(); });
}

void CAuthRoles::SetRoleBits(const tovin::BitsetValue& bits) {
  guarded({ClassName, "SetRoleBits"}, [&] { bits_.copyFrom(bits); });
}
