#pragma once

#include <new>
#include <utility>

#include "tovin/ClassTag.h"
#include "tovinCore/Exception.h"
#include "tovinCore/LeakDetector.h"

namespace tovin {

class Object;

/// A class's registration object: found by the class's tag, makes instances.
///
/// - Ownership: a static object of its class, kept in the process-wide registry; borrows its tag and leak
///   detector.
/// - Errors: registering a class whose hash (of either kind) belongs to another name is an exception at load.
/// - Threads: finding a class takes no lock.
class TOVIN_API Class {
 public:
  Class(const ClassTag& tag, LeakDetector& leaks);
  virtual ~Class();
  Class(const Class&) = delete;
  Class& operator=(const Class&) = delete;

  const ClassTag& getTag() const noexcept { return tag_; }
  LeakDetector& getLeakDetector() const noexcept { return leaks_; }
  /// A new object; its count is 0.
  virtual Object* newInstance() = 0;

  /// The registered class of a tag, null if none.
  static Class* getClass(const ClassTag& tag) noexcept;
  /// The registered class of a tag; "Unknown class %hs" names the tag, or its hash.
  static Class& requireClass(const ClassTag& tag);

 private:
  const ClassTag& tag_;
  LeakDetector& leaks_;
};

/// A new object of a class known by name.
TOVIN_API Object* newInstance(const char* className);

/// Runs a constructor for a registration object; whatever is no framework exception has one text.
template <class Make>
auto constructed(Make&& make) {
  try {
    return std::forward<Make>(make)();
  } catch (const Exception&) {
    throw;
  } catch (...) {
    throw Exception("Error when calling class constructor.").setMayPass(true);  // for want of memory
  }
}

/// The registration object of a class without a pool.
template <class T>
class ClassImp : public Class {
 public:
  using Class::Class;

  Object* newInstance() override { return allocate(); }
  T* allocate() {
    return constructed([] { return new T; });
  }
  T* allocateCopy(const T& source) {
    return constructed([&] { return new T(source); });
  }
  /// Destroys the object and clears the caller's pointer.
  void deallocate(T*& object) { delete std::exchange(object, nullptr); }
};

}  // namespace tovin
