#include <windows.h>
// After it: it says what this one needs.
#include <bcrypt.h>

#include <new>

#include "ztservice/call/Sha1.h"

namespace ztservice::call {

std::string sha1(std::string_view text) {
  constexpr ULONG length = 20;
  std::string bytes(text), digest(length, '\0');
  BCRYPT_ALG_HANDLE algorithm = nullptr;
  if (BCryptOpenAlgorithmProvider(&algorithm, BCRYPT_SHA1_ALGORITHM, nullptr, 0) < 0) throw std::bad_alloc();
  const NTSTATUS status =
      BCryptHash(algorithm, nullptr, 0, reinterpret_cast<PUCHAR>(bytes.data()),
                 static_cast<ULONG>(bytes.size()), reinterpret_cast<PUCHAR>(digest.data()), length);
  BCryptCloseAlgorithmProvider(algorithm, 0);
  if (status < 0) throw std::bad_alloc();
  return digest;
}

}  // namespace ztservice::call
