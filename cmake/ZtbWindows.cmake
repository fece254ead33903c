# What packages for Windows have that others have not.

set(CMAKE_SHARED_LIBRARY_PREFIX "")

# ztb_copy_dll(<name> <folder>...): puts a DLL of others, found in one of the folders, where programs are built,
# without what only debuggers read.
function(ztb_copy_dll name)
  find_file(ZTB_DLL_${name} ${name}.dll REQUIRED HINTS ${ARGN} NO_CMAKE_FIND_ROOT_PATH)
  mark_as_advanced(ZTB_DLL_${name})
  file(MAKE_DIRECTORY ${CMAKE_RUNTIME_OUTPUT_DIRECTORY})
  execute_process(
    COMMAND ${CMAKE_STRIP} -o ${CMAKE_RUNTIME_OUTPUT_DIRECTORY}/${name}.dll ${ZTB_DLL_${name}}
    COMMAND_ERROR_IS_FATAL ANY)
endfunction()

# The compiler's DLLs, which all must share because they throw exceptions to one another. They are put where the
# programs are built, and installed with them.

get_filename_component(ztb_compiler_dir ${CMAKE_CXX_COMPILER} DIRECTORY)
foreach(name IN ITEMS libstdc++-6 libgcc_s_seh-1 libwinpthread-1)
  execute_process(
    COMMAND ${CMAKE_CXX_COMPILER} -print-file-name=${name}.dll
    OUTPUT_VARIABLE ztb_runtime_dll
    OUTPUT_STRIP_TRAILING_WHITESPACE)
  get_filename_component(ztb_runtime_dir ${ztb_runtime_dll} DIRECTORY)
  ztb_copy_dll(${name} ${ztb_runtime_dir} ${ztb_compiler_dir})
  install(FILES ${CMAKE_RUNTIME_OUTPUT_DIRECTORY}/${name}.dll DESTINATION ${CMAKE_INSTALL_BINDIR})
endforeach()

# Whoever passes their code on passes on their terms, as Debian has them.
foreach(
  package IN
  ITEMS gcc-mingw-w64-x86-64-posix-runtime mingw-w64-common libz-mingw-w64-dev libcurl4-openssl-dev libexpat1-dev)
  set(ztb_terms /usr/share/doc/${package}/copyright)
  if(EXISTS ${ztb_terms})
    install(
      FILES ${ztb_terms}
      DESTINATION ${CMAKE_INSTALL_DOCDIR}/terms
      RENAME ${package}.txt)
  endif()
endforeach()
