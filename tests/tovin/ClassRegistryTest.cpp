#include <stdexcept>

#include "tests/support/Bytes.h"
#include "tovin/FrameworkClass.h"
#include "tovin/Ptr.h"
#include "tovin/values/StringValue.h"

namespace {

using namespace testsupport;
using tovin::ClassTag;

// A class of the test's own, counted and without a pool.
class Plain : public tovin::FrameworkClass<Plain, tovin::CountedObject> {
 public:
  static constexpr const char* ClassName = "Plain";
  static inline const tovin::ClassTagDecl Tag{"test.Plain"};
  static inline tovin::LeakDetector m_leakDetector{ClassName};
  static inline tovin::ClassImp<Plain> m_class{Tag, m_leakDetector};
  static bool fails;

  Plain() {
    if (fails) throw std::runtime_error("no");
  }
  Plain(const Plain& other) = default;
};
bool Plain::fails = false;

TEST(ClassRegistry, FindsAClassByNameAndByEitherHash) {
  EXPECT_EQ(tovin::Class::getClass(Plain::Tag), &Plain::m_class);
  EXPECT_EQ(tovin::Class::getClass(ClassTag(tovin::NarrowString("test.Plain"))), &Plain::m_class);
  EXPECT_EQ(tovin::Class::getClass(ClassTag(Plain::Tag.getHash(true), true)), &Plain::m_class);
  EXPECT_EQ(tovin::Class::getClass(ClassTag(Plain::Tag.getHash(false), false)), &Plain::m_class);
  EXPECT_EQ(tovin::Class::getClass(ClassTag(Plain::Tag.getHash(true), false)), nullptr);
  expectMessage(L"Unknown class test.None", [] { tovin::newInstance("test.None"); });
  expectMessage(L"Unknown class -5", [] { tovin::Class::requireClass(ClassTag(-5, true)); });
}

TEST(ClassRegistry, RefusesAHashThatAnotherNameHas) {
  // "Aa" and "BB" are the classic pair of one value under 31·h + c.
  static const tovin::ClassTagDecl first("test.Aa"), second("test.BB");
  tovin::LeakDetector leaks("pair");
  const tovin::ClassImp<Plain> registered(first, leaks);
  const std::string message = "Cannot register class test.BB: its class hash " +
                              std::to_string(first.getHash(false)) + " belongs to test.Aa";
  expectMessage(tovin::utf8ToWide(message), [&] { const tovin::ClassImp<Plain> refused(second, leaks); });
  EXPECT_EQ(tovin::Class::getClass(ClassTag(first.getHash(false), false)), &registered);
}

TEST(ClassTag, OfEitherOriginIsTheSameClass) {
  const ClassTag byName("DraVolin.value.String"), newer(byName.getHash(), true),
      older(byName.getHash(false), false);
  EXPECT_TRUE(byName == newer && byName == older && newer == byName);
  EXPECT_TRUE(newer == older);  // the registry knows both
  EXPECT_FALSE(byName == ClassTag("DraVolin.value.Double"));
  EXPECT_STREQ(older, "DraVolin.value.String");
  EXPECT_EQ(newer.getHash(), byName.getHash(true));
  EXPECT_EQ(older.getHash(), byName.getHash(false));
  ClassTag copy{tovin::NarrowString("test.Copy")};
  copy = ClassTag(tovin::NarrowString("test.Other"));
  EXPECT_STREQ(copy, "test.Other");
}

TEST(FrameworkClass, MakesAndClonesInstances) {
  tovin::Object* object = tovin::newInstance("test.Plain");
  const tovin::Ptr<Plain> plain(tovin::seek<Plain>(object));
  const tovin::Ptr<Plain> copy(tovin::seek<Plain>(plain->clone()));
  EXPECT_NE(copy.get(), plain.get());
  EXPECT_EQ(copy->getRefCount(), 1);
  EXPECT_EQ(&object->getClass(), &Plain::m_class);
  expectMessage(L"Class test.Plain has no record", [&] {
    Writer out;
    object->serialize(out);
  });
}

TEST(FrameworkClass, AFailingConstructorHasOneText) {
  Plain::fails = true;
  expectMessage(L"Error when calling class constructor.", [] { Plain::allocate(); });
  Plain::fails = false;
}

}  // namespace
