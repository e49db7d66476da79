# SPDX-License-Identifier: MIT
# Each folder is a target of its own that sees only the headers of the folders it links, so an include
# that runs up the floors does not compile. A target's headers are reached through a private include
# root that holds nothing but a link to its folder.

add_library(korval_build_flags INTERFACE)
target_compile_options(korval_build_flags INTERFACE
  -Wall -Wextra -Wpedantic -Wconversion -Wshadow)
if(KORVAL_WERROR)
  target_compile_options(korval_build_flags INTERFACE -Werror)
endif()
if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
  # GCC 12 sees overlaps in optimised string concatenations that are none (its bug 105651).
  target_compile_options(korval_build_flags INTERFACE -Wno-restrict)
endif()
if(KORVAL_SANITIZE)
  target_compile_options(korval_build_flags INTERFACE
    -fsanitize=address,undefined -fno-sanitize-recover=all -fno-omit-frame-pointer)
  target_link_options(korval_build_flags INTERFACE -fsanitize=address,undefined)
  if(CMAKE_CXX_COMPILER_ID STREQUAL "Clang")
    # What this check puts in front of a function clang 14 cannot put in front of a coroutine.
    target_compile_options(korval_build_flags INTERFACE -fno-sanitize=function)
  endif()
endif()
if(KORVAL_HARDEN)
  include(KorvalHardening)
endif()
if(KORVAL_FUZZ)
  # Every library is instrumented; only the fuzz programs link the fuzzer's own main.
  target_compile_options(korval_build_flags INTERFACE -fsanitize=fuzzer-no-link)
  target_link_options(korval_build_flags INTERFACE -fsanitize=fuzzer-no-link)
endif()

# What asks the operating system itself has a file for each system, in a folder of that name.
if(WIN32)
  set(KORVAL_SYSTEM windows)
else()
  set(KORVAL_SYSTEM posix)
endif()

set(KORVAL_FLOORS_DIR ${CMAKE_BINARY_DIR}/floors)

# korval_include_root(<target> <PUBLIC|INTERFACE> <path below the project's root>)
function(korval_include_root target scope path)
  set(root ${KORVAL_FLOORS_DIR}/${target})
  get_filename_component(parent ${root}/${path} DIRECTORY)
  file(MAKE_DIRECTORY ${parent})
  if(NOT EXISTS ${root}/${path})
    file(CREATE_LINK ${PROJECT_SOURCE_DIR}/${path} ${root}/${path} SYMBOLIC)
  endif()
  target_include_directories(${target} ${scope} ${root})
endfunction()

# korval_floor(<target> FOLDER <path> SOURCES ... DEPENDS ... [THROUGH ...])
# DEPENDS names what the folder includes, THROUGH what the headers of those include in turn. Nothing is handed on, so a
# folder reaches what stands here and no more; tests/floors shows that it also needs it.
function(korval_floor target)
  cmake_parse_arguments(FLOOR "" "FOLDER" "SOURCES;DEPENDS;THROUGH" ${ARGN})
  add_library(${target} STATIC ${FLOOR_SOURCES})
  korval_include_root(${target} PUBLIC ${FLOOR_FOLDER})
  set(libraries ${FLOOR_DEPENDS})
  list(FILTER libraries EXCLUDE REGEX "^korval_")
  set(floors ${FLOOR_DEPENDS})
  list(FILTER floors INCLUDE REGEX "^korval_")
  target_link_libraries(${target} PUBLIC ${libraries} PRIVATE ${floors} ${FLOOR_THROUGH} korval_build_flags)
  list(TRANSFORM FLOOR_SOURCES PREPEND ${CMAKE_CURRENT_SOURCE_DIR}/ REGEX "^[^/]")
  string(REPLACE ";" "," floor "${target}|${FLOOR_FOLDER}|${FLOOR_SOURCES}|${floors}|${FLOOR_THROUGH}")
  set_property(GLOBAL APPEND PROPERTY KORVAL_FLOORS ${floor})
endfunction()

# korval_top(<target>): sees every folder. For the programs and the tests, which wire everything together; what they link
# is still theirs to say.
function(korval_top target)
  target_include_directories(${target} PRIVATE ${PROJECT_SOURCE_DIR})
endfunction()
