// Before windows.h, which would bring in an older one.
#include <winsock2.h>
// After it.
#include <psapi.h>
#include <windows.h>

#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <functional>
#include <random>
#include <stdexcept>
#include <thread>

#include "tests/support/System.h"
#include "tovinCore/Utf8.h"

namespace testsupport {
namespace {

namespace fs = std::filesystem;

void startSockets() {
  static const int started = [] {
    WSADATA data;
    return ::WSAStartup(MAKEWORD(2, 2), &data);
  }();
  if (started != 0) throw std::runtime_error("no sockets");
}

sockaddr_in loopback(int port) {
  sockaddr_in address{};
  address.sin_family = AF_INET;
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  address.sin_port = htons(static_cast<uint16_t>(port));
  return address;
}

SOCKET newSocket() {
  startSockets();
  return ::socket(AF_INET, SOCK_STREAM, 0);
}

SOCKET socketOf(Socket socket) { return static_cast<SOCKET>(socket); }

const std::wstring ownRegistry = L"Software\\ztb-test-" + std::to_wstring(::GetCurrentProcessId());

// Where these programs run under Wine, the system below it has a shell, and Wine can name it a file.
using UnixName = char*(CDECL*)(const wchar_t*);
UnixName unixName() {
  const HMODULE kernel = ::GetModuleHandleW(L"kernel32.dll");
  return reinterpret_cast<UnixName>(
      reinterpret_cast<void*>(::GetProcAddress(kernel, "wine_get_unix_file_name")));
}

// Nobody but the script itself can tell what becomes of it.
void startShell(const std::string& script) {
  std::wstring line = L"sh " + tovin::utf8ToWide(shellPath(script));
  STARTUPINFOW startup{};
  startup.cb = sizeof startup;
  PROCESS_INFORMATION process{};
  if (!::CreateProcessW(L"Z:\\bin\\sh", line.data(), nullptr, nullptr, FALSE, 0, nullptr, nullptr, &startup,
                        &process)) {
    throw std::runtime_error("no shell");
  }
}

void await(const std::function<bool()>& condition) {
  for (int i = 0; i < 12'000 && !condition(); ++i) std::this_thread::sleep_for(std::chrono::milliseconds(10));
}

}  // namespace

const StrangeName strangeName = {"a 'b' %;\xC3\xA9", "a 'b' %;\xC3\xA9"};

void setVariable(const char* name, const char* value) { ::_putenv_s(name, value ? value : ""); }

const char* const settingsVariable = "APPDATA";

void enterOwnRegistry() {
  HKEY key = nullptr;
  ::RegCreateKeyExW(HKEY_CURRENT_USER, ownRegistry.c_str(), 0, nullptr, REG_OPTION_NON_VOLATILE,
                    KEY_ALL_ACCESS, nullptr, &key, nullptr);
  const LSTATUS status = ::RegOverridePredefKey(HKEY_CURRENT_USER, key);
  ::RegCloseKey(key);
  if (status != ERROR_SUCCESS) throw std::runtime_error("no registry");
}

void leaveOwnRegistry() {
  ::RegOverridePredefKey(HKEY_CURRENT_USER, nullptr);
  ::RegDeleteTreeW(HKEY_CURRENT_USER, ownRegistry.c_str());
}

long peakKilobytes() {
  PROCESS_MEMORY_COUNTERS counters{};
  ::GetProcessMemoryInfo(::GetCurrentProcess(), &counters, sizeof counters);
  return static_cast<long>(counters.PeakWorkingSetSize >> 10);
}

bool hasShell() { return unixName() && fs::exists("Z:\\bin\\sh"); }

std::string shellPath(const std::string& path) {
  char* name = unixName()(fs::path(path).make_preferred().c_str());
  if (!name) throw std::runtime_error("the shell has no name for " + path);
  const std::string copy = name;
  ::HeapFree(::GetProcessHeap(), 0, name);
  return copy;
}

void runShell(const std::string& command) {
  const std::string script =
      (fs::temp_directory_path() / ("ztb-" + std::to_string(std::random_device()()))).string();
  const std::string status = script + ".status";
  std::ofstream(script, std::ios::binary) << "(" << command << "); echo $? >" << shellPath(status) << "\n";
  startShell(script);
  int result = -1;
  await([&] { return static_cast<bool>(std::ifstream(status) >> result); });
  fs::remove(script);
  fs::remove(status);
  if (result != 0) throw std::runtime_error("failed: " + command);
}

// The guard goes when either side is done; a test that dies leaves it, so the command's time is bounded.
BackgroundCommand::BackgroundCommand(const std::string& command, const std::string& folder)
    : guard_(folder + "/guard") {
  const std::string script = folder + "/command";
  std::ofstream(guard_).flush();
  const std::string guard = shellPath(guard_);
  std::ofstream(script, std::ios::binary)
      << command << " & p=$!; i=0; while kill -0 $p && [ -e " << guard
      << " ] && [ $((i += 1)) -lt 6000 ]; do sleep 0.05; done 2>/dev/null; kill $p; rm -f " << guard << "\n";
  startShell(script);
}

BackgroundCommand::~BackgroundCommand() {
  std::error_code ignored;
  fs::remove(guard_, ignored);
}

bool BackgroundCommand::isOver() { return !fs::exists(guard_); }

Socket listenOnLoopback(int& port) {
  const SOCKET listener = newSocket();
  sockaddr_in address = loopback(0);
  int size = sizeof address;
  if (::bind(listener, reinterpret_cast<sockaddr*>(&address), size) != 0 || ::listen(listener, 16) != 0 ||
      ::getsockname(listener, reinterpret_cast<sockaddr*>(&address), &size) != 0) {
    throw std::runtime_error("cannot listen");
  }
  port = ntohs(address.sin_port);
  return static_cast<Socket>(listener);
}

Socket acceptWithin(Socket listener, int milliseconds) {
  WSAPOLLFD waiting{socketOf(listener), POLLRDNORM, 0};
  if (::WSAPoll(&waiting, 1, milliseconds) <= 0) return noSocket;
  const SOCKET socket = ::accept(socketOf(listener), nullptr, nullptr);
  const DWORD patience = 10'000;
  ::setsockopt(socket, SOL_SOCKET, SO_RCVTIMEO, reinterpret_cast<const char*>(&patience), sizeof patience);
  return static_cast<Socket>(socket);
}

int64_t receiveFrom(Socket socket, char* bytes, size_t room) {
  return ::recv(socketOf(socket), bytes, static_cast<int>(room), 0);
}

int64_t sendTo(Socket socket, const char* bytes, size_t count) {
  return ::send(socketOf(socket), bytes, static_cast<int>(count), 0);
}

void closeSocket(Socket socket) { ::closesocket(socketOf(socket)); }

bool canConnect(int port) {
  const SOCKET socket = newSocket();
  const sockaddr_in address = loopback(port);
  const bool connected = ::connect(socket, reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0;
  ::closesocket(socket);
  return connected;
}

}  // namespace testsupport
