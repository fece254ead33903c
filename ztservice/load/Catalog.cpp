#include "ztservice/load/Catalog.h"

#include <algorithm>
#include <unordered_set>

#include "ztservice/Error.h"
#include "ztservice/load/Document.h"
#include "ztservice/load/Location.h"

namespace ztservice::parse {

namespace {

std::string baseOf(const Node& node, const std::string& around) {
  const std::string_view own = node.get(Word::base, Space::xml);
  return own.empty() ? around : location::resolved(around, own);
}

// The longest name goes first.
template <class Entries>
void sortByLength(Entries& entries) {
  std::stable_sort(entries.begin(), entries.end(),
                   [](const auto& a, const auto& b) { return a.name.size() > b.name.size(); });
}

}  // namespace

void Catalog::add(const std::string& location) {
  read(location);
  added_.push_back(location);
}

const Catalog::File& Catalog::read(const std::string& location) {
  const auto [known, isNew] = files_.try_emplace(location::identity(location));
  File& file = known->second;
  if (!isNew) return file;
  Document document;
  document.shown = location;
  readDocument(document, readFile_(location));
  if (!document.root || !document.root->is(Space::catalog, Word::catalog))
    throw Error({location}, "no XML catalogue");
  // Groups stand in the catalogue, not in each other.
  const std::string base = baseOf(*document.root, location);
  for (const Node* node = document.root->first; node; node = node->next) {
    const std::string own = baseOf(*node, base);
    enter(file, *node, own);
    if (!node->is(Space::catalog, Word::group)) continue;
    for (const Node* inside = node->first; inside; inside = inside->next)
      enter(file, *inside, baseOf(*inside, own));
  }
  sortByLength(file.rewrites);
  sortByLength(file.suffixes);
  sortByLength(file.delegates);
  return file;
}

void Catalog::enter(File& file, const Node& node, const std::string& base) {
  if (node.space != Space::catalog) return;
  const auto target = [&](Word word) { return location::resolved(base, node.get(word)); };
  const auto add = [&](std::vector<Entry>& entries, Word name, Word leadsTo) {
    entries.push_back({std::string(node.get(name)), target(leadsTo)});
  };
  switch (node.word) {
    case Word::uri:
      file.exact.emplace(node.get(Word::name), target(Word::uri));
      break;
    case Word::system:
      file.exact.emplace(node.get(Word::systemId), target(Word::uri));
      break;
    case Word::rewriteUri:
      add(file.rewrites, Word::uriStartString, Word::rewritePrefix);
      break;
    case Word::rewriteSystem:
      add(file.rewrites, Word::systemIdStartString, Word::rewritePrefix);
      break;
    case Word::uriSuffix:
      add(file.suffixes, Word::uriSuffix, Word::uri);
      break;
    case Word::systemSuffix:
      add(file.suffixes, Word::systemIdSuffix, Word::uri);
      break;
    case Word::delegateUri:
      add(file.delegates, Word::uriStartString, Word::catalog);
      break;
    case Word::delegateSystem:
      add(file.delegates, Word::systemIdStartString, Word::catalog);
      break;
    case Word::nextCatalog:
      file.next.push_back(target(Word::catalog));
      break;
    default:
      break;
  }
}

std::optional<std::string> Catalog::lookUp(const File& file, const std::string& name) {
  if (const auto exact = file.exact.find(name); exact != file.exact.end()) return exact->second;
  for (const Entry& entry : file.rewrites) {
    if (name.starts_with(entry.name)) return entry.target + name.substr(entry.name.size());
  }
  for (const Entry& entry : file.suffixes) {
    if (!entry.name.empty() && name.ends_with(entry.name)) return entry.target;
  }
  return std::nullopt;
}

std::optional<std::string> Catalog::find(const std::string& name) {
  std::vector<std::string> open(added_.rbegin(), added_.rend());
  std::unordered_set<std::string> seen;
  while (!open.empty()) {
    const std::string location = open.back();
    open.pop_back();
    if (!seen.insert(location::identity(location)).second) continue;
    try {
      const File& file = read(location);
      if (auto found = lookUp(file, name)) return found;
      std::vector<std::string> delegates;
      for (const Entry& entry : file.delegates) {
        if (name.starts_with(entry.name)) delegates.push_back(entry.target);
      }
      // Who delegates a name leaves it to those.
      const std::vector<std::string>& next = delegates.empty() ? file.next : delegates;
      if (!delegates.empty()) open.clear();
      open.insert(open.end(), next.rbegin(), next.rend());
    } catch (const Error&) {
      continue;
    }
  }
  return std::nullopt;
}

}  // namespace ztservice::parse
