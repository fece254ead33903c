#pragma once

#include <array>
#include <optional>
#include <span>

#include "tovin/FrameworkClass.h"
#include "tovin/SecretString.h"
#include "tovinCore/platform/InternetAddress.h"
#include "ztbaseclient/Export.h"
#include "ztbaseclient/auth/CAuthRoles.h"

/// Who a client is to the server, and the credentials string that carries it, which is a session id too.
///
///     CCredentials credentials;
///     credentials.SetUsername(L"ann");
///     tovin::WideString text;
///     credentials.GenerateCredentialsString(text);
///
///     CCredentials received(text);          // the clear header only
///     if (received.VerifyChecksum()) …      // now: DecryptBody wipes what the checksum is of
///     received.DecryptBody();               // the rest
///
/// The string is obfuscation, not encryption: its key is part of this library, so whoever sees the string has
/// the password. Send it over HTTPS only, and keep it out of logs.
///
/// - Ownership: owns its texts, which are wiped when they are cleared or die; the roles' cache is counted.
/// - Shape: texts of up to 255 UTF-16 units, never null; addresses in network order; strings as in
///   docs/formats.md. One whose UTF-8 form exceeds 255 bytes is written with a length byte that wraps.
/// - Errors: "String too long", "Empty Credentials", "Error decoding", "Decrypt failed", "Decode failed"; a
///   failed DecryptBody changes no field. A wrong checksum is no error: ask VerifyChecksum.
/// - Threads: one thread at a time a record.
class ZTBASECLIENT_API CCredentials : public tovin::FrameworkClass<CCredentials, tovin::Object> {
 public:
  static constexpr const char* ClassName = "CCredentials";
  static const tovin::ClassTagDecl Tag;
  static tovin::LeakDetector m_leakDetector;
  static tovin::ClassImp<CCredentials> m_class;

  /// What a setter says of a text of 256 units or more.
  static const wchar_t* const StringTooLong;

  CCredentials();
  /// Reads the header of a credentials string, as SetCredentialsString does.
  explicit CCredentials(const wchar_t* credentialsString);
  CCredentials(const CCredentials& other);
  CCredentials& operator=(const CCredentials& other);
  ~CCredentials() override;

  unsigned char GetFormatVersionNumber() const noexcept { return header_.formatVersion; }
  void SetFormatVersionNumber(unsigned char version) noexcept { header_.formatVersion = version; }
  unsigned char GetRandomNumber() const noexcept { return header_.randomNumber; }
  void SetRandomNumber(unsigned char number) noexcept { header_.randomNumber = number; }
  short GetEncryptedSectionLength() const noexcept { return header_.encryptedLength; }
  void SetEncryptedSectionLength(short length) noexcept { header_.encryptedLength = length; }
  unsigned GetQuickChecksum() const noexcept { return header_.quickChecksum; }
  void SetQuickChecksum(unsigned checksum) noexcept { header_.quickChecksum = checksum; }
  unsigned GetHeaderFlags() const noexcept { return header_.flags; }
  void SetHeaderFlags(unsigned flags) noexcept { header_.flags = flags; }
  unsigned GetBodyFlags() const noexcept { return body_.flags; }
  void SetBodyFlags(unsigned flags) noexcept { body_.flags = flags; }
  in_addr GetServerIP() const noexcept { return body_.serverIP; }
  void SetServerIP(in_addr address) noexcept { body_.serverIP = address; }
  in_addr GetClientIP() const noexcept { return body_.clientIP; }
  void SetClientIP(in_addr address) noexcept { body_.clientIP = address; }
  /// Unit and epoch are the caller's.
  int64_t GetLoginTime() const noexcept { return body_.loginTime; }
  void SetLoginTime(int64_t time) noexcept { body_.loginTime = time; }

  const wchar_t* GetUsername() const noexcept { return get(Username); }
  const wchar_t* GetPassword() const noexcept { return get(Password); }
  const wchar_t* GetClientDescription() const noexcept { return get(ClientDescription); }
  const wchar_t* GetClientMachineName() const noexcept { return get(ClientMachineName); }
  const wchar_t* GetClientVersion() const noexcept { return get(ClientVersion); }
  const wchar_t* GetDomain() const noexcept { return get(Domain); }
  const wchar_t* GetXMLDBEndPoint() const noexcept { return get(XMLDBEndPoint); }
  const wchar_t* GetLogEndPoint() const noexcept { return get(LogEndPoint); }
  const wchar_t* GetLocatorEndPoint() const noexcept { return get(LocatorEndPoint); }

