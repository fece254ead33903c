#pragma once

#include "tovin/Array.h"
#include "tovin/values/Value.h"

namespace tovin {

/// A list of 32-bit integers. Record: compact count, then the elements as compact integers.
class TOVIN_API IntegerArrayValue : public ValueClass<IntegerArrayValue> {
 public:
  static constexpr const char* ClassName = "IntegerArrayValue";
  static const ClassTagDecl Tag;
  static PooledClassImp<IntegerArrayValue> m_class;
  static LeakDetector m_leakDetector;

  void add(int number) { items_.add(number); }
  size_t getSize() const noexcept { return items_.getSize(); }
  void setSize(size_t size) { items_.setSize(size); }
  int& operator[](size_t index) { return items_[index]; }
  int operator[](size_t index) const { return items_[index]; }
  const Array<int>& getArray() const noexcept { return items_; }
  void reset() override;
  WideString getText() const override;
  void serialize(iByteOutputStream& stream) const override;
  void deserialize(iByteInputStream& stream) override;

  std::vector<int>& content() noexcept { return items_.items(); }
  const std::vector<int>& content() const noexcept { return items_.items(); }

 private:
  Array<int> items_;
};

}  // namespace tovin
