#include "tovin/values/IntegerValue.h"

#include "tovin/ByteCoding.h"
#include "tovinCore/Numbers.h"

namespace tovin {

const ClassTagDecl IntegerValue::Tag("DraVolin.value.Integer");
LeakDetector IntegerValue::m_leakDetector(IntegerValue::ClassName);
PooledClassImp<IntegerValue> IntegerValue::m_class(IntegerValue::Tag, IntegerValue::m_leakDetector);

void IntegerValue::reset() { number_ = 0; }

WideString IntegerValue::getText() const { return util::integerToString(number_); }

void IntegerValue::serialize(iByteOutputStream& stream) const { coding::writeInt(stream, number_); }

void IntegerValue::deserialize(iByteInputStream& stream) { number_ = coding::readInt(stream); }

}  // namespace tovin
