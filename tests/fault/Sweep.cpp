#include "tests/fault/Sweep.h"

#include <cstdio>
#include <cstdlib>
#include <map>
#include <new>

#include "tovin/Object.h"
#include "tovinCore/Exception.h"
#include "tovinCore/LeakDetector.h"
#include "ztcore/ztUniqueStrings.h"

// The address sanitizer has a malloc of its own; operator new fails there too.
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__) || !defined(__GLIBC__)
#define ZTB_OWN_MALLOC 0
#else
#define ZTB_OWN_MALLOC 1
extern "C" {
void* __libc_malloc(size_t);
void* __libc_calloc(size_t, size_t);
void* __libc_realloc(void*, size_t);
}
#endif

namespace {

// Counts the allocations of this thread while it is armed, and lets one of them fail, or all from it on.
struct Armed {
  bool on = false;
  bool onlyOne = true;
  long long next = 0;
  long long failing = 0;
};
thread_local Armed armed;
thread_local long long blocks = 0;

bool fails() noexcept {
  if (!armed.on) return false;
  const long long at = armed.next++;
  return armed.onlyOne ? at == armed.failing : at >= armed.failing;
}

void* rawBlock(size_t size) noexcept {
#if ZTB_OWN_MALLOC
  return __libc_malloc(size);
#else
  return std::malloc(size);
#endif
}

void* newBlock(size_t size) noexcept {
  void* block = fails() ? nullptr : rawBlock(size > 0 ? size : 1);
  if (block) ++blocks;
  return block;
}

void* newBlockOrThrow(size_t size) {
  if (void* block = newBlock(size)) return block;
  throw std::bad_alloc();
}

void deleteBlock(void* block) noexcept {
  if (!block) return;
  --blocks;
  std::free(block);
}

}  // namespace

void* operator new(size_t size) { return newBlockOrThrow(size); }
void* operator new[](size_t size) { return newBlockOrThrow(size); }
void* operator new(size_t size, const std::nothrow_t&) noexcept { return newBlock(size); }
void* operator new[](size_t size, const std::nothrow_t&) noexcept { return newBlock(size); }
void operator delete(void* block) noexcept { deleteBlock(block); }
void operator delete[](void* block) noexcept { deleteBlock(block); }
void operator delete(void* block, size_t) noexcept { deleteBlock(block); }
void operator delete[](void* block, size_t) noexcept { deleteBlock(block); }

#if ZTB_OWN_MALLOC
extern "C" void* malloc(size_t size) noexcept { return fails() ? nullptr : __libc_malloc(size); }
extern "C" void* calloc(size_t count, size_t size) noexcept {
  return fails() ? nullptr : __libc_calloc(count, size);
}
extern "C" void* realloc(void* block, size_t size) noexcept {
  return fails() ? nullptr : __libc_realloc(block, size);
}
#endif

namespace faults {
namespace {

long long points = 0;

std::map<std::string, long> living() {
  std::map<std::string, long> counts;
  for (const tovin::LeakDetector::Count& each : tovin::LeakDetector::report()) counts[each.name] = each.live;
  return counts;
}

// Shared names are one block each, and some stay for ever on purpose.
long long blocksBesideNames() { return blocks - static_cast<long long>(ztUniqueStrings::GetCount()); }

enum class Outcome { done, refused };

// \param failing the allocation that fails; below 0 for none. \param reached out: whether there are so many.
Outcome attempt(const Row& row, const Scene& scene, long long failing, bool onlyOne, bool& reached) {
  Outcome outcome = Outcome::done;
  armed = {failing >= 0, onlyOne, 0, failing};
  try {
    scene.act();
  } catch (const tovin::Exception&) {
    outcome = Outcome::refused;
  } catch (const std::bad_alloc&) {
    outcome = Outcome::refused;
  } catch (...) {
    armed.on = false;
    ADD_FAILURE() << row.name << ": something else was raised";
    outcome = Outcome::refused;
  }
  armed.on = false;
  reached = armed.next > failing;
  return outcome;
}

bool isAllowed(const Row& row, const std::string& before, const std::string& now) {
  return row.after == After::whole || now == before || (row.after == After::asBeforeOr && now == row.empty);
}

// False when the operation has fewer allocations.
bool tryPoint(const Row& row, const std::function<Scene()>& make, long long failing, bool onlyOne,
              const std::string& done) {
  const Scene scene = make();
  const std::string before = scene.look();
  bool reached = false;
  const Outcome outcome = attempt(row, scene, failing, onlyOne, reached);
  if (!reached) return false;
  ++points;
  const std::string now = scene.look();
  const char* mode = onlyOne ? " alone" : " and all behind it";
  if (outcome == Outcome::done) {
    EXPECT_EQ(now, done) << row.name << ": allocation " << failing << mode;
    return true;
  }
  EXPECT_TRUE(isAllowed(row, before, now))
      << row.name << ": allocation " << failing << mode << "\nbefore  " << before << "\nnow     " << now;
  EXPECT_EQ(attempt(row, scene, -1, true, reached), Outcome::done)
      << row.name << ": allocation " << failing << mode;
  EXPECT_EQ(scene.look(), done) << row.name << ": again after allocation " << failing << mode;
  return true;
}

void expectDone(const Row& row, const std::function<Scene()>& make, std::string& done) {
  const Scene scene = make();
  bool reached = false;
  EXPECT_EQ(attempt(row, scene, -1, true, reached), Outcome::done) << row.name;
  done = scene.look();
}

class Total : public testing::Environment {
  void TearDown() override { std::printf("%lld failing allocations\n", points); }
};
const testing::Environment* const total = testing::AddGlobalTestEnvironment(new Total);

}  // namespace

void sweepScenes(const Row& row, const std::function<Scene()>& make) {
  static_cast<void>(total);
  std::string done;
  // What is made once for the whole process is made now; names and pools fill.
  for (int i = 0; i < 3; ++i) expectDone(row, make, done);
  const auto before = living();
  const long long blocksBefore = blocksBesideNames();
  for (bool onlyOne : {true, false}) {
    for (long long failing = 0; tryPoint(row, make, failing, onlyOne, done); ++failing) {
      if (testing::Test::HasFailure() && failing > 4000) break;
    }
  }
  // With pools on, objects that rest keep room of different sizes.
  if (tovin::Object::m_dontUsePools) {
    EXPECT_EQ(blocksBesideNames(), blocksBefore) << row.name << ": memory is left";
  }
  EXPECT_EQ(living(), before) << row.name << ": objects are left";
}

}  // namespace faults
