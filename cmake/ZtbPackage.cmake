# What others find us by: find_package(ztbaseclient) and pkg-config. Comes after all libraries.

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
  # What stands on top has a file of its own.
  set(ztb_pc_libs ${ztb_libraries})
  list(REMOVE_ITEM ztb_pc_libs ztservice)
  list(TRANSFORM ztb_pc_libs PREPEND -l)
  list(REVERSE ztb_pc_libs)
  list(JOIN ztb_pc_libs " " ztb_pc_libs)
  configure_file(${PROJECT_SOURCE_DIR}/cmake/ztbaseclient.pc.in ${PROJECT_BINARY_DIR}/ztbaseclient.pc @ONLY)
  configure_file(${PROJECT_SOURCE_DIR}/cmake/ztservice.pc.in ${PROJECT_BINARY_DIR}/ztservice.pc @ONLY)
  install(
    FILES ${PROJECT_BINARY_DIR}/ztbaseclient.pc ${PROJECT_BINARY_DIR}/ztservice.pc
    DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig
    COMPONENT development)
  install(
    DIRECTORY ${PROJECT_SOURCE_DIR}/examples/
    DESTINATION ${CMAKE_INSTALL_DATADIR}/ztbaseclient/examples
    COMPONENT development)
endif()

# Who answers for packages; scripts/package makes them.
set(ZTB_MAINTAINER
    "ztbaseclient maintainers <maintainers@ztbaseclient.invalid>"
    CACHE STRING "Name and address of whoever maintains the packages")
