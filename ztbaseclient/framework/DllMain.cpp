#include <windows.h>

// Nobody here asks when threads come and go, so the system need not tell.
extern "C" BOOL WINAPI DllMain(HINSTANCE library, DWORD reason, LPVOID) {
  if (reason == DLL_PROCESS_ATTACH) ::DisableThreadLibraryCalls(library);
  return TRUE;
}
