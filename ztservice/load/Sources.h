#pragma once

#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "ztservice/load/Options.h"

namespace ztservice::parse {

class Catalog;
class Fetcher;

// Where the bytes of documents come from, and what they may come from.
class Sources {
 public:
  explicit Sources(const Options& options);
  Sources(const Sources&) = delete;
  Sources& operator=(const Sources&) = delete;
  ~Sources();

  struct Bytes {
    std::string bytes;
    // Where they came from in the end, behind redirections.
    std::string location;
  };
  // Errors: Error.
  Bytes read(const std::string& location);

  // Where a catalogue has a copy of what a reference names, by its location as written and as resolved, or of
  // a namespace; none without an entry.
  std::optional<std::string> copyOf(const std::string& written, const std::string& resolved);
  std::optional<std::string> copyOfNamespace(const std::string& nameSpace);

  // Why a document at `from` may not name one at `location`; empty when it may.
  std::string refusal(const std::string& from, const std::string& location) const;

 private:
  std::string readFile(const std::string& path) const;

  const Options& options_;
  std::unique_ptr<Catalog> catalog_;
  std::unique_ptr<Fetcher> fetcher_;
};

}  // namespace ztservice::parse
