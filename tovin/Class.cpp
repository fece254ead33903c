#include "tovin/Class.h"

#include <atomic>
#include <cstring>
#include <memory>
#include <mutex>
#include <vector>

#include "tovin/Object.h"

namespace tovin {
namespace {

// The classes by both hashes, never changed once it is published: readers take no lock.
class Index {
 public:
  explicit Index(const std::vector<Class*>& classes) : slots_(primeAbove(2 * classes.size() + 8)) {
    for (Class* c : classes) {
      insert(c, true);
      insert(c, false);
    }
  }

  Class* find(int hash, bool newerKind) const noexcept {
    for (size_t at = start(hash);; at = at + 1 == slots_.size() ? 0 : at + 1) {
      const Slot& slot = slots_[at];
      if (!slot.entry || (slot.hash == hash && slot.newerKind == newerKind)) return slot.entry;
    }
  }

 private:
  struct Slot {
    Class* entry = nullptr;
    int hash = 0;
    bool newerKind = false;
  };
  static size_t primeAbove(size_t n) {
    size_t size = 17;
    while (size < n * 2) size = size * 2 + 1;
    return size;
  }
  size_t start(int hash) const noexcept { return static_cast<unsigned>(hash) % slots_.size(); }
  void insert(Class* c, bool newerKind) {
    const int hash = c->getTag().getHash(newerKind);
    size_t at = start(hash);
    while (slots_[at].entry) at = at + 1 == slots_.size() ? 0 : at + 1;
    slots_[at] = {c, hash, newerKind};
  }

  std::vector<Slot> slots_;
};

struct Registry {
  std::mutex lock;
  std::vector<Class*> classes;
  // Every index that was ever published stays: a reader may still look into it.
  std::vector<std::unique_ptr<Index>> indexes;
  std::atomic<const Index*> current{nullptr};

  void publish() {
    indexes.push_back(std::make_unique<Index>(classes));
    current.store(indexes.back().get(), std::memory_order_release);
  }
};

// Never destroyed: classes of other modules unregister themselves at exit.
Registry& registry() {
  static Registry& only = *new Registry;
  return only;
}

void refuseTaken(const ClassTag& tag) {
  for (bool newerKind : {true, false}) {
    const Class* taken = Class::getClass(ClassTag(tag.getHash(newerKind), newerKind));
    if (!taken) continue;
    throw Exception(L"Cannot register class %hs: its class hash %d belongs to %hs",
                    static_cast<const char*>(tag), tag.getHash(newerKind),
                    static_cast<const char*>(taken->getTag()));
  }
}

}  // namespace

Class::Class(const ClassTag& tag, LeakDetector& leaks) : tag_(tag), leaks_(leaks) {
  Registry& all = registry();
  const std::lock_guard<std::mutex> held(all.lock);
  refuseTaken(tag);
  all.classes.push_back(this);
  all.publish();
}

Class::~Class() {
  Registry& all = registry();
  const std::lock_guard<std::mutex> held(all.lock);
  std::erase(all.classes, this);
  all.publish();
}

Class* Class::getClass(const ClassTag& tag) noexcept {
  const Index* index = registry().current.load(std::memory_order_acquire);
  if (!index) return nullptr;
  const bool newerKind = tag.isNewerHash();
  Class* found = index->find(newerKind ? tag.getHash() : tag.getHash(false), newerKind);
  // Another name may have the same hash.
  return found && tag.isNameOf(found->getTag()) ? found : nullptr;
}

Class& Class::requireClass(const ClassTag& tag) {
  if (Class* found = getClass(tag)) return *found;
  throw Exception(L"Unknown class %hs", tag.describe());
}

Object* newInstance(const char* className) { return Class::requireClass(ClassTag(className)).newInstance(); }

}  // namespace tovin
