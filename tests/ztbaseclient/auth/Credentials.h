#pragma once

#include <map>
#include <string>

#include "tests/support/Bytes.h"
#include "ztbaseclient/auth/CCredentials.h"

/// Credentials strings as tests take them apart and put them together.
namespace credentialstest {

/// The strings of tests/data/credentials by name.
const std::wstring& golden(const std::string& name);

/// The bytes of a string, header first, and back.
std::string bytesOf(const std::wstring& text);
std::wstring textOf(const std::string& bytes);

/// A string around any clear body, or around any text in its place.
std::wstring seal(unsigned char version, const std::string& clearBody);
std::wstring sealText(unsigned char version, const std::string& text);

/// Every field of the body, one a line.
std::string describe(const CCredentials& credentials);
/// How many roles, and the bits that are on: "43: 0 7 8 42".
std::string bitsOf(const CAuthRoles& roles);

std::wstring generate(CCredentials& credentials);

CAuthRoles rolesOf(unsigned count, std::initializer_list<unsigned> on);

}  // namespace credentialstest
