#pragma once

#include "tovin/ByteCoding.h"

/// The primitives that every record is written with, under the interface's names. The coding itself, and
/// every error, is that of tovin/ByteCoding.h; the layouts are in docs/formats.md.

inline tovin::iByteOutputStream& WriteCompactInt(tovin::iByteOutputStream& stream, int32_t value) {
  tovin::coding::writeInt(stream, value);
  return stream;
}
inline tovin::iByteInputStream& ReadCompactInt(tovin::iByteInputStream& stream, int32_t& value) {
  value = tovin::coding::readInt(stream);
  return stream;
}

inline tovin::iByteOutputStream& WriteBool(tovin::iByteOutputStream& stream, bool value) {
  tovin::coding::writeBool(stream, value);
  return stream;
}
inline bool ReadBool(tovin::iByteInputStream& stream) { return tovin::coding::readBool(stream); }

/// \param text null is written as a null string.
inline tovin::iByteOutputStream& WriteWideString(tovin::iByteOutputStream& stream, const wchar_t* text) {
  tovin::coding::writeWide(stream, text);
  return stream;
}
inline tovin::iByteInputStream& ReadWideString(tovin::iByteInputStream& stream, tovin::WideString& text) {
  tovin::coding::readWide(stream, text);
  return stream;
}
/// The body alone. \param buffer room for count units and a terminator, which streams of version 1 leave to
/// the caller.
inline tovin::iByteInputStream& ReadWideChars(tovin::iByteInputStream& stream, wchar_t* buffer,
                                              int32_t count) {
  tovin::coding::readWideChars(stream, buffer, count);
  return stream;
}

/// \param text null is written as a null string.
inline tovin::iByteOutputStream& WriteNarrowString(tovin::iByteOutputStream& stream, const char* text) {
  tovin::coding::writeNarrow(stream, text);
  return stream;
}
inline tovin::iByteInputStream& ReadNarrowString(tovin::iByteInputStream& stream, tovin::NarrowString& text) {
  tovin::coding::readNarrow(stream, text);
  return stream;
}

/// The UTF-8 form of up to six bytes; returns its length, 0 for a null out.
inline unsigned EncodeUtf8Unit(uint32_t value, unsigned char* out) {
  return tovin::coding::encodeUtf8Unit(value, out);
}
/// Returns the length of the form that the lead byte asks for, 0 for none. \param bytes all of that form.
inline unsigned DecodeUtf8Unit(const unsigned char* bytes, uint32_t& value) {
  return tovin::coding::decodeUtf8Unit(bytes, value);
}
