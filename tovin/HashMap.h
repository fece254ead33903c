#pragma once

#include <algorithm>
#include <cstdint>
#include <utility>
#include <vector>

#include "tovin/BaseString.h"
#include "tovinCore/Exception.h"
#include "tovinCore/Units.h"

namespace tovin {

/// How keys of a type are hashed and compared: the number itself, or exact text.
template <class K>
struct HashTraits {
  static uint32_t hash(K key) noexcept { return static_cast<uint32_t>(key); }
  static uint32_t keyedHash(K key) noexcept { return hash(key); }
  static bool equal(K a, K b) noexcept { return a == b; }
};

/// Names: equal when their units are equal with A to Z folded.
struct FoldedNameTraits {
  static uint32_t hash(const wchar_t* name) noexcept { return hashFolded(name); }
  static uint32_t keyedHash(const wchar_t* name) noexcept { return name ? hashKeyedFolded(name) : 0; }
  static bool equal(const wchar_t* a, const wchar_t* b) noexcept { return equalFolded(a, b); }
};

template <>
struct HashTraits<WideString> {
  static uint32_t hash(const wchar_t* text) noexcept { return hashExact(text); }
  static uint32_t keyedHash(const wchar_t* text) noexcept { return text ? hashKeyed(text) : 0; }
  static bool equal(const wchar_t* a, const wchar_t* b) noexcept { return equalExact(a, b); }
};

/// The smallest prime that is at least n.
constexpr uint32_t primeFrom(uint32_t n) {
  for (;; ++n) {
    bool prime = n > 1;
    for (uint32_t i = 2; prime && uint64_t{i} * i <= n; ++i) prime = n % i != 0;
    if (prime) return n;
  }
}

/// A chained hash table: bucket = hash mod buckets, a new entry at the head of its chain. Before an insertion
/// that finds 3/4 as many entries as buckets it grows to the smallest prime from 2 × buckets + 1 on; it never
/// shrinks.
///
///     HashMap<WideString, int, FoldedNameTraits> bits(31);
///     bits.put(L"Admin", 3);
///     const int* bit = bits.find(L"admin");   // null if none
///
/// - Ownership: owns keys and values. References into it are good until the next put, remove or resize.
/// - Errors: a table made with 0 buckets refuses find, put and remove, each with a message of its own.
/// - Speed: entries lie in one block, with their hashes; chains are indexes into it. A chain as long as
///   chance never makes it shows keys that were chosen to meet: from then on, until clear(), the table hashes
///   under the process's key.
template <class K, class V, class Traits = HashTraits<K>>
class HashMap {
 public:
  static constexpr uint32_t defaultBuckets = 31;
  struct Entry {
    K key;
    V value;
    uint32_t hash;
    int32_t next;
  };

  explicit HashMap(uint32_t buckets = defaultBuckets) : heads_(buckets, none) {}

  size_t getSize() const noexcept { return size_; }
  uint32_t getNumBuckets() const noexcept { return static_cast<uint32_t>(heads_.size()); }
  uint32_t getThreshold() const noexcept { return static_cast<uint32_t>(heads_.size() * 3 / 4); }

  /// The value of a key, null if none. Q is anything that Traits hashes and compares with K.
  template <class Q>
  const V* find(const Q& key) const {
    if (heads_.empty()) throw Exception(L"Tried to find in a hash map with 0 buckets");
    const int32_t at = seek(key, hashOf(key));
    return at == none ? nullptr : &entries_[static_cast<size_t>(at)].value;
  }
  template <class Q>
  V* find(const Q& key) {
    return const_cast<V*>(std::as_const(*this).find(key));
  }

  /// Inserts or replaces; true when the key was new.
  template <class Q>
  bool put(Q&& key, V value) {
    if (heads_.empty()) throw Exception(L"Tried to put into a hash map with 0 buckets");
    uint32_t hash = hashOf(key);
    int32_t steps = 0;
    const int32_t at = seek(key, hash, &steps);
    if (at != none) {
      entries_[static_cast<size_t>(at)].value = std::move(value);
      return false;
    }
    if (steps > longestChain && !keyed_) {
      hashUnderKey();
      hash = hashOf(key);
    }
    if (size_ >= getThreshold()) resize(primeFrom(2 * getNumBuckets() + 1));
    link(place({K(std::forward<Q>(key)), std::move(value), hash, none}));
    ++size_;
    return true;
  }

