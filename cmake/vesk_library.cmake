# vesk_library(name SOURCES ... LINKS ...)
#
# Makes a folder under src/ a static library `vesk_<name>`. Its headers are included as "<name>/header.h", and only by
# targets that link it: the exported include path contains only a link to this one folder, so an include against the
# order of the layers does not compile.
function(vesk_library name)
  cmake_parse_arguments(ARG "" "" "SOURCES;LINKS;PRIVATE_LINKS" ${ARGN})
  set(root ${CMAKE_BINARY_DIR}/include/${name})
  file(MAKE_DIRECTORY ${root})
  file(CREATE_LINK ${CMAKE_CURRENT_SOURCE_DIR} ${root}/${name} SYMBOLIC)
  add_library(vesk_${name} STATIC ${ARG_SOURCES})
  target_include_directories(vesk_${name} PUBLIC ${root})
  target_link_libraries(vesk_${name} PUBLIC ${ARG_LINKS} PRIVATE vesk_flags ${ARG_PRIVATE_LINKS})
endfunction()

# vesk_test(name [AS_ORDINARY_USER] SOURCES ... LINKS ...): one test program; each of its tests becomes a CTest test.
# Root may do anything, so tests that depend on permissions run once more, in one CTest test, AS_ORDINARY_USER.
function(vesk_test name)
  cmake_parse_arguments(ARG "AS_ORDINARY_USER" "" "SOURCES;LINKS" ${ARGN})
  add_executable(${name}_test ${ARG_SOURCES})
  target_link_libraries(${name}_test PRIVATE ${ARG_LINKS} vesk_flags GTest::gtest GTest::gmock GTest::gtest_main)
  if(VESK_SANITIZE) # GCC 12 warns inside std::regex, which only tests use
    target_compile_options(${name}_test PRIVATE -Wno-maybe-uninitialized)
  endif()
  set_target_properties(${name}_test PROPERTIES RUNTIME_OUTPUT_DIRECTORY ${CMAKE_BINARY_DIR}/tests)
  gtest_discover_tests(${name}_test DISCOVERY_MODE PRE_TEST TEST_PREFIX "${name}." PROPERTIES TIMEOUT 300)
  if(ARG_AS_ORDINARY_USER)
    add_test(NAME ${name}.as_ordinary_user COMMAND ${PROJECT_SOURCE_DIR}/tests/as_ordinary_user $<TARGET_FILE:${name}_test>)
    set_tests_properties(${name}.as_ordinary_user PROPERTIES TIMEOUT 300 SKIP_RETURN_CODE 77)
  endif()
endfunction()
