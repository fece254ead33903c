# Finds libgcrypt and gives LibGcrypt::LibGcrypt.

include(FindPackageHandleStandardArgs)

find_path(LibGcrypt_INCLUDE_DIR gcrypt.h)
find_library(LibGcrypt_LIBRARY gcrypt)
mark_as_advanced(LibGcrypt_INCLUDE_DIR LibGcrypt_LIBRARY)

if(LibGcrypt_INCLUDE_DIR)
  file(STRINGS ${LibGcrypt_INCLUDE_DIR}/gcrypt.h version_line REGEX "^#define GCRYPT_VERSION \"")
  string(REGEX MATCH "[0-9]+\\.[0-9]+\\.[0-9]+" LibGcrypt_VERSION "${version_line}")
endif()

find_package_handle_standard_args(
  LibGcrypt
  REQUIRED_VARS LibGcrypt_LIBRARY LibGcrypt_INCLUDE_DIR
  VERSION_VAR LibGcrypt_VERSION)

if(LibGcrypt_FOUND AND NOT TARGET LibGcrypt::LibGcrypt)
  add_library(LibGcrypt::LibGcrypt UNKNOWN IMPORTED)
  set_target_properties(
    LibGcrypt::LibGcrypt PROPERTIES IMPORTED_LOCATION ${LibGcrypt_LIBRARY} INTERFACE_INCLUDE_DIRECTORIES
                                                                           ${LibGcrypt_INCLUDE_DIR})
endif()
