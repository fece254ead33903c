#include "tovin/values/ValueUtil.h"

#include <cmath>
#include <iterator>
#include <limits>

#include "tovin/Ptr.h"
#include "tovin/values/BitsetValue.h"
#include "tovin/values/DoubleValue.h"
#include "tovin/values/IntegerArrayValue.h"
#include "tovin/values/IntegerValue.h"
#include "tovin/values/NullValue.h"
#include "tovin/values/StringArrayValue.h"
#include "tovin/values/StringValue.h"
#include "tovinCore/Numbers.h"

namespace tovin::util {
namespace {

using OwnedValue = MemPtr<Value, InstanceDeallocator>;

void exchange(Value*& slot, OwnedValue fresh) {
  OwnedValue old(slot);
  slot = fresh.detach();
}

void requireWritable(const Value* slot, bool readOnly, const wchar_t* name) {
  if (readOnly && slot) refuseReadOnly(name);
}

[[noreturn]] void refuseConversion(const WideString& text, const ClassTag& target) {
  throw Exception(L"Cannot convert \"%ls\" to class %hs", text, target);
}

template <class T>
const T* as(const Value& value) {
  return seek<T>(static_cast<const Object*>(&value));
}

int cutToInteger(double number, const WideString& text, const ClassTag& target) {
  const double cut = std::trunc(number);
  const bool fits = cut >= std::numeric_limits<int>::min() && cut <= std::numeric_limits<int>::max();
  if (!fits) refuseConversion(text, target);
  return static_cast<int>(cut);
}

int integerOf(const WideString& text, const ClassTag& target) {
  int number = 0;
  if (tryStringToInteger(text.view(), number)) return number;
  double real = 0;
  if (!tryStringToDouble(text.view(), real)) refuseConversion(text, target);
  return cutToInteger(real, text, target);
}

// The elements of a value as texts: of a list its own, of a null value none, else the value's text.
std::vector<WideString> elementsOf(const Value& value) {
  if (value.isNullValue()) return {};
  if (const auto* texts = as<StringArrayValue>(value)) return texts->content();
  std::vector<WideString> elements;
  if (const auto* numbers = as<IntegerArrayValue>(value)) {
    for (int number : numbers->content()) elements.emplace_back(integerToString(number));
  } else {
    elements.push_back(value.getText());
  }
  return elements;
}

void assignFrom(StringValue& target, const Value& source) { target = source.getText(); }

void assignFrom(NullValue&, const Value&) {}

void assignFrom(DoubleValue& target, const Value& source) {
  const WideString text = source.getText();
  double number = 0;
  if (!source.isNullValue() && !tryStringToDouble(text.view(), number))
    refuseConversion(text, DoubleValue::Tag);
  target = number;
}

void assignFrom(IntegerValue& target, const Value& source) {
  if (source.isNullValue()) return;
  const WideString text = source.getText();
  const auto* real = as<DoubleValue>(source);
  target =
      real ? cutToInteger(real->getDouble(), text, IntegerValue::Tag) : integerOf(text, IntegerValue::Tag);
}

void assignFrom(StringArrayValue& target, const Value& source) { target.content() = elementsOf(source); }

void assignFrom(IntegerArrayValue& target, const Value& source) {
  if (const auto* bits = as<BitsetValue>(source)) {
    for (unsigned bit = bits->getNextNoCheck(0); bit < bits->getNumBits();
         bit = bits->getNextNoCheck(bit + 1)) {
      target.add(static_cast<int>(bit));
    }
    return;
  }
  for (const WideString& text : elementsOf(source)) target.add(integerOf(text, IntegerArrayValue::Tag));
}

// The list of the bits that are on, as getText writes it; a number too large to be a bit's is refused.
void assignFrom(BitsetValue& target, const Value& source) {
  constexpr int mostBits = 1 << 24;
  for (const WideString& element : elementsOf(source)) {
    for (const std::wstring& word : singleStringToMultipleStrings(element.view(), L' ')) {
      if (word.empty()) continue;
      const int bit = integerOf(word, BitsetValue::Tag);
      if (bit < 0 || bit >= mostBits) refuseConversion(element, BitsetValue::Tag);
      if (static_cast<unsigned>(bit) >= target.getNumBits()) target.resize(static_cast<unsigned>(bit) + 1);
      target.setOn(static_cast<unsigned>(bit));
    }
  }
}

template <class T>
bool coerce(OwnedValue& coerced, const Value* source, const ClassTag& target) {
  if (target != T::Tag) return false;
  T* fresh = T::allocate();
  coerced = OwnedValue(fresh);
  if (source) assignFrom(*fresh, *source);
  return true;
}

OwnedValue coercedTo(const Value* source, const ClassTag& target) {
  OwnedValue coerced;
  const bool known =
      coerce<StringValue>(coerced, source, target) || coerce<DoubleValue>(coerced, source, target) ||
      coerce<IntegerValue>(coerced, source, target) || coerce<NullValue>(coerced, source, target) ||
      coerce<BitsetValue>(coerced, source, target) || coerce<StringArrayValue>(coerced, source, target) ||
      coerce<IntegerArrayValue>(coerced, source, target);
  if (!known) refuseConversion(source ? source->getText() : WideString(), target);
  return coerced;
}

void appendText(StringValue& target, const Value& source, const wchar_t* separator) {
  WideString added = source.getText();
  if (separator && !target.content().isEmpty()) {
    WideString separated(separator);
    separated += added;
    added = std::move(separated);
  }
  target.content().append(added.view());
}

void appendBits(BitsetValue& target, const BitsetValue& source) {
  const unsigned before = target.getNumBits();
  const BitsetValue added(source);
  target.resize(before + added.getNumBits());
  for (unsigned bit = added.getNextNoCheck(0); bit < added.getNumBits();
       bit = added.getNextNoCheck(bit + 1)) {
    target.setOn(before + bit);
  }
}

bool isOfIntegers(const Value& value) { return as<IntegerValue>(value) || as<IntegerArrayValue>(value); }

// The elements are there before the list changes: the source may be the slot's own value.
template <class List, class Element>
void appendList(Value*& slot, std::vector<Element> added) {
  OwnedValue coerced;
  if (slot->getClassTag() != List::Tag) coerced = coercedTo(slot, List::Tag);
  auto& list = seek<List>(static_cast<Object*>(coerced ? coerced.get() : slot))->content();
  list.insert(list.end(), std::make_move_iterator(added.begin()), std::make_move_iterator(added.end()));
  if (coerced) exchange(slot, std::move(coerced));
}

void appendElements(Value*& slot, const Value& source) {
  std::vector<WideString> texts = elementsOf(source);
  if (!isOfIntegers(*slot) || !isOfIntegers(source))
    return appendList<StringArrayValue>(slot, std::move(texts));
  std::vector<int> numbers;
  for (const WideString& text : texts) numbers.push_back(integerOf(text, IntegerArrayValue::Tag));
  appendList<IntegerArrayValue>(slot, std::move(numbers));
}

}  // namespace

void SetValue(Value*& slot, const Value& source, bool readOnly, const wchar_t* name) {
  requireWritable(slot, readOnly, name);
  if (slot == &source) return;
  if (slot && slot->getClassTag() == source.getClassTag()) return slot->copyFrom(source);
  exchange(slot, OwnedValue(source.cloneValue()));
}

void AppendToValue(Value*& slot, const Value& source, bool readOnly, const wchar_t* name,
                   const wchar_t* separator) {
  requireWritable(slot, readOnly, name);
  if (source.isNullValue()) return;
  if (!slot || slot->isNullValue()) return exchange(slot, OwnedValue(source.cloneValue()));
  if (auto* text = seek<StringValue>(static_cast<Object*>(slot))) return appendText(*text, source, separator);
  auto* bits = seek<BitsetValue>(static_cast<Object*>(slot));
  if (bits && as<BitsetValue>(source)) return appendBits(*bits, *as<BitsetValue>(source));
  appendElements(slot, source);
}

void CoerceToType(Value*& slot, const ClassTag& target) {
  if (slot && slot->getClassTag() == target) return;
  exchange(slot, coercedTo(slot, target));
}

void refuseReadOnly(const wchar_t* name) {
  throw PropertyAccessException(L"Read-only property %ls cannot be updated", name);
}

}  // namespace tovin::util
