#include "ztcore/ztCompress.h"

#include <random>

#include "tests/support/Bytes.h"

namespace {

using namespace testsupport;
using Bytes = tovin::Array<unsigned char>;

Bytes unpacked(const Bytes& packed, bool wrapped = true) {
  Bytes out;
  ztCompress(1, wrapped).Decompress(out, packed);
  return out;
}

std::string noise(size_t size) {
  std::mt19937 random(1);
  std::string text(size, ' ');
  for (char& c : text) c = static_cast<char>(random());
  return text;
}

TEST(Compress, WholeBuffersComeBack) {
  for (const std::string& text :
       {std::string(), std::string("a"), std::string(1 << 20, 'x'), noise(300'000)}) {
    for (const bool wrapped : {true, false}) {
      Bytes bytes = arrayOf(text);
      ztCompress(1, wrapped).Compress(bytes, bytes);
      EXPECT_EQ(bytes[0] == 0x78, wrapped);
      EXPECT_TRUE(unpacked(bytes, wrapped).items() == arrayOf(text).items());
    }
  }
}

TEST(Compress, DamagedBytesAreRefused) {
  Bytes packed;
  ztCompress(1, true).Compress(packed, arrayOf(std::string(1000, 'x') + noise(1000)));
  for (size_t size = 0; size < packed.getSize(); ++size) {
    const Bytes cut(std::vector<unsigned char>(packed.begin(), packed.begin() + static_cast<long>(size)));
    expectMessage(L"Compressed data ends early", [&] { unpacked(cut); });
  }
  Bytes longer = packed;
  longer.add(0);
  expectMessage(L"1 bytes stand behind the compressed data", [&] { unpacked(longer); });
  packed[0] = 0x79;
  expectMessage(L"Compressed data is damaged: incorrect header check", [&] { unpacked(packed); });
}

TEST(Compress, ABombIsStoppedAtTheLimit) {
  Bytes packed, out;
  ztCompress compress(1, true);
  compress.Compress(packed, arrayOf(std::string(10'000'000, '\0')));
  compress.SetLargestResult(1'000'000);
  expectMessage(L"Compressed data is longer than 1000000 bytes", [&] { compress.Decompress(out, packed); });
  EXPECT_TRUE(out.isEmpty());
}

// Feeds pieces as an upload does: again while more is pending, with the piece or with nothing.
Bytes streamed(ztCompress& compress, const std::string& text, size_t piece, size_t room, bool again) {
  Bytes out;
  std::vector<unsigned char> buffer(room);
  const auto* bytes = reinterpret_cast<const unsigned char*>(text.data());
  const auto feed = [&](const unsigned char* in, size_t count) {
    size_t produced = 0;
    for (int more = 1; more == 1;) {
      more = compress.CompressStream(in, count, buffer.data(), room, produced);
      EXPECT_TRUE(more == 0 || produced == room);
      out.items().insert(out.end(), buffer.begin(), buffer.begin() + static_cast<long>(produced));
      if (!again) in = nullptr, count = 0;
    }
  };
  compress.Reset();
  for (size_t at = 0; at < text.size(); at += piece) feed(bytes + at, std::min(piece, text.size() - at));
  feed(nullptr, 0);
  return out;
}

TEST(CompressStream, GivesOneStreamWhateverTheBuffer) {
  ztCompress compress(1, true);
  for (const std::string& text : {std::string(), std::string("abc"), noise(100'000)}) {
    for (const size_t piece : {1u, 1000u, 100'000u}) {
      if (piece == 1 && text.size() > 1000) continue;
      for (const size_t room : {1u, 7u, 4096u, 200'000u}) {
        for (const bool again : {true, false}) {
          const Bytes packed = streamed(compress, text, piece, room, again);
          EXPECT_TRUE(unpacked(packed).items() == arrayOf(text).items());
        }
      }
    }
  }
}

TEST(CompressStream, RefusesWhatWouldLoseBytes) {
  ztCompress compress(1, true);
  const std::string text = noise(200'000);
  const auto* bytes = reinterpret_cast<const unsigned char*>(text.data());
  unsigned char buffer[10];
  size_t produced = 0;
  expectMessage(L"There is no room for compressed data",
                [&] { compress.CompressStream(bytes, 1, buffer, 0, produced); });
  ASSERT_EQ(compress.CompressStream(bytes, text.size(), buffer, sizeof buffer, produced), 1);
  expectMessage(L"The piece before is not compressed yet",
                [&] { compress.CompressStream(bytes + 1, 1, buffer, sizeof buffer, produced); });
  compress.Reset();
  while (compress.CompressStream(nullptr, 0, buffer, sizeof buffer, produced) == 1) continue;
  expectMessage(L"The compressed stream is finished",
                [&] { compress.CompressStream(bytes, 1, buffer, sizeof buffer, produced); });
}

}  // namespace
