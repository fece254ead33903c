#pragma once

#include "tovin/values/Value.h"

namespace tovin {

/// A double. Record: 8 bytes, IEEE 754, little-endian.
class TOVIN_API DoubleValue : public ValueClass<DoubleValue> {
 public:
  static constexpr const char* ClassName = "DoubleValue";
  static const ClassTagDecl Tag;
  static PooledClassImp<DoubleValue> m_class;
  static LeakDetector m_leakDetector;

  DoubleValue() = default;
  explicit DoubleValue(double number) : number_(number) {}
  DoubleValue& operator=(double number) {
    number_ = number;
    return *this;
  }
  double getDouble() const noexcept { return number_; }
  /// Equal when the bits are: a NaN equals itself.
  bool equals(const Value& other) const override;
  void reset() override;
  WideString getText() const override;
  void serialize(iByteOutputStream& stream) const override;
  void deserialize(iByteInputStream& stream) override;

  double& content() noexcept { return number_; }
  double content() const noexcept { return number_; }

 private:
  double number_ = 0;
};

}  // namespace tovin
