#include "tovin/values/StringArrayValue.h"

#include "tovin/values/ListCoding.h"

namespace tovin {

const ClassTagDecl StringArrayValue::Tag("DraVolin.value.StringArray");
LeakDetector StringArrayValue::m_leakDetector(StringArrayValue::ClassName);
PooledClassImp<StringArrayValue> StringArrayValue::m_class(StringArrayValue::Tag,
                                                           StringArrayValue::m_leakDetector);

// Copied beside the texts that go: one of them may fail.
void StringArrayValue::copyFrom(const Value& source) {
  StringArrayValue copy;
  copy.ValueClass::copyFrom(source);
  content().swap(copy.content());
}

void StringArrayValue::reset() { items_.clear(); }

WideString StringArrayValue::getText() const {
  WideString text(L"");
  for (size_t i = 0; i < items_.getSize(); ++i) {
    if (i > 0) text += L' ';
    text += items_[i];
  }
  return text;
}

void StringArrayValue::serialize(iByteOutputStream& stream) const {
  coding::writeList(stream, content(), [&](const WideString& text) { coding::writeWide(stream, text); });
}

void StringArrayValue::deserialize(iByteInputStream& stream) {
  coding::readList(stream, content(), [&](WideString& text) { coding::readWide(stream, text); });
}

}  // namespace tovin
