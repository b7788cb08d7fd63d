# Flags that every target of the project is built with, and the two shapes of target that it has.

add_library(quillcast_flags INTERFACE)
target_compile_options(quillcast_flags INTERFACE
  -Wall -Wextra -Wpedantic -Wshadow -Wnon-virtual-dtor -Woverloaded-virtual -Werror -fstack-protector-strong
  $<$<CXX_COMPILER_ID:GNU>:-Wno-restrict>)  # false alarms on std::string::insert (GCC bug 105651)
target_compile_definitions(quillcast_flags INTERFACE
  $<$<CONFIG:Release>:_FORTIFY_SOURCE=2> $<$<CONFIG:Debug>:_GLIBCXX_ASSERTIONS>)
target_include_directories(quillcast_flags INTERFACE ${CMAKE_SOURCE_DIR}/src)
if(QUILLCAST_SANITIZE)
  # What sanitizers add makes the compiler see values that are not set where all are.
  target_compile_options(quillcast_flags INTERFACE -Wno-error -fsanitize=${QUILLCAST_SANITIZE} -fno-sanitize-recover=all
    -fno-omit-frame-pointer)
  target_link_options(quillcast_flags INTERFACE -fsanitize=${QUILLCAST_SANITIZE})
endif()

# Seconds. No test is held to a time: one that takes this long has stopped.
set(QUILLCAST_HANGS_AFTER 1500)

# What the compiler is given of a folder's sources: some files that include them, by names that are the same in every
# checkout, for the compiler's cache. So no two sources of a folder may have one name in their unnamed namespaces.
function(quillcast_sources out name)
  if(NOT QUILLCAST_TOGETHER)
    set(${out} ${ARGN} PARENT_SCOPE)
    return()
  endif()
  set(at_once 16)
  list(LENGTH ARGN count)
  math(EXPR last "${count} - 1")
  foreach(begin RANGE 0 ${last} ${at_once})
    list(SUBLIST ARGN ${begin} ${at_once} some)
    set(includes "")
    foreach(source IN LISTS some)
      file(RELATIVE_PATH source ${CMAKE_SOURCE_DIR}/src ${source})
      string(APPEND includes "#include \"${source}\"\n")
    endforeach()
    set(file ${CMAKE_CURRENT_BINARY_DIR}/${name}_${begin}.cpp)
    file(CONFIGURE OUTPUT ${file} CONTENT "${includes}" @ONLY)
    list(APPEND files ${file})
  endforeach()
  set(${out} ${files} PARENT_SCOPE)
endfunction()

# A folder of the house: every .cpp in it becomes quillcast_NAME, which may include only what USES names.
function(quillcast_folder name)
  cmake_parse_arguments(ARG "" "" "USES" ${ARGN})
  file(GLOB sources CONFIGURE_DEPENDS ${CMAKE_CURRENT_SOURCE_DIR}/*.cpp)
  if(NOT sources)  # a folder of headers alone
    add_library(quillcast_${name} INTERFACE)
    target_link_libraries(quillcast_${name} INTERFACE quillcast_flags ${ARG_USES})
    return()
  endif()
  quillcast_sources(together ${name} ${sources})
  add_library(quillcast_${name} STATIC ${together})
  target_link_libraries(quillcast_${name} PUBLIC quillcast_flags ${ARG_USES})
endfunction()

# What every test program is built with: quickly, for none of them is waited for. What only some libraries define all
# have, for what is precompiled is the same for all.
function(quillcast_test_build target)
  # Hardening needs to optimise.
  target_compile_options(${target} PRIVATE -O0 -U_FORTIFY_SOURCE -pthread -D_LARGEFILE64_SOURCE
    $<$<CXX_COMPILER_ID:GNU>:-fpch-preprocess>)
endfunction()

# What all test programs include, compiled once: with the program that has no test.
function(quillcast_test_headers)
  file(CONFIGURE OUTPUT ${CMAKE_CURRENT_BINARY_DIR}/test_headers.cpp CONTENT "" @ONLY)
  add_executable(quillcast_test_headers ${CMAKE_CURRENT_BINARY_DIR}/test_headers.cpp)
  target_link_libraries(quillcast_test_headers PRIVATE quillcast_flags GTest::gtest_main GTest::gmock)
  quillcast_test_build(quillcast_test_headers)
  target_precompile_headers(quillcast_test_headers PRIVATE <gmock/gmock.h> <gtest/gtest.h>)
endfunction()

# A test program: every .cpp below tests/NAME, or below tests/FOLDER, but for those below its folder EXCEPT, run by CTest
# as one test named NAME. MEASURES: it is optimised. WINDOWS: Qt has it compiled in its own way, as it does the desktop.
function(quillcast_test name)
  cmake_parse_arguments(ARG "MEASURES;WINDOWS" "FOLDER;EXCEPT" "USES" ${ARGN})
  if(NOT ARG_FOLDER)
    set(ARG_FOLDER ${name})
  endif()
  file(GLOB_RECURSE sources CONFIGURE_DEPENDS ${CMAKE_CURRENT_SOURCE_DIR}/${ARG_FOLDER}/*.cpp)
  if(ARG_EXCEPT)
    list(FILTER sources EXCLUDE REGEX "/${ARG_FOLDER}/${ARG_EXCEPT}/")
  endif()
  add_executable(test_${name} ${sources})
  target_include_directories(test_${name} PRIVATE ${CMAKE_SOURCE_DIR}/tests)
  target_compile_definitions(test_${name} PRIVATE QUILLCAST_TEST_DATA="${CMAKE_CURRENT_SOURCE_DIR}/${ARG_FOLDER}")
  target_link_libraries(test_${name} PRIVATE ${ARG_USES} GTest::gtest_main GTest::gmock)
  if(ARG_MEASURES)
    target_compile_options(test_${name} PRIVATE -O1)
  else()
    quillcast_test_build(test_${name})
    if(NOT ARG_WINDOWS)
      target_precompile_headers(test_${name} REUSE_FROM quillcast_test_headers)
    endif()
  endif()
  add_test(NAME ${name} COMMAND test_${name} --gtest_brief=1)
  set_tests_properties(${name} PROPERTIES TIMEOUT ${QUILLCAST_HANGS_AFTER})
endfunction()
