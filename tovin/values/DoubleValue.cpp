#include "tovin/values/DoubleValue.h"

#include <bit>

#include "tovin/ByteCoding.h"
#include "tovinCore/Numbers.h"

namespace tovin {

const ClassTagDecl DoubleValue::Tag("DraVolin.value.Double");
LeakDetector DoubleValue::m_leakDetector(DoubleValue::ClassName);
PooledClassImp<DoubleValue> DoubleValue::m_class(DoubleValue::Tag, DoubleValue::m_leakDetector);

void DoubleValue::reset() { number_ = 0; }

WideString DoubleValue::getText() const { return util::doubleToString(number_); }

bool DoubleValue::equals(const Value& other) const {
  const auto* same = seek<DoubleValue>(static_cast<const Object*>(&other));
  return same && std::bit_cast<uint64_t>(same->number_) == std::bit_cast<uint64_t>(number_);
}

void DoubleValue::serialize(iByteOutputStream& stream) const {
  const auto bits = std::bit_cast<uint64_t>(number_);
  unsigned char bytes[8];
  for (size_t i = 0; i < sizeof bytes; ++i) bytes[i] = static_cast<unsigned char>(bits >> 8 * i);
  stream.put(bytes, sizeof bytes);
}

void DoubleValue::deserialize(iByteInputStream& stream) {
  unsigned char bytes[8];
  coding::readBytes(stream, bytes, sizeof bytes, "double");
  uint64_t bits = 0;
  for (size_t i = 0; i < sizeof bytes; ++i) bits |= static_cast<uint64_t>(bytes[i]) << 8 * i;
  number_ = std::bit_cast<double>(bits);
}

}  // namespace tovin
