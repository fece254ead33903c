#include <gcrypt.h>

#include "ztservice/call/Sha1.h"

namespace ztservice::call {

std::string sha1(std::string_view text) {
  // The library wants to be asked for its version before all else.
  static const char* const version = gcry_check_version(nullptr);
  static_cast<void>(version);
  std::string digest(gcry_md_get_algo_dlen(GCRY_MD_SHA1), '\0');
  gcry_md_hash_buffer(GCRY_MD_SHA1, digest.data(), text.data(), text.size());
  return digest;
}

}  // namespace ztservice::call
