#pragma once

#include <cstdint>

#include "tovin/BaseString.h"
#include "tovin/Export.h"

namespace tovin {

/// Identifies a class by its dotted name, or by one of the two 32-bit hashes of that name.
///
///     ClassTag tag("DraVolin.data.Property");
///     stream << tag.getHash();             // how a class travels
///     ClassTag read(hash, true);           // the newer kind of hash; the name is found in the registry
///
/// - Shape: the older hash is h = 31·h + byte, the newer one FNV-1a; both travel as signed 32-bit numbers.
/// - Ownership: borrows the name when built from a literal, owns a copy when built from a string.
class TOVIN_API ClassTag {
 public:
  constexpr ClassTag() noexcept = default;
  /// \param name a literal, or a text that outlives the tag.
  constexpr ClassTag(const char* name) noexcept
      : name_(name), newer_(newerHash(name)), older_(olderHash(name)) {}
  ClassTag(const NarrowString& name) : copy_(name) {
    name_ = copy_.c_str();
    newer_ = newerHash(name_);
    older_ = olderHash(name_);
  }
  /// \param newerKind which of the two hashes this is.
  constexpr ClassTag(int hash, bool newerKind) noexcept
      : newer_(newerKind ? hash : 0),
        older_(newerKind ? 0 : hash),
        knows_(newerKind ? newerOnly : olderOnly) {}
  ClassTag(const ClassTag& other) { *this = other; }
  ClassTag& operator=(const ClassTag& other);

  /// The newer hash, or the older one when the tag was built from that.
  int getHash() const noexcept { return knows_ == olderOnly ? older_ : newer_; }
  /// The hash of a kind; a tag built from the other kind asks the registry, 0 if it does not know the class.
  int getHash(bool newerKind) const noexcept;
  /// The name; for a tag built from a hash the registered class's, null if there is none.
  operator const char*() const noexcept { return name_ ? name_ : registeredName(); }
  /// A name for messages: the name, or the hash as text.
  NarrowString describe() const;

  friend bool operator==(const ClassTag& a, const ClassTag& b) noexcept {
    if (a.knows_ == both && b.knows_ == both) return a.newer_ == b.newer_ && a.older_ == b.older_;
    return sameByHash(a, b);
  }
  bool isNewerHash() const noexcept { return knows_ != olderOnly; }
  /// Whether a class of a name that is known may be the one that this tag was built for: its name is the
  /// same, or this tag was built from a hash and has none.
  bool isNameOf(const ClassTag& known) const noexcept;

 private:
  enum Knows : unsigned char { both, newerOnly, olderOnly };

  static constexpr int newerHash(const char* name) noexcept {
    uint32_t hash = 2166136261u;
    for (; name && *name; ++name) hash = (hash ^ static_cast<unsigned char>(*name)) * 16777619u;
    return static_cast<int>(hash);
  }
  static constexpr int olderHash(const char* name) noexcept {
    uint32_t hash = 0;
    for (; name && *name; ++name) hash = hash * 31 + static_cast<unsigned char>(*name);
    return static_cast<int>(hash);
  }
  static bool sameByHash(const ClassTag& a, const ClassTag& b) noexcept;
  const char* registeredName() const noexcept;

  const char* name_ = nullptr;
  int newer_ = 0;
  int older_ = 0;
  Knows knows_ = both;
  NarrowString copy_;
};

/// The static declaration of a class's own tag.
class ClassTagDecl : public ClassTag {
 public:
  constexpr explicit ClassTagDecl(const char* name) noexcept : ClassTag(name) {}
};

}  // namespace tovin
