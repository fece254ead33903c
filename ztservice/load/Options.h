#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>
#include <vector>

namespace ztservice {

/// What a service may cost at most. What is beyond a limit is left out with a warning, or has an error where
/// it is needed.
struct Limits {
  /// Of what comes over the network: bytes of a document after decompression, documents, and bytes together.
  uint64_t documentBytes = 64 << 20;
  size_t documents = 1000;
  uint64_t serviceBytes = 256 << 20;
  size_t redirects = 10;
  std::chrono::milliseconds connecting{30'000};
  std::chrono::milliseconds transfer{60'000};
  /// Bytes of a file.
  uint64_t fileBytes = uint64_t{1} << 30;
  /// Members and attributes of all types together; a type that names groups again and again may have more
  /// than any memory holds.
  size_t members = 2'000'000;
};

/// How a service is loaded.
struct Options {
  /// Whether documents that came from files may name others on the network.
  bool fetch = false;
  /// OASIS XML catalogues, in the order in which they are asked; "default" is the one of well-known schemas
  /// that comes with the library.
  std::vector<std::string> catalogs;
  /// "NAME:PASSWORD" for servers that ask, of the first address's origin only; and whether the file .netrc is
  /// looked into.
  std::string user;
  bool netrc = false;
  /// Certificates to trust, a file in PEM, instead of the system's.
  std::string authorities;
  Limits limits;
  /// Reads files in the system's place when it is set: false for a file that cannot be read, with the reason
  /// in `bytes`.
  std::function<bool(const std::string& path, std::string& bytes)> readFile;
};

}  // namespace ztservice
