#include "ztbaseclient/auth/CCredentials.h"

#include <utility>

#include "tovin/Constants.h"
#include "tovinCore/Units.h"

using tovin::guarded;

const tovin::ClassTagDecl CCredentials::Tag("DraVolin.CCredentials");
tovin::LeakDetector CCredentials::m_leakDetector(CCredentials::ClassName);
tovin::ClassImp<CCredentials> CCredentials::m_class(CCredentials::Tag, CCredentials::m_leakDetector);

const wchar_t* const CCredentials::StringTooLong = L"String too long";

namespace {

constexpr size_t mostUnits = 255;

// Below it, being an administrator is a flag and no role.
constexpr unsigned firstFormatWithRoles = 2;

// Body flags.
constexpr unsigned utility = 0x8;
constexpr unsigned deadlock = 0x1F0;
constexpr unsigned noActiveAdmin = 0x20;  // before roles; one of the deadlock bits as well
constexpr unsigned anonymous = 0x800;
constexpr unsigned parallelSubprotocol = 0x1000;
constexpr unsigned administrator = 0x2000;  // before roles
constexpr unsigned activeAdmin = 0x4000;

}  // namespace

CCredentials::CCredentials() = default;
CCredentials::CCredentials(const wchar_t* credentialsString) { SetCredentialsString(credentialsString); }
CCredentials::CCredentials(const CCredentials& other) = default;

// What may fail comes first, so that a failure changes nothing.
CCredentials& CCredentials::operator=(const CCredentials& other) {
  CCredentials copy(other);
  roles_ = other.roles_;
  buffer_ = std::move(copy.buffer_);
  isBodyRead_ = copy.isBodyRead_;
  header_ = copy.header_;
  body_ = std::move(copy.body_);
  return *this;
}

CCredentials::~CCredentials() = default;

// An empty text takes no memory.
const wchar_t* CCredentials::get(TextIndex index) const noexcept {
  const tovin::WideString& text = body_.texts[index].text();
  return text.isNull() ? L"" : text.c_str();
}

void CCredentials::set(const char* method, TextIndex index, const wchar_t* text) {
  guarded({ClassName, method}, [&] {
    if (text && tovin::countUnits(text) > mostUnits) throw tovin::Exception(StringTooLong);
    body_.texts[index] = Text(text);
  });
}

void CCredentials::SetUsername(const wchar_t* text) { set("SetUsername", Username, text); }
void CCredentials::SetPassword(const wchar_t* text) { set("SetPassword", Password, text); }
void CCredentials::SetClientDescription(const wchar_t* text) {
  set("SetClientDescription", ClientDescription, text);
}
void CCredentials::SetClientMachineName(const wchar_t* text) {
  set("SetClientMachineName", ClientMachineName, text);
}
void CCredentials::SetClientVersion(const wchar_t* text) { set("SetClientVersion", ClientVersion, text); }
void CCredentials::SetDomain(const wchar_t* text) { set("SetDomain", Domain, text); }
void CCredentials::SetXMLDBEndPoint(const wchar_t* text) { set("SetXMLDBEndPoint", XMLDBEndPoint, text); }
void CCredentials::SetLogEndPoint(const wchar_t* text) { set("SetLogEndPoint", LogEndPoint, text); }
void CCredentials::SetLocatorEndPoint(const wchar_t* text) {
  set("SetLocatorEndPoint", LocatorEndPoint, text);
}

void CCredentials::SetRoles(const CAuthRoles& roles) {
  guarded({ClassName, "SetRoles"}, [&] { roles_ = roles; });
}

void CCredentials::SetRolesCache(CAuthRolesCache* cache) {
  guarded({ClassName, "SetRolesCache"}, [&] { roles_.SetRolesCache(cache); });
}

bool CCredentials::IsMemberOf(const wchar_t* roleName) const {
  return guarded({ClassName, "IsMemberOf"}, [&] { return roles_.IsMemberOf(roleName); });
}

bool CCredentials::IsUtility() const noexcept { return has(utility); }
bool CCredentials::IsAnonymous() const noexcept { return has(anonymous); }
bool CCredentials::IsDeadlock() const noexcept { return has(deadlock); }
bool CCredentials::IsParallelSubprotocol() const noexcept { return has(parallelSubprotocol); }
bool CCredentials::IsActiveAdmin() const noexcept { return has(activeAdmin); }

bool CCredentials::hasOldFormat() const noexcept { return header_.formatVersion < firstFormatWithRoles; }

bool CCredentials::IsAdminUser() const {
  return guarded({ClassName, "IsAdminUser"}, [&] {
    if (hasOldFormat()) return has(administrator);
    return roles_.IsMemberOf(tovin::DRV_KQClientAdminRole) && !roles_.IsMemberOf(tovin::DRV_KQClientLiteRole);
  });
}

bool CCredentials::mayBeActiveAdmin() const {
  if (hasOldFormat()) return has(administrator) && !has(noActiveAdmin);
  return roles_.IsMemberOf(tovin::DRV_KQClientAdminRole) || roles_.IsMemberOf(tovin::DRV_AdminPortalUserRole);
}

void CCredentials::SetIsActiveAdmin(bool on) {
  guarded({ClassName, "SetIsActiveAdmin"}, [&] {
    if (!mayBeActiveAdmin()) return;
    body_.flags = on ? body_.flags | activeAdmin : body_.flags & ~activeAdmin;
  });
}

void CCredentials::SetAsUtilityCredentials() {
  guarded({ClassName, "SetAsUtilityCredentials"}, [&] {
    const uint8_t format = header_.formatVersion;
    header_ = Header();
    header_.formatVersion = format;
    body_.flags = utility;
    body_.clientIP = in_addr{};
    body_.texts[ClientDescription].setNull();
    body_.texts[ClientMachineName].setNull();
  });
}

void CCredentials::Clear() {
  guarded({ClassName, "Clear"}, [&] {
    tovin::wipe(buffer_.data(), buffer_.size());
    isBodyRead_ = false;
    header_ = Header();
    body_ = Body();
    roles_.Clear();
  });
}
