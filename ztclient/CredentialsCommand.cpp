// ztclient credentials: makes a credentials string, and shows what one says.
#include <iostream>
#include <iterator>
#include <memory>
#include <optional>

#include "tovinCore/Utf8.h"
#include "tovinCore/Wipe.h"
#include "ztbaseclient/auth/CCredentials.h"
#include "ztclient/Commands.h"
#include "ztclient/answers/Json.h"
#include "ztclient/arguments/Arguments.h"
#include "ztclient/input/InputFile.h"

namespace {

using Setter = void (CCredentials::*)(const wchar_t*);

struct TextOption {
  const char* name;
  const char* help;
  const char* word;
  Setter set;
};

constexpr TextOption textOptions[] = {
    {"--user", "User name", "NAME", &CCredentials::SetUsername},
    {"--domain", "Domain", "NAME", &CCredentials::SetDomain},
    {"--client-description", "Description of the client", "TEXT", &CCredentials::SetClientDescription},
    {"--machine", "Name of the client's machine", "NAME", &CCredentials::SetClientMachineName},
    {"--client-version", "Version of the client", "TEXT", &CCredentials::SetClientVersion},
    {"--xmldb", "End point of the XML database", "URL", &CCredentials::SetXMLDBEndPoint},
    {"--log", "End point of the log", "URL", &CCredentials::SetLogEndPoint},
    {"--locator", "End point of the locator", "URL", &CCredentials::SetLocatorEndPoint}};

struct MakeOptions {
  std::string texts[std::size(textOptions)];
  std::string passwordFile, serverIP, clientIP;
  int64_t loginTime = 0;
  uint32_t bodyFlags = 0, headerFlags = 0;
  std::vector<uint32_t> roleBits;
  std::optional<uint32_t> roleBitCount;
};

struct ShowOptions {
  std::optional<std::string> text;
  bool json = false;
  bool showPassword = false;
};

void requirePassword(std::string_view line) {
  bool cutShort = false;
  if (!tovin::isValidUtf8(line, cutShort)) throw tovin::Exception(L"The password is not UTF-8");
  if (line.find('\0') != std::string_view::npos) throw tovin::Exception(L"The password has a zero character");
}

void setPassword(CCredentials& credentials, const std::string& file) {
  if (file.empty()) return;
  std::string line = firstLineOf(file);
  requirePassword(line);
  std::wstring password = tovin::utf8ToWide(line);
  credentials.SetPassword(password.c_str());
  tovin::wipe(password.data(), password.size() * sizeof(wchar_t));
  tovin::wipe(line.data(), line.size());
}

in_addr addressOf(const std::string& text) {
  in_addr address{};
  if (!text.empty() && !tovin::platform::fromDotted(text, address))
    throw tovin::Exception("%hs is no IPv4 address", text);
  return address;
}

// As many bits as asked for, else as many as the highest one needs.
CAuthRoles rolesOf(const MakeOptions& options) {
  uint32_t count = 0;
  for (uint32_t bit : options.roleBits) count = std::max(count, bit + 1);
  tovin::BitsetValue bits(options.roleBitCount.value_or(count));
  for (uint32_t bit : options.roleBits) bits.setOn(bit);
  CAuthRoles roles;
  roles.SetRoleBits(bits);
  return roles;
}

void make(const MakeOptions& options) {
  CCredentials credentials;
  const std::string* given = options.texts;
  for (const TextOption& option : textOptions) {
    const std::wstring text = tovin::utf8ToWide(*given++);
    (credentials.*option.set)(text.c_str());
  }
  credentials.SetServerIP(addressOf(options.serverIP));
  credentials.SetClientIP(addressOf(options.clientIP));
  credentials.SetLoginTime(options.loginTime);
  credentials.SetBodyFlags(options.bodyFlags);
  credentials.SetHeaderFlags(options.headerFlags);
  credentials.SetRoles(rolesOf(options));
  setPassword(credentials, options.passwordFile);
  tovin::WideString text;
  credentials.GenerateCredentialsString(text);
  std::cout << tovin::wideToUtf8(text.view()) << '\n';
}

std::string withoutLineEnd(std::string text) {
  while (text.ends_with('\n') || text.ends_with('\r')) text.pop_back();
  return text;
}

Json headerOf(const CCredentials& credentials, bool checksumOk) {
  return {{"formatVersion", credentials.GetFormatVersionNumber()},
          {"randomNumber", credentials.GetRandomNumber()},
          {"encryptedLength", credentials.GetEncryptedSectionLength()},
          {"quickChecksum", credentials.GetQuickChecksum()},
          {"checksumOk", checksumOk},
          {"headerFlags", credentials.GetHeaderFlags()}};
}

void addBody(Json& json, const CCredentials& credentials, bool showPassword) {
  const auto addText = [&](const char* key, const wchar_t* text) { json[key] = tovin::wideToUtf8(text); };
  json["bodyFlags"] = credentials.GetBodyFlags();
  json["serverIP"] = tovin::platform::toDotted(credentials.GetServerIP());
  json["clientIP"] = tovin::platform::toDotted(credentials.GetClientIP());
  json["loginTime"] = credentials.GetLoginTime();
  addText("userName", credentials.GetUsername());
  if (showPassword) addText("password", credentials.GetPassword());
  addText("clientDescription", credentials.GetClientDescription());
  addText("clientMachineName", credentials.GetClientMachineName());
  addText("clientVersion", credentials.GetClientVersion());
  addText("domain", credentials.GetDomain());
  addText("xmlDbEndPoint", credentials.GetXMLDBEndPoint());
  addText("logEndPoint", credentials.GetLogEndPoint());
  addText("locatorEndPoint", credentials.GetLocatorEndPoint());
  const tovin::BitsetValue& bits = credentials.GetRoles().GetRoleBits();
  json["roleBits"] = bitsOn(bits);
  json["roleBitCount"] = bits.getNumBits();
}

// Texts are quoted in both forms: what a string holds may be anything, line ends included.
void print(const Json& json, bool asJson) {
  if (asJson) {
    std::cout << toText(json, 2) << '\n';
    return;
  }
  for (const auto& [key, value] : json.items()) std::cout << key << ": " << toText(value) << '\n';
}

// A body that cannot be read leaves the header to be shown.
int show(const ShowOptions& options) {
  const std::string text = options.text ? *options.text : withoutLineEnd(readBytes("-"));
  CCredentials credentials(tovin::utf8ToWide(text).c_str());
  const bool checksumOk = credentials.VerifyChecksum();
  Json json = headerOf(credentials, checksumOk);
  try {
    credentials.DecryptBody();
  } catch (const tovin::Exception&) {
    print(json, options.json);
    throw;
  }
  addBody(json, credentials, options.showPassword);
  print(json, options.json);
  return checksumOk ? commands::done : commands::negative;
}

void addMake(CLI::App& credentials, int& status) {
  auto options = std::make_shared<MakeOptions>();
  CLI::App* app = credentials.add_subcommand("make", "Make a credentials string");
  for (size_t i = 0; i < std::size(textOptions); ++i)
    app->add_option(textOptions[i].name, options->texts[i], textOptions[i].help)
        ->type_name(textOptions[i].word);
  arguments::addFile(*app, "--password-file", options->passwordFile,
                     "File whose first line is the password; - for standard input");
  app->add_option("--server-ip", options->serverIP, "IPv4 address of the server")->type_name("IP");
  app->add_option("--client-ip", options->clientIP, "IPv4 address of the client")->type_name("IP");
  arguments::addNumber(*app, "--login-time", options->loginTime,
                       "Time of the login, a number of 64 bits with its sign")
      ->capture_default_str();
  arguments::addNumber(*app, "--body-flags", options->bodyFlags, "Flags that are enciphered")
      ->capture_default_str();
  arguments::addNumber(*app, "--header-flags", options->headerFlags, "Flags that are not")
      ->capture_default_str();
  arguments::addNumber(*app, "--role-bit", options->roleBits,
                       "Number of a role that the user has; may be repeated")
      ->check(CLI::Range(uint32_t{0}, UINT32_MAX - 1))
      ->expected(1)
      ->take_all();
  arguments::addNumber(*app, "--role-bits", options->roleBitCount, "How many roles there are")
      ->default_str("up to the last that is given");
  app->footer(
      "Example: ztclient credentials make --user ann --password-file - --role-bit 3 --role-bits 16\n"
      "The string hides the password from the eye, not from an attacker: send it over HTTPS only.");
  app->callback([options, &status] {
    make(*options);
    status = commands::done;
  });
}

void addShow(CLI::App& credentials, int& status) {
  auto options = std::make_shared<ShowOptions>();
  CLI::App* app = credentials.add_subcommand("show", "Show what a credentials string says");
  app->add_option("STRING", options->text, "Credentials string; standard input if it is left out")
      ->type_name("TEXT");
  app->add_flag("--json", options->json, "One JSON document");
  app->add_flag("--show-password", options->showPassword, "Show the password too");
  app->footer(
      "Example: ztclient credentials make --user ann | ztclient credentials show --json\nExit status 1: the "
      "checksum is wrong. 2: the body cannot be read.");
  app->callback([options, &status] { status = show(*options); });
}

}  // namespace

void commands::addCredentials(CLI::App& app, int& status) {
  CLI::App* credentials = app.add_subcommand("credentials", "Make and show credentials strings");
  credentials->require_subcommand(1);
  credentials->footer("Example: ztclient credentials make --user ann --domain LAB");
  addMake(*credentials, status);
  addShow(*credentials, status);
}
