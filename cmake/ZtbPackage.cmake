# What others find us by: find_package(ztbaseclient), pkg-config, and Debian packages. Comes after all libraries.

include(CMakePackageConfigHelpers)

get_property(ztb_libraries GLOBAL PROPERTY ZTB_LIBRARIES)

# Compiles every installed header alone.
add_custom_target(headers)
if(CMAKE_VERIFY_INTERFACE_HEADER_SETS AND ztb_libraries)
  add_dependencies(headers all_verify_interface_header_sets)
endif()

if(ztb_libraries)
  set(ztb_config_dir ${CMAKE_INSTALL_LIBDIR}/cmake/ztbaseclient)
  install(
    EXPORT ztbaseclientTargets
    NAMESPACE ztbaseclient::
    DESTINATION ${ztb_config_dir}
    COMPONENT development)
  configure_package_config_file(
    ${PROJECT_SOURCE_DIR}/cmake/ztbaseclientConfig.cmake.in ${PROJECT_BINARY_DIR}/ztbaseclientConfig.cmake
    INSTALL_DESTINATION ${ztb_config_dir}
    NO_SET_AND_CHECK_MACRO)
  write_basic_package_version_file(
    ${PROJECT_BINARY_DIR}/ztbaseclientConfigVersion.cmake
    VERSION ${PROJECT_VERSION}
    COMPATIBILITY SameMinorVersion)
  install(FILES ${PROJECT_BINARY_DIR}/ztbaseclientConfig.cmake
                ${PROJECT_BINARY_DIR}/ztbaseclientConfigVersion.cmake
          DESTINATION ${ztb_config_dir}
          COMPONENT development)

  # The file names its prefix relative to itself, so that an installed tree can be moved.
  file(RELATIVE_PATH ztb_prefix_from_pc /${CMAKE_INSTALL_LIBDIR}/pkgconfig /)
  string(REGEX REPLACE "/$" "" ztb_prefix_from_pc ${ztb_prefix_from_pc})
  list(TRANSFORM ztb_libraries PREPEND -l OUTPUT_VARIABLE ztb_pc_libs)
  list(REVERSE ztb_pc_libs)
  list(JOIN ztb_pc_libs " " ztb_pc_libs)
  configure_file(${PROJECT_SOURCE_DIR}/cmake/ztbaseclient.pc.in ${PROJECT_BINARY_DIR}/ztbaseclient.pc @ONLY)
  install(
    FILES ${PROJECT_BINARY_DIR}/ztbaseclient.pc
    DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig
    COMPONENT development)
  install(
    DIRECTORY ${PROJECT_SOURCE_DIR}/examples/
    DESTINATION ${CMAKE_INSTALL_DATADIR}/ztbaseclient/examples
    COMPONENT development)
endif()

# Three packages: what programs run with, what they are built with, and the command.
set(ztb_runtime_package libztbaseclient${PROJECT_VERSION_MAJOR}.${PROJECT_VERSION_MINOR})
set(ztb_same_version "${ztb_runtime_package} (= ${PROJECT_VERSION})")
set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_CONTACT "ztbaseclient maintainers <ztbaseclient@localhost>")
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_STRIP_FILES ON)
set(CPACK_COMPONENTS_ALL runtime development tools)
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS ${CMAKE_LIBRARY_OUTPUT_DIRECTORY})
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS ON)
set(CPACK_DEBIAN_RUNTIME_PACKAGE_NAME ${ztb_runtime_package})
set(CPACK_DEBIAN_RUNTIME_PACKAGE_SECTION libs)
set(CPACK_DEBIAN_RUNTIME_DESCRIPTION "Client-side base library of a scientific workflow server
 Data records, credentials, service descriptions, links, uploads and cache requests.")
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_NAME libztbaseclient-dev)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_SECTION libdevel)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_DEPENDS "${ztb_same_version}")
set(CPACK_DEBIAN_DEVELOPMENT_DESCRIPTION "Client-side base library of a scientific workflow server, development
 Headers, examples, and what CMake and pkg-config find the library by.")
set(CPACK_DEBIAN_TOOLS_PACKAGE_NAME ztclient)
set(CPACK_DEBIAN_TOOLS_PACKAGE_SECTION science)
set(CPACK_DEBIAN_TOOLS_PACKAGE_DEPENDS "${ztb_same_version}")
set(CPACK_DEBIAN_TOOLS_DESCRIPTION "Client command of a scientific workflow server
 Shows records, credentials and services, sends files, compares results.")
include(CPack)
