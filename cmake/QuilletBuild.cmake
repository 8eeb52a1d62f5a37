# How this project builds: warnings, sanitizers, and one function a kind of target. A directory's CMakeLists.txt is
# one call; sources and tests are found by name, so that a new file needs no edit here.

set(QUILLET_SANITIZE "" CACHE STRING "Value of -fsanitize for everything, empty for none")

find_program(QUILLET_CCACHE ccache)
if(QUILLET_CCACHE)
  set(CMAKE_CXX_COMPILER_LAUNCHER ${QUILLET_CCACHE})
endif()

add_library(quillet_options INTERFACE)
target_compile_options(quillet_options INTERFACE -Wall -Wextra -Wpedantic -Wshadow -Wconversion -Werror)
# g++ 12 sees overlaps in std::string's own code where there are none (its bug 105651), and takes the inside of an empty
# std::optional for uninitialised; both with optimisation only.
if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU" AND CMAKE_CXX_COMPILER_VERSION VERSION_LESS 13)
  target_compile_options(quillet_options INTERFACE
                         $<$<NOT:$<CONFIG:Debug>>:-Wno-restrict> $<$<NOT:$<CONFIG:Debug>>:-Wno-maybe-uninitialized>)
endif()
target_include_directories(quillet_options INTERFACE ${PROJECT_SOURCE_DIR}/src)
set(CMAKE_CXX_FLAGS_DEBUG "-O0 -g1 -D_GLIBCXX_ASSERTIONS")
if(QUILLET_SANITIZE)
  add_compile_options(-fsanitize=${QUILLET_SANITIZE} -fno-sanitize-recover=all -fno-omit-frame-pointer)
  add_link_options(-fsanitize=${QUILLET_SANITIZE})
  set(CMAKE_CXX_FLAGS_DEBUG "-O1 -g1 -D_GLIBCXX_ASSERTIONS")
  if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
    # g++ 12 takes the alternatives of a std::variant for uninitialised once it is instrumented.
    target_compile_options(quillet_options INTERFACE -Wno-maybe-uninitialized)
  endif()
endif()
if(QUILLET_FUZZ)
  add_compile_options(-fsanitize=fuzzer-no-link)
endif()
find_program(QUILLET_MOLD mold)
if(QUILLET_MOLD AND CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
  add_link_options(-fuse-ld=mold)
endif()

# quillet_library(name LINK libraries...): a static library of this directory's sources, and, where there are files
# X_test.cpp, one test program name_test registered with ctest. The link list is exact: what a directory may include.
function(quillet_library name)
  cmake_parse_arguments(ARG "" "" "LINK;TEST_LINK;PRIVATE_LINK" ${ARGN})
  file(GLOB sources CONFIGURE_DEPENDS *.cpp)
  set(tests ${sources})
  list(FILTER tests INCLUDE REGEX "_test\\.cpp$")
  list(FILTER sources EXCLUDE REGEX "_test\\.cpp$")
  if(sources)
    add_library(${name} STATIC ${sources})
    target_link_libraries(${name} PUBLIC quillet_options ${ARG_LINK} PRIVATE ${ARG_PRIVATE_LINK})
  else()
    add_library(${name} INTERFACE)
    target_link_libraries(${name} INTERFACE quillet_options ${ARG_LINK})
  endif()
  if(tests AND QUILLET_TESTS)
    add_executable(${name}_test ${tests})
    target_link_libraries(${name}_test PRIVATE ${name} ${ARG_TEST_LINK} tests_support)
    add_test(NAME ${name}_test COMMAND ${name}_test)
    set_tests_properties(${name}_test PROPERTIES TIMEOUT 300)
  endif()
endfunction()

# quillet_program(name SOURCES... LINK libraries...): an executable in bin/.
function(quillet_program name)
  cmake_parse_arguments(ARG "" "" "SOURCES;LINK" ${ARGN})
  add_executable(${name} ${ARG_SOURCES})
  target_link_libraries(${name} PRIVATE quillet_options ${ARG_LINK})
endfunction()

# quillet_fuzz_target(name LINK libraries...): name.cpp with LLVMFuzzerTestOneInput. With QUILLET_FUZZ it becomes a
# fuzzer; otherwise a program that replays corpus/<name>/ as an ordinary test.
function(quillet_fuzz_target name)
  cmake_parse_arguments(ARG "" "" "LINK" ${ARGN})
  add_executable(${name} ${name}.cpp)
  target_link_libraries(${name} PRIVATE quillet_options ${ARG_LINK})
  if(QUILLET_FUZZ)
    target_link_options(${name} PRIVATE -fsanitize=fuzzer)
  else()
    target_sources(${name} PRIVATE ReplayCorpus.cpp)
    add_test(NAME ${name}_replay COMMAND ${name} ${CMAKE_CURRENT_SOURCE_DIR}/corpus/${name})
    set_tests_properties(${name}_replay PROPERTIES TIMEOUT 300)
  endif()
endfunction()
