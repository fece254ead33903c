#pragma once

#include "tovin/Array.h"
#include "tovin/BaseString.h"
#include "ztcore/Export.h"

/// Blowfish as the credentials use it: blocks of 8 bytes, each enciphered by itself (ECB), the last one
/// filled up with zeros.
///
///     tovin::Array<unsigned char> cipher;
///     ztBlowFish::Encrypt("key", "text", cipher);
///     tovin::NarrowString text;
///     if (ztBlowFish::Decrypt("key", cipher, text)) use(text);
///
/// This hides a text from the casual eye. Equal blocks stay equal and nothing notices a change, so it is no
/// protection against anyone who means to read or alter it.
///
/// - Shape: keys of 1 to 56 bytes; a text is zero-terminated and its terminator is not enciphered.
/// - Errors: Exception for a key that is empty or too long; Decrypt says false.
/// - Threads: any. Each thread keeps the last key expanded, which costs far more than a short text.
class ZTCORE_API ztBlowFish {
 public:
  static constexpr size_t blockSize = 8;

  /// \param out ⌈length/8⌉·8 bytes; null text as empty.
  static void Encrypt(const char* key, const char* text, tovin::Array<unsigned char>& out);

  /// \param out the text without the zeros at its end. \returns false, out null, for bytes that are no whole
  /// number of blocks.
  static bool Decrypt(const char* key, const tovin::Array<unsigned char>& in, tovin::NarrowString& out);
};
