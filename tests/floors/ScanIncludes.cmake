# SPDX-License-Identifier: MIT
cmake_minimum_required(VERSION 3.25)
# cmake -DROOT=project -DFOLDERS=folder|folder -DWORK=dir -P
# Finds includes of Qt and includes that climb with "../" in the sources below the folders. Proves first, on
# planted sources, that it would find them.

# Appends "file: line" to `found` for each such include in a source.
function(scan file)
  file(STRINGS ${file} lines REGEX "^[ \t]*#[ \t]*include")
  foreach(line IN LISTS lines)
    if(line MATCHES "include[ \t]*[<\"](Q[A-Z]|Qt)" OR line MATCHES "[<\"/]\\.\\./")
      list(APPEND found "${file}: ${line}")
    endif()
  endforeach()
  set(found "${found}" PARENT_SCOPE)
endfunction()

set(planted
  "#include <QString>" "#include <QtCore/QString>" "#include \"QtCore/qstring.h\"" "  #  include  <QObject>"
  "#include \"../base/Failure.h\"" "#include \"base/../model/Acquisition.h\"")
set(harmless "#include <queue>" "#include \"base/Failure.h\"" "// #include <QString> would not compile")
foreach(line IN LISTS planted harmless)
  file(WRITE ${WORK}/planted.cpp "${line}\n")
  set(found)
  scan(${WORK}/planted.cpp)
  if(line IN_LIST planted AND NOT found)
    message(FATAL_ERROR "the scan does not see: ${line}")
  elseif(line IN_LIST harmless AND found)
    message(FATAL_ERROR "the scan takes offence at: ${line}")
  endif()
endforeach()

string(REPLACE "|" ";" FOLDERS "${FOLDERS}")
set(found)
foreach(folder IN LISTS FOLDERS)
  file(GLOB_RECURSE sources ${ROOT}/${folder}/*.h ${ROOT}/${folder}/*.cpp)
  if(NOT sources)
    message(FATAL_ERROR "no source below ${ROOT}/${folder}: was the folder renamed?")
  endif()
  foreach(source IN LISTS sources)
    scan(${source})
  endforeach()
endforeach()
if(found)
  list(JOIN found "\n" found)
  message(FATAL_ERROR "these includes break the floors:\n${found}")
endif()
