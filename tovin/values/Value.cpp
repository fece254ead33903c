#include "tovin/values/Value.h"

#include "tovin/values/NullValue.h"

namespace tovin {

const ClassTagDecl Value::Tag("DraVolin.Value");

void* Value::_SeekClassIdentity(const ClassTag& tag) { return tag == Tag ? this : nullptr; }

Value* Value::cloneValue() const { return seek<Value>(clone()); }

bool Value::isNullValue() const { return getClassTag() == NullValue::Tag; }

void Value::refuseClass(const Value& source, const ClassTag& target) {
  throw Exception(L"Cannot assign a value of class %hs to one of class %hs", source.getClassTag(), target);
}

}  // namespace tovin
