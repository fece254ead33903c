#include <limits>

#include "tests/support/Bytes.h"
#include "tovin/ByteCoding.h"
#include "tovin/Ptr.h"
#include "tovin/values/BitsetValue.h"
#include "tovin/values/DoubleValue.h"
#include "tovin/values/IntegerArrayValue.h"
#include "tovin/values/IntegerValue.h"
#include "tovin/values/NullValue.h"
#include "tovin/values/StringArrayValue.h"
#include "tovin/values/StringValue.h"
#include "ztbaseclient/data/CPropertyCollection.h"

namespace {

using namespace testsupport;

// A collection read from a stream.
tovin::Ptr<CPropertyCollection> readCollection(Reader&& in) {
  tovin::Ptr<CPropertyCollection> properties(CPropertyCollection::allocate());
  properties->deserialize(in);
  return properties;
}

// Hashes as the registry must give them: made by hand from the names with the two published functions.
TEST(ClassHash, OfBothKindsIsStable) {
  EXPECT_EQ(static_cast<uint32_t>(tovin::ClassTag("a").getHash(true)), 0xE40C292Cu);
  EXPECT_EQ(static_cast<uint32_t>(tovin::ClassTag("foobar").getHash(true)), 0xBF9CF968u);
  EXPECT_EQ(tovin::ClassTag("ab").getHash(false), 97 * 31 + 98);
}

template <class T>
void expectRecord(const T& value, const char* bytes) {
  Writer out;
  value.serialize(out);
  EXPECT_EQ(hex(out), bytes);
  Reader in(bytes);
  T back;
  back.deserialize(in);
  EXPECT_TRUE(back.equals(value)) << bytes;
}

TEST(ValueRecord, HasTheseBytes) {
  tovin::BitsetValue bits(10);
  bits.setOn(0);
  bits.setOn(9);
  tovin::StringArrayValue texts;
  texts.add(L"a");
  texts.add(static_cast<const wchar_t*>(nullptr));
  texts.add(L"");
  tovin::IntegerArrayValue numbers;
  numbers.add(-16);
  numbers.add(200);
  expectRecord(tovin::StringValue(L"h\xE9"), "0C 68 C3 A9");
  expectRecord(tovin::StringValue(), "00");
  expectRecord(tovin::DoubleValue(1.5), "00 00 00 00 00 00 F8 3F");
  expectRecord(tovin::DoubleValue(-0.0), "00 00 00 00 00 00 00 80");
  expectRecord(tovin::IntegerValue(300), "02 2C 01");
  expectRecord(tovin::NullValue(), "");
  expectRecord(bits, "28 01 02");
  expectRecord(tovin::BitsetValue(), "00");
  expectRecord(texts, "0C 08 61 00 04");
  expectRecord(numbers, "08 C0 02 C8 00");
}

TEST(ValueRecord, ACountThatNoWriterWroteIsRefused) {
  const std::tuple<const tovin::ClassTag&, const char*, const wchar_t*> rows[] = {
      {tovin::BitsetValue::Tag, "FC", L"A bitset cannot have the count -1"},
      {tovin::BitsetValue::Tag, "03 FF FF FF 7F 01", L"EOF reading bitset"},
      {tovin::StringArrayValue::Tag, "03 FF FF FF 7F", L"EOF reading int header"},
      {tovin::IntegerArrayValue::Tag, "FC", L"A list cannot have the count -1"},
      {tovin::DoubleValue::Tag, "00 00 00", L"EOF reading double"}};
  for (const auto& [tag, bytes, message] : rows) {
    tovin::Object* value = tovin::Class::requireClass(tag).newInstance();
    Reader in(bytes);
    expectMessage(message, [&] { value->deserialize(in); });
    value->deleteInstance();
  }
}

// One property of each value class, as the hand-written records hold them.
void fillWithEveryValueClass(CPropertyCollection& properties) {
  properties.define(L"text", L"a\xE9\x20AC\xD83D\xDE00", 0);
  properties.define(L"_null text", tovin::StringValue(), 0x02);
  properties.define(L"real", 0.1, 0x7F);
  properties.define(L"whole", tovin::IntegerValue(-32769), 0);
  properties.define(L"none", 0);
  tovin::BitsetValue bits(33);
  bits.setOn(0);
  bits.setOn(32);
  properties.define(L"bits", bits, 0);
  tovin::StringArrayValue texts;
  texts.add(L"");
  texts.add(static_cast<const wchar_t*>(nullptr));
  properties.define(L"texts", texts, 0);
  tovin::IntegerArrayValue numbers;
  numbers.add(127);
  numbers.add(128);
  properties.define(L"numbers", numbers, 0);
}

// Versions 1 to 3 of the stream: raw UTF-16 bodies, then UTF-8 bodies, then the newer class hashes.
TEST(CollectionRecord, IsTheHandWrittenOneInEveryVersion) {
  for (int version : {1, 2, 3}) {
    const std::string golden = unhexFile("records/collection_v" + std::to_string(version) + ".hex");
    const tovin::Ptr<CPropertyCollection> properties(CPropertyCollection::allocate());
    fillWithEveryValueClass(*properties);
    Writer out(version);
    properties->serialize(out);
    EXPECT_EQ(hex(out), hex(golden)) << version;

    const auto back = readCollection(Reader(golden, version));
    ASSERT_EQ(back->getSize(), properties->getSize());
    for (unsigned i = 0; i < back->getSize(); ++i) {
      EXPECT_STREQ(back->get(i)->getName(), properties->get(i)->getName());
      EXPECT_TRUE(back->get(i)->getValue().equals(properties->get(i)->getValue())) << i;
      EXPECT_EQ(back->get(i)->getInfo()->getMetaDataFlags(),
                properties->get(i)->getInfo()->getMetaDataFlags())
          << i;
    }
  }
}

TEST(CollectionRecord, CutAnywhereIsRefusedAndCanBeReleased) {
  for (int version : {1, 2, 3}) {
    const std::string golden = unhexFile("records/collection_v" + std::to_string(version) + ".hex");
    for (size_t length = 0; length < golden.size(); ++length) {
      EXPECT_THROW(readCollection(Reader(golden.substr(0, length), version)), tovin::Exception) << length;
    }
  }
}

TEST(CollectionRecord, RefusesOtherVersionsBeforeAnythingElse) {
  const std::pair<const char*, const wchar_t*> rows[] = {
      {"01 65", L"Deserialization version mismatch (101 , 100)"},
      {"01 64 02 FF 6A", L"Deserialization version mismatch (27391 , 27390)"},
      {"01 64 02 FE 6A", L"EOF reading bool"},
      {"01 64 02 FE 6A 00 0C 6E 6F", L"Unknown class no"},
      {"01 64 02 FE 6A 01 FC", L"A property collection cannot have the count -1"},
      {"01 64 02 FE 6A 01 03 FF FF FF 7F", L"EOF reading int header"},
      {"01 64 02 FE 6A 01 04 08 61 03 39 30 00 00", L"Unknown class 12345"},
      {"01 64 02 FE 6A 01 04 FC", L"A string cannot have the count -1"}};
  for (const auto& [bytes, message] : rows) {
    Reader in(bytes);
    const tovin::Ptr<CPropertyCollection> properties(CPropertyCollection::allocate());
    properties->define(L"gone", 0);
    expectMessage(message, [&] { properties->deserialize(in); });
    EXPECT_EQ(properties->getSize(), 0u) << bytes;
  }
}

TEST(CollectionRecord, APropertyClassTravelsByName) {
  const tovin::Ptr<CPropertyCollection> properties(CPropertyCollection::allocate());
  properties->SetPropertyClass(CProperty::Tag);
  Writer out;
  properties->serialize(out);
  EXPECT_EQ(bytesOf(out), unhex("01 64 02 FE 6A 00 01 17") + "DraVolin.data.Property" + unhex("00"));
  EXPECT_EQ(readCollection(Reader(out))->GetStorage().GetPropertyClass(), &CProperty::m_class);
  const std::string wrong = unhex("01 64 02 FE 6A 00 01 16") + "DraVolin.value.Double" + unhex("04 04");
  expectMessage(L"Class DraVolin.value.Double is not a property class",
                [&] { readCollection(Reader(wrong, 3)); });
}

TEST(CollectionRecord, ASubsetIsWrittenInTheOrderAsked) {
  const tovin::Ptr<CPropertyCollection> properties(CPropertyCollection::allocate());
  for (const wchar_t* name : {L"a", L"b", L"c"}) properties->define(name, 0);
  Writer out;
  const CPropertyCollection::NameList names{L"C", L"a"};
  properties->internalSerialize(out, &names);
  const auto back = readCollection(Reader(out));
  ASSERT_EQ(back->getSize(), 2u);
  EXPECT_STREQ(back->get(0u)->getName(), L"c");
  const CPropertyCollection::NameList missing{L"a", L"x"};
  expectMessage(L"Unable to find property 'x'", [&] { properties->internalSerialize(out, &missing); });
}

TEST(PropertyRecord, KeepsTheNameForACountOfZeroAndTheFlagsAsTheyAre) {
  CProperty property;
  property.SetName(L"kept");
  Writer out;
  out.put("\0", 1);
  tovin::coding::writeInt(out, tovin::NullValue::Tag.getHash());
  tovin::coding::writeInt(out, -1);
  Reader in(out);
  property.deserialize(in);
  EXPECT_STREQ(property.getName(), L"kept");
  EXPECT_EQ(property.getMetaDataFlags().getBits(), 0xFFFFFFFFu);
}

TEST(PropertyRecord, LongNamesTakeTheHeapAndStayTheSame) {
  for (size_t length : {1022u, 1023u, 1024u, 1025u, 9000u}) {
    const std::wstring name(length, L'\xE9');
    for (int version : {1, 2, 3}) {
      CProperty property, back;
      property.SetName(name.c_str());
      readFrom(property, back, version);
      EXPECT_EQ(std::wstring(back.getName()), name);
    }
  }
}

TEST(PropertyRecord, AValueOfTheSameClassIsKept) {
  CProperty source, target;
  source.setValue(L"new");
  target.setValue(L"old");
  const tovin::Value* value = &target.getValue();
  readFrom(source, target);
  EXPECT_EQ(&target.getValue(), value);
  EXPECT_TRUE(target.getValue().equals(source.getValue()));
}

TEST(PropertyRecord, AClassThatIsNoValueIsRefused) {
  Writer out;
  tovin::coding::writeInt(out, 0);
  tovin::coding::writeInt(out, CProperty::Tag.getHash());
  Reader in(out);
  CProperty property;
  expectMessage(L"Class DraVolin.data.Property is not a value class", [&] { property.deserialize(in); });
}

}  // namespace
