#pragma once

#include "tovin/Array.h"
#include "tovin/values/Value.h"

namespace tovin {

/// A list of texts. Record: compact count, then the elements as wide strings.
class TOVIN_API StringArrayValue : public ValueClass<StringArrayValue> {
 public:
  static constexpr const char* ClassName = "StringArrayValue";
  static const ClassTagDecl Tag;
  static PooledClassImp<StringArrayValue> m_class;
  static LeakDetector m_leakDetector;

  void add(const wchar_t* text) { items_.add(text); }
  void add(const WideString& text) { items_.add(text); }
  size_t getSize() const noexcept { return items_.getSize(); }
  const WideString& operator[](size_t index) const { return items_[index]; }
  const Array<WideString>& getArray() const noexcept { return items_; }
  void copyFrom(const Value& source) override;
  void reset() override;
  WideString getText() const override;
  void serialize(iByteOutputStream& stream) const override;
  void deserialize(iByteInputStream& stream) override;

  std::vector<WideString>& content() noexcept { return items_.items(); }
  const std::vector<WideString>& content() const noexcept { return items_.items(); }

 private:
  Array<WideString> items_;
};

}  // namespace tovin
