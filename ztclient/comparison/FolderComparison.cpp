#include "ztclient/comparison/FolderComparison.h"

#include <algorithm>
#include <atomic>
#include <condition_variable>
#include <map>
#include <mutex>
#include <thread>

#include "tovinCore/platform/Paths.h"

namespace platform = tovin::platform;
using Kind = FolderEntry::Kind;
using Verdict = PairResult::Verdict;

namespace {

std::string joined(const std::string& folder, const std::string& path) {
  return folder.ends_with('/') ? folder + path : folder + '/' + path;
}

const char* nameOf(const FolderEntry& entry) {
  switch (entry.kind) {
    case Kind::file:
      return "a file";
    case Kind::folder:
      return "a folder";
    case Kind::link:
      return "a link to a folder";
    default:
      return entry.detail.c_str();
  }
}

const FolderEntry* find(const std::vector<FolderEntry>& entries, const std::string& path) {
  const auto at = std::ranges::lower_bound(entries, path, {}, &FolderEntry::path);
  return at != entries.end() && at->path == path ? &*at : nullptr;
}

// The same name without the '/' of a folder, or with it.
std::string otherForm(const std::string& path) {
  return path.ends_with('/') ? path.substr(0, path.size() - 1) : path + '/';
}

// Whether a folder around the path could not be read on that side.
bool isHidden(const std::vector<FolderEntry>& entries, const std::string& path) {
  for (size_t end = path.find('/'); end != path.npos; end = path.find('/', end + 1)) {
    const FolderEntry* around = find(entries, path.substr(0, end + 1));
    if (around && around->kind == Kind::unreadable) return true;
  }
  return false;
}

// Hands out indices to threads and gives back what they made of them in order.
class Workers {
 public:
  using Work = std::function<PairResult(size_t)>;

  Workers(size_t count, unsigned jobs, const Work& work) : count_(count), work_(work) {
    for (unsigned i = 0; i < jobs; ++i) threads_.emplace_back([this] { run(); });
  }
  Workers(const Workers&) = delete;
  Workers& operator=(const Workers&) = delete;
  ~Workers() {
    next_ = count_;
    for (std::thread& thread : threads_) thread.join();
  }

  PairResult take(size_t index) {
    std::unique_lock lock(mutex_);
    done_.wait(lock, [&] { return results_.contains(index); });
    return std::move(results_.extract(index).mapped());
  }

 private:
  void run() {
    for (;;) {
      const size_t index = next_++;
      if (index >= count_) return;
      PairResult result = work_(index);
      const std::lock_guard lock(mutex_);
      results_.emplace(index, std::move(result));
      done_.notify_one();
    }
  }

  size_t count_;
  const Work& work_;
  std::atomic<size_t> next_ = 0;
  std::mutex mutex_;
  std::condition_variable done_;
  std::map<size_t, PairResult> results_;
  std::vector<std::thread> threads_;
};

}  // namespace

FolderComparison::FolderComparison(std::string folder1, std::string folder2, const FileFilter& filter)
    : folder1_(std::move(folder1)), folder2_(std::move(folder2)) {
  const std::vector<FolderEntry> first = listFolder(folder1_, filter);
  pairUp(first, listFolder(folder2_, filter));
}

void FolderComparison::pairUp(const std::vector<FolderEntry>& first, const std::vector<FolderEntry>& second) {
  auto at1 = first.begin(), at2 = second.begin();
  while (at1 != first.end() || at2 != second.end()) {
    const int order = at1 == first.end() ? 1 : at2 == second.end() ? -1 : at1->path.compare(at2->path);
    if (order < 0)
      addSingle(*at1++, second, Verdict::onlyFirst);
    else if (order > 0)
      addSingle(*at2++, first, Verdict::onlySecond);
    else
      addBoth(*at1++, *at2++);
  }
}

void FolderComparison::addSingle(const FolderEntry& entry, const std::vector<FolderEntry>& others,
                                 Verdict verdict) {
  if (isHidden(others, entry.path)) return;
  const bool isFirst = verdict == Verdict::onlyFirst;
  if (const FolderEntry* other = find(others, otherForm(entry.path))) {
    // Told once, where the path has no '/'.
    if (entry.path.ends_with('/')) return;
    const FolderEntry& one = isFirst ? entry : *other;
    const FolderEntry& two = isFirst ? *other : entry;
    pairs_.push_back(
        {entry.path, false, {Verdict::different, std::string(nameOf(one)) + " and " + nameOf(two)}});
  } else if (entry.kind == Kind::unreadable) {
    pairs_.push_back({entry.path, false, {Verdict::unreadable, entry.detail}});
  } else if (entry.kind != Kind::folder || entry.isEmpty) {
    pairs_.push_back({entry.path, false, {verdict}});
  }
}

void FolderComparison::addBoth(const FolderEntry& entry1, const FolderEntry& entry2) {
  const auto add = [&](PairResult result) { pairs_.push_back({entry1.path, false, std::move(result)}); };
  for (const FolderEntry* entry : {&entry1, &entry2}) {
    if (entry->kind == Kind::unreadable) return add({Verdict::unreadable, entry->detail});
  }
  if (entry1.kind != entry2.kind)
    return add({Verdict::different, std::string(nameOf(entry1)) + " and " + nameOf(entry2)});
  if (entry1.kind == Kind::other) return add({Verdict::unreadable, entry1.detail + ", which is never read"});
  if (entry1.kind == Kind::file) return pairs_.push_back({entry1.path, true});
  if (entry1.kind == Kind::link && entry1.detail != entry2.detail)
    return add({Verdict::different, "links to " + entry1.detail + " and " + entry2.detail});
  if (entry1.kind == Kind::link) add({});
}

std::wstring FolderComparison::file1(const std::string& path) const {
  return platform::fileName(joined(folder1_, path));
}

std::wstring FolderComparison::file2(const std::string& path) const {
  return platform::fileName(joined(folder2_, path));
}

PairResult FolderComparison::resultOf(size_t index, const PairComparison& comparison) const {
  const Pair& pair = pairs_[index];
  return pair.isOpen ? comparison.compare(file1(pair.path).c_str(), file2(pair.path).c_str()) : pair.result;
}

void FolderComparison::run(const PairComparison& comparison, unsigned jobs, const Visitor& visit) const {
  const Workers::Work work = [&](size_t index) { return resultOf(index, comparison); };
  Workers workers(pairs_.size(), jobs, work);
  for (size_t index = 0; index < pairs_.size(); ++index) visit(pairs_[index].path, workers.take(index));
}
