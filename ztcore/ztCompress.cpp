#include "ztcore/ztCompress.h"

#include <zlib.h>

#include <algorithm>
#include <climits>

#include "tovinCore/Guard.h"

using tovin::guarded;

namespace {

constexpr const char* ClassName = "ztCompress";
constexpr size_t pieceSize = 1 << 16;
constexpr int memoryLevel = 8;

// zlib counts in unsigned int.
uInt countOf(size_t size) { return static_cast<uInt>(std::min<size_t>(size, UINT_MAX)); }

// zlib writes a bare stream for a negative window.
int windowBits(bool wrapped) { return wrapped ? MAX_WBITS : -MAX_WBITS; }

// zlib never writes through its input pointer.
Bytef* inputOf(const unsigned char* bytes) { return const_cast<Bytef*>(bytes); }

void requireMemory(int result) {
  if (result != Z_OK) throw tovin::MemoryException(1, sizeof(z_stream));
}

class Inflater {
 public:
  explicit Inflater(bool wrapped) { requireMemory(inflateInit2(&stream_, windowBits(wrapped))); }
  Inflater(const Inflater&) = delete;
  Inflater& operator=(const Inflater&) = delete;
  ~Inflater() { inflateEnd(&stream_); }

  void run(const std::vector<unsigned char>& in, std::vector<unsigned char>& out, size_t largest) {
    size_t given = 0;
    for (int result = Z_OK; result != Z_STREAM_END;) {
      if (stream_.avail_in == 0) give(in, given);
      const size_t before = out.size();
      result = step(out);
      if (out.size() > largest) throw tovin::Exception(L"Compressed data is longer than %llu bytes", largest);
      check(result, out.size() == before && given == in.size());
    }
    const size_t behind = in.size() - given + stream_.avail_in;
    if (behind > 0) throw tovin::Exception(L"%llu bytes stand behind the compressed data", behind);
  }

 private:
  void give(const std::vector<unsigned char>& in, size_t& given) {
    stream_.next_in = inputOf(in.data() + given);
    stream_.avail_in = countOf(in.size() - given);
    given += stream_.avail_in;
  }

  int step(std::vector<unsigned char>& out) {
    unsigned char piece[pieceSize];
    stream_.next_out = piece;
    stream_.avail_out = pieceSize;
    const int result = inflate(&stream_, Z_NO_FLUSH);
    out.insert(out.end(), piece, piece + (pieceSize - stream_.avail_out));
    return result;
  }

  void check(int result, bool starved) const {
    if (result == Z_MEM_ERROR) requireMemory(result);
    if (result == Z_STREAM_END) return;
    if (result == Z_OK || result == Z_BUF_ERROR) {
      if (starved) throw tovin::Exception(L"Compressed data ends early");
      return;
    }
    throw tovin::Exception(L"Compressed data is damaged: %hs",
                           stream_.msg ? stream_.msg : "it asks for a dictionary");
  }

  z_stream stream_{};
};

}  // namespace

struct ztCompress::State {
  State(int level, bool wrapped) {
    requireMemory(
        deflateInit2(&stream, level, Z_DEFLATED, windowBits(wrapped), memoryLevel, Z_DEFAULT_STRATEGY));
  }
  State(const State&) = delete;
  State& operator=(const State&) = delete;
  ~State() { deflateEnd(&stream); }

  bool run(unsigned char* out, size_t capacity, size_t& produced) {
    stream.next_out = out;
    stream.avail_out = countOf(capacity);
    const uInt room = stream.avail_out;
    int result = Z_OK;
    do {
      if (stream.avail_in == 0) give();
      result = deflate(&stream, finishing ? Z_FINISH : Z_NO_FLUSH);
    } while (result == Z_OK && stream.avail_out > 0 && left > 0);
    produced = room - stream.avail_out;
    finished = result == Z_STREAM_END;
    return !finished && stream.avail_out == 0;
  }

  void give() {
    stream.next_in = inputOf(next);
    stream.avail_in = countOf(left);
    next += stream.avail_in;
    left -= stream.avail_in;
  }

  z_stream stream{};
  // The piece that was handed in, and what of it zlib has not been given.
  const unsigned char* piece = nullptr;
  const unsigned char* next = nullptr;
  size_t left = 0;
  // The last call filled its buffer.
  bool pending = false;
  bool finishing = false;
  bool finished = false;
};

ztCompress::ztCompress(int level, bool wrapped)
    : level_(std::clamp(level, Z_BEST_SPEED, Z_BEST_COMPRESSION)), wrapped_(wrapped) {}

ztCompress::~ztCompress() = default;

void ztCompress::Reset() {
  guarded({ClassName, "Reset"}, [&] { state_ = std::make_unique<State>(level_, wrapped_); });
}

void ztCompress::takeInput(const unsigned char* in, size_t inCount) {
  if (state_->pending) {
    if (in && in != state_->piece) throw tovin::Exception(L"The piece before is not compressed yet");
    return;
  }
  if (inCount > 0 && state_->finishing) throw tovin::Exception(L"The compressed stream is finished");
  state_->finishing = inCount == 0;
  state_->piece = state_->next = in;
  state_->left = inCount;
}

int ztCompress::CompressStream(const unsigned char* in, size_t inCount, unsigned char* out,
                               size_t outCapacity, size_t& produced) {
  return guarded({ClassName, "CompressStream"}, [&] {
    produced = 0;
    if (outCapacity == 0) throw tovin::Exception(L"There is no room for compressed data");
    if (!state_) Reset();
    takeInput(in, inCount);
    state_->pending = !state_->finished && state_->run(out, outCapacity, produced);
    return state_->pending ? 1 : 0;
  });
}

void ztCompress::Compress(tovin::Array<unsigned char>& out, const tovin::Array<unsigned char>& in) {
  guarded({ClassName, "Compress"}, [&] {
    std::vector<unsigned char> result;
    unsigned char piece[pieceSize];
    State state(level_, wrapped_);
    state.finishing = true;
    state.next = in.data();
    state.left = in.getSize();
    for (bool more = true; more;) {
      size_t produced = 0;
      more = state.run(piece, sizeof piece, produced);
      result.insert(result.end(), piece, piece + produced);
    }
    out.items() = std::move(result);
  });
}

void ztCompress::Decompress(tovin::Array<unsigned char>& out, const tovin::Array<unsigned char>& in) {
  guarded({ClassName, "Decompress"}, [&] {
    std::vector<unsigned char> result;
    Inflater(wrapped_).run(in.items(), result, largestResult_);
    out.items() = std::move(result);
  });
}
