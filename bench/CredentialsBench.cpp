// Making a credentials string and reading it back with its checksum verified, beside the bare cost of what
// every such string must pay: two passes of Base64 and one of Blowfish. Membership among many roles beside
// the standard hash map.
#include <benchmark/benchmark.h>

#include <cstring>
#include <string>
#include <unordered_map>
#include <vector>

#include "tovinCore/Base64.h"
#include "ztbaseclient/auth/CCredentials.h"
#include "ztcore/ztBlowFish.h"

namespace base64 = tovin::base64;

namespace {

constexpr char key[] = "7m4q90215x8d36vtk";
constexpr size_t headerSize = 12;

CCredentials sample() {
  CCredentials c;
  c.SetUsername(L"ann.example");
  c.SetPassword(L"a long password 123");
  c.SetClientDescription(L"Desktop client");
  c.SetClientMachineName(L"ws-17.lab.example");
  c.SetClientVersion(L"4.0.5 (build 1207)");
  c.SetDomain(L"LAB");
  c.SetXMLDBEndPoint(L"http://server.example:9944/xmldb");
  c.SetLogEndPoint(L"http://server.example:9944/log");
  c.SetLocatorEndPoint(L"http://server.example:9944/locator");
  tovin::BitsetValue bits(120);
  for (unsigned bit = 0; bit < 120; bit += 7) bits.setOn(bit);
  CAuthRoles roles;
  roles.SetRoleBits(bits);
  c.SetRoles(roles);
  return c;
}

tovin::WideString stringOf(CCredentials& c) {
  tovin::WideString text;
  c.GenerateCredentialsString(text);
  return text;
}

std::vector<unsigned char> cipherOf(const tovin::WideString& text) {
  std::vector<unsigned char> bytes;
  base64::decode(text.view(), bytes);
  bytes.erase(bytes.begin(), bytes.begin() + headerSize);
  return bytes;
}

void CredentialsGenerate(benchmark::State& state) {
  CCredentials c = sample();
  tovin::WideString text;
  for (auto _ : state) {
    c.GenerateCredentialsString(text);
    benchmark::DoNotOptimize(text.c_str());
  }
}

void CredentialsRead(benchmark::State& state) {
  CCredentials source = sample(), c;
  const tovin::WideString text = stringOf(source);
  for (auto _ : state) {
    c.SetCredentialsString(text);
    if (!c.VerifyChecksum()) state.SkipWithError("wrong checksum");
    c.DecryptBody();
    benchmark::DoNotOptimize(c.GetLocatorEndPoint());
  }
}

// The same bytes through the three passes alone, into memory that is there already.
struct Passes {
  Passes() {
    CCredentials c = sample();
    outer = stringOf(c);
    cipher.items() = cipherOf(outer);
    ztBlowFish::Decrypt(key, cipher, inner);
    base64::decode(inner.view(), clear);
    enciphered.resize(headerSize + cipher.getSize());
    decoded.resize(base64::decodedRoom(outer.getLength()));
  }
  tovin::WideString outer;
  tovin::Array<unsigned char> cipher;
  tovin::NarrowString inner;
  std::vector<unsigned char> clear, enciphered, decoded;
};

void CredentialsGenerateBare(benchmark::State& state) {
  Passes p;
  for (auto _ : state) {
    base64::encode(p.clear.data(), p.clear.size(), p.inner.data());
    ztBlowFish::Encrypt(key, p.inner, p.cipher);
    std::memcpy(p.enciphered.data() + headerSize, p.cipher.data(), p.cipher.getSize());
    base64::encode(p.enciphered.data(), p.enciphered.size(), p.outer.data());
    benchmark::DoNotOptimize(p.outer.data());
    benchmark::ClobberMemory();
  }
}

void CredentialsReadBare(benchmark::State& state) {
  Passes p;
  size_t count = 0;
  for (auto _ : state) {
    base64::decode(p.outer.view(), p.decoded.data(), count);
    std::memcpy(p.cipher.data(), p.decoded.data() + headerSize, p.cipher.getSize());
    ztBlowFish::Decrypt(key, p.cipher, p.inner);
    base64::decode(p.inner.view(), p.clear.data(), count);
    benchmark::DoNotOptimize(p.clear.data());
    benchmark::ClobberMemory();
  }
}

// What a pass costs when the key is expanded for it: another key each time.
void BlowfishWithNewKey(benchmark::State& state) {
  Passes p;
  bool odd = false;
  for (auto _ : state) {
    ztBlowFish::Encrypt((odd = !odd) ? "7m4q90215x8d36vtk" : "7m4q90215x8d36vtl", p.inner, p.cipher);
    benchmark::DoNotOptimize(p.cipher.data());
  }
}

void BlowfishWithKeptKey(benchmark::State& state) {
  Passes p;
  for (auto _ : state) {
    ztBlowFish::Encrypt(key, p.inner, p.cipher);
    benchmark::DoNotOptimize(p.cipher.data());
  }
}

constexpr unsigned roleCount = 10'000;

std::vector<std::wstring> roleNames() {
  std::vector<std::wstring> names;
  for (unsigned i = 0; i < roleCount; ++i) names.push_back(L"Package/Role " + std::to_wstring(i));
  return names;
}

void RolesIsMemberOf(benchmark::State& state) {
  const std::vector<std::wstring> names = roleNames();
  const tovin::Ptr<CAuthRolesCache> cache(CAuthRolesCache::allocate());
  for (unsigned i = 0; i < roleCount; ++i) cache->SetRole(i, names[i].c_str());
  CAuthRoles roles(cache.get());
  for (unsigned i = 0; i < roleCount; i += 2) roles.AddToRole(names[i].c_str());
  size_t at = 0;
  for (auto _ : state) {
    benchmark::DoNotOptimize(roles.IsMemberOf(names[at].c_str()));
    at = (at + 7919) % roleCount;
  }
}

// Exact names only, and the bits in the standard container.
void RolesUnorderedMap(benchmark::State& state) {
  const std::vector<std::wstring> names = roleNames();
  std::unordered_map<std::wstring, unsigned> bits;
  std::vector<bool> on(roleCount);
  for (unsigned i = 0; i < roleCount; ++i) {
    bits[names[i]] = i;
    on[i] = i % 2 == 0;
  }
  size_t at = 0;
  for (auto _ : state) {
    const auto found = bits.find(names[at]);
    benchmark::DoNotOptimize(found != bits.end() && on[found->second]);
    at = (at + 7919) % roleCount;
  }
}

BENCHMARK(CredentialsGenerate);
BENCHMARK(CredentialsGenerateBare);
BENCHMARK(CredentialsRead);
BENCHMARK(CredentialsReadBare);
BENCHMARK(BlowfishWithKeptKey);
BENCHMARK(BlowfishWithNewKey);
BENCHMARK(RolesIsMemberOf);
BENCHMARK(RolesUnorderedMap);

}  // namespace
