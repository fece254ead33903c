#include "tovin/Class.h"

#include <atomic>
#include <cstring>
#include <memory>
#include <mutex>
#include <vector>

#include "tovin/Object.h"
#include "tovinCore/Immortal.h"

namespace tovin {
namespace {

// The classes by both hashes. Once it is published nothing comes in, so that readers take no lock.
class Index {
 public:
  explicit Index(const std::vector<Class*>& classes) : slots_(primeAbove(2 * classes.size() + 8)) {
    for (Class* c : classes) {
      insert(c, true);
      insert(c, false);
    }
  }

  Class* find(int hash, bool newerKind) const noexcept {
    for (size_t at = start(hash);; at = next(at)) {
      const Slot& slot = slots_[at];
      if (!slot.taken || (slot.hash == hash && slot.newerKind == newerKind))
        return slot.entry.load(std::memory_order_acquire);
    }
  }

  void remove(const Class* c) noexcept {
    for (Slot& slot : slots_) {
      if (slot.entry.load(std::memory_order_relaxed) == c)
        slot.entry.store(nullptr, std::memory_order_release);
    }
  }

 private:
  // A class that goes leaves its slot taken: others may lie behind it.
  struct Slot {
    std::atomic<Class*> entry{nullptr};
    int hash = 0;
    bool newerKind = false;
    bool taken = false;
  };
  size_t next(size_t at) const noexcept { return at + 1 == slots_.size() ? 0 : at + 1; }
  static size_t primeAbove(size_t n) {
    size_t size = 17;
    while (size < n * 2) size = size * 2 + 1;
    return size;
  }
  size_t start(int hash) const noexcept { return static_cast<unsigned>(hash) % slots_.size(); }
  void insert(Class* c, bool newerKind) {
    const int hash = c->getTag().getHash(newerKind);
    size_t at = start(hash);
    while (slots_[at].taken) at = next(at);
    Slot& slot = slots_[at];
    slot.entry.store(c, std::memory_order_relaxed);
    slot.hash = hash;
    slot.newerKind = newerKind;
    slot.taken = true;
  }

  std::vector<Slot> slots_;
};

using Locked = std::lock_guard<SmallLock>;

struct Registry {
  SmallLock lock;
  std::vector<Class*> classes;
  // Every index that was ever published stays: a reader may still look into it.
  std::vector<std::unique_ptr<Index>> indexes;
  std::atomic<const Index*> current{nullptr};

  // Everything is made before anything is changed.
  void add(Class* added) {
    std::vector<Class*> all(classes);
    all.push_back(added);
    indexes.push_back(std::make_unique<Index>(all));
    classes.swap(all);
    current.store(indexes.back().get(), std::memory_order_release);
  }

  // Readers may look into any index that was ever published.
  void remove(const Class* removed) noexcept {
    for (const std::unique_ptr<Index>& index : indexes) index->remove(removed);
    std::erase(classes, removed);
  }
};

// Classes of other modules register before this one's code runs, and unregister after it.
constinit Immortal<Registry> registry;

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
  const Locked held(registry.object.lock);
  refuseTaken(tag);
  registry.object.add(this);
}

Class::~Class() {
  const Locked held(registry.object.lock);
  registry.object.remove(this);
}

Class* Class::getClass(const ClassTag& tag) noexcept {
  const Index* index = registry.object.current.load(std::memory_order_acquire);
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