  /// True when the key was there.
  template <class Q>
  bool remove(const Q& key) {
    if (heads_.empty()) throw Exception(L"Tried to remove from hash map with 0 buckets");
    const uint32_t hash = hashOf(key);
    int32_t* from = &heads_[bucketOf(hash)];
    for (; *from != none; from = &entries_[static_cast<size_t>(*from)].next) {
      Entry& entry = entries_[static_cast<size_t>(*from)];
      if (entry.hash != hash || !Traits::equal(entry.key, key)) continue;
      const int32_t gone = *from;
      *from = entry.next;
      entry = {K(), V(), 0, free_ == none ? deadEnd : dead - free_};
      free_ = gone;
      --size_;
      return true;
    }
    return false;
  }

  /// Changes the number of buckets and chains every entry anew.
  void resize(uint32_t buckets) {
    if (buckets == 0) throw Exception(L"Cannot resize a hash map to 0");
    heads_.assign(buckets, none);
    for (size_t i = 0; i < entries_.size(); ++i) {
      if (entries_[i].next > dead) link(static_cast<int32_t>(i));
    }
  }

  /// Removes every entry; the buckets stay.
  void clear() noexcept {
    std::fill(heads_.begin(), heads_.end(), none);
    entries_.clear();
    free_ = none;
    size_ = 0;
    keyed_ = false;
  }

  /// Calls body(key, value) for every entry, in order of insertion as long as nothing was removed.
  template <class Body>
  void forEach(Body&& body) const {
    for (const Entry& entry : entries_) {
      if (entry.next > dead) body(entry.key, entry.value);
    }
  }

 private:
  // `next` of a living entry is an index or `none`; of a removed one it lies below: the free list, shifted.
  static constexpr int32_t none = -1;
  static constexpr int32_t dead = -2;
  static constexpr int32_t deadEnd = INT32_MIN;

  static constexpr int32_t longestChain = 64;

  template <class Q>
  uint32_t hashOf(const Q& key) const {
    return keyed_ ? Traits::keyedHash(key) : Traits::hash(key);
  }

  // In 32 bits, where a division costs less than half of one in 64.
  size_t bucketOf(uint32_t hash) const noexcept { return hash % getNumBuckets(); }

  void hashUnderKey() {
    keyed_ = true;
    for (Entry& entry : entries_) {
      if (entry.next > dead) entry.hash = Traits::keyedHash(entry.key);
    }
    resize(getNumBuckets());
  }

  /// \param steps out, may be null: how many other keys were met on the way.
  template <class Q>
  int32_t seek(const Q& key, uint32_t hash, int32_t* steps = nullptr) const {
    int32_t at = heads_[bucketOf(hash)], met = 0;
    while (at != none) {
      const Entry& entry = entries_[static_cast<size_t>(at)];
      if (entry.hash == hash && Traits::equal(entry.key, key)) break;
      at = entry.next;
      ++met;
    }
    if (steps) *steps = met;
    return at;
  }

  int32_t place(Entry entry) {
    if (free_ == none) {
      entries_.push_back(std::move(entry));
      return static_cast<int32_t>(entries_.size() - 1);
    }
    const int32_t at = free_;
    Entry& slot = entries_[static_cast<size_t>(at)];
    free_ = slot.next == deadEnd ? none : dead - slot.next;
    slot = std::move(entry);
    return at;
  }

  void link(int32_t at) {
    Entry& entry = entries_[static_cast<size_t>(at)];
    int32_t& head = heads_[bucketOf(entry.hash)];
    entry.next = head;
    head = at;
  }

  std::vector<int32_t> heads_;
  std::vector<Entry> entries_;
  int32_t free_ = none;
  size_t size_ = 0;
  bool keyed_ = false;
};

}  // namespace tovin
