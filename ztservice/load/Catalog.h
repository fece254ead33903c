#pragma once

#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace ztservice::parse {

// OASIS XML Catalogs 1.1: where copies of documents lie, by location or by namespace. Entries of the kinds
// uri, system, rewriteURI, rewriteSystem, uriSuffix, systemSuffix, delegateURI, delegateSystem and
// nextCatalog, with xml:base and groups; those of public identifiers mean nothing here.
class Catalog {
 public:
  explicit Catalog(std::function<std::string(const std::string& path)> readFile)
      : readFile_(std::move(readFile)) {}

  // Errors: Error where the file cannot be read or is no catalogue.
  void add(const std::string& path);
  std::optional<std::string> find(const std::string& name) const;

 private:
  std::function<std::string(const std::string& path)> readFile_;
};

}  // namespace ztservice::parse
