# One function for each kind of target, so that a folder's CMakeLists.txt is a list of its files.

include(GenerateExportHeader)

set_property(GLOBAL PROPERTY ZTB_LIBRARIES "")

# Fails on an argument that no keyword takes: a misspelt keyword would swallow files silently.
macro(ztb_refuse_unparsed function)
  if(ARG_UNPARSED_ARGUMENTS)
    message(FATAL_ERROR "${function}(${ARGV1}): what is ${ARG_UNPARSED_ARGUMENTS}?")
  endif()
  if(ARG_KEYWORDS_MISSING_VALUES)
    message(FATAL_ERROR "${function}(${ARGV1}): nothing follows ${ARG_KEYWORDS_MISSING_VALUES}")
  endif()
endmacro()

# ztb_library(NAME <name> SOURCES <file>... [HEADERS <file>...] [PUBLIC <library>...] [PRIVATE <library>...])
#
# The shared library ztbaseclient::<name>, in the folder <name>. HEADERS are installed, as include/<name>/...;
# headers that stay inside go with the SOURCES. The macro <NAME>_API comes from the generated <name>/Export.h.
function(ztb_library)
  cmake_parse_arguments(PARSE_ARGV 0 ARG "" "NAME" "SOURCES;HEADERS;PUBLIC;PRIVATE")
  ztb_refuse_unparsed(ztb_library ${ARG_NAME})
  set(generated ${PROJECT_BINARY_DIR}/include)
  string(TOUPPER ${ARG_NAME} upper_name)

  add_library(${ARG_NAME} SHARED ${ARG_SOURCES})
  add_library(ztbaseclient::${ARG_NAME} ALIAS ${ARG_NAME})
  # With an old standard the headers would fail at many places: this one says what to do, and the file that is not there
  # ends the compilation.
  set(ztb_needs_standard
      "#if defined(__cplusplus) && __cplusplus < 202002L && !defined(_MSVC_LANG)\n#error \"ztbaseclient is C++20: compile with -std=c++20 or later\"\n#include \"compile with -std=c++20\"\n#endif")
  generate_export_header(
    ${ARG_NAME}
    BASE_NAME ${upper_name}
    EXPORT_MACRO_NAME ${upper_name}_API
    EXPORT_FILE_NAME ${generated}/${ARG_NAME}/Export.h
    CUSTOM_CONTENT_FROM_VARIABLE ztb_needs_standard)

  # Two sets, because the build tree lies in the source tree and one set may not have nested roots.
  target_sources(
    ${ARG_NAME}
    PUBLIC
      FILE_SET HEADERS BASE_DIRS ${PROJECT_SOURCE_DIR} FILES ${ARG_HEADERS}
      FILE_SET generated TYPE HEADERS BASE_DIRS ${generated} FILES ${generated}/${ARG_NAME}/Export.h)
  if(WIN32)
    configure_file(${PROJECT_SOURCE_DIR}/cmake/Version.rc.in ${PROJECT_BINARY_DIR}/${ARG_NAME}.rc @ONLY)
    target_sources(${ARG_NAME} PRIVATE ${PROJECT_BINARY_DIR}/${ARG_NAME}.rc)
  endif()
  target_link_libraries(${ARG_NAME} PUBLIC ${ARG_PUBLIC} PRIVATE ${ARG_PRIVATE})
  target_compile_features(${ARG_NAME} PUBLIC cxx_std_20)
  if(UNIX AND NOT APPLE)
    target_link_options(${ARG_NAME} PRIVATE -Wl,--version-script=${PROJECT_SOURCE_DIR}/cmake/exports.map)
    set_property(TARGET ${ARG_NAME} APPEND PROPERTY LINK_DEPENDS ${PROJECT_SOURCE_DIR}/cmake/exports.map)
  endif()
  set_target_properties(
    ${ARG_NAME}
    PROPERTIES VERSION ${PROJECT_VERSION}
               SOVERSION ${PROJECT_VERSION_MAJOR}.${PROJECT_VERSION_MINOR}
               VERIFY_INTERFACE_HEADER_SETS ON)

  if(DEFINED ztb_library_rpath)
    set_property(TARGET ${ARG_NAME} PROPERTY INSTALL_RPATH ${ztb_library_rpath})
  endif()

  install(
    TARGETS ${ARG_NAME}
    EXPORT ztbaseclientTargets
    RUNTIME COMPONENT runtime
    LIBRARY COMPONENT runtime NAMELINK_COMPONENT development
    ARCHIVE COMPONENT development
    FILE_SET HEADERS COMPONENT development
    FILE_SET generated COMPONENT development)
  set_property(GLOBAL APPEND PROPERTY ZTB_LIBRARIES ${ARG_NAME})
