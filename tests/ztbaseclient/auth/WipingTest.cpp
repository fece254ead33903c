// A program of its own, because it watches all memory that is given back for a password.
#include <cstdlib>
#include <cstring>
#include <new>

#include "tests/support/Bytes.h"
#include "tests/support/TempFolder.h"
#include "ztbaseclient/auth/CAuthParameters.h"
#include "ztbaseclient/auth/CCredentials.h"
#include "ztbaseclient/client/ztSoapUtils.h"

namespace {

// A run of one letter looks the same wherever it stands in Base64.
constexpr wchar_t password[] = L"pppppppppppppppppppp";
constexpr std::string_view utf8Form = "pppppp";
constexpr std::string_view base64Form = "cHBwcHBw";
const std::string_view wideForm(reinterpret_cast<const char*>(password), 6 * sizeof(wchar_t));

bool watching = false;
int found = 0;

// The size stands before the block, for operator delete is not always told.
constexpr size_t prefix = alignof(std::max_align_t);

void inspect(const void* block, size_t size) {
  const std::string_view bytes(static_cast<const char*>(block), size);
  for (std::string_view form : {utf8Form, base64Form, wideForm}) found += bytes.find(form) != bytes.npos;
}

void* take(size_t size) noexcept {
  auto* block = static_cast<char*>(std::malloc(prefix + size));
  if (!block) return nullptr;
  std::memcpy(block, &size, sizeof size);
  std::memset(block + prefix, 0, size);  // what an earlier owner left is not looked for
  return block + prefix;
}

void giveBack(void* memory) noexcept {
  if (!memory) return;
  char* block = static_cast<char*>(memory) - prefix;
  size_t size = 0;
  std::memcpy(&size, block, sizeof size);
  if (watching) inspect(memory, size);
  std::free(block);
}

}  // namespace

void* operator new(size_t size) {
  if (void* memory = take(size)) return memory;
  throw std::bad_alloc();
}
void* operator new(size_t size, const std::nothrow_t&) noexcept { return take(size); }
void operator delete(void* memory) noexcept { giveBack(memory); }
void operator delete(void* memory, size_t) noexcept { giveBack(memory); }

namespace {

template <class Body>
int passwordsLeftBy(Body&& body) {
  found = 0;
  watching = true;
  body();
  watching = false;
  return found;
}

TEST(Wiping, NothingOfAPasswordIsLeftInMemoryGivenBack) {
  EXPECT_EQ(passwordsLeftBy([] { tovin::WideString wide(password); }), 1)
      << "the watch sees one that is left";
  EXPECT_EQ(passwordsLeftBy([] { std::string narrow(100, 'p'); }), 1);
  tovin::WideString text;
  const auto write = [&] {
    CCredentials c;
    c.SetPassword(password);
    c.GenerateCredentialsString(text);
    CCredentials copy(c);
    copy.SetPassword(L"another");
    copy = c;
    copy.Clear();
  };
  EXPECT_EQ(passwordsLeftBy(write), 0);
  const auto read = [&] {
    CCredentials c(text.c_str());
    c.DecryptBody();
    c.SetPassword(nullptr);
    c.GenerateCredentialsString(text);
    c.DecryptBody();
    CAuthParameters().SetPassword(password);
  };
  EXPECT_EQ(passwordsLeftBy(read), 0);
}

TEST(Wiping, NothingIsLeftByAnUpload) {
  const testsupport::ScopedVariable noProxy("no_proxy", "*");
  const std::wstring url = std::wstring(L"http://ann:") + password + L"@127.0.0.1:1/";
  const auto upload = [&] {
    EXPECT_THROW(ztSoapUtils::UploadViaCGI(L".", L"name", nullptr, password, true, url.c_str()),
                 tovin::Exception);
  };
  EXPECT_EQ(passwordsLeftBy(upload), 0);
}

TEST(Wiping, NothingIsLeftByAFailureEither) {
  CCredentials c;
  c.SetPassword(password);
  c.SetUsername(std::wstring(200, L'\u20AC').c_str());  // a wrapped length byte, which no reader survives
  tovin::WideString text;
  c.GenerateCredentialsString(text);
  const auto fail = [&] { EXPECT_THROW(CCredentials(text.c_str()).DecryptBody(), tovin::Exception); };
  EXPECT_EQ(passwordsLeftBy(fail), 0);
}

}  // namespace
