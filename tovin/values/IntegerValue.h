#pragma once

#include "tovin/values/Value.h"

namespace tovin {

/// A 32-bit signed integer. Record: a compact integer.
class TOVIN_API IntegerValue : public ValueClass<IntegerValue> {
 public:
  static constexpr const char* ClassName = "IntegerValue";
  static const ClassTagDecl Tag;
  static PooledClassImp<IntegerValue> m_class;
  static LeakDetector m_leakDetector;

  IntegerValue() = default;
  explicit IntegerValue(int number) : number_(number) {}
  IntegerValue& operator=(int number) {
    number_ = number;
    return *this;
  }
  int getInteger() const noexcept { return number_; }
  void reset() override;
  WideString getText() const override;
  void serialize(iByteOutputStream& stream) const override;
  void deserialize(iByteInputStream& stream) override;

  int& content() noexcept { return number_; }
  int content() const noexcept { return number_; }

 private:
  int number_ = 0;
};

}  // namespace tovin
