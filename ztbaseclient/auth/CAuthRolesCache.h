#pragma once

#include <cstdint>

#include "tovin/FrameworkClass.h"
#include "tovin/HashMap.h"
#include "ztbaseclient/Export.h"

/// The dictionary between role names and bit numbers, filled once from the server's configuration and shared
/// by the roles of many users.
///
///     tovin::Ptr<CAuthRolesCache> cache(CAuthRolesCache::allocate());
///     cache->SetRole(3, L"Client/Administrator");
///     cache->GetBit(L"client/administrator");   // 3
///
/// - Names: equal with A to Z folded.
/// - Ownership: counted; owns its names. A name that it gives out is good until the cache changes.
/// - Threads: any may read a filled cache; filling must not overlap with reading.
class ZTBASECLIENT_API CAuthRolesCache : public tovin::FrameworkClass<CAuthRolesCache, tovin::CountedObject> {
 public:
  static constexpr const char* ClassName = "CAuthRolesCache";
  static const tovin::ClassTagDecl Tag;
  static tovin::LeakDetector m_leakDetector;
  static tovin::ClassImp<CAuthRolesCache> m_class;

  using RoleMap = tovin::HashMap<unsigned, tovin::WideString>;

  /// What GetBit says of a name that is not known.
  static constexpr unsigned NoBit = 0xFFFFFFFF;

  CAuthRolesCache();
  CAuthRolesCache(const CAuthRolesCache& other);
  CAuthRolesCache& operator=(const CAuthRolesCache& other);
  ~CAuthRolesCache() override;

  /// Names the bit, or names it anew; a name that it had before still leads to it.
  void SetRole(unsigned bit, const wchar_t* name);
  /// Null when the bit has no name.
  const wchar_t* GetRole(unsigned bit) const;
  unsigned GetBit(const wchar_t* name) const;
  bool isRoleDefined(const wchar_t* name) const;
  /// How many bits have a name.
  unsigned getSize() const noexcept { return static_cast<unsigned>(names_.getSize()); }

  void GetRoleBitValues(RoleMap& out) const;
  /// Forgets everything known before.
  void SetRoleBitValues(const RoleMap& in);
  void Clear();

  /// Unit and epoch are the owner's; 0 at construction.
  int64_t GetCreationTime() const noexcept { return creationTime_; }
  void SetCreationTime(int64_t time) noexcept { creationTime_ = time; }

 private:
  using BitMap = tovin::HashMap<tovin::WideString, unsigned, tovin::FoldedNameTraits>;

  RoleMap names_;
  BitMap bits_;
  int64_t creationTime_ = 0;
};
