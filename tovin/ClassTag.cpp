#include "tovin/ClassTag.h"

#include <cstring>

#include "tovin/Class.h"

namespace tovin {

ClassTag& ClassTag::operator=(const ClassTag& other) {
  copy_ = other.copy_;
  name_ = copy_.isNull() ? other.name_ : copy_.c_str();
  newer_ = other.newer_;
  older_ = other.older_;
  knows_ = other.knows_;
  return *this;
}

int ClassTag::getHash(bool newerKind) const noexcept {
  if (knows_ == both || (knows_ == newerOnly) == newerKind) return newerKind ? newer_ : older_;
  const Class* found = Class::getClass(*this);
  return found ? found->getTag().getHash(newerKind) : 0;
}

NarrowString ClassTag::describe() const {
  if (const char* name = *this) return name;
  if (knows_ == both) return "(null)";
  return std::to_string(getHash());
}

bool ClassTag::isNameOf(const ClassTag& known) const noexcept {
  return !name_ || (known.name_ && std::strcmp(name_, known.name_) == 0);
}

bool ClassTag::sameByHash(const ClassTag& a, const ClassTag& b) noexcept {
  const bool newerKind = a.knows_ != olderOnly && b.knows_ != olderOnly;
  return a.getHash(newerKind) == b.getHash(newerKind);
}

const char* ClassTag::registeredName() const noexcept {
  if (knows_ == both) return nullptr;
  const Class* found = Class::getClass(*this);
  return found ? static_cast<const char*>(found->getTag()) : nullptr;
}

}  // namespace tovin
