#include "ztbaseclient/auth/CAuthRolesCache.h"

#include <utility>

using tovin::guarded;

// The quotes are part of the name, and "Dravolin" is written so: peers know the class by this text.
const tovin::ClassTagDecl CAuthRolesCache::Tag("\"Dravolin.data.CAuthRolesCache\"");
tovin::LeakDetector CAuthRolesCache::m_leakDetector(CAuthRolesCache::ClassName);
tovin::ClassImp<CAuthRolesCache> CAuthRolesCache::m_class(CAuthRolesCache::Tag,
                                                          CAuthRolesCache::m_leakDetector);

CAuthRolesCache::CAuthRolesCache() = default;
CAuthRolesCache::CAuthRolesCache(const CAuthRolesCache& other) = default;
CAuthRolesCache& CAuthRolesCache::operator=(const CAuthRolesCache& other) = default;
CAuthRolesCache::~CAuthRolesCache() = default;

void CAuthRolesCache::SetRole(unsigned bit, const wchar_t* name) {
  guarded({ClassName, "SetRole"}, [&] {
    const tovin::WideString kept(name);  // the name may be one that this cache gave out
    names_.put(bit, kept);
    bits_.put(kept, bit);
  });
}

const wchar_t* CAuthRolesCache::GetRole(unsigned bit) const {
  return guarded({ClassName, "GetRole"}, [&]() -> const wchar_t* {
    const tovin::WideString* name = names_.find(bit);
    return name ? name->c_str() : nullptr;
  });
}

unsigned CAuthRolesCache::GetBit(const wchar_t* name) const {
  return guarded({ClassName, "GetBit"}, [&] {
    const unsigned* bit = bits_.find(name);
    return bit ? *bit : NoBit;
  });
}

bool CAuthRolesCache::isRoleDefined(const wchar_t* name) const {
  return guarded({ClassName, "isRoleDefined"}, [&] { return bits_.find(name) != nullptr; });
}

void CAuthRolesCache::GetRoleBitValues(RoleMap& out) const {
  guarded({ClassName, "GetRoleBitValues"}, [&] { out = names_; });
}

void CAuthRolesCache::SetRoleBitValues(const RoleMap& in) {
  guarded({ClassName, "SetRoleBitValues"}, [&] {
    RoleMap names = in;
    BitMap bits;
    names.forEach([&](unsigned bit, const tovin::WideString& name) { bits.put(name, bit); });
    names_ = std::move(names);
    bits_ = std::move(bits);
  });
}

void CAuthRolesCache::Clear() {
  guarded({ClassName, "Clear"}, [&] {
    names_.clear();
    bits_.clear();
  });
}
