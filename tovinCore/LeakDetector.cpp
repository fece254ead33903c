#include "tovinCore/LeakDetector.h"

#include <algorithm>
#include <mutex>

namespace tovin {
namespace {

struct Detectors {
  std::mutex lock;
  LeakDetector* first = nullptr;
};

// Never destroyed: detectors are static objects of many modules and go in any order.
Detectors& detectors() {
  static Detectors& only = *new Detectors;
  return only;
}

}  // namespace

LeakDetector::LeakDetector(const char* name) noexcept : name_(name) {
  const std::lock_guard<std::mutex> held(detectors().lock);
  next_ = detectors().first;
  detectors().first = this;
}

LeakDetector::~LeakDetector() {
  const std::lock_guard<std::mutex> held(detectors().lock);
  LeakDetector** link = &detectors().first;
  while (*link && *link != this) link = &(*link)->next_;
  if (*link) *link = next_;
}

std::vector<LeakDetector::Count> LeakDetector::report() {
  std::vector<Count> counts;
  const std::lock_guard<std::mutex> held(detectors().lock);
  for (const LeakDetector* at = detectors().first; at; at = at->next_) {
    if (at->getLive() != 0) counts.push_back({at->name_, at->getLive()});
  }
  std::sort(counts.begin(), counts.end(), [](const Count& a, const Count& b) { return a.name < b.name; });
  return counts;
}

}  // namespace tovin