  /// Null empties the text; one that is too long leaves it as it was.
  void SetUsername(const wchar_t* text);
  void SetPassword(const wchar_t* text);
  void SetClientDescription(const wchar_t* text);
  void SetClientMachineName(const wchar_t* text);
  void SetClientVersion(const wchar_t* text);
  void SetDomain(const wchar_t* text);
  void SetXMLDBEndPoint(const wchar_t* text);
  void SetLogEndPoint(const wchar_t* text);
  void SetLocatorEndPoint(const wchar_t* text);

  const CAuthRoles& GetRoles() const noexcept { return roles_; }
  void SetRoles(const CAuthRoles& roles);
  void SetRolesCache(CAuthRolesCache* cache);
  bool IsMemberOf(const wchar_t* roleName) const;

  bool IsUtility() const noexcept;
  bool IsAnonymous() const noexcept;
  bool IsDeadlock() const noexcept;
  bool IsParallelSubprotocol() const noexcept;
  bool IsActiveAdmin() const noexcept;
  bool IsLiteClientUser() const noexcept { return false; }
  /// Before format 2 a flag; since then the administrator's role without the lite client's.
  bool IsAdminUser() const;
  /// Changes nothing for a user who may not act as administrator. The roles that allow it are not those of
  /// IsAdminUser: the portal's count too, and the lite client's does not hinder.
  void SetIsActiveAdmin(bool on);
  /// The identity of a server's own work: no client, no flags but the one that says so.
  void SetAsUtilityCredentials();

  void GenerateCredentialsString(tovin::WideString& out);
  /// Clears the record and reads the header; the body stays enciphered.
  void SetCredentialsString(const wchar_t* text);
  /// Once: after it a further call changes nothing.
  void DecryptBody();
  /// Of the enciphered body: true after GenerateCredentialsString and for an undamaged string, until
  /// DecryptBody.
  bool VerifyChecksum() const noexcept;
  /// \param userName out: untouched on failure.
  static void GetUserNameFromSessionId(const wchar_t* sessionId, tovin::WideString& userName);

  /// Everything empty, format 2; the roles' cache stays.
  void Clear();
  /// An estimate in bytes that counts a UTF-16 unit as one byte.
  size_t CalcClearBodyLen() const;
  /// Bytes of the bit count that stands before the roles.
  static unsigned GetNumBitsLength(const CAuthRoles& roles) noexcept;
  /// Bytes of the roles' bits.
  static size_t GetNumBytes(const CAuthRoles& roles) noexcept;
  /// 32 and the sum of the bytes, modulo 2³².
  static unsigned CalcChecksum(const unsigned char* bytes, size_t count) noexcept;

 private:
  using Text = tovin::SecretString<wchar_t>;
  using Bytes = std::span<const unsigned char>;

  // The texts in the order in which they travel.
  enum TextIndex {
    Username,
    Password,
    ClientDescription,
    ClientMachineName,
    ClientVersion,
    Domain,
    XMLDBEndPoint,
    LogEndPoint,
    LocatorEndPoint,
    textCount
  };

  static constexpr uint8_t currentFormat = 2;

  struct Header {
    uint8_t formatVersion = currentFormat;
    uint8_t randomNumber = 0;
    int16_t encryptedLength = 0;
    uint32_t quickChecksum = 0;
    uint32_t flags = 0;
  };

  // All of the body but the roles.
  struct Body {
    uint32_t flags = 0;
    in_addr serverIP{};
    in_addr clientIP{};
    int64_t loginTime = 0;
    std::array<Text, textCount> texts;
  };

  const wchar_t* get(TextIndex index) const noexcept;
  void set(const char* method, TextIndex index, const wchar_t* text);
  bool hasOldFormat() const noexcept;
  bool has(unsigned flags) const noexcept { return (body_.flags & flags) != 0; }
  bool mayBeActiveAdmin() const;

  unsigned char* bodyAt(size_t position) noexcept;
  void writeHeader() noexcept;
  void readHeader() noexcept;
  void writeBody();
  void readBody(Bytes source);
  std::optional<Bytes> encryptedSection() const noexcept;
  size_t AppendString(size_t position, const tovin::WideString& text);
  static size_t AssignString(Text& out, Bytes source);
  size_t AppendBitsetValue(size_t position, const tovin::BitsetValue& bits);
  static size_t AssignBitsetValue(tovin::BitsetValue& bits, Bytes source);
  void requireRoom() const;
  void encodeBuffer();
  int16_t DoEncryption();
  tovin::SecretBytes DoDecryption() const;

  // The header and behind it the body: enciphered, clear in the midst of GenerateCredentialsString, wiped
  // after DecryptBody.
  tovin::SecretBytes buffer_;
  bool isBodyRead_ = false;
  Header header_;
  Body body_;
  CAuthRoles roles_;
};
