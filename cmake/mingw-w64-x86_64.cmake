# SPDX-License-Identifier: MIT
# Debian's cross compiler for 64-bit Windows. The libraries come from the folder that scripts/mingw fills.
set(CMAKE_SYSTEM_NAME Windows)
set(CMAKE_SYSTEM_PROCESSOR x86_64)
set(CMAKE_CXX_COMPILER x86_64-w64-mingw32-g++-posix)
set(CMAKE_C_COMPILER x86_64-w64-mingw32-gcc-posix)
set(CMAKE_RC_COMPILER x86_64-w64-mingw32-windres)

get_filename_component(korval_libraries ${CMAKE_CURRENT_LIST_DIR}/../build/mingw-libraries ABSOLUTE)
set(CMAKE_FIND_ROOT_PATH /usr/x86_64-w64-mingw32 ${korval_libraries})
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)

# A test needs no library beside it.
set(CMAKE_EXE_LINKER_FLAGS_INIT "-static")

find_program(KORVAL_WINE NAMES wine64 wine)
if(KORVAL_WINE)
  set(CMAKE_CROSSCOMPILING_EMULATOR ${KORVAL_WINE})
endif()
