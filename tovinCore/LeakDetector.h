#pragma once

#include <atomic>
#include <string>
#include <vector>

#include "tovinCore/Export.h"

namespace tovin {

/// Counts the living objects of one class. Static: one for each class, built with the class name.
///
/// - Objects that rest in a pool are not alive, nor what is part of them; the pool says how many rest.
/// - Threads: any; the counts are relaxed atomics.
class TOVINCORE_API LeakDetector {
 public:
  /// \param part the detector of what each object of the class has one of, for as long as it exists: of a
  /// base, or of a member; null if none.
  explicit LeakDetector(const char* name, LeakDetector* part = nullptr) noexcept;
  ~LeakDetector();
  LeakDetector(const LeakDetector&) = delete;
  LeakDetector& operator=(const LeakDetector&) = delete;

  void Add(const void* /*object*/, const char* /*name*/) noexcept {
    made_.fetch_add(1, std::memory_order_relaxed);
  }
  void Sub(const void* /*object*/) noexcept { made_.fetch_sub(1, std::memory_order_relaxed); }
  /// From the class's pool, under the pool's lock: so many objects rest in it now.
  void setResting(long count) noexcept { resting_.store(count, std::memory_order_relaxed); }

  const char* getName() const noexcept { return name_; }
  long getLive() const noexcept;
  void setPart(LeakDetector& part) noexcept;

  struct Count {
    std::string name;
    long live;
  };
  /// Every class with living objects, by name.
  static std::vector<Count> report();

 private:
  long live() const noexcept;

  const char* name_;
  LeakDetector* part_;
  std::atomic<long> made_{0};
  std::atomic<long> resting_{0};
  LeakDetector* next_;
};

}  // namespace tovin
