#include "tovinCore/LeakDetector.h"

#include <algorithm>
#include <mutex>

#include "tovinCore/Immortal.h"

namespace tovin {
namespace {

using Locked = std::lock_guard<SmallLock>;

// Detectors are static objects of many modules, and come and go in any order.
struct Detectors {
  SmallLock lock;
  LeakDetector* first = nullptr;
};
constinit Immortal<Detectors> all;

}  // namespace

LeakDetector::LeakDetector(const char* name, LeakDetector* part) noexcept : name_(name), part_(part) {
  const Locked held(all.object.lock);
  next_ = all.object.first;
  all.object.first = this;
}

LeakDetector::~LeakDetector() {
  const Locked held(all.object.lock);
  for (LeakDetector* other = all.object.first; other; other = other->next_) {
    if (other->part_ == this) other->part_ = nullptr;
  }
  LeakDetector** link = &all.object.first;
  while (*link && *link != this) link = &(*link)->next_;
  if (*link) *link = next_;
}

void LeakDetector::setPart(LeakDetector& part) noexcept {
  const Locked held(all.object.lock);
  part_ = &part;
}

long LeakDetector::getLive() const noexcept {
  const Locked held(all.object.lock);
  return live();
}

// Asked seldom: what rests is summed up here, so that pools count with a single store.
long LeakDetector::live() const noexcept {
  long live = made_.load(std::memory_order_relaxed);
  for (const LeakDetector* whole = all.object.first; whole; whole = whole->next_) {
    const LeakDetector* at = whole;
    while (at && at != this) at = at->part_;
    if (at) live -= whole->resting_.load(std::memory_order_relaxed);
  }
  return live;
}

std::vector<LeakDetector::Count> LeakDetector::report() {
  std::vector<Count> counts;
  const Locked held(all.object.lock);
  for (const LeakDetector* at = all.object.first; at; at = at->next_) {
    if (const long live = at->live(); live != 0) counts.push_back({at->name_, live});
  }
  std::sort(counts.begin(), counts.end(), [](const Count& a, const Count& b) { return a.name < b.name; });
  return counts;
}

}  // namespace tovin
