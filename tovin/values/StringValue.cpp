#include "tovin/values/StringValue.h"

#include "tovin/ByteCoding.h"

namespace tovin {

const ClassTagDecl StringValue::Tag("DraVolin.value.String");
LeakDetector StringValue::m_leakDetector(StringValue::ClassName);
PooledClassImp<StringValue> StringValue::m_class(StringValue::Tag, StringValue::m_leakDetector);

void StringValue::reset() { text_.setNull(); }

WideString StringValue::getText() const { return text_; }

void StringValue::serialize(iByteOutputStream& stream) const { coding::writeWide(stream, text_); }

void StringValue::deserialize(iByteInputStream& stream) { coding::readWide(stream, text_); }

}  // namespace tovin
