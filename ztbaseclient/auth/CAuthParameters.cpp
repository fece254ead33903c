#include "ztbaseclient/auth/CAuthParameters.h"

#include "tovin/SecretString.h"
#include "tovinCore/Base64.h"
#include "tovinCore/Utf8.h"
#include "ztbaseclient/auth/CredentialsCipher.h"

using tovin::guarded;
namespace base64 = tovin::base64;

const tovin::ClassTagDecl CAuthParameters::Tag("DraVolin.AuthParameters.1");
tovin::LeakDetector CAuthParameters::m_leakDetector(CAuthParameters::ClassName);
tovin::ClassImp<CAuthParameters> CAuthParameters::m_class(CAuthParameters::Tag,
                                                          CAuthParameters::m_leakDetector);

const wchar_t* const CAuthParameters::UserNameParameter = L"UserName";
const wchar_t* const CAuthParameters::PasswordParameter = L"Password";

namespace {

tovin::WideString orEmpty(const wchar_t* text) { return text ? text : L""; }

tovin::WideString encipher(std::wstring_view password) {
  tovin::SecretBytes utf8(tovin::utf8Length(password));
  tovin::wideToUtf8(password, reinterpret_cast<char*>(utf8.data()));
  tovin::Array<unsigned char> cipher;
  credentialscipher::encipher(utf8.data(), utf8.size(), cipher);
  tovin::WideString text;
  text.setLength(base64::encodedLength(cipher.getSize()));
  base64::encode(cipher.data(), cipher.getSize(), text.data());
  return text;
}

void decipher(std::wstring_view text, tovin::WideString& password) {
  std::vector<unsigned char> cipher;
  if (!base64::decode(text, cipher)) throw tovin::Exception(L"Error decoding");
  tovin::SecretBytes utf8;
  credentialscipher::decipher(tovin::Array<unsigned char>(std::move(cipher)), utf8);
  tovin::WideString wide;
  wide.setLength(utf8.size());
  wide.setLength(tovin::utf8ToWide({reinterpret_cast<const char*>(utf8.data()), utf8.size()}, wide.data()));
  password = std::move(wide);
}

}  // namespace

CAuthParameters::CAuthParameters() = default;
CAuthParameters::CAuthParameters(const CAuthParameters& other) = default;
CAuthParameters& CAuthParameters::operator=(const CAuthParameters& other) = default;
CAuthParameters::~CAuthParameters() = default;

void CAuthParameters::SetParameters(const tovin::iPropertyCollection& parameters,
                                    const wchar_t* userNameParameter, const wchar_t* passwordParameter) {
  guarded({ClassName, "SetParameters"}, [&] {
    const tovin::WideString userName = parameters.get(userNameParameter)->getValue().getText();
    const tovin::SecretString<wchar_t> password(parameters.get(passwordParameter)->getValue().getText());
    SetPassword(password.text());
    SetUserName(userName);
  });
}

void CAuthParameters::SetUserName(const wchar_t* text) {
  guarded({ClassName, "SetUserName"}, [&] { userName_ = orEmpty(text); });
}

void CAuthParameters::GetPassword(tovin::WideString& out) const {
  guarded({ClassName, "GetPassword"}, [&] { decipher(cipher_.view(), out); });
}

void CAuthParameters::SetPassword(const wchar_t* text) {
  guarded({ClassName, "SetPassword"}, [&] { cipher_ = encipher(text ? text : L""); });
}

void CAuthParameters::SetEncipheredPassword(const wchar_t* text) {
  guarded({ClassName, "SetEncipheredPassword"}, [&] { cipher_ = orEmpty(text); });
}
