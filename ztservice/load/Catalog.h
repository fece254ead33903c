#pragma once

#include <functional>
#include <optional>
#include <string>
#include <unordered_map>
#include <vector>

#include "ztservice/load/Node.h"

namespace ztservice::parse {

// OASIS XML Catalogs 1.1: where copies of documents lie, by location or by namespace. Entries of the kinds
// uri, system, rewriteURI, rewriteSystem, uriSuffix, systemSuffix, delegateURI, delegateSystem and
// nextCatalog, with xml:base and groups; those of public identifiers mean nothing here.
class Catalog {
 public:
  using ReadFile = std::function<std::string(const std::string& location)>;

  explicit Catalog(ReadFile readFile) : readFile_(std::move(readFile)) {}

  // Errors: Error where the file cannot be read or is no catalogue.
  void add(const std::string& location);
  // Asks the catalogues in the order in which they were added, and those that they name. One that cannot be
  // read has no entry.
  std::optional<std::string> find(const std::string& name);

 private:
  // What a catalogue says of names: equal, beginning or ending so.
  struct Entry {
    std::string name;
    std::string target;
  };
  struct File {
    std::unordered_map<std::string, std::string> exact;
    std::vector<Entry> rewrites;
    std::vector<Entry> suffixes;
    std::vector<Entry> delegates;
    std::vector<std::string> next;
  };

  const File& read(const std::string& location);
  static void enter(File& file, const Node& node, const std::string& base);
  static std::optional<std::string> lookUp(const File& file, const std::string& name);

  ReadFile readFile_;
  std::vector<std::string> added_;
  std::unordered_map<std::string, File> files_;
};

}  // namespace ztservice::parse
