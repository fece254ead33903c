#include "ztcore/ztUniqueStrings.h"

#include <atomic>
#include <cstdint>
#include <cstring>
#include <cwchar>
#include <new>
#include <vector>

#include "tovin/AllocBase.h"
#include "tovinCore/CriticalSection.h"
#include "tovinCore/Exception.h"
#include "tovinCore/Units.h"

namespace {

// What stands before each shared text.
struct Entry {
  std::atomic<uint32_t> references;
  uint32_t hash;
  size_t length;

  wchar_t* text() noexcept { return reinterpret_cast<wchar_t*>(this + 1); }
};

Entry* entryOf(const wchar_t* text) noexcept {
  return reinterpret_cast<Entry*>(const_cast<wchar_t*>(text)) - 1;
}

// A count this high is never changed again: many names are held for ever on purpose.
constexpr uint32_t immortal = 0x80000000u;
constexpr long lockTimeout = 60'000;

void retain(Entry& entry) noexcept {
  if (entry.references.load(std::memory_order_relaxed) < immortal) {
    entry.references.fetch_add(1, std::memory_order_relaxed);
  }
}

// One part of the table: open addressing, linear probing, at most half full.
class Part {
 public:
  Entry* intern(const wchar_t* text, size_t length, uint32_t hash, bool& created) {
    tovin::AutoCriticalSection held(lock_);
    held.lock(lockTimeout, true);
    size_t at = seek(text, length, hash);
    created = !slots_[at].entry;
    if (!created) {
      retain(*slots_[at].entry);
      return slots_[at].entry;
    }
    if ((count_ + 1) * 2 > slots_.size()) {
      grow();
      at = seek(text, length, hash);
    }
    slots_[at] = {makeEntry(text, length, hash), hash};
    ++count_;
    return slots_[at].entry;
  }

  void release(Entry& entry) noexcept {
    uint32_t references = entry.references.load(std::memory_order_relaxed);
    while (references > 1) {
      if (references >= immortal) return;
      if (entry.references.compare_exchange_weak(references, references - 1, std::memory_order_acq_rel))
        return;
    }
    // The last reference goes under the lock, so that nobody finds the text between counting and removing it.
    if (!lock_.lock(lockTimeout)) return;
    if (entry.references.fetch_sub(1, std::memory_order_acq_rel) == 1) remove(entry);
    lock_.unlock();
  }

  size_t count() {
    tovin::AutoCriticalSection held(lock_);
    held.lock(lockTimeout, true);
    return count_;
  }

 private:
  struct Slot {
    Entry* entry = nullptr;
    uint32_t hash = 0;
  };

  // Where the text stands, or the empty slot where it belongs.
  size_t seek(const wchar_t* text, size_t length, uint32_t hash) const noexcept {
    const size_t mask = slots_.size() - 1;
    size_t at = hash >> 4 & mask;
    while (slots_[at].entry) {
      Entry& entry = *slots_[at].entry;
      if (slots_[at].hash == hash && entry.length == length && std::wmemcmp(entry.text(), text, length) == 0)
        break;
      at = (at + 1) & mask;
    }
    return at;
  }

  static Entry* makeEntry(const wchar_t* text, size_t length, uint32_t hash) {
    void* block = tovin::AllocBase::_alloc(sizeof(Entry) + (length + 1) * sizeof(wchar_t));
    if (!block) throw tovin::MemoryException(sizeof(wchar_t), static_cast<long long>(length));
    auto* entry = new (block) Entry{1, hash, length};
    std::wmemcpy(entry->text(), text, length + 1);
    return entry;
  }

  void grow() {
    std::vector<Slot> old(slots_.size() * 2);
    old.swap(slots_);
    for (const Slot& slot : old) {
      if (slot.entry) slots_[seek(slot.entry->text(), slot.entry->length, slot.hash)] = slot;
    }
  }

  void remove(Entry& entry) noexcept {
    const size_t mask = slots_.size() - 1;
    size_t hole = seek(entry.text(), entry.length, entry.hash);
    slots_[hole] = {};
    --count_;
    // Close the hole: whoever was pushed past it moves back.
    for (size_t at = (hole + 1) & mask; slots_[at].entry; at = (at + 1) & mask) {
      const size_t home = slots_[at].hash >> 4 & mask;
      if (((at - home) & mask) < ((at - hole) & mask)) continue;
      slots_[hole] = slots_[at];
      slots_[at] = {};
      hole = at;
    }
    entry.~Entry();
    tovin::AllocBase::_free(&entry);
  }

  tovin::CriticalSection lock_;
  std::vector<Slot> slots_ = std::vector<Slot>(64);
  size_t count_ = 0;
};

constexpr uint32_t parts = 16;

// Never destroyed: static objects of any module may hold names to the very end.
std::atomic<Part*> madeTable{nullptr};

Part* table() {
  if (Part* made = madeTable.load(std::memory_order_acquire)) return made;
  static Part* only = new Part[parts];
  madeTable.store(only, std::memory_order_release);
  return only;
}

Part& partOf(uint32_t hash) { return table()[hash % parts]; }

}  // namespace

const wchar_t* ztUniqueStrings::GetUniqueString(const wchar_t* newText, const wchar_t* oldText,
                                                bool* created) {
  const wchar_t* result = nullptr;
  bool fresh = false;
  if (newText) {
    const size_t length = std::wcslen(newText);
    const uint32_t hash = tovin::hashKeyed({newText, length});
    result = partOf(hash).intern(newText, length, hash, fresh)->text();
  }
  Release(oldText);
  if (created) *created = fresh;
  return result;
}

void ztUniqueStrings::giveUp(const wchar_t* text) noexcept {
  Entry& entry = *entryOf(text);
  // A text was handed out, so there is a table.
  madeTable.load(std::memory_order_acquire)[entry.hash % parts].release(entry);
}

const wchar_t* ztUniqueStrings::AddReference(const wchar_t* text) noexcept {
  if (text) retain(*entryOf(text));
  return text;
}

size_t ztUniqueStrings::GetCount() {
  size_t count = 0;
  for (uint32_t i = 0; i < parts; ++i) count += table()[i].count();
  return count;
}
