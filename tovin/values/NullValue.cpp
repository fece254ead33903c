#include "tovin/values/NullValue.h"

namespace tovin {

const ClassTagDecl NullValue::Tag("DraVolin.value.Null");
LeakDetector NullValue::m_leakDetector(NullValue::ClassName);
PooledClassImp<NullValue> NullValue::m_class(NullValue::Tag, NullValue::m_leakDetector);

const NullValue& NullValue::shared() {
  static const NullValue only{uncounted};
  return only;
}

void NullValue::reset() {}

WideString NullValue::getText() const { return {}; }

void NullValue::serialize(iByteOutputStream&) const {}

void NullValue::deserialize(iByteInputStream&) {}

}  // namespace tovin
