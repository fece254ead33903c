#include "ztservice/load/Sources.h"

#include <algorithm>

#include "tovinCore/Utf8.h"
#include "tovinCore/platform/Files.h"
#include "tovinCore/platform/Paths.h"
#include "ztservice/Error.h"
#include "ztservice/load/Catalog.h"
#include "ztservice/load/Fetcher.h"
#include "ztservice/load/Location.h"
#include "ztservice/load/WellKnown.h"

namespace platform = tovin::platform;

namespace ztservice::parse {

namespace {

[[noreturn]] void failFor(const std::string& path) {
  const std::string reason = tovin::wideToUtf8(platform::lastFailure());
  throw Error({path}, reason.empty() ? "cannot be read" : reason);
}

// A file that is closed whatever happens.
class OpenFile {
 public:
  explicit OpenFile(const std::string& path)
      : handle_(platform::openFile(platform::fileName(path).c_str(), platform::OpenMode::readRegular)) {
    if (handle_ == -1) failFor(path);
  }
  OpenFile(const OpenFile&) = delete;
  OpenFile& operator=(const OpenFile&) = delete;
  ~OpenFile() { platform::closeFile(handle_); }
  intptr_t handle() const noexcept { return handle_; }

 private:
  intptr_t handle_;
};

}  // namespace

Sources::Sources(const Options& options)
    : options_(options),
      catalog_(std::make_unique<Catalog>([this](const std::string& path) { return readFile(path); })),
      fetcher_(std::make_unique<Fetcher>(options)) {
  for (const std::string& catalog : options_.catalogs)
    catalog_->add(catalog == "default" ? std::string(wellKnownCatalog) : catalog);
}

Sources::~Sources() = default;

Sources::Bytes Sources::read(const std::string& location) {
  if (!location::isWeb(location)) return {readFile(location), location};
  Fetcher::Answer answer = fetcher_->fetch(location);
  return {std::move(answer.body), std::move(answer.address)};
}

std::string Sources::readFile(const std::string& path) const {
  if (const auto known = wellKnown(path)) return std::string(*known);
  std::string bytes;
  if (options_.readFile) {
    if (!options_.readFile(path, bytes)) throw Error({path}, bytes);
    return bytes;
  }
  const OpenFile file(path);
  // One more than the file has, so that its end is met at once.
  const int64_t length = platform::fileLength(file.handle());
  const size_t piece = static_cast<size_t>(std::clamp<int64_t>(length + 1, 1 << 12, 1 << 20));
  while (true) {
    const size_t before = bytes.size();
    if (before > options_.limits.fileBytes) throw Error({path}, "larger than a document may be");
    bytes.resize(before + piece);
    const int64_t got = platform::readFile(file.handle(), bytes.data() + before, piece);
    if (got < 0) failFor(path);
    bytes.resize(before + static_cast<size_t>(got));
    if (got == 0) return bytes;
  }
}

std::optional<std::string> Sources::copyOf(const std::string& written, const std::string& resolved) {
  auto copy = catalog_->find(written);
  return copy || resolved == written ? copy : catalog_->find(resolved);
}

std::optional<std::string> Sources::copyOfNamespace(const std::string& nameSpace) {
  return nameSpace.empty() ? std::nullopt : catalog_->find(nameSpace);
}

std::string Sources::refusal(const std::string& from, const std::string& location) const {
  const std::string scheme = location::schemeOf(location);
  const bool leadsToFile = scheme.empty() || scheme == "file";
  if (location::isWeb(from)) {
    return leadsToFile ? "is a file: a document from the network may not name one" : std::string();
  }
  if (wellKnown(location)) return {};
  if (leadsToFile) {
    const std::wstring share = platform::networkShareOf(platform::fileName(location));
    const bool sameShare = share.empty() || share == platform::networkShareOf(platform::fileName(from));
    if (sameShare || options_.fetch) return {};
  } else if (!location::isWeb(location)) {
    return "cannot be read: only files, http and https are";
  } else if (options_.fetch) {
    return {};
  }
  return "lies on the network; --fetch reads it, --catalog FILE says where a copy is";
}

}  // namespace ztservice::parse
