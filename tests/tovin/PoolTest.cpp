#include <functional>
#include <vector>

#include "tests/support/Bytes.h"
#include "tests/support/Threads.h"
#include "tovin/FrameworkClass.h"
#include "tovin/Ptr.h"

namespace {

using namespace testsupport;

template <class T>
class Recycled : public tovin::FrameworkClass<T, tovin::PooledObject> {
 public:
  void onActivate() override { active_ = true; }
  void onDeactivate() override {
    active_ = false;
    if (inside_) inside_();
  }
  bool active_ = false;
  std::function<void()> inside_;
};

class Unlimited : public Recycled<Unlimited> {
 public:
  static constexpr const char* ClassName = "Unlimited";
  static inline const tovin::ClassTagDecl Tag{"test.Unlimited"};
  static inline tovin::LeakDetector m_leakDetector{ClassName};
  static tovin::PooledClassImp<Unlimited> m_class;
};
tovin::PooledClassImp<Unlimited> Unlimited::m_class(Unlimited::Tag, Unlimited::m_leakDetector);

class Limited : public Recycled<Limited> {
 public:
  static constexpr const char* ClassName = "Limited";
  static inline const tovin::ClassTagDecl Tag{"test.Limited"};
  static inline tovin::LeakDetector m_leakDetector{ClassName};
  static tovin::PooledClassImp<Limited, 2> m_class;
};
tovin::PooledClassImp<Limited, 2> Limited::m_class(Limited::Tag, Limited::m_leakDetector);

class Pools : public testing::Test {
 protected:
  Pools() { tovin::Object::m_dontUsePools = false; }
};

TEST_F(Pools, AnObjectComesBackDeactivatedAndGoesOutAgain) {
  Unlimited* object = Unlimited::allocate();
  const Unlimited* address = object;
  EXPECT_TRUE(object->active_);
  EXPECT_EQ(Unlimited::m_class.getOutstanding(), 1);
  EXPECT_EQ(Unlimited::m_leakDetector.getLive(), 1);
  // The lock is free while the object puts its things away: it may return others to the same pool.
  Unlimited* held = Unlimited::allocate();
  object->inside_ = [&] { Unlimited::deallocate(held); };
  Unlimited::deallocate(object);
  EXPECT_EQ(object, nullptr);
  EXPECT_EQ(held, nullptr);
  Unlimited::deallocate(object);  // nothing happens
  EXPECT_EQ(Unlimited::m_class.getOutstanding(), 0);
  EXPECT_EQ(Unlimited::m_class.getFree(), 2);
  EXPECT_EQ(Unlimited::m_leakDetector.getLive(), 0);
  object = Unlimited::allocate();
  EXPECT_EQ(object, address);
  object->inside_ = nullptr;
  Unlimited::deallocate(object);
}

TEST_F(Pools, OnlyObjectsOfThePoolAreTakenBack) {
  Unlimited local;
  Unlimited* object = &local;
  expectMessage(L"Object leak, object being returned to pool when none were outstanding...",
                [&] { Unlimited::deallocate(object); });
  Unlimited* out = Unlimited::allocate();
  object = &local;
  expectMessage(L"An object of class test.Unlimited that its pool did not make cannot be returned to it",
                [&] { Unlimited::deallocate(object); });
  // One made with plain `new` was never counted out, and is destroyed.
  object = new Unlimited;
  Unlimited::deallocate(object);
  EXPECT_EQ(object, nullptr);
  EXPECT_EQ(Unlimited::m_class.getOutstanding(), 1);
  Unlimited::deallocate(out);
}

TEST_F(Pools, AtTheLimitObjectsAreDestroyed) {
  Limited* objects[3];
  for (Limited*& object : objects) object = Limited::allocate();
  Limited::deallocate(objects[0]);
  EXPECT_EQ(Limited::m_class.getFree(), 0);
  Limited::deallocate(objects[1]);
  EXPECT_EQ(Limited::m_class.getFree(), 0);
  Limited::deallocate(objects[2]);
  EXPECT_EQ(Limited::m_class.getFree(), 1);
  EXPECT_EQ(Limited::m_class.getOutstanding(), 0);
}

TEST_F(Pools, MayBeSwitchedOffAndOnWhileObjectsAreOut) {
  Unlimited* pooled = Unlimited::allocate();
  std::vector<Unlimited*> spare;
  while (Unlimited::m_class.getFree() > 0) spare.push_back(Unlimited::allocate());
  tovin::Object::m_dontUsePools = true;
  Unlimited* made = Unlimited::allocate();
  Unlimited::deallocate(pooled);
  EXPECT_EQ(Unlimited::m_class.getFree(), 0);
  tovin::Object::m_dontUsePools = false;
  Unlimited::deallocate(made);
  EXPECT_EQ(Unlimited::m_class.getFree(), 1);
  for (Unlimited* object : spare) Unlimited::deallocate(object);
}

TEST_F(Pools, ServeManyThreads) {
  inThreads(8, [](int) {
    std::vector<Unlimited*> held;
    for (int i = 0; i < 3000; ++i) {
      held.push_back(Unlimited::allocate());
      if (i % 3 == 0) {
        Unlimited::deallocate(held.front());
        held.erase(held.begin());
      }
    }
    for (Unlimited* object : held) Unlimited::deallocate(object);
  });
  EXPECT_EQ(Unlimited::m_class.getOutstanding(), 0);
  EXPECT_EQ(Unlimited::m_leakDetector.getLive(), 0);
}

TEST_F(Pools, CountedObjectsMayBeSharedBetweenThreads) {
  const tovin::Ptr<tovin::CountedObject> shared(
      tovin::seek<tovin::CountedObject>(tovin::newInstance("DraVolin.CXPathParser")));
  inThreads(4, [&](int) {
    for (int i = 0; i < 10'000; ++i) {
      shared->addRef();
      shared->release();
    }
  });
  EXPECT_EQ(shared->getRefCount(), 1);
}

}  // namespace
