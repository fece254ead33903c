#pragma once

#include <exception>
#include <utility>

#include "tovinCore/Export.h"

namespace tovin {

/// Where a guarded call stands, as its exceptions will name it. Both names are literals.
struct Site {
  const char* className;
  const char* method;
};

/// From a handler only: names the site on the framework exception in flight and throws it on, the same
/// object, so its class survives; turns any other exception into a severe framework exception.
[[noreturn]] TOVINCORE_API void rethrowNamed(Site site);

/// From a destructor's handler only: names the class on the exception in flight and lets it go.
TOVINCORE_API void discardNamed(Site site) noexcept;

/// Runs the body of a public method; costs nothing unless an exception passes.
///
///     void CProperty::Reset() { guarded({ClassName, "Reset"}, [&] { … }); }
template <class Body>
decltype(auto) guarded(Site site, Body&& body) {
  try {
    return std::forward<Body>(body)();
  } catch (...) {
    rethrowNamed(site);
  }
}

/// The twin for destructors: nothing passes out of it.
template <class Body>
void guardedDestruction(const char* className, Body&& body, const char* method = "Destructor") noexcept {
  try {
    std::forward<Body>(body)();
  } catch (...) {
    discardNamed({className, method});
  }
}

/// Runs steps that give things up, one after the other: none is left out because another failed.
///
///     Releasing releasing;
///     while (!list.isEmpty()) releasing.step([&] { list.takeLast()->release(); });
///     releasing.finish();  // throws what the first failure threw
class Releasing {
 public:
  template <class Body>
  void step(Body&& body) {
    try {
      std::forward<Body>(body)();
    } catch (...) {
      if (!failure_) failure_ = std::current_exception();
    }
  }
  void finish() {
    if (failure_) std::rethrow_exception(std::move(failure_));
  }

 private:
  std::exception_ptr failure_;
};

}  // namespace tovin
