#include "tests/ztbaseclient/auth/Credentials.h"

#include <fstream>
#include <sstream>

#include "tovinCore/Base64.h"
#include "ztcore/ztBlowFish.h"

namespace base64 = tovin::base64;

namespace credentialstest {
namespace {

constexpr char key[] = "7m4q90215x8d36vtk";

std::map<std::string, std::wstring> readGolden() {
  std::map<std::string, std::wstring> strings;
  std::ifstream in(ZTB_TEST_DATA "/credentials/strings.txt");
  for (std::string line, name, text; std::getline(in, line);) {
    if (line.empty() || line[0] == '#') continue;
    std::istringstream(line) >> name >> text;
    strings[name] = std::wstring(text.begin(), text.end());
  }
  return strings;
}

}  // namespace

const std::wstring& golden(const std::string& name) {
  static const std::map<std::string, std::wstring> strings = readGolden();
  return strings.at(name);
}

std::string bytesOf(const std::wstring& text) {
  std::vector<unsigned char> bytes;
  if (!base64::decode(text, bytes)) throw std::invalid_argument("no Base64");
  return {bytes.begin(), bytes.end()};
}

std::wstring textOf(const std::string& bytes) {
  std::wstring text;
  base64::encode(reinterpret_cast<const unsigned char*>(bytes.data()), bytes.size(), text);
  return text;
}

std::wstring sealText(unsigned char version, const std::string& text) {
  tovin::Array<unsigned char> cipher;
  ztBlowFish::Encrypt(key, text.c_str(), cipher);
  std::string bytes(12, '\0');
  bytes[0] = static_cast<char>(version);
  bytes[2] = static_cast<char>(cipher.getSize() & 0xFF);
  bytes[3] = static_cast<char>(cipher.getSize() >> 8);
  bytes.append(cipher.begin(), cipher.end());
  return textOf(bytes);
}

std::wstring seal(unsigned char version, const std::string& clearBody) {
  std::string text;
  base64::encode(reinterpret_cast<const unsigned char*>(clearBody.data()), clearBody.size(), text);
  return sealText(version, text);
}

std::string describe(const CCredentials& c) {
  std::ostringstream out;
  out << std::hex << c.GetBodyFlags() << std::dec << ' ' << tovin::platform::toDotted(c.GetServerIP()) << ' '
      << tovin::platform::toDotted(c.GetClientIP()) << ' ' << c.GetLoginTime() << '\n';
  for (const wchar_t* text : {c.GetUsername(), c.GetPassword(), c.GetClientDescription(),
                              c.GetClientMachineName(), c.GetClientVersion(), c.GetDomain(),
                              c.GetXMLDBEndPoint(), c.GetLogEndPoint(), c.GetLocatorEndPoint()})
    out << tovin::wideToUtf8(text) << '\n';
  return out.str() + bitsOf(c.GetRoles());
}

std::string bitsOf(const CAuthRoles& roles) {
  const tovin::BitsetValue& bits = roles.GetRoleBits();
  return std::to_string(bits.getNumBits()) + ": " + tovin::wideToUtf8(bits.getText().view());
}

CAuthRoles rolesOf(unsigned count, std::initializer_list<unsigned> on) {
  tovin::BitsetValue bits(count);
  for (unsigned bit : on) bits.setOn(bit);
  CAuthRoles roles;
  roles.SetRoleBits(bits);
  return roles;
}

std::wstring generate(CCredentials& credentials) {
  tovin::WideString text;
  credentials.GenerateCredentialsString(text);
  return text.c_str();
}

}  // namespace credentialstest
