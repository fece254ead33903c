// A credentials string: made by a client, verified and read by a receiver.
#include <iostream>

#include "tovinCore/Utf8.h"
#include "ztbaseclient/ztbaseclient.h"

namespace {

tovin::WideString makeString() {
  CCredentials credentials;
  credentials.SetUsername(L"ann");
  credentials.SetPassword(L"correct horse");
  credentials.SetDomain(L"LAB");
  credentials.SetLoginTime(1715938200000);
  tovin::WideString text;
  credentials.GenerateCredentialsString(text);
  return text;
}

// Whether the string could be trusted to be undamaged. It is obfuscated, not encrypted: HTTPS protects it.
bool show(const tovin::WideString& text) {
  CCredentials credentials(text);  // reads the clear header only
  if (!credentials.VerifyChecksum()) {
    std::cout << "damaged\n";
    return false;
  }
  credentials.DecryptBody();
  std::cout << tovin::wideToUtf8(credentials.GetUsername()) << " of "
            << tovin::wideToUtf8(credentials.GetDomain()) << ", logged in at " << credentials.GetLoginTime()
            << " ms\n";
  return true;
}

tovin::WideString damaged(tovin::WideString text) {
  wchar_t& last = text.data()[text.getLength() - 3];
  last = last == L'A' ? L'B' : L'A';
  return text;
}

}  // namespace

int main() {
  try {
    const tovin::WideString text = makeString();
    std::cout << tovin::wideToUtf8(text.view()) << '\n';
    return show(text) && !show(damaged(text)) ? 0 : 1;
  } catch (const tovin::Exception& e) {
    std::cerr << e.what() << '\n';
    return 1;
  }
}
