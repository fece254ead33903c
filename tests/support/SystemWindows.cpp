#include <windows.h>
// After it.
#include <psapi.h>

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

std::vector<std::string> answeredChallenges() { return {"basic"}; }

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

// The command is over when its guard is gone, and is to end when there is a file that says so: nothing of it
// then runs on in the folder. A test that dies says nothing, so the command's time is bounded.
BackgroundCommand::BackgroundCommand(const std::string& command, const std::string& folder)
    : guard_(folder + "/guard") {
  const std::string script = folder + "/command";
  std::ofstream(guard_).flush();
  const std::string guard = shellPath(guard_);
  std::ofstream(script, std::ios::binary)
      << command << " & p=$!; i=0; while kill -0 $p && [ ! -e " << guard
      << ".end ] && [ $((i += 1)) -lt 6000 ]; do sleep 0.05; done 2>/dev/null; kill $p; wait $p; rm -f "
      << guard << "\n";
  startShell(script);
}

BackgroundCommand::~BackgroundCommand() {
  std::ofstream(guard_ + ".end").flush();
  await([&] { return isOver(); });
}

bool BackgroundCommand::isOver() { return !fs::exists(guard_); }

}  // namespace testsupport
