#pragma once

#include "tovin/values/Value.h"

namespace tovin {

/// The value of what has none. Its record is empty.
class TOVIN_API NullValue : public ValueClass<NullValue> {
 public:
  static constexpr const char* ClassName = "NullValue";
  static const ClassTagDecl Tag;
  static PooledClassImp<NullValue> m_class;
  static LeakDetector m_leakDetector;

  /// Tells that a value is there for the whole process, and no object that leak detection asks for.
  enum Uncounted { uncounted };

  NullValue() = default;
  explicit NullValue(Uncounted) { RemoveFromLeakDetector(); }

  /// The one that is cloned where a value is needed and none is set.
  static const NullValue& shared();
  void reset() override;
  WideString getText() const override;
  void serialize(iByteOutputStream& stream) const override;
  void deserialize(iByteInputStream& stream) override;

  std::nullptr_t& content() noexcept { return content_; }
  std::nullptr_t content() const noexcept { return content_; }

 private:
  std::nullptr_t content_ = nullptr;
};

}  // namespace tovin
