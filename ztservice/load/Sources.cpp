#include "ztservice/load/Sources.h"

#include <algorithm>

#include "tovinCore/Utf8.h"
#include "tovinCore/platform/Files.h"
#include "tovinCore/platform/Paths.h"
#include "ztservice/Error.h"
#include "ztservice/load/Catalog.h"
#include "ztservice/load/Fetcher.h"
#include "ztservice/load/Location.h"
#include "ztservice/load/OpenFile.h"
#include "ztservice/load/WellKnown.h"

namespace platform = tovin::platform;

namespace ztservice::parse {

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
  if (options_.readFile) {
    std::string bytes;
    if (!options_.readFile(path, bytes)) throw Error({path}, bytes);
    return bytes;
  }
  std::string bytes = bytesOf(path, options_.limits.fileBytes);
  if (bytes.size() > options_.limits.fileBytes) throw Error({path}, "larger than a document may be");
  return bytes;
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
