#include <cmath>
#include <functional>

#include "tests/support/Bytes.h"
#include "tovin/Ptr.h"
#include "tovin/values/BitsetValue.h"
#include "tovin/values/DoubleValue.h"
#include "tovin/values/IntegerArrayValue.h"
#include "tovin/values/IntegerValue.h"
#include "tovin/values/NullValue.h"
#include "tovin/values/StringArrayValue.h"
#include "tovin/values/StringValue.h"
#include "tovin/values/ValueUtil.h"
#include "ztbaseclient/data/CProperty.h"

namespace {

using namespace testsupport;
using tovin::MetaDataFlags;

template <class T>
const T* as(const CProperty& property) {
  return tovin::seek<T>(static_cast<const tovin::Object*>(&property.getValue()));
}

TEST(PropertyValue, OfTheSameClassIsTheSameObject) {
  CProperty property;
  property.setValue(L"a");
  const tovin::Value* text = &property.getValue();
  property.setValue(L"b");
  property.setValue(tovin::StringValue(L"c"));
  EXPECT_EQ(&property.getValue(), text);
  property.setValue(2.5);
  EXPECT_EQ(as<tovin::DoubleValue>(property)->getDouble(), 2.5);
  property.setValue(static_cast<const wchar_t*>(nullptr));
  EXPECT_TRUE(as<tovin::StringValue>(property)->getString().isNull());
}

TEST(PropertyValue, ReadOnlyTakesOnlyWhatItHolds) {
  CProperty property, number;
  property.SetName(L"fixed");
  property.setMetaDataFlags(MetaDataFlags::readOnly);
  property.setValue(L"a");  // without a value yet, it takes its first
  property.setValue(L"a");
  const std::function<void()> changes[] = {[&] { property.setValue(L"b"); },
                                           [&] { property.setValue(1.0); },
                                           [&] { property.setValue(tovin::StringValue(L"a")); },
                                           [&] { property.appendValue(L"x"); },
                                           [&] { property.getEditableValue(); },
                                           [&] { property.getEditableRawValue(); }};
  for (const auto& change : changes) expectMessage(L"Read-only property fixed cannot be updated", change);
  EXPECT_THROW(property.setValue(L"b"), tovin::PropertyAccessException);
  EXPECT_STREQ(as<tovin::StringValue>(property)->getString(), L"a");
  number.setValue(0.0);
  number.setMetaDataFlags(MetaDataFlags::readOnly);
  number.setValue(-0.0);
  EXPECT_FALSE(std::signbit(as<tovin::DoubleValue>(number)->getDouble())) << "nothing changes";
  number.setMetaDataFlags(0);
  number.setValue(std::nan(""));
  number.setMetaDataFlags(MetaDataFlags::readOnly);
  number.setValue(std::nan(""));
  EXPECT_THROW(number.setValue(1.0), tovin::PropertyAccessException);
}

TEST(PropertyValue, MovesFromOnePropertyToAnother) {
  CProperty from, to;
  from.setValue(7.0);
  to.setValue(L"gone");
  const tovin::Value* value = &from.getValue();
  to.attachValueFrom(&from);
  EXPECT_EQ(&to.getValue(), value);
  EXPECT_TRUE(from.hasNullValue());
  to.AttachValueFrom(to);
  EXPECT_EQ(&to.getValue(), value);
  tovin::Value* detached = to.DetachValue();
  EXPECT_EQ(detached, value);
  EXPECT_TRUE(to.hasNullValue());
  detached->deleteInstance();
}

TEST(PropertyValue, AppendingKeepsEverything) {
  const auto appended = [](auto&& first, const tovin::Value& second) {
    CProperty property;
    property.setValue(first);
    property.appendValue(second);
    return std::string(property.getValue().getClassTag()) + ": " +
           tovin::wideToUtf8(property.getValue().getText());
  };
  tovin::BitsetValue bits(3);
  bits.setOn(1);
  EXPECT_EQ(appended(tovin::NullValue(), tovin::IntegerValue(4)), "DraVolin.value.Integer: 4");
  EXPECT_EQ(appended(tovin::IntegerValue(4), tovin::NullValue()), "DraVolin.value.Integer: 4");
  EXPECT_EQ(appended(tovin::IntegerValue(4), tovin::IntegerValue(-5)), "DraVolin.value.IntegerArray: 4 -5");
  EXPECT_EQ(appended(tovin::IntegerValue(4), tovin::DoubleValue(0.5)), "DraVolin.value.StringArray: 4 0.5");
  EXPECT_EQ(appended(L"ab", tovin::StringValue(L"cd")), "DraVolin.value.String: abcd");
  EXPECT_EQ(appended(bits, bits), "DraVolin.value.Bitset: 1 4");
  EXPECT_EQ(appended(1.5, tovin::StringValue(L"x")), "DraVolin.value.StringArray: 1.5 x");
  CProperty property;
  property.setValue(bits);
  property.appendValue(bits);
  EXPECT_EQ(as<tovin::BitsetValue>(property)->getNumBits(), 6u);
  for (const auto& [first, text] : {std::pair(L"", "cd"), std::pair(L"ab", "ab, cd")}) {
    tovin::Value* value = tovin::StringValue(first).cloneValue();
    tovin::util::AppendToValue(value, tovin::StringValue(L"cd"), false, L"n", L", ");
    EXPECT_EQ(tovin::wideToUtf8(value->getText()), text);
    value->deleteInstance();
  }
}

TEST(PropertyValue, IsCoercedByItsText) {
  const auto coerced = [](auto&& value, const tovin::ClassTag& target) {
    CProperty property;
    property.setValue(value);
    property.CoerceToType(target);
    EXPECT_TRUE(property.getValue().getClassTag() == target);
    return tovin::wideToUtf8(property.getValue().getText());
  };
  tovin::BitsetValue bits(40);
  bits.setOn(33);
  bits.setOn(2);
  EXPECT_EQ(coerced(L"12", tovin::IntegerValue::Tag), "12");
  EXPECT_EQ(coerced(L"-1.5e2", tovin::DoubleValue::Tag), "-150");
  EXPECT_EQ(coerced(-7.9, tovin::IntegerValue::Tag), "-7");
  EXPECT_EQ(coerced(0.1, tovin::StringValue::Tag), "0.1");
  EXPECT_EQ(coerced(bits, tovin::IntegerArrayValue::Tag), "2 33");
  EXPECT_EQ(coerced(L"2 33", tovin::BitsetValue::Tag), "2 33");
  EXPECT_EQ(coerced(tovin::IntegerValue(3), tovin::StringArrayValue::Tag), "3");
  EXPECT_EQ(coerced(L"x", tovin::NullValue::Tag), "");
}

TEST(PropertyValue, ThatCannotBeCoercedStays) {
  const struct {
    const wchar_t* text;
    const tovin::ClassTag& target;
    const wchar_t* message;
  } rows[] = {{L"x", tovin::IntegerValue::Tag, L"Cannot convert \"x\" to class DraVolin.value.Integer"},
              {L"3e9", tovin::IntegerValue::Tag, L"Cannot convert \"3e9\" to class DraVolin.value.Integer"},
              {L"nan", tovin::IntegerValue::Tag, L"Cannot convert \"nan\" to class DraVolin.value.Integer"},
              {L"1 99999999", tovin::BitsetValue::Tag,
               L"Cannot convert \"1 99999999\" to class DraVolin.value.Bitset"},
              {L"", tovin::DoubleValue::Tag, L"Cannot convert \"\" to class DraVolin.value.Double"},
              {L"a", CProperty::Tag, L"Cannot convert \"a\" to class DraVolin.data.Property"}};
  for (const auto& row : rows) {
    CProperty property;
    property.setValue(row.text);
    expectMessage(row.message, [&] { property.CoerceToType(row.target); });
    EXPECT_STREQ(as<tovin::StringValue>(property)->getString(), row.text);
  }
}

TEST(Bitset, GrowingShowsNoOldBits) {
  tovin::BitsetValue bits(40);
  bits.setAll(true);
  EXPECT_EQ(bits.getNumBitsOn(), 40u);
  bits.resize(33);
  bits.resize(70);
  EXPECT_EQ(bits.getNumBitsOn(), 33u);
  EXPECT_FALSE(bits.isOn(70));
  EXPECT_EQ(bits.getNextNoCheck(33), 70u);
  EXPECT_THROW(bits.setOn(70), tovin::InvalidIndexException);
}

TEST(Property, ResetKeepsTheValueObjectAndDropsTheRest) {
  CProperty property;
  property.SetName(L"name");
  property.setValue(L"text");
  property.setMetaDataFlags(0x42);
  const tovin::Value* value = &property.getValue();
  property.Reset();
  EXPECT_EQ(property.getName(), nullptr);
  EXPECT_EQ(property.getMetaDataFlags().getBits(), 0u);
  EXPECT_EQ(&property.getValue(), value);
  EXPECT_TRUE(as<tovin::StringValue>(property)->getString().isNull());
}

TEST(Property, GivenBackWhileReferencedIsRefused) {
  CProperty* property = CProperty::allocate();
  property->addRef();
  expectMessage(L"Tried to deleteInstance() an object with nonzero ref count: 1\n",
                [&] { property->deleteInstance(); });
  property->release();
}

}  // namespace
