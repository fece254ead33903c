#pragma once

#include <cstddef>
#include <memory>

#include "tovin/Array.h"
#include "ztcore/Export.h"

/// Deflate compression, of whole buffers or piece by piece.
///
///     ztCompress compress(1, true);
///     compress.Compress(packed, bytes);
///
///     compress.Reset();
///     for (each piece)
///       for (int more = 1; more == 1;) {
///         more = compress.CompressStream(piece, count, buffer, sizeof buffer, produced);
///         send(buffer, produced);
///       }
///     // and once more with null and 0 for the end of the stream.
///
/// - Ownership: owns the compressor's state; a piece is borrowed until CompressStream returns 0.
/// - Memory: constant while streaming; a result grows with the bytes that really arrive, up to a limit.
/// - Errors: "Compressed data ends early", "Compressed data is damaged: %hs", "Compressed data is longer than
///   %llu bytes", "%llu bytes stand behind the compressed data"; CompressStream refuses a buffer without room
///   and input out of turn.
/// - Threads: one thread at a time.
class ZTCORE_API ztCompress {
 public:
  /// No result of Decompress is longer, unless its caller allows more.
  static constexpr size_t DefaultLargestResult = size_t{1} << 30;

  /// \param level 1, the fastest, to 9, the smallest.
  /// \param wrapped true for a zlib stream with header and checksum, false for bare deflate.
  ztCompress(int level, bool wrapped);
  ztCompress(const ztCompress&) = delete;
  ztCompress& operator=(const ztCompress&) = delete;
  ~ztCompress();

  /// The arguments may be the same array.
  void Compress(tovin::Array<unsigned char>& out, const tovin::Array<unsigned char>& in);
  void Decompress(tovin::Array<unsigned char>& out, const tovin::Array<unsigned char>& in);
  void SetLargestResult(size_t size) noexcept { largestResult_ = size; }

  /// Begins a new stream.
  void Reset();
  /// Compresses a piece, or for null and 0 finishes the stream. Returns 1 while the buffer was filled and
  /// more is pending: then it is to be called again, with the same piece or none, until it returns 0.
  int CompressStream(const unsigned char* in, size_t inCount, unsigned char* out, size_t outCapacity,
                     size_t& produced);

 private:
  struct State;

  void takeInput(const unsigned char* in, size_t inCount);

  int level_;
  bool wrapped_;
  size_t largestResult_ = DefaultLargestResult;
  std::unique_ptr<State> state_;
};
