# How our own sources are compiled. Everything here is set for the folders of this project only:
# nothing of it reaches a project that links with the libraries.

include(CheckIPOSupported)
# Debian's compilers and tools look into the folder of the architecture, under /usr/local too.
if(NOT DEFINED CMAKE_INSTALL_LIBDIR AND EXISTS /etc/debian_version AND NOT CMAKE_CROSSCOMPILING
   AND CMAKE_LIBRARY_ARCHITECTURE)
  set(CMAKE_INSTALL_LIBDIR
      lib/${CMAKE_LIBRARY_ARCHITECTURE}
      CACHE PATH "Libraries")
endif()
include(GNUInstallDirs)

# A source for one system ends in its name: Files${ZTB_SYSTEM}.cpp.
if(WIN32)
  set(ZTB_SYSTEM Windows)
  # Names and texts are UTF-16; and windows.h is to bring in as little as it can.
  add_compile_definitions(UNICODE _UNICODE NOMINMAX WIN32_LEAN_AND_MEAN)
else()
  set(ZTB_SYSTEM Posix)
endif()

if(CMAKE_CXX_COMPILER_ID MATCHES "GNU|Clang")
  # A fused multiply-add would give other last digits on processors that have it, and so other bytes.
  add_compile_options(-ffp-contract=off)
  # Nothing that is released knows in which folder it was built.
  if(CMAKE_BUILD_TYPE STREQUAL "Release")
    add_compile_options("-ffile-prefix-map=${PROJECT_SOURCE_DIR}=.")
  endif()
endif()

# What a fault in the memory can do is kept small: guarded stacks, checked copies, tables that nobody can write to,
# and jumps that land only where they may.
if(ZTB_HARDENING)
  include(CheckCXXCompilerFlag)
  add_compile_options(-fstack-protector-strong)
  if(NOT CMAKE_CXX_FLAGS MATCHES "_FORTIFY_SOURCE")
    add_compile_options(-U_FORTIFY_SOURCE -D_FORTIFY_SOURCE=2)
  endif()
  check_cxx_compiler_flag(-fcf-protection=full ztb_has_cf_protection)
  if(ztb_has_cf_protection)
    add_compile_options(-fcf-protection=full)
  endif()
  if(UNIX AND NOT APPLE)
    add_link_options(LINKER:-z,relro,-z,now)
    set(CMAKE_POSITION_INDEPENDENT_CODE ON)
  endif()
endif()

if(ZTB_WARNINGS_AS_ERRORS)
  add_compile_options(
    -Wall
    -Wextra
    -Wpedantic
    -Wshadow
    -Wconversion
    -Wnon-virtual-dtor
    -Wold-style-cast
    -Wextra-semi
    -Wformat=2
    -Wimplicit-fallthrough
    -Wunused
    -Werror)
  if(CMAKE_CXX_COMPILER_ID MATCHES "Clang")
    # Clang counts changes of sign as conversions, GCC does not: both compilers ask for the same.
    add_compile_options(-Wno-sign-conversion)
  endif()
endif()

# A symbol that nobody defines is found when its library is linked, not when a program starts.
# Clang is the exception: it leaves the sanitizers' own symbols to the program.
if(UNIX AND NOT APPLE AND NOT (CMAKE_CXX_COMPILER_ID MATCHES "Clang" AND CMAKE_CXX_FLAGS MATCHES "-fsanitize"))
  add_link_options($<$<STREQUAL:$<TARGET_PROPERTY:TYPE>,SHARED_LIBRARY>:-Wl,--no-undefined>)
endif()

if(ZTB_LTO)
  check_ipo_supported(RESULT ztb_lto_works OUTPUT ztb_lto_trouble LANGUAGES CXX)
  if(ztb_lto_works)
    set(CMAKE_INTERPROCEDURAL_OPTIMIZATION ON)
  else()
    message(WARNING "No optimisation across sources: ${ztb_lto_trouble}")
  endif()
endif()

# Programs and libraries find their libraries wherever the build tree or the prefix is moved. They are built with the
# path that is installed: where the two differ, CMake fills up with empty entries, which mean the current folder.
if(NOT DEFINED CMAKE_INSTALL_RPATH AND UNIX AND NOT APPLE)
  set(CMAKE_BUILD_WITH_INSTALL_RPATH ON)
  file(RELATIVE_PATH ztb_lib_from_bin /${CMAKE_INSTALL_BINDIR} /${CMAKE_INSTALL_LIBDIR})
  set(CMAKE_INSTALL_RPATH "$ORIGIN/../lib" "$ORIGIN/${ztb_lib_from_bin}")
  list(REMOVE_DUPLICATES CMAKE_INSTALL_RPATH)
  set(ztb_library_rpath "$ORIGIN")
endif()
