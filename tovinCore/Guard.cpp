#include "tovinCore/Guard.h"

#include "tovinCore/Exception.h"

namespace tovin {
namespace {

[[noreturn]] void throwSevere(const char* text, Site site) {
  Exception severe(text);
  severe.appendMessage(CatchClass::severe, site.className, site.method);
  throw severe;
}

}  // namespace

void rethrowNamed(Site site) {
  try {
    throw;
  } catch (Exception& e) {
    e.appendMessage(CatchClass::framework, site.className, site.method);
    throw;
  } catch (const std::exception& e) {
    throwSevere(e.what(), site);
  } catch (...) {
    throwSevere("Unknown exception", site);
  }
}

void discardNamed(Site site) noexcept {
  try {
    throw;
  } catch (Exception& e) {
    try {
      e.appendMessage(CatchClass::destructor, site.className, site.method);
    } catch (...) {
      // No memory to name it; it is discarded all the same.
    }
  } catch (...) {
    // A foreign exception has nowhere to carry the names.
  }
}

}  // namespace tovin
