// Upload of a file to a loopback sink, beside zlib's deflate of the same file alone and beside gzip with the
// curl command as whole processes. The sink is a process of its own, which reads a body and answers.
#include <arpa/inet.h>
#include <benchmark/benchmark.h>
#include <netinet/in.h>
#include <signal.h>
#include <sys/prctl.h>
#include <sys/socket.h>
#include <unistd.h>
#include <zlib.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <stdexcept>
#include <string>
#include <vector>

#include "tovinCore/Utf8.h"
#include "ztbaseclient/client/ztSoapUtils.h"

namespace {

constexpr size_t fileSize = size_t{256} << 20;
constexpr size_t bufferSize = 0x20000;

// Reads a chunked body without looking into it: it is over when what has come ends like one.
void sinkOne(int socket) {
  const std::string end = "\r\n0\r\n\r\n";
  std::vector<char> piece(1 << 20);
  std::string tail;
  for (;;) {
    const ssize_t count = ::recv(socket, piece.data(), piece.size(), 0);
    if (count <= 0) return;
    tail.append(piece.data() + std::max<ssize_t>(0, count - 64),
                static_cast<size_t>(std::min<ssize_t>(count, 64)));
    if (tail.size() > 64) tail.erase(0, tail.size() - 64);
    if (tail.ends_with(end)) break;
  }
  const char answer[] = "HTTP/1.1 200 OK\r\nContent-Length: 0\r\nConnection: close\r\n\r\n";
  static_cast<void>(::send(socket, answer, sizeof answer - 1, MSG_NOSIGNAL));
}

struct Sink {
  Sink() {
    const int listener = ::socket(AF_INET, SOCK_STREAM, 0);
    sockaddr_in address{};
    socklen_t size = sizeof address;
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    if (::bind(listener, reinterpret_cast<sockaddr*>(&address), size) != 0 || ::listen(listener, 4) != 0 ||
        ::getsockname(listener, reinterpret_cast<sockaddr*>(&address), &size) != 0) {
      throw std::runtime_error("cannot listen");
    }
    url = "http://127.0.0.1:" + std::to_string(ntohs(address.sin_port)) + "/";
    process = ::fork();
    if (process == 0) serve(listener);
    ::close(listener);
  }
  ~Sink() { ::kill(process, SIGKILL); }

  [[noreturn]] static void serve(int listener) {
    ::prctl(PR_SET_PDEATHSIG, SIGKILL);
    for (;;) {
      const int socket = ::accept(listener, nullptr, nullptr);
      if (socket < 0) continue;
      sinkOne(socket);
      ::close(socket);
    }
  }

  std::string url;
  pid_t process;
};

// Text that deflate halves or so: words of a small vocabulary and numbers.
struct Sample {
  Sample() : path(std::filesystem::temp_directory_path() / ("ztb-bench-" + std::to_string(::getpid()))) {
    std::FILE* file = std::fopen(path.c_str(), "wb");
    if (!file) throw std::runtime_error("cannot write");
    const char* words[] = {"atom", "bond", "charge", "record", "value", "structure", "name", "ring"};
    uint32_t state = 1;
    std::string text;
    for (size_t written = 0; written < fileSize; written += text.size()) {
      text.clear();
      while (text.size() < bufferSize) {
        state = state * 1664525 + 1013904223;
        text += std::string(words[state >> 29]) + " " + std::to_string(state >> 8) + "\n";
      }
      std::fwrite(text.data(), 1, text.size(), file);
    }
    std::fclose(file);
  }
  ~Sample() { std::filesystem::remove(path); }

  std::filesystem::path path;
};

const Sample& sample() {
  static const Sample only;
  return only;
}

Sink& sink() {
  static Sink only;
  return only;
}

void countBytes(benchmark::State& state) {
  state.SetBytesProcessed(state.iterations() *
                          static_cast<int64_t>(std::filesystem::file_size(sample().path)));
}

void UploadFile(benchmark::State& state) {
  ::setenv("no_proxy", "*", 1);
  const std::wstring url = tovin::utf8ToWide(sink().url), path = tovin::utf8ToWide(sample().path.string());
  for (auto _ : state) ztSoapUtils::UploadViaCGI(path.c_str(), L"a", nullptr, L"s", true, url.c_str());
  countBytes(state);
}

void UploadDeflateAlone(benchmark::State& state) {
  std::vector<unsigned char> in(bufferSize), out(bufferSize);
  sample();
  for (auto _ : state) {
    z_stream stream{};
    deflateInit(&stream, 1);
    std::FILE* file = std::fopen(sample().path.c_str(), "rb");
    for (size_t count = 1; count > 0;) {
      count = std::fread(in.data(), 1, in.size(), file);
      stream.next_in = in.data();
      stream.avail_in = static_cast<uInt>(count);
      do {
        stream.next_out = out.data();
        stream.avail_out = static_cast<uInt>(out.size());
        deflate(&stream, count > 0 ? Z_NO_FLUSH : Z_FINISH);
      } while (stream.avail_out == 0);
    }
    std::fclose(file);
    deflateEnd(&stream);
  }
  countBytes(state);
}

void UploadGzipAndCurl(benchmark::State& state) {
  const std::string command =
      "gzip -1 -c " + sample().path.string() + " | curl -s -H Expect: --noproxy '*' -T - " + sink().url;
  for (auto _ : state) {
    if (std::system(command.c_str()) != 0) state.SkipWithError("curl failed");
  }
  countBytes(state);
}

BENCHMARK(UploadFile)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK(UploadDeflateAlone)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK(UploadGzipAndCurl)->Unit(benchmark::kMillisecond)->UseRealTime();

}  // namespace
