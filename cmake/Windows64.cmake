# Toolchain: 64-bit Windows from Debian, with mingw-w64 and its posix threads; programs run under Wine.
# The environment variable ZTB_WINDOWS_LIBRARIES names the folder that scripts/windows-libraries filled.

if(NOT DEFINED ENV{ZTB_WINDOWS_LIBRARIES})
  message(FATAL_ERROR "ZTB_WINDOWS_LIBRARIES is not set; ./dev windows does that")
endif()

set(ztb_triplet x86_64-w64-mingw32)
set(CMAKE_SYSTEM_NAME Windows)
set(CMAKE_SYSTEM_PROCESSOR x86_64)
# The oldest Windows that has all we ask for is 10.
set(CMAKE_SYSTEM_VERSION 10.0)
set(CMAKE_C_COMPILER ${ztb_triplet}-gcc-posix)
set(CMAKE_CXX_COMPILER ${ztb_triplet}-g++-posix)
set(CMAKE_RC_COMPILER ${ztb_triplet}-windres)
add_compile_definitions(_WIN32_WINNT=0x0A00)

set(ZLIB_USE_STATIC_LIBS ON)
set(CMAKE_FIND_ROOT_PATH $ENV{ZTB_WINDOWS_LIBRARIES} /usr/${ztb_triplet})
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)
set(CMAKE_CROSSCOMPILING_EMULATOR ${CMAKE_CURRENT_LIST_DIR}/../scripts/wine)
