#pragma once

#include "tovin/Array.h"
#include "tovin/FrameworkClass.h"
#include "tovin/Ptr.h"
#include "tovin/values/BitsetValue.h"
#include "ztbaseclient/Export.h"
#include "ztbaseclient/auth/CAuthRolesCache.h"

/// The roles of one user: a row of bits, one a role, and the cache that names them.
///
///     CAuthRoles roles(cache);
///     roles.AddToRole(L"Client/Administrator");
///     if (roles.IsMemberOf(L"client/administrator")) …
///
/// - Ownership: owns its bits; the cache is counted and may be null.
/// - Shape: the bits may be fewer than the roles of the cache; a bit beyond their end is off.
/// - Errors: whatever takes or gives names refuses without a cache; SetRoles and AddToRole refuse a name that
///   the cache does not know.
class ZTBASECLIENT_API CAuthRoles : public tovin::FrameworkClass<CAuthRoles, tovin::Object> {
 public:
  static constexpr const char* ClassName = "CAuthRoles";
  static const tovin::ClassTagDecl Tag;
  static tovin::LeakDetector m_leakDetector;
  static tovin::ClassImp<CAuthRoles> m_class;

  using NameList = tovin::Array<tovin::WideString>;

  CAuthRoles();
  explicit CAuthRoles(CAuthRolesCache* cache);
  CAuthRoles(const CAuthRoles& other);
  CAuthRoles& operator=(const CAuthRoles& other);
  ~CAuthRoles() override;

  /// Takes over the bits and shares the cache.
  void AssignRoles(const CAuthRoles& other);
  /// The bits stay as they are. \param cache null for none.
  void SetRolesCache(CAuthRolesCache* cache);

  /// Exactly these roles; an unknown name is refused when those before it are set.
  void SetRoles(const NameList& names);
  void AddToRole(const wchar_t* name);
  /// Warns of an unknown name.
  void RemoveFromRole(const wchar_t* name);
  /// False for an unknown name.
  bool IsMemberOf(const wchar_t* name) const;
  /// The names in ascending order of their bits; null for a bit that the cache has no name for.
  void GetRoles(NameList& out) const;
  /// No roles; the cache stays.
  void Clear();

  /// The bits themselves, which need no cache.
  const tovin::BitsetValue& GetRoleBits() const noexcept { return bits_; }
  void SetRoleBits(const tovin::BitsetValue& bits);

 private:
  void CheckRoleCache() const;
  unsigned requireBit(const wchar_t* name) const;
  void switchOn(unsigned bit);

  tovin::BitsetValue bits_;
  tovin::Ptr<CAuthRolesCache> cache_;
};
