#include "tovin/values/IntegerArrayValue.h"

#include "tovin/values/ListCoding.h"
#include "tovinCore/Numbers.h"

namespace tovin {

const ClassTagDecl IntegerArrayValue::Tag("DraVolin.value.IntegerArray");
LeakDetector IntegerArrayValue::m_leakDetector(IntegerArrayValue::ClassName);
PooledClassImp<IntegerArrayValue> IntegerArrayValue::m_class(IntegerArrayValue::Tag,
                                                             IntegerArrayValue::m_leakDetector);

void IntegerArrayValue::reset() { items_.clear(); }

WideString IntegerArrayValue::getText() const {
  WideString text(L"");
  for (size_t i = 0; i < items_.getSize(); ++i) {
    if (i > 0) text += L' ';
    text += util::integerToString(items_[i]);
  }
  return text;
}

void IntegerArrayValue::serialize(iByteOutputStream& stream) const {
  coding::writeList(stream, content(), [&](int number) { coding::writeInt(stream, number); });
}

void IntegerArrayValue::deserialize(iByteInputStream& stream) {
  coding::readList(stream, content(), [&](int& number) { number = coding::readInt(stream); });
}

}  // namespace tovin
