# SPDX-License-Identifier: MIT
cmake_minimum_required(VERSION 3.25)
# cmake -DCOMPILER=... -DINCLUDES=dir|dir -DALLOWED=header|header -DFORBIDDEN=header|header -DWORK=dir -P
# Compiles one line sources with the include directories of a target: an allowed header must be found, a
# forbidden one must not. Headers in <> are written so, all others are quoted.

foreach(list IN ITEMS INCLUDES ALLOWED FORBIDDEN)
  string(REPLACE "|" ";" ${list} "${${list}}")
endforeach()
set(include_options)
foreach(directory IN LISTS INCLUDES)
  list(APPEND include_options "-I${directory}")
endforeach()
file(MAKE_DIRECTORY ${WORK})

# Sets `compiles` and `message` for a source that includes `header`.
function(try_include header)
  if(NOT header MATCHES "^<")
    set(header "\"${header}\"")
  endif()
  file(WRITE ${WORK}/include.cpp "#include ${header}\n")
  execute_process(
    COMMAND ${COMPILER} -std=c++20 -fPIC -fsyntax-only ${include_options} ${WORK}/include.cpp
    RESULT_VARIABLE result ERROR_VARIABLE message OUTPUT_QUIET)
  if(result EQUAL 0)
    set(compiles TRUE PARENT_SCOPE)
  else()
    set(compiles FALSE PARENT_SCOPE)
  endif()
  set(message "${message}" PARENT_SCOPE)
endfunction()

if(NOT ALLOWED)
  message(FATAL_ERROR "without a header that compiles the others prove nothing")
endif()
foreach(header IN LISTS ALLOWED)
  try_include(${header})
  if(NOT compiles)
    message(SEND_ERROR "${header} should compile here:\n${message}")
  endif()
endforeach()
foreach(header IN LISTS FORBIDDEN)
  try_include(${header})
  if(compiles)
    message(SEND_ERROR "${header} is within reach, and must not be")
  elseif(NOT message MATCHES "No such file or directory|file not found")
    message(SEND_ERROR "${header} is within reach, and fails only later:\n${message}")
  endif()
endforeach()