endfunction()

# ztb_test(<name> SOURCES <file>... [LIBS <library>...] [LABELS <label>...] [TIMEOUT <seconds>])
#
# The GoogleTest program test_<name>, as two ctests: <name> with the object pools off, <name>.pools with them on.
# The label "threads" has it run under the thread sanitizer too.
function(ztb_test name)
  cmake_parse_arguments(PARSE_ARGV 1 ARG "" "TIMEOUT" "SOURCES;LIBS;LABELS")
  ztb_refuse_unparsed(ztb_test ${name})
  if(NOT ARG_TIMEOUT)
    set(ARG_TIMEOUT 300)
  endif()
  add_executable(test_${name} ${ARG_SOURCES})
  target_link_libraries(test_${name} PRIVATE testSupport ${ARG_LIBS})
  target_precompile_headers(test_${name} REUSE_FROM testHeaders)
  foreach(run IN ITEMS ${name} ${name}.pools)
    add_test(NAME ${run} COMMAND test_${name} --gtest_brief=1)
    set_tests_properties(${run} PROPERTIES LABELS "${ARG_LABELS}" TIMEOUT ${ARG_TIMEOUT})
  endforeach()
  set_tests_properties(${name}.pools PROPERTIES ENVIRONMENT ZTB_TEST_POOLS=1)
  if("threads" IN_LIST ARG_LABELS)
    add_dependencies(threadTests test_${name})
  endif()
endfunction()

# ztb_bench(<name> SOURCES <file>... [LIBS <library>...])
#
# The Google Benchmark program bench_<name>, built with the target benchmarks and not by default. Its ctest
# bench.<name> runs every case briefly, to see that it still works.
function(ztb_bench name)
  cmake_parse_arguments(PARSE_ARGV 1 ARG "" "" "SOURCES;LIBS")
  ztb_refuse_unparsed(ztb_bench ${name})
  add_executable(bench_${name} EXCLUDE_FROM_ALL ${ARG_SOURCES})
  target_link_libraries(bench_${name} PRIVATE benchmark::benchmark_main ${ARG_LIBS})
  add_dependencies(benchmarks bench_${name})
  add_test(NAME bench.${name} COMMAND bench_${name} --benchmark_min_time=0.001)
  set_tests_properties(bench.${name} PROPERTIES LABELS bench RUN_SERIAL ON TIMEOUT 300)
endfunction()

# ztb_fuzz(<name> SOURCES <file>... [LIBS <library>...])
#
# The program fuzz_<name> of one source with LLVMFuzzerTestOneInput; its seeds are the files in corpus/<name>,
# its dictionary, if it has one, is <name>.dict. The ctest fuzz.<name> runs the seeds, under any compiler.
function(ztb_fuzz name)
  cmake_parse_arguments(PARSE_ARGV 1 ARG "" "" "SOURCES;LIBS")
  ztb_refuse_unparsed(ztb_fuzz ${name})
  set(corpus ${CMAKE_CURRENT_SOURCE_DIR}/corpus/${name})
  add_executable(fuzz_${name} ${ARG_SOURCES})
  add_dependencies(fuzzTargets fuzz_${name})
  target_link_libraries(fuzz_${name} PRIVATE ${ARG_LIBS})
  if(ZTB_LIBFUZZER)
    target_link_options(fuzz_${name} PRIVATE -fsanitize=fuzzer)
    add_test(NAME fuzz.${name} COMMAND fuzz_${name} -runs=0 ${corpus})
  else()
    target_link_libraries(fuzz_${name} PRIVATE fuzzReplay)
    add_test(NAME fuzz.${name} COMMAND fuzz_${name} ${corpus})
  endif()
  set_tests_properties(fuzz.${name} PROPERTIES LABELS fuzz TIMEOUT 300)
endfunction()
