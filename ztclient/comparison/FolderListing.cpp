#include "ztclient/comparison/FolderListing.h"

#include <algorithm>
#include <filesystem>
#include <map>
#include <set>
#include <utility>

#include "tovinCore/Exception.h"
#include "tovinCore/Utf8.h"
#include "tovinCore/platform/Paths.h"

namespace fs = std::filesystem;
namespace platform = tovin::platform;
using Kind = FolderEntry::Kind;

namespace {

std::string bytesOf(const fs::path& path) {
  const std::u8string bytes = path.generic_u8string();
  return {bytes.begin(), bytes.end()};
}

const char* nameOf(fs::file_type type) {
  switch (type) {
    case fs::file_type::fifo:
      return "a pipe";
    case fs::file_type::socket:
      return "a socket";
    case fs::file_type::block:
    case fs::file_type::character:
      return "a device";
    case fs::file_type::not_found:
      return "a link that leads nowhere";
    default:
      return "no file";
  }
}

class Lister {
 public:
  explicit Lister(const FileFilter& filter) : filter_(filter) {}

  std::vector<FolderEntry> run(const fs::path& folder) {
    std::error_code failed;
    const fs::path root = fs::canonical(folder, failed);
    fs::directory_iterator first;
    if (!failed) first = fs::directory_iterator(folder, failed);
    if (failed) refuse(folder, failed);
    root_ = bytesOf(root);
    if (root_ == "/") root_.clear();
    entered_.insert(root_ + '/');
    folders_.push_back({folder, {}});
    listFolders();
    // Folders first, so that a link to one of them is never taken for it.
    while (!links_.empty()) {
      const auto link = links_.extract(links_.begin());
      follow(link.key(), link.mapped());
      listFolders();
    }
    std::ranges::sort(entries_, {}, &FolderEntry::path);
    return std::move(entries_);
  }

 private:
  struct Place {
    fs::path where;
    std::string path;
  };

  [[noreturn]] static void refuse(const fs::path& folder, const std::error_code& failed) {
    const std::wstring name = platform::wideOf(folder);
    tovin::Exception failure(L"Unable to open folder %ls", name);
    throw failure.setFile(name).setReason(tovin::utf8ToWide(failed.message()));
  }

  void listFolders() {
    while (!folders_.empty()) {
      const Place place = std::move(folders_.back());
      folders_.pop_back();
      list(place);
    }
  }

  void list(const Place& place) {
    std::error_code failed;
    bool isEmpty = true;
    fs::directory_iterator at(place.where, failed);
    for (; !failed && at != fs::directory_iterator(); at.increment(failed)) {
      isEmpty = false;
      add(*at, place.path + bytesOf(at->path().filename()));
    }
    if (failed && place.path.empty()) refuse(place.where, failed);
    if (failed)
      entries_.push_back({place.path, Kind::unreadable, failed.message()});
    else if (!place.path.empty())
      entries_.push_back({place.path, Kind::folder, {}, isEmpty && filter_.include.empty()});
  }

  void add(const fs::directory_entry& entry, std::string path) {
    std::error_code failed;
    const fs::file_type type = entry.status(failed).type();
    if (type == fs::file_type::directory) {
      if (!filter_.wantsFolder(path)) return;
      std::error_code ignored;
      if (entry.is_symlink(ignored))
        links_.emplace(std::move(path), entry.path());
      else
        folders_.push_back({entry.path(), path + '/'});
      return;
    }
    if (!filter_.wantsFile(path)) return;
    if (type == fs::file_type::regular)
      entries_.push_back({std::move(path)});
    else if (type == fs::file_type::none)
      entries_.push_back({std::move(path), Kind::unreadable, failed.message()});
    else
      entries_.push_back({std::move(path), Kind::other, nameOf(type)});
  }

  void follow(const std::string& path, const fs::path& link) {
    std::error_code failed;
    const fs::path canonical = fs::canonical(link, failed);
    if (failed) {
      entries_.push_back({path, Kind::unreadable, failed.message()});
      return;
    }
    const std::string target = bytesOf(canonical) + '/';
    if (!isRelatedToEntered(target)) {
      entered_.insert(target);
      folders_.push_back({link, path + '/'});
      return;
    }
    if (!filter_.wantsFile(path)) return;
    const bool isInside = target.starts_with(root_ + '/');
    entries_.push_back({path, Kind::link, isInside ? "." + target.substr(root_.size()) : target});
  }

  // Whether a folder lies in one that was entered, or around it.
  bool isRelatedToEntered(const std::string& target) const {
    const auto inside = entered_.lower_bound(target);
    if (inside != entered_.end() && inside->starts_with(target)) return true;
    for (size_t end = target.find('/'); end != target.npos; end = target.find('/', end + 1)) {
      if (entered_.contains(target.substr(0, end + 1))) return true;
    }
    return false;
  }

  const FileFilter& filter_;
  std::string root_;
  std::set<std::string> entered_;
  std::vector<Place> folders_;
  std::map<std::string, fs::path> links_;
  std::vector<FolderEntry> entries_;
};

}  // namespace

std::vector<FolderEntry> listFolder(const std::string& folder, const FileFilter& filter) {
  return Lister(filter).run(platform::pathOf(folder));
}
