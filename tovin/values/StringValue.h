#pragma once

#include "tovin/values/Value.h"

namespace tovin {

/// A text, null or not. Record: a wide string.
class TOVIN_API StringValue : public ValueClass<StringValue> {
 public:
  static constexpr const char* ClassName = "StringValue";
  static const ClassTagDecl Tag;
  static PooledClassImp<StringValue> m_class;
  static LeakDetector m_leakDetector;

  StringValue() = default;
  explicit StringValue(const wchar_t* text) : text_(text) {}
  StringValue& operator=(const wchar_t* text) {
    text_ = text;
    return *this;
  }
  StringValue& operator=(const WideString& text) {
    text_ = text;
    return *this;
  }
  const WideString& getString() const noexcept { return text_; }
  void reset() override;
  WideString getText() const override;
  void serialize(iByteOutputStream& stream) const override;
  void deserialize(iByteInputStream& stream) override;

  WideString& content() noexcept { return text_; }
  const WideString& content() const noexcept { return text_; }

 private:
  WideString text_;
};

}  // namespace tovin
