#pragma once

#include <cstdint>
#include <utility>

#include "tovin/AllocBase.h"
#include "tovinCore/Guard.h"

namespace tovin {

/// Holds a counted reference: raises the count when it takes an object, releases it when it lets go.
template <class T>
class Ptr {
 public:
  Ptr() noexcept = default;
  Ptr(T* object) : object_(object) {
    if (object_) object_->addRef();
  }
  Ptr(const Ptr& other) : Ptr(other.object_) {}
  Ptr(Ptr&& other) noexcept : object_(std::exchange(other.object_, nullptr)) {}
  ~Ptr() {
    guardedDestruction("Ptr", [this] { reset(); });
  }
  Ptr& operator=(Ptr other) noexcept {
    std::swap(object_, other.object_);
    return *this;
  }

  T* get() const noexcept { return object_; }
  T* operator->() const noexcept { return object_; }
  T& operator*() const noexcept { return *object_; }
  explicit operator bool() const noexcept { return object_ != nullptr; }
  void reset() {
    if (T* old = std::exchange(object_, nullptr)) old->release();
  }
  /// Hands over a new object that nobody else holds: its count goes back to 0, and it is not given back.
  T* detachUncounted() noexcept {
    if (object_) object_->forgetRef();
    return std::exchange(object_, nullptr);
  }
  friend bool operator==(const Ptr& a, const Ptr& b) noexcept { return a.object_ == b.object_; }

 private:
  T* object_ = nullptr;
};

/// Keeps a counted object for a while that somebody else counts already. An object that nobody counts is its
/// maker's and is left alone: letting go of it would give it back under its maker's hands.
///
/// - Shape: one pointer in size; whether it counts stands in the lowest bit.
template <class T>
class Held {
 public:
  Held() noexcept = default;
  explicit Held(T* object) noexcept : bits_(reinterpret_cast<uintptr_t>(object)) {
    if (!object || object->getRefCount() == 0) return;
    object->addRef();
    bits_ |= counts;
  }
  Held(const Held& other) noexcept : bits_(other.bits_) {
    if (bits_ & counts) get()->addRef();
  }
  Held(Held&& other) noexcept : bits_(std::exchange(other.bits_, 0)) {}
  ~Held() {
    if (bits_ & counts) guardedDestruction("Held", [this] { get()->release(); });
  }
  Held& operator=(Held other) noexcept {
    std::swap(bits_, other.bits_);
    return *this;
  }

  T* get() const noexcept { return reinterpret_cast<T*>(bits_ & ~counts); }
  T* operator->() const noexcept { return get(); }
  T& operator*() const noexcept { return *get(); }
  explicit operator bool() const noexcept { return bits_ != 0; }

 private:
  static constexpr uintptr_t counts = 1;
  uintptr_t bits_ = 0;
};

/// Frees with the framework's memory.
struct FreeDeallocator {
  template <class T>
  static void deallocate(T* block) noexcept {
    AllocBase::_free(block);
  }
};

/// Gives a framework object back that nobody counts.
struct InstanceDeallocator {
  template <class T>
  static void deallocate(T* object) {
    object->deleteInstance();
  }
};

/// Owns a block or an uncounted object.
template <class T, class Deallocator = FreeDeallocator>
class MemPtr {
 public:
  MemPtr() noexcept = default;
  explicit MemPtr(T* block) noexcept : block_(block) {}
  MemPtr(MemPtr&& other) noexcept : block_(other.detach()) {}
  MemPtr(const MemPtr&) = delete;
  ~MemPtr() {
    guardedDestruction("MemPtr", [this] { reset(); });
  }
  MemPtr& operator=(MemPtr&& other) noexcept {
    std::swap(block_, other.block_);
    return *this;
  }
  MemPtr& operator=(const MemPtr&) = delete;

  T* get() const noexcept { return block_; }
  T* operator->() const noexcept { return block_; }
  T& operator*() const noexcept { return *block_; }
  explicit operator bool() const noexcept { return block_ != nullptr; }
  T* detach() noexcept { return std::exchange(block_, nullptr); }
  void reset(T* block = nullptr) {
    if (T* old = std::exchange(block_, block)) Deallocator::deallocate(old);
  }

 private:
  T* block_ = nullptr;
};

}  // namespace tovin
