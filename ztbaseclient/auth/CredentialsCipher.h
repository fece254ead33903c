#pragma once

#include "tovin/Array.h"
#include "tovinCore/Wipe.h"

// How a credentials body or a password is hidden: Base64, then Blowfish under a key that every copy of this
// library carries. Whoever has the library can read it; only an HTTPS connection keeps it secret.
namespace credentialscipher {

// How many enciphered bytes so many clear ones become.
size_t encipheredLength(size_t count) noexcept;

void encipher(const unsigned char* clear, size_t count, tovin::Array<unsigned char>& cipher);

// "Decrypt failed" for bytes that are no whole number of blocks, "Decode failed" when they hold no Base64.
void decipher(const tovin::Array<unsigned char>& cipher, tovin::SecretBytes& clear);

}  // namespace credentialscipher
