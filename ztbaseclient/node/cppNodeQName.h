#pragma once

#include "tovin/ByteStreams.h"
#include "tovinCore/LeakDetector.h"
#include "ztbaseclient/Export.h"
#include "ztcore/ztUniqueStrings.h"

/// The qualified name of a node, and the local name and prefix that are split from it when first asked for.
///
/// - Ownership: holds one reference to the shared copy of each of the three texts.
/// - Irregular on purpose: setName leaves local name and prefix as they were split before.
class ZTBASECLIENT_API cppNodeQName {
 public:
  static constexpr const char* ClassName = "cppNodeQName";
  static tovin::LeakDetector m_leakDetector;

  cppNodeQName();
  explicit cppNodeQName(const wchar_t* qname);
  cppNodeQName(const cppNodeQName& other);
  cppNodeQName& operator=(const cppNodeQName& other);
  virtual ~cppNodeQName();

  void setName(const wchar_t* name);
  /// setName for a text that ztUniqueStrings handed out: no look-up.
  void setUniqueName(const wchar_t* name) noexcept;
  /// Also drops the qualified name, which getQName() makes anew.
  void setLocalName(const wchar_t* name);
  void setUriName(const wchar_t* prefix);
  const wchar_t* getQName() const { return qualifiedName_ || !localName_ ? qualifiedName_ : joinName(); }
  const wchar_t* getLocalName() const;
  /// The prefix; null for a name without one.
  const wchar_t* getUriName() const;

  /// Three wide strings: qualified name, local name, prefix, each as it stands. A failed reading changes
  /// none.
  void serialize(tovin::iByteOutputStream& stream) const;
  void deserialize(tovin::iByteInputStream& stream);
  /// What they do, for names that lie elsewhere: qualified name, local name, prefix.
  static void WriteTexts(tovin::iByteOutputStream& stream, const wchar_t* qname, const wchar_t* local,
                         const wchar_t* prefix);
  static void ReadTexts(tovin::iByteInputStream& stream, ztUniqueString (&texts)[3]);
  /// Takes the three names as they stand, each a text that ztUniqueStrings handed out.
  void share(const wchar_t* qname, const wchar_t* local, const wchar_t* prefix) noexcept;

  /// Forgets the three names without giving them up.
  void onActivate() noexcept;
  /// Gives up all three.
  void onDeactivate() noexcept;

 private:
  void splitName() const;
  const wchar_t* joinName() const;

  mutable const wchar_t* qualifiedName_ = nullptr;
  mutable const wchar_t* localName_ = nullptr;
  mutable const wchar_t* prefix_ = nullptr;
};
